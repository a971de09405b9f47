#pragma once

#include <QZDateTime/DayOfWeek.h>
#include <QZKit/BitIterator.h>

#include <bit>
#include <compare>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <vector>

namespace qz {

/// A set of weekdays as it is stored: a signed 16-bit integer in which the weekday with raw value r has the bit 1 << r,
/// Sunday 1 to Saturday 64. Iterates in order, Sunday first. Coded as its raw value.
class DaysOfWeek {
 public:
  static const DaysOfWeek sunday;
  static const DaysOfWeek monday;
  static const DaysOfWeek tuesday;
  static const DaysOfWeek wednesday;
  static const DaysOfWeek thursday;
  static const DaysOfWeek friday;
  static const DaysOfWeek saturday;

  /// None when a bit beyond the seven is set: 0 <= rawValue <= 127.
  [[nodiscard]] static constexpr std::optional<DaysOfWeek> fromRawValue(std::int64_t rawValue) {
    if (rawValue < 0 || rawValue > 127) return std::nullopt;
    DaysOfWeek set;
    set.bits_ = static_cast<std::uint8_t>(rawValue);
    return set;
  }

  /// The empty set.
  constexpr DaysOfWeek() = default;
  constexpr DaysOfWeek(std::initializer_list<DayOfWeek> list) {
    for (const DayOfWeek day : list) insert(day);
  }

  [[nodiscard]] constexpr std::int16_t rawValue() const { return bits_; }

  [[nodiscard]] constexpr bool contains(DayOfWeek day) const { return (bits_ >> day.rawValue() & 1) != 0; }
  [[nodiscard]] constexpr bool isEmpty() const { return bits_ == 0; }
  /// How many weekdays the set holds.
  [[nodiscard]] constexpr std::int64_t count() const { return std::popcount(bits_); }

  constexpr void insert(DayOfWeek day) { bits_ = static_cast<std::uint8_t>(bits_ | 1 << day.rawValue()); }
  constexpr void remove(DayOfWeek day) { bits_ = static_cast<std::uint8_t>(bits_ & ~(1 << day.rawValue())); }

  /// The weekdays of the set, Sunday first.
  [[nodiscard]] std::vector<DayOfWeek> days() const;

  /// The weekday of a bit, 0 to 6.
  [[nodiscard]] static constexpr DayOfWeek weekday(std::int64_t bit) { return static_cast<DayOfWeek::Case>(bit); }
  using Iterator = BitIterator<DayOfWeek, &DaysOfWeek::weekday>;

  [[nodiscard]] constexpr Iterator begin() const { return Iterator(bits_); }
  [[nodiscard]] constexpr Iterator end() const { return Iterator(); }

  friend constexpr DaysOfWeek operator|(DaysOfWeek a, DaysOfWeek b) {
    a.bits_ = static_cast<std::uint8_t>(a.bits_ | b.bits_);
    return a;
  }
  friend constexpr DaysOfWeek operator&(DaysOfWeek a, DaysOfWeek b) {
    a.bits_ = static_cast<std::uint8_t>(a.bits_ & b.bits_);
    return a;
  }
  friend bool operator==(const DaysOfWeek&, const DaysOfWeek&) = default;
  friend auto operator<=>(const DaysOfWeek&, const DaysOfWeek&) = default;

 private:
  std::uint8_t bits_ = 0;
};

inline constexpr DaysOfWeek DaysOfWeek::sunday{DayOfWeek::sunday};
inline constexpr DaysOfWeek DaysOfWeek::monday{DayOfWeek::monday};
inline constexpr DaysOfWeek DaysOfWeek::tuesday{DayOfWeek::tuesday};
inline constexpr DaysOfWeek DaysOfWeek::wednesday{DayOfWeek::wednesday};
inline constexpr DaysOfWeek DaysOfWeek::thursday{DayOfWeek::thursday};
inline constexpr DaysOfWeek DaysOfWeek::friday{DayOfWeek::friday};
inline constexpr DaysOfWeek DaysOfWeek::saturday{DayOfWeek::saturday};

void to_json(nlohmann::json& json, const DaysOfWeek& days);
/// Throws DecodingError.
void from_json(const nlohmann::json& json, DaysOfWeek& days);

}  // namespace qz

template <>
struct std::hash<qz::DaysOfWeek> {
  std::size_t operator()(qz::DaysOfWeek days) const noexcept { return static_cast<std::size_t>(days.rawValue()); }
};
