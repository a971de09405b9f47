#pragma once

#include <HabitraCore/RawValue.h>
#include <QZKit/Clock.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string_view>

namespace habitra {

/// What the duration of a timer reminder measures.
enum class TimerReminderType : std::uint8_t { completed, remaining };

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::TimerReminderType> {
  using T = habitra::TimerReminderType;
  static constexpr std::array<RawValueRow<T, std::string_view>, 2> rows{{
      {T::completed, "completed", "completed"},
      {T::remaining, "remaining", "remaining"},
  }};
};

namespace habitra {

/// When a running timer reminds: after so much of it is completed, or with so much of it remaining.
struct TimerReminderTime {
  /// The years of ISO 8601, 0 to 9999 in UTC; the end is no longer one of them.
  static constexpr qz::Moment firstDate = std::chrono::sys_days(std::chrono::year(0) / 1 / 1);
  static constexpr qz::Moment endOfDates = std::chrono::sys_days(std::chrono::year(10'000) / 1 / 1);

  TimerReminderType type = TimerReminderType::completed;
  double duration = 0;  ///< seconds
  qz::Moment date{};    ///< the moment at which that will be so, from firstDate to before endOfDates

  friend bool operator==(const TimerReminderTime&, const TimerReminderTime&) = default;
};

/// Coded under the names of the fields, the moment as ISO 8601 in UTC.
void to_json(nlohmann::json& json, const TimerReminderTime& time);
/// Throws qz::DecodingError naming the key that is missing or of the wrong kind, an unknown type, or a date out of
/// its range.
void from_json(const nlohmann::json& json, TimerReminderTime& time);

}  // namespace habitra
