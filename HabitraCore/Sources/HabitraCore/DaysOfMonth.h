#pragma once

#include <QZKit/BitIterator.h>

#include <bit>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>

namespace habitra {

/// A set of days of the month, in the 64 bits under which it is stored: day n counted from the front is bit n (1 to
/// 31), day n counted back from the month's last day is bit 63 - n (0 to 7). So "the last day" is one member whatever
/// the length of the month, and day 31 is simply not met in a month of 30 days. The bits between are never looked at.
/// Iterates over its days one by one, each again a set: from the front of the month to its last day.
class DaysOfMonth {
 public:
  static const DaysOfMonth day1, day2, day3, day4, day5, day6, day7, day8, day9, day10, day11, day12, day13, day14,
      day15, day16, day17, day18, day19, day20, day21, day22, day23, day24, day25, day26, day27, day28, day29, day30,
      day31, lastDayMinus1, lastDayMinus2, lastDayMinus3, lastDayMinus4, lastDayMinus5, lastDayMinus6, lastDayMinus7;

  constexpr DaysOfMonth() = default;
  /// Takes any bits as they stand.
  explicit constexpr DaysOfMonth(std::int64_t rawValue) : bits_(static_cast<std::uint64_t>(rawValue)) {}

  /// Bit n for 0 <= n < 64, else the empty set.
  [[nodiscard]] static constexpr DaysOfMonth day(std::int64_t n) {
    return fromBits(n >= 0 && n < 64 ? std::uint64_t{1} << n : 0);
  }
  /// The day `offset` days before the month's last one: bit 63 - `offset`, and the empty set where there is no such
  /// bit.
  [[nodiscard]] static constexpr DaysOfMonth lastDay(std::int64_t offset = 0) {
    return offset >= 0 && offset < 64 ? day(63 - offset) : DaysOfMonth();
  }
  /// Every day that a set can mean: 1 to 31 and the last eight.
  [[nodiscard]] static constexpr DaysOfMonth every() { return fromBits(0xFF000000FFFFFFFEu); }

  [[nodiscard]] constexpr std::int64_t rawValue() const { return static_cast<std::int64_t>(bits_); }
  /// Whether no month has a day of this set.
  [[nodiscard]] constexpr bool isEmpty() const { return (bits_ & every().bits_) == 0; }

  /// How many days the set means.
  [[nodiscard]] constexpr std::int64_t count() const { return std::popcount(bits_ & every().bits_); }

  [[nodiscard]] constexpr bool contains(DaysOfMonth other) const { return (bits_ & other.bits_) == other.bits_; }
  constexpr void insert(DaysOfMonth other) { bits_ |= other.bits_; }
  constexpr void remove(DaysOfMonth other) { bits_ &= ~other.bits_; }

  using Iterator = qz::BitIterator<DaysOfMonth, &DaysOfMonth::day>;
  [[nodiscard]] constexpr Iterator begin() const { return Iterator(bits_ & every().bits_); }
  [[nodiscard]] constexpr Iterator end() const { return Iterator(); }

  /// Whether day `d` (1 to 31) of a month of `numberOfDays` days (28 to 31) is in the set.
  [[nodiscard]] constexpr bool isDue(std::int64_t d, std::int64_t numberOfDays) const {
    const std::int64_t fromEnd = numberOfDays - d;
    return ((bits_ >> d) & 1) != 0 || (fromEnd < 8 && ((bits_ >> (63 - fromEnd)) & 1) != 0);
  }

  [[nodiscard]] friend constexpr DaysOfMonth operator|(DaysOfMonth a, DaysOfMonth b) {
    a.insert(b);
    return a;
  }
  [[nodiscard]] friend constexpr DaysOfMonth operator&(DaysOfMonth a, DaysOfMonth b) {
    return fromBits(a.bits_ & b.bits_);
  }
  friend constexpr bool operator==(DaysOfMonth, DaysOfMonth) = default;
  friend constexpr auto operator<=>(DaysOfMonth, DaysOfMonth) = default;

 private:
  static constexpr DaysOfMonth fromBits(std::uint64_t bits) {
    DaysOfMonth days;
    days.bits_ = bits;
    return days;
  }

  std::uint64_t bits_ = 0;
};

inline constexpr DaysOfMonth DaysOfMonth::day1 = day(1);
inline constexpr DaysOfMonth DaysOfMonth::day2 = day(2);
inline constexpr DaysOfMonth DaysOfMonth::day3 = day(3);
inline constexpr DaysOfMonth DaysOfMonth::day4 = day(4);
inline constexpr DaysOfMonth DaysOfMonth::day5 = day(5);
inline constexpr DaysOfMonth DaysOfMonth::day6 = day(6);
inline constexpr DaysOfMonth DaysOfMonth::day7 = day(7);
inline constexpr DaysOfMonth DaysOfMonth::day8 = day(8);
inline constexpr DaysOfMonth DaysOfMonth::day9 = day(9);
inline constexpr DaysOfMonth DaysOfMonth::day10 = day(10);
inline constexpr DaysOfMonth DaysOfMonth::day11 = day(11);
inline constexpr DaysOfMonth DaysOfMonth::day12 = day(12);
inline constexpr DaysOfMonth DaysOfMonth::day13 = day(13);
inline constexpr DaysOfMonth DaysOfMonth::day14 = day(14);
inline constexpr DaysOfMonth DaysOfMonth::day15 = day(15);
inline constexpr DaysOfMonth DaysOfMonth::day16 = day(16);
inline constexpr DaysOfMonth DaysOfMonth::day17 = day(17);
inline constexpr DaysOfMonth DaysOfMonth::day18 = day(18);
inline constexpr DaysOfMonth DaysOfMonth::day19 = day(19);
inline constexpr DaysOfMonth DaysOfMonth::day20 = day(20);
inline constexpr DaysOfMonth DaysOfMonth::day21 = day(21);
inline constexpr DaysOfMonth DaysOfMonth::day22 = day(22);
inline constexpr DaysOfMonth DaysOfMonth::day23 = day(23);
inline constexpr DaysOfMonth DaysOfMonth::day24 = day(24);
inline constexpr DaysOfMonth DaysOfMonth::day25 = day(25);
inline constexpr DaysOfMonth DaysOfMonth::day26 = day(26);
inline constexpr DaysOfMonth DaysOfMonth::day27 = day(27);
inline constexpr DaysOfMonth DaysOfMonth::day28 = day(28);
inline constexpr DaysOfMonth DaysOfMonth::day29 = day(29);
inline constexpr DaysOfMonth DaysOfMonth::day30 = day(30);
inline constexpr DaysOfMonth DaysOfMonth::day31 = day(31);
inline constexpr DaysOfMonth DaysOfMonth::lastDayMinus1 = lastDay(1);
inline constexpr DaysOfMonth DaysOfMonth::lastDayMinus2 = lastDay(2);
inline constexpr DaysOfMonth DaysOfMonth::lastDayMinus3 = lastDay(3);
inline constexpr DaysOfMonth DaysOfMonth::lastDayMinus4 = lastDay(4);
inline constexpr DaysOfMonth DaysOfMonth::lastDayMinus5 = lastDay(5);
inline constexpr DaysOfMonth DaysOfMonth::lastDayMinus6 = lastDay(6);
inline constexpr DaysOfMonth DaysOfMonth::lastDayMinus7 = lastDay(7);

}  // namespace habitra

template <>
struct std::hash<habitra::DaysOfMonth> {
  std::size_t operator()(habitra::DaysOfMonth days) const noexcept { return static_cast<std::size_t>(days.rawValue()); }
};
