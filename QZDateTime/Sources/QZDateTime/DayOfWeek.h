#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <span>
#include <string>

namespace qz {

class DaysOfWeek;

/// A weekday: Sunday 0 to Saturday 6. No weekday is "the first" by itself; every week computation takes the first
/// weekday as an argument. Used like an enumeration (`DayOfWeek::monday`, `switch (day)`), coded as its raw value.
class DayOfWeek {
 public:
  enum class Case : std::uint8_t { sunday, monday, tuesday, wednesday, thursday, friday, saturday };
  using enum Case;

  /// None unless 0 <= rawValue <= 6.
  [[nodiscard]] static constexpr std::optional<DayOfWeek> fromRawValue(std::int64_t rawValue) {
    if (rawValue < 0 || rawValue > 6) return std::nullopt;
    return DayOfWeek(static_cast<Case>(rawValue));
  }

  /// Not explicit, so that `DayOfWeek::monday` is a DayOfWeek wherever one is wanted.
  constexpr DayOfWeek(Case value) : value_(value) {}  // NOLINT(google-explicit-constructor)
  /// Lets `switch` and the comparison operators see the case.
  constexpr operator Case() const { return value_; }  // NOLINT(google-explicit-constructor)

  [[nodiscard]] constexpr std::int64_t rawValue() const { return static_cast<std::int64_t>(value_); }

  [[nodiscard]] constexpr DayOfWeek next() const { return ahead(1); }
  [[nodiscard]] constexpr DayOfWeek previous() const { return ahead(6); }

  /// The weekday that many days later; any whole number, earlier when negative.
  [[nodiscard]] constexpr DayOfWeek add(std::int64_t numDays) const {
    const std::int64_t remainder = numDays % 7;
    return ahead(remainder < 0 ? remainder + 7 : remainder);
  }

  /// The set of all seven.
  [[nodiscard]] static DaysOfWeek every();
  /// All seven in order, `first` at the head: the row of a week that begins on it. Kept in the shared cache.
  [[nodiscard]] static const std::array<DayOfWeek, 7>& every(DayOfWeek first);

  /// The set of the weekdays in a list; order and repetition do not matter.
  [[nodiscard]] static DaysOfWeek days(std::span<const DayOfWeek> list);

  /// The first weekday of the week in the territory of the user's locale (LC_ALL, else LC_TIME, else LANG). Monday when
  /// the locale names no language, or when names cannot be had at all. Opens the module of names.
  [[nodiscard]] static DayOfWeek defaultFirst();

  /// The name in the user's language, standing alone: "Monday", "Mon", "M". English when names cannot be had.
  [[nodiscard]] std::string title() const;
  [[nodiscard]] std::string shortTitle() const;
  [[nodiscard]] std::string veryShortTitle() const;

 private:
  [[nodiscard]] constexpr DayOfWeek ahead(std::int64_t days) const {
    return static_cast<Case>((rawValue() + days) % 7);
  }

  Case value_;
};

/// The weekdays once more as calendars number them, Sunday 1 to Saturday 7. Only for talking to a calendar library.
class CalendarDayOfWeek {
 public:
  enum class Case : std::uint8_t { sunday = 1, monday, tuesday, wednesday, thursday, friday, saturday };
  using enum Case;

  /// None unless 1 <= rawValue <= 7.
  [[nodiscard]] static constexpr std::optional<CalendarDayOfWeek> fromRawValue(std::int64_t rawValue) {
    if (rawValue < 1 || rawValue > 7) return std::nullopt;
    return CalendarDayOfWeek(static_cast<Case>(rawValue));
  }

  constexpr CalendarDayOfWeek(Case value) : value_(value) {}  // NOLINT(google-explicit-constructor)
  explicit constexpr CalendarDayOfWeek(DayOfWeek day) : value_(static_cast<Case>(day.rawValue() + 1)) {}
  constexpr operator Case() const { return value_; }  // NOLINT(google-explicit-constructor)

  [[nodiscard]] constexpr std::int64_t rawValue() const { return static_cast<std::int64_t>(value_); }
  [[nodiscard]] constexpr DayOfWeek day() const { return static_cast<DayOfWeek::Case>(rawValue() - 1); }

 private:
  Case value_;
};

void to_json(nlohmann::json& json, const DayOfWeek& day);
/// Throws DecodingError.
void from_json(const nlohmann::json& json, DayOfWeek& day);

}  // namespace qz

template <>
struct std::hash<qz::DayOfWeek> {
  std::size_t operator()(qz::DayOfWeek day) const noexcept { return static_cast<std::size_t>(day.rawValue()); }
};
