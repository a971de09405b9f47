#pragma once

#include <QZDateTime/HHMMSS.h>
#include <QZDateTime/YYYYMMDD.h>
#include <rapidcheck.h>

#include <cstdint>

/// Arbitrary values for property tests.
namespace qz {

/// A whole number between two bounds, both included.
inline std::int64_t between(std::int64_t low, std::int64_t high) { return *rc::gen::inRange(low, high + 1); }

/// A day that exists, mostly of common years, sometimes of years no library knows.
inline YYYYMMDD anyDay() {
  const std::int64_t y =
      *rc::gen::weightedOneOf<std::int64_t>({{6, rc::gen::inRange<std::int64_t>(1, 10'000)},
                                             {1, rc::gen::inRange<std::int64_t>(-50'000, 2'000'000)},
                                             {1, rc::gen::inRange<std::int64_t>(3'999'990, 4'000'010)},
                                             {1, rc::gen::inRange<std::int64_t>(-1e15, 1e15)}});
  const std::int64_t m = between(1, 12);
  return YYYYMMDD(y, m, between(1, YYYYMM(y, m).numberOfDays()));
}

inline HHMMSS anyTime() { return *HHMMSS::fromRawValue(between(0, HHMMSS::secondsPerDay - 1)); }

inline DayOfWeek anyWeekday() { return *DayOfWeek::fromRawValue(between(0, 6)); }

}  // namespace qz
