#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Store/Entities/TaskEntity.h>
#include <HabitraModel/Tasks/RepeatedWarnings.h>
#include <HabitraModel/Tasks/TaskCalendar.h>

#include <fmt/format.h>

#include <utility>

namespace habitra {

std::optional<qz::YYYYMMDD> TaskCalendar::creationDay(const TaskEntity& task) const {
  if (!task.created) return std::nullopt;
  const auto zone = task.createdTimeZone ? qz::TimeZone::fromIdentifier(*task.createdTimeZone) : std::nullopt;
  const qz::YYYYMMDD day(startOfDay, *task.created, zone.value_or(timeZone));
  return earliestKeptDay <= day && day <= latestKeptDay ? std::optional(day) : std::nullopt;
}

TaskCalendars::TaskCalendars(qz::TimeZone deviceTimeZone, qz::HHMMSS startOfDay)
    : device_{startOfDay, std::move(deviceTimeZone)} {}

TaskCalendar TaskCalendars::of(const TaskEntity& task) const {
  constexpr std::int32_t secondsPerDay = 86'400;
  TaskCalendar calendar = device_;
  if (task.startOfDayValue > 0)
    calendar.startOfDay = qz::HHMMSS::fromRawValue(task.startOfDayValue % secondsPerDay).value();
  if (task.currentTimeZoneOverride) {
    if (auto zone = qz::TimeZone::fromIdentifier(*task.currentTimeZoneOverride))
      calendar.timeZone = *std::move(zone);
    else
      warnOnce(task, fmt::format("Unknown time zone {}, using {}", *task.currentTimeZoneOverride,
                                 device_.timeZone.identifier()));
  }
  return calendar;
}

}  // namespace habitra
