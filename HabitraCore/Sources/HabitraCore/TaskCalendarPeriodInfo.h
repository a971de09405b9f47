#pragma once

#include <HabitraCore/RawValue.h>
#include <HabitraCore/TaskFrequencyPeriod.h>

#include <array>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string_view>

namespace habitra {

/// A period of a task as a calendar shows it. Coded with the keys "period" and "status" (the name of the case).
struct TaskCalendarPeriodInfo {
  enum class TaskCalendarPeriodStatus : std::uint8_t {
    completed,
    missed,
    skipped,
    allowedMiss,
    current,             ///< holds today, not decided
    currentCompleted,    ///< holds today
    currentMissed,       ///< holds today
    currentAllowedMiss,  ///< holds today
    future,              ///< begins after today
    past,                ///< closed and undecided, or before the first period
  };

  TaskFrequencyPeriod period;
  TaskCalendarPeriodStatus status = TaskCalendarPeriodStatus::past;

  friend bool operator==(const TaskCalendarPeriodInfo&, const TaskCalendarPeriodInfo&) = default;
};

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::TaskCalendarPeriodInfo::TaskCalendarPeriodStatus> {
  using T = habitra::TaskCalendarPeriodInfo::TaskCalendarPeriodStatus;
  static constexpr std::array<RawValueRow<T, std::string_view>, 10> rows{{
      {T::completed, "completed", "completed"},
      {T::missed, "missed", "missed"},
      {T::skipped, "skipped", "skipped"},
      {T::allowedMiss, "allowedMiss", "allowedMiss"},
      {T::current, "current", "current"},
      {T::currentCompleted, "currentCompleted", "currentCompleted"},
      {T::currentMissed, "currentMissed", "currentMissed"},
      {T::currentAllowedMiss, "currentAllowedMiss", "currentAllowedMiss"},
      {T::future, "future", "future"},
      {T::past, "past", "past"},
  }};
};

namespace habitra {

void to_json(nlohmann::json& json, const TaskCalendarPeriodInfo& info);
/// Throws qz::DecodingError for an unknown status or a missing key.
void from_json(const nlohmann::json& json, TaskCalendarPeriodInfo& info);

}  // namespace habitra
