#pragma once

#include <HabitraCore/Notifications/TaskReminder.h>
#include <HabitraModel/Store/Entities/TaskNotificationRemindersEntity.h>

#include <optional>

/// A reminder of a task in its row.
namespace habitra {

/// None when the row has no identifier or is of a type that is not known: a later version's reminder, to be left alone.
/// What else is unknown is as in a reminder that says nothing of it; without weekdays it is every day.
[[nodiscard]] std::optional<TaskReminder> reminderOf(const TaskNotificationRemindersEntity& row);

/// `icon`, which a reminder does not have, stays. REQUIRES: a finite duration.
void setReminder(TaskNotificationRemindersEntity& row, const TaskReminder& reminder);

}  // namespace habitra
