#pragma once

#include <QZDateTime/HHMMSS.h>
#include <QZDateTime/TimeZone.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Clock.h>

#include <cstdint>

namespace qz {

/// What a wall clock and the calendar beside it show.
struct DateComponents {
  YYYYMMDD date;
  HHMMSS time;

  friend bool operator==(const DateComponents&, const DateComponents&) = default;
};

/// The Gregorian calendar in a time zone, without any cache: where moments become dates and dates moments. It holds no
/// state but its zone, so that one serves any number of threads.
class Calendar {
 public:
  explicit Calendar(TimeZone timeZone) : timeZone_(timeZone) {}

  [[nodiscard]] const TimeZone& timeZone() const { return timeZone_; }

  /// Date and time of day of a moment, to the second (a fraction is dropped towards the past).
  [[nodiscard]] DateComponents components(Moment date) const;

  /// The moment at which the zone's wall clock shows that date and time: the first moment after the jump when clocks
  /// jump over it, the first of two when they show it twice. Traps outside a Moment's range.
  [[nodiscard]] Moment date(const YYYYMMDD& day, const HHMMSS& time) const;

  /// Whole days later, earlier when negative; traps on overflow.
  [[nodiscard]] YYYYMMDD add(const YYYYMMDD& day, std::int64_t numDays) const;

 private:
  TimeZone timeZone_;
};

}  // namespace qz
