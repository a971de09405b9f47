#pragma once

#include <HabitraCore/AutomaticTaskType/AutomaticTaskType.h>
#include <HabitraCore/TaskFrequency.h>
#include <HabitraCore/TaskRules.h>
#include <HabitraModel/Store/Entities/TaskEntity.h>
#include <QZDateTime/DayOfWeek.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Clock.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// What the columns of a task mean to the rules, and back.
namespace habitra {

/// The values of TaskEntity::status.
namespace task_status {
inline constexpr std::string_view active = "active";  ///< the only tasks that are processed and listed
inline constexpr std::string_view archived = "archived";
inline constexpr std::string_view deleted = "deleted";
}  // namespace task_status

[[nodiscard]] bool isActive(const TaskEntity& task);

/// The frequency that the row keeps; none when its columns cannot be one.
[[nodiscard]] std::optional<TaskFrequency> frequencyOf(const TaskEntity& task);

/// Writes a frequency into the columns. Stops the program when a count does not fit its 16 bits.
void setFrequency(TaskEntity& task, const TaskFrequency& frequency);

/// What completes the task in place of a person; none for a task completed by hand, and none when the type in the row
/// is not known.
[[nodiscard]] std::optional<AutomaticTaskType> automaticTypeOf(const TaskEntity& task);

/// Writes an automatic type into the columns, or that a person completes the task. Entries keep the amounts that they
/// reported without their unit: whoever changes the unit converts those of the open period, too.
void setAutomaticType(TaskEntity& task, const std::optional<AutomaticTaskType>& type);

/// Everything of a task that its history is judged by; none when its frequency cannot be read. A first day of the week
/// that is no weekday counts as Sunday.
[[nodiscard]] std::optional<TaskRules> rulesOf(const TaskEntity& task);

/// The row of a newly made task: every day, one completion, to do, the app-wide start of day, no zone of its own,
/// active, made at `now` in the zone called `timeZone`. Identifier and place are left to whoever inserts it.
[[nodiscard]] TaskEntity newlyMadeTask(std::string title, qz::DayOfWeek firstDayOfWeek, qz::Moment now,
                                       std::string timeZone);

/// A day as its attribute keeps it, 0 for none. Stops the program when it does not fit 32 bits.
[[nodiscard]] std::int32_t storedDay(const std::optional<qz::YYYYMMDD>& day);

/// The day that an attribute keeps; 0 and less is no day.
[[nodiscard]] std::optional<qz::YYYYMMDD> dayFromStored(std::int32_t value);

}  // namespace habitra
