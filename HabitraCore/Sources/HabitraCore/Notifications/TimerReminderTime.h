#pragma once

#include <HabitraCore/RawValue.h>
#include <QZKit/Clock.h>

#include <array>
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
  TimerReminderType type = TimerReminderType::completed;
  double duration = 0;  ///< seconds
  qz::Moment date{};    ///< the moment at which that will be so

  friend bool operator==(const TimerReminderTime&, const TimerReminderTime&) = default;
};

/// Coded under the names of the fields, the moment as ISO 8601 in UTC.
void to_json(nlohmann::json& json, const TimerReminderTime& time);
/// Throws qz::DecodingError naming the key that is missing or of the wrong kind, or an unknown type.
void from_json(const nlohmann::json& json, TimerReminderTime& time);

}  // namespace habitra
