#pragma once

#include <HabitraCore/TaskFrequencyPeriod.h>
#include <HabitraCore/TaskFrequencyPeriodType.h>
#include <QZDateTime/YYYYMMDD.h>

#include <nlohmann/json_fwd.hpp>

namespace habitra {

/// The period that an entry counts for, as it is kept with the entry, and the day for which the entry was made. Coded
/// with the keys "type", "from", "to" and "date".
struct TaskLogEntryPeriod {
  TaskFrequencyPeriodType type{};
  qz::YYYYMMDD from;
  qz::YYYYMMDD to;
  qz::YYYYMMDD date;

  TaskLogEntryPeriod() = default;
  explicit TaskLogEntryPeriod(const DatedPeriod& period)
      : type(period.period.periodType),
        from(period.period.startDate),
        to(period.period.finishDate),
        date(period.date) {}

  friend bool operator==(const TaskLogEntryPeriod&, const TaskLogEntryPeriod&) = default;
};

void to_json(nlohmann::json& json, const TaskLogEntryPeriod& period);
/// Throws qz::DecodingError for a missing key, an unknown type, a day that the calendar does not have, and an end
/// before the beginning. A day outside its period is read as it stands.
void from_json(const nlohmann::json& json, TaskLogEntryPeriod& period);

}  // namespace habitra
