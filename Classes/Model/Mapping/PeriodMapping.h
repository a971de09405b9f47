#pragma once

#include <HabitraCore/TaskFrequencyPeriod.h>
#include <HabitraModel/Store/Entities/TaskLogEntryEntity.h>
#include <HabitraModel/Store/Entities/TaskTimerEntity.h>
#include <QZDateTime/DayOfWeek.h>

#include <optional>

/// The period that an entry of the log, or a timing, counts for. On which weekday weeks begin is not stored with it: it
/// is the task's.
namespace habitra {

/// None when no period is stored: without a day at either end, with an end before the beginning, or of an unknown kind.
[[nodiscard]] std::optional<TaskFrequencyPeriod> periodOf(const TaskLogEntryEntity& row, qz::DayOfWeek firstDayOfWeek);
[[nodiscard]] std::optional<TaskFrequencyPeriod> periodOf(const LogRow& row, qz::DayOfWeek firstDayOfWeek);
[[nodiscard]] std::optional<TaskFrequencyPeriod> periodOf(const TaskTimerEntity& row, qz::DayOfWeek firstDayOfWeek);

/// Stops the program when a day does not fit its 32 bits.
void setPeriod(TaskLogEntryEntity& row, const TaskFrequencyPeriod& period);
void setPeriod(TaskTimerEntity& row, const TaskFrequencyPeriod& period);

}  // namespace habitra
