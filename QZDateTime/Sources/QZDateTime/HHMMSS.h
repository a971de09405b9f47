#pragma once

#include <QZDateTime/TimeZone.h>
#include <QZKit/Clock.h>
#include <QZKit/Trap.h>

#include <chrono>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace qz {

/// A time of day on a wall clock, 00:00:00 to 23:59:59, of no day and no zone in particular. Stored as the seconds
/// since midnight; coded with the keys "h", "m", "s". Ordered from midnight on.
///
/// A plain immutable value, safe on any thread. Default-constructed it is midnight.
class HHMMSS {
 public:
  static constexpr std::int64_t secondsPerDay = 86'400;

  static const HHMMSS midnight;  ///< 00:00:00
  static const HHMMSS midday;    ///< 12:00:00

  /// From seconds since midnight; none unless 0 <= rawValue < 86,400.
  [[nodiscard]] static constexpr std::optional<HHMMSS> fromRawValue(std::int64_t rawValue) {
    if (rawValue < 0 || rawValue >= secondsPerDay) return std::nullopt;
    return HHMMSS(rawValue / 3600 % 24, rawValue / 60 % 60, rawValue % 60);
  }

  constexpr HHMMSS() = default;

  /// REQUIRES: 0 <= h <= 23, 0 <= m <= 59, 0 <= s <= 59; traps otherwise.
  constexpr HHMMSS(std::int64_t h, std::int64_t m, std::int64_t s = 0) : h_(h), m_(m), s_(s) {
    if (!isTimeOfDay(h, m, s)) trap("not a time of day", h);
  }

  /// Whether h:m:s is a time of day; for readers, who are told of times by files.
  [[nodiscard]] static constexpr bool isTimeOfDay(std::int64_t h, std::int64_t m, std::int64_t s) {
    return h >= 0 && h <= 23 && m >= 0 && m <= 59 && s >= 0 && s <= 59;
  }

  /// What the wall clock of the zone shows at `now`, to the second.
  [[nodiscard]] static HHMMSS now(const TimeZone& timeZone, Moment now);

  [[nodiscard]] constexpr std::int64_t h() const { return h_; }
  [[nodiscard]] constexpr std::int64_t m() const { return m_; }
  [[nodiscard]] constexpr std::int64_t s() const { return s_; }

  /// Seconds since midnight.
  [[nodiscard]] constexpr std::int64_t intValue() const { return h_ * 3600 + m_ * 60 + s_; }
  [[nodiscard]] constexpr std::int64_t rawValue() const { return intValue(); }

  [[nodiscard]] constexpr bool isMidnight() const { return intValue() == 0; }

  /// That much later, or earlier where negative. With `canWrap` the clock goes round (23:30 and an hour is 00:30);
  /// without, the result stays in the day: at most 23:59:59, at least 00:00:00. Traps on overflow.
  [[nodiscard]] HHMMSS add(std::int64_t h, std::int64_t m, std::int64_t s, bool canWrap) const;
  /// The same for a span in seconds, whose fraction is dropped. Traps when it is not finite.
  [[nodiscard]] HHMMSS add(double timeInterval, bool canWrap) const;

  /// Whether this time lies at most that many hours (less, when not `inclusive`) before or after another, the short way
  /// round the clock: 23:30 is within one hour of 00:15. Traps when `hours` in seconds overflows.
  [[nodiscard]] bool isWithin(std::int64_t hours, const HHMMSS& of, bool inclusive) const;

  /// The nearest whole multiple of `duration` since midnight; half-way goes up. What comes to 24:00 is midnight.
  /// REQUIRES: duration >= 1 s.
  [[nodiscard]] HHMMSS roundToNearestInterval(std::chrono::seconds duration) const;

  /// The first moment after `from` (never `from` itself) at which the zone's wall clock reaches this time. Once on each
  /// date that the zone has: on a date where clocks jump over it, the first moment after the jump; on one that has it
  /// twice, the first. Traps where there is none left before the end of time.
  [[nodiscard]] Moment nextOccurrence(Moment from, const TimeZone& timeZone) const;

  /// All such moments with from <= moment < to, in order: neighbouring spans share none. The three days at
  /// either end of time, of which a Moment cannot tell all of every zone, have none.
  [[nodiscard]] std::vector<Moment> occurrences(Moment from, Moment to, const TimeZone& timeZone) const;

  /// The middle one of the times put in order, between two the second half-way, rounded down; none of an empty list.
  [[nodiscard]] static std::optional<HHMMSS> median(std::span<const HHMMSS> times);

  /// "08:15:00".
  [[nodiscard]] std::string debugDescription() const;

  friend bool operator==(const HHMMSS&, const HHMMSS&) = default;
  friend auto operator<=>(const HHMMSS&, const HHMMSS&) = default;

 private:
  std::int64_t h_ = 0;
  std::int64_t m_ = 0;
  std::int64_t s_ = 0;
};

inline constexpr HHMMSS HHMMSS::midnight{0, 0, 0};
inline constexpr HHMMSS HHMMSS::midday{12, 0, 0};

void to_json(nlohmann::json& json, const HHMMSS& time);
/// Throws DecodingError "Unable to create HHMMSS".
void from_json(const nlohmann::json& json, HHMMSS& time);

}  // namespace qz

template <>
struct std::hash<qz::HHMMSS> {
  std::size_t operator()(const qz::HHMMSS& time) const noexcept { return static_cast<std::size_t>(time.intValue()); }
};
