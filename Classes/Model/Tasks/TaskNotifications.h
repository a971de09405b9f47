#pragma once

#include <HabitraCore/Notifications/TaskNotificationSettings.h>
#include <HabitraModel/Store/StoreContext.h>

#include <optional>

/// The notification settings of a task in the store: one row for them and one for each reminder.
namespace habitra {

/// The settings with the reminders in their order; none for a task that nobody has made any for. Reminders of a later
/// version, of a type that is not known, are left out.
[[nodiscard]] std::optional<TaskNotificationSettings> notificationSettingsOf(StoreContext& context,
                                                                             const TaskEntity& task);

/// Keeps the settings with their reminders in place of earlier ones. Rows stay where they can: a reminder keeps its row
/// while it stands behind the same ones as before. What was left out in reading stays. A second reminder with
/// the same identifier gets a new one. Where anything changes, the settings were last updated now. Begins a unit.
void setNotificationSettings(StoreContext& context, const TaskEntity& task, const TaskNotificationSettings& settings);

}  // namespace habitra
