#pragma once

#include <bit>
#include <compare>
#include <cstdint>

namespace habitra {

/// A set of days of the month, in the 64 bits under which it is stored: day n counted from the front is bit n (1 to
/// 31), day n counted back from the month's last day is bit 63 - n (0 to 7). So "the last day" is one member whatever
/// the length of the month, and day 31 is simply not met in a month of 30 days. The bits between are never looked at.
class DaysOfMonth {
 public:
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

  /// Whether day `d` (1 to 31) of a month of `numberOfDays` days (28 to 31) is in the set.
  [[nodiscard]] constexpr bool isDue(std::int64_t d, std::int64_t numberOfDays) const {
    const std::int64_t fromEnd = numberOfDays - d;
    return ((bits_ >> d) & 1) != 0 || (fromEnd < 8 && ((bits_ >> (63 - fromEnd)) & 1) != 0);
  }

  [[nodiscard]] friend constexpr DaysOfMonth operator|(DaysOfMonth a, DaysOfMonth b) {
    a.insert(b);
    return a;
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

}  // namespace habitra
