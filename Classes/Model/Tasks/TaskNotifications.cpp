#include <HabitraModel/Mapping/NotificationSettingsMapping.h>
#include <HabitraModel/Mapping/ReminderMapping.h>
#include <HabitraModel/Tasks/RowOfTask.h>
#include <HabitraModel/Tasks/TaskNotifications.h>
#include <QZKit/UniqueID.h>

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

namespace habitra {

namespace {

using ReminderRow = TaskNotificationRemindersEntity;

/// The reminders, of which no two have the same identifier: a second one gets a new one.
std::vector<TaskReminder> withOwnIdentifiers(std::vector<TaskReminder> reminders, qz::Moment now) {
  std::set<qz::UniqueID> identifiers;
  for (TaskReminder& reminder : reminders)
    if (!identifiers.insert(reminder.uniqueId).second) reminder.uniqueId = qz::UniqueID::generate(now);
  return reminders;
}

/// Puts each reminder into a row. The order of reminders is that of their rows' creation: a row serves again when it
/// bears the reminder's identifier and is newer than the row of the one before, else there is a new one. Gives whether
/// anything changed.
bool putReminders(StoreContext& context, const TaskEntity& task, const std::vector<TaskReminder>& reminders) {
  std::vector<ReminderRow*> old = context.fetchRelated<ReminderRow>("task", task.objectID);
  std::erase_if(old, [](const ReminderRow* row) { return !reminderOf(*row); });
  std::vector<ReminderRow*> unused = old;
  ObjectID last = ObjectID::none;
  bool hasChanged = false;
  for (const TaskReminder& reminder : reminders) {
    const auto bearsIt = [&](const ReminderRow* row) { return reminderOf(*row)->uniqueId == reminder.uniqueId; };
    const auto serves = [&](const ReminderRow* row) { return row->objectID > last && bearsIt(row); };
    const auto found = std::ranges::find_if(unused, serves);
    if (found != unused.end()) {
      const ReminderRow before = **found;
      setReminder(**found, reminder);
      hasChanged |= **found != before;
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
    hasChanged = true;
  }
  for (ReminderRow* row : unused) context.remove(*row);
  return hasChanged || !unused.empty();
}

}  // namespace

std::optional<TaskNotificationSettings> notificationSettingsOf(StoreContext& context, const TaskEntity& task) {
  const auto* row = rowOfTask<TaskNotificationSettingsEntity>(context, task.objectID);
  const auto reminders = context.fetchRelated<ReminderRow>("task", task.objectID);
  if (row == nullptr && reminders.empty()) return std::nullopt;
  TaskNotificationSettings settings = row == nullptr ? TaskNotificationSettings{} : notificationSettingsOf(*row);
  for (const ReminderRow* reminderRow : reminders)
    if (const auto reminder = reminderOf(*reminderRow)) settings.reminders.push_back(*reminder);
  return settings;
}

void setNotificationSettings(StoreContext& context, const TaskEntity& task, const TaskNotificationSettings& settings) {
  context.beginUnit();
  const qz::Moment now = context.store().clock().now();
  auto* row = rowOfTask<TaskNotificationSettingsEntity>(context, task.objectID);
  const bool isNew = row == nullptr;
  if (isNew) row = &context.insert(TaskNotificationSettingsEntity{.task = task.objectID});
  const TaskNotificationSettingsEntity before = *row;
  setNotificationSettings(*row, settings);
  const bool haveRemindersChanged = putReminders(context, task, withOwnIdentifiers(settings.reminders, now));
  if (isNew || haveRemindersChanged || *row != before) row->lastUpdated = now;
}

}  // namespace habitra
