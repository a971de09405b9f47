#include <HabitraModel/Mapping/NotificationSettingsMapping.h>
#include <HabitraModel/Mapping/ReminderMapping.h>
#include <HabitraModel/Tasks/TaskNotifications.h>

#include <algorithm>
#include <vector>

namespace habitra {

namespace {

using ReminderRow = TaskNotificationRemindersEntity;

/// The row of the settings, or null. Mirroring can bring a second one; the oldest counts.
TaskNotificationSettingsEntity* findSettings(StoreContext& context, const TaskEntity& task) {
  const auto found = context.fetchRelated<TaskNotificationSettingsEntity>("task", task.objectID);
  return found.empty() ? nullptr : found.front();
}

/// Puts each reminder into a row. The order of reminders is that of their rows' creation: a row serves again when it
/// bears the reminder's identifier and is newer than the row of the one before, else there is a new one.
void putReminders(StoreContext& context, const TaskEntity& task, const std::vector<TaskReminder>& reminders) {
  std::vector<ReminderRow*> old = context.fetchRelated<ReminderRow>("task", task.objectID);
  std::erase_if(old, [](const ReminderRow* row) { return !reminderOf(*row); });
  std::vector<ReminderRow*> unused = old;
  ObjectID last = ObjectID::none;
  for (const TaskReminder& reminder : reminders) {
    const auto bearsIt = [&](const ReminderRow* row) { return reminderOf(*row)->uniqueId == reminder.uniqueId; };
    const auto serves = [&](const ReminderRow* row) { return row->objectID > last && bearsIt(row); };
    const auto found = std::ranges::find_if(unused, serves);
    if (found != unused.end()) {
      setReminder(**found, reminder);
      last = (*found)->objectID;
      unused.erase(found);
      continue;
    }
    // What a reminder does not have, its earlier row still knows.
    const auto earlier = std::ranges::find_if(old, bearsIt);
    ReminderRow row = earlier == old.end() ? ReminderRow{} : **earlier;
    row.task = task.objectID;
    setReminder(row, reminder);
    last = context.insert(row).objectID;
  }
  for (ReminderRow* row : unused) context.remove(*row);
}

}  // namespace

std::optional<TaskNotificationSettings> notificationSettingsOf(StoreContext& context, const TaskEntity& task) {
  const auto* row = findSettings(context, task);
  const auto reminders = context.fetchRelated<ReminderRow>("task", task.objectID);
  if (row == nullptr && reminders.empty()) return std::nullopt;
  TaskNotificationSettings settings = row == nullptr ? TaskNotificationSettings{} : notificationSettingsOf(*row);
  for (const ReminderRow* reminderRow : reminders)
    if (const auto reminder = reminderOf(*reminderRow)) settings.reminders.push_back(*reminder);
  return settings;
}

void setNotificationSettings(StoreContext& context, const TaskEntity& task, const TaskNotificationSettings& settings) {
  context.beginUnit();
  TaskNotificationSettingsEntity* row = findSettings(context, task);
  if (row == nullptr) row = &context.insert(TaskNotificationSettingsEntity{.task = task.objectID});
  setNotificationSettings(*row, settings);
  putReminders(context, task, settings.reminders);
}

}  // namespace habitra
