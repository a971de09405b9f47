#pragma once

#include <cstdint>

/// The Gregorian calendar as plain arithmetic: the number of a day is the count of days since 1970-01-01, the same
/// rules reaching backwards and forwards without end. All functions are pure.
///
/// There are two roads. The near one covers the years within nearYears of year 0, fits every number into 32 bits and is
/// a handful of multiplications. The far one takes any 64-bit year and any month and day, rolls over what does not
/// exist (month 13 is January of the next year, 30 February is 1 or 2 March, day 0 is the last of the month before) and
/// traps when the result leaves 64 bits.
namespace qz::day_number {

/// A date as its parts; month 1–12, day 1–31.
struct Civil {
  std::int64_t y;
  std::int64_t m;
  std::int64_t d;
};

/// How far the near road reaches from year 0, to either side; a multiple of 400, so that a shift by it keeps the
/// calendar, and far more than a Moment's 292,000 years.
inline constexpr std::int64_t nearYears = 4'000'000;

/// Days in 400 years, after which the calendar repeats.
inline constexpr std::int64_t daysPerEra = 146'097;

/// The numbers between which a day lies within nearYears; both included.
inline constexpr std::int64_t nearLimit = nearYears / 400 * daysPerEra - 800'000;

[[nodiscard]] constexpr std::int64_t floorDivide(std::int64_t a, std::int64_t b) { return a / b - (a % b < 0 ? 1 : 0); }

/// REQUIRES: b > 0. Between 0 and b - 1.
[[nodiscard]] constexpr std::int64_t floorRemainder(std::int64_t a, std::int64_t b) {
  const std::int64_t remainder = a % b;
  return remainder < 0 ? remainder + b : remainder;
}

[[nodiscard]] constexpr bool isLeapYear(std::int64_t y) {
  // A year divisible by 25 is divisible by 400 exactly when by 16, and by 4 but not 100 never.
  return (y & (y % 25 == 0 ? 15 : 3)) == 0;
}

/// REQUIRES: 1 <= m <= 12.
[[nodiscard]] constexpr std::int64_t lengthOfMonth(std::int64_t y, std::int64_t m) {
  if (m == 2) return isLeapYear(y) ? 29 : 28;
  return 30 + ((m ^ (m >> 3)) & 1);  // long and short months alternate, and once more from August on
}

[[nodiscard]] constexpr bool isNearYear(std::int64_t y) { return y >= -nearYears && y <= nearYears; }

[[nodiscard]] constexpr bool isNearNumber(std::int64_t number) { return number >= -nearLimit && number <= nearLimit; }

/// Whether the calendar has the date y-m-d.
[[nodiscard]] constexpr bool exists(std::int64_t y, std::int64_t m, std::int64_t d) {
  return m >= 1 && m <= 12 && d >= 1 && (d <= 28 || d <= lengthOfMonth(y, m));
}

namespace detail {

/// Moves the years of the near road, and the one before, above zero.
inline constexpr std::int64_t yearShift = nearYears + 400;
/// Day number of 1 March of the shifted year 0, negated.
inline constexpr std::int64_t dayShift = yearShift / 400 * daysPerEra + 719'468;

}  // namespace detail

/// The number of a date that exists. REQUIRES: isNearYear(y) and exists(y, m, d).
[[nodiscard]] constexpr std::int64_t ofNear(std::int64_t y, std::int64_t m, std::int64_t d) {
  // Years begin in March, so that the leap day is the last; the months' starts then lie on a straight line
  // (979 m - 2919) / 32. Method: Neri and Schneider, "Euclidean affine functions and their application to calendar
  // algorithms", 2022.
  // A sign bit stands for m <= 2: a branch would be mispredicted on days in no order.
  const std::uint64_t early = static_cast<std::uint64_t>(m - 3) >> 63;
  const std::uint64_t year = static_cast<std::uint64_t>(y + detail::yearShift) - early;
  const std::uint64_t month = static_cast<std::uint64_t>(m) + 12 * early;
  const std::uint64_t century = year / 100;
  const std::uint64_t days = 1461 * year / 4 - century + century / 4 + (979 * month - 2919) / 32;
  return static_cast<std::int64_t>(days) + d - 1 - detail::dayShift;
}

/// The date of a number. REQUIRES: isNearNumber(number).
[[nodiscard]] constexpr Civil nearCivil(std::int64_t number) {
  // The same paper's way back: century, year of the century and day of the year by one multiplication each.
  const std::uint64_t quarters = 4 * static_cast<std::uint64_t>(number + detail::dayShift) + 3;
  const std::uint64_t century = quarters / 146'097;
  const std::uint64_t product = 2'939'745 * (quarters % 146'097 | 3);
  const std::uint64_t dayOfYear = (product & 0xffff'ffff) / 2'939'745 / 4;  // since 1 March
  const std::uint64_t line = 2141 * dayOfYear + 197'913;
  // January and February, from the 306th day on, belong to the next year; 718 lifts 306 to 1024.
  const std::uint64_t late = (dayOfYear + 718) >> 10;
  return {static_cast<std::int64_t>(100 * century + (product >> 32) + late) - detail::yearShift,
          static_cast<std::int64_t>((line >> 16) - 12 * late), static_cast<std::int64_t>((line & 0xffff) / 2141 + 1)};
}

/// The number of any date, rolled over; traps when it leaves 64 bits.
[[nodiscard]] std::int64_t ofAny(std::int64_t y, std::int64_t m, std::int64_t d);

/// The date of any number.
[[nodiscard]] Civil anyCivil(std::int64_t number);

}  // namespace qz::day_number
