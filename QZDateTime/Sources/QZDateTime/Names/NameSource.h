#pragma once

#include <cstdint>
#include <string>

namespace qz {

/// Names of weekdays and months, and dates put in words, in one language. Implemented in English by the module itself
/// and for every language by the names module, which is opened while the program runs; so this interface speaks in
/// plain numbers only. May be used from any thread.
class NameSource {
 public:
  enum class Width { full, abbreviated, narrow };
  enum class Pattern {
    monthWithYear,       ///< "January 2024"
    shortMonthWithYear,  ///< "Jan 2024"
    date,                ///< "January 31, 2024"
    shortDate,           ///< "Jan 31, 2024"
    year,                ///< "2024"
  };

  virtual ~NameSource() = default;

  /// `day` 1–7 as calendars count: Sunday 1, Saturday 7.
  [[nodiscard]] virtual std::string weekday(int day, Width width) const = 0;
  /// `month` 1–12.
  [[nodiscard]] virtual std::string month(int month, Width width) const = 0;
  /// A date of the Gregorian calendar by its number, days since 1970-01-01.
  [[nodiscard]] virtual std::string date(Pattern pattern, std::int64_t number) const = 0;
  /// 1–7: the weekday on which weeks begin in the language's territory.
  [[nodiscard]] virtual int firstWeekday() const = 0;
};

/// The names module's one entry, by this name: a new source for a locale ("de_AT.UTF-8"), owned by the caller; null
/// when there is none.
using MakeNameSource = NameSource* (*)(const char* locale);
inline constexpr const char* makeNameSourceSymbol = "qzMakeNameSource";

}  // namespace qz
