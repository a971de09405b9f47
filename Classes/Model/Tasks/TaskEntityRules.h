#pragma once

#include <HabitraCore/TaskFrequencyPeriod.h>
#include <HabitraCore/TaskRules.h>
#include <HabitraModel/Store/Entities/TaskEntity.h>
#include <HabitraModel/Store/StoreContext.h>
#include <QZDateTime/DayOfWeek.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Clock.h>

#include <optional>
#include <string>
#include <string_view>

/// A task as the rules see it; what the columns mean one by one stands in Mapping/.
namespace habitra {

/// The values of TaskEntity::status.
namespace task_status {
inline constexpr std::string_view active = "active";  ///< the only tasks that are processed and listed
inline constexpr std::string_view archived = "archived";
inline constexpr std::string_view deleted = "deleted";
}  // namespace task_status

[[nodiscard]] bool isActive(const TaskEntity& task);

/// Everything of a task that its history is judged by; none when its frequency cannot be read. A first day of the week
/// that is no weekday counts as Sunday.
[[nodiscard]] std::optional<TaskRules> rulesOf(StoreContext& context, const TaskEntity& task);
/// The same but for its pauses, which its row does not hold: enough to tell periods.
[[nodiscard]] std::optional<TaskRules> rulesWithoutPauses(const TaskEntity& task);

/// The period of the task that holds a day, by rules that can be read; without any, the day itself.
[[nodiscard]] DatedPeriod periodHolding(const std::optional<TaskRules>& rules, qz::YYYYMMDD day);
[[nodiscard]] DatedPeriod periodHolding(const TaskEntity& task, qz::YYYYMMDD day);

/// The row of a newly made task: every day, one completion, to do, the app-wide start of day, no zone of its own,
/// active, made at `now` in the zone called `timeZone`. Identifier and place are left to whoever inserts it.
[[nodiscard]] TaskEntity newlyMadeTask(std::string title, qz::DayOfWeek firstDayOfWeek, qz::Moment now,
                                       std::string timeZone);

}  // namespace habitra
