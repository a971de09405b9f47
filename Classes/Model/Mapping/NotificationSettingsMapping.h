#pragma once

#include <HabitraCore/Notifications/TaskNotificationSettings.h>
#include <HabitraModel/Store/Entities/TaskNotificationSettingsEntity.h>

/// The notification settings of a task in their row. The reminders are rows of their own (ReminderMapping.h).
namespace habitra {

/// Without reminders. What is none or unknown in the row is as in settings that nobody has made.
[[nodiscard]] TaskNotificationSettings notificationSettingsOf(const TaskNotificationSettingsEntity& row);

/// The attributes that the settings do not have (difficultyNotificationStatus, lastUpdated, snoozeDuration) stay.
void setNotificationSettings(TaskNotificationSettingsEntity& row, const TaskNotificationSettings& settings);

}  // namespace habitra
