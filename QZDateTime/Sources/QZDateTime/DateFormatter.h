#pragma once

#include <QZDateTime/DayOfWeek.h>
#include <QZDateTime/YYYYMM.h>
#include <QZDateTime/YYYYMMDD.h>

#include <memory>
#include <string>

namespace qz {

class NameSource;

/// Writes dates in the user's language, always of the Gregorian calendar. The names come from a module that is opened
/// when the first formatter is made; without it, and where the locale names no language ("C", "POSIX", none at all),
/// they are English. One formatter may be used from any thread.
class DateFormatter {
 public:
  enum class Style {
    titleWithYear,       ///< "January 2024", "January 31, 2024"
    shortTitleWithYear,  ///< "Jan 2024", "Jan 31, 2024"
    localizedYear,       ///< "2024"
    symbols,             ///< the month standing alone: "January"
  };
  enum class Width { full, abbreviated, narrow };  ///< "Monday", "Mon", "M"

  /// The value of LC_ALL, else of LC_TIME, else of LANG; empty when none is set.
  [[nodiscard]] static std::string userLocale();

  /// `locale` as those variables spell it: "de_AT.UTF-8".
  explicit DateFormatter(Style style, const std::string& locale = userLocale());
  ~DateFormatter();
  DateFormatter(const DateFormatter&) = delete;
  DateFormatter& operator=(const DateFormatter&) = delete;

  /// In the formatter's style.
  [[nodiscard]] std::string string(const YYYYMM& month) const;
  [[nodiscard]] std::string string(const YYYYMMDD& day) const;

  /// The name standing alone, whatever the style.
  [[nodiscard]] std::string symbol(DayOfWeek day, Width width) const;
  [[nodiscard]] std::string symbol(const YYYYMM& month, Width width) const;

  /// The weekday on which weeks begin in the locale's territory; Monday where it names none.
  [[nodiscard]] DayOfWeek firstDayOfWeek() const;

 private:
  Style style_;
  std::unique_ptr<const NameSource> names_;
};

}  // namespace qz
