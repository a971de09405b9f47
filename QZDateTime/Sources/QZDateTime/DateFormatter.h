#pragma once

#include <QZDateTime/DayOfWeek.h>
#include <QZDateTime/YYYYMM.h>
#include <QZDateTime/YYYYMMDD.h>

#include <memory>
#include <mutex>
#include <string>

namespace qz {

/// Writes dates in the user's language: the locale that LC_ALL names, else LC_TIME, else LANG. The names come from a
/// module that is opened when the first formatter is made; without it, or for "C" and "POSIX", they are English. Always
/// of the Gregorian calendar. One formatter may be used from any thread.
class DateFormatter {
 public:
  enum class Style {
    titleWithYear,       ///< "January 2024", "January 31, 2024"
    shortTitleWithYear,  ///< "Jan 2024", "Jan 31, 2024"
    localizedYear,       ///< "2024"
    symbols,             ///< names that stand alone
  };
  enum class Width { full, abbreviated, narrow };  ///< "Monday", "Mon", "M"

  explicit DateFormatter(Style style);
  ~DateFormatter();
  DateFormatter(const DateFormatter&) = delete;
  DateFormatter& operator=(const DateFormatter&) = delete;

  /// In the formatter's style. Of style `symbols`: the month without its year.
  [[nodiscard]] std::string string(const YYYYMM& month) const;
  [[nodiscard]] std::string string(const YYYYMMDD& day) const;

  /// The name standing alone, whatever the style.
  [[nodiscard]] std::string symbol(DayOfWeek day, Width width) const;
  [[nodiscard]] std::string symbol(const YYYYMM& month, Width width) const;

 private:
  struct Names;

  Style style_;
  mutable std::mutex mutex_;  // guards names_, which formats through one object
  std::unique_ptr<Names> names_;
};

}  // namespace qz
