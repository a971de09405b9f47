#include <HabitraModel/Mapping/NotificationSettingsMapping.h>
#include <HabitraModel/Mapping/StoredChoice.h>
#include <HabitraModel/Mapping/StoredTimeOfDay.h>

namespace habitra {

TaskNotificationSettings notificationSettingsOf(const TaskNotificationSettingsEntity& row) {
  TaskNotificationSettings settings;
  settings.badgeMode = choice<BadgeMode>(row.badgeMode).value_or(settings.badgeMode);
  settings.badgeFrom = timeFromStored(row.badgeFrom);
  settings.badgeTo = timeFromStored(row.badgeTo);
  settings.badgeTimeZone = choice<NotificationTimeZone>(row.badgeTimeZone);
  settings.reminderType = choice<ReminderType>(row.reminderType).value_or(settings.reminderType);
  settings.maxReminders = row.maxReminders.value_or(settings.maxReminders);
  settings.completedNotification = row.completedNotification;
  settings.partiallyCompletedNotification = row.partiallyCompletedNotification;
  settings.completedOrMissedSound = choice<SoundEffect>(row.soundCompletion);
  settings.partiallyCompletedOrMissedSound = choice<SoundEffect>(row.soundPartialCompletion);
  settings.reminderSound = choice<SoundEffect>(row.soundReminder);
  settings.timerNotificationSound = choice<SoundEffect>(row.soundTimerNotification);
  settings.automaticRemindersAreTimeSensitive = row.automaticRemindersAreTimeSensitive;
  settings.completedNotificationIsTimeSensitive = row.completedNotificationIsTimeSensitive;
  settings.partiallyCompletedNotificationIsTimeSensitive = row.partiallyCompletedNotificationIsTimeSensitive;
  settings.timerNotificationsAreTimeSensitive = row.timerNotificationsAreTimeSensitive;
  settings.liveActivityDisplayMode = choice<LiveActivityDisplayMode>(row.liveActivityDisplayMode);
  return settings;
}

void setNotificationSettings(TaskNotificationSettingsEntity& row, const TaskNotificationSettings& settings) {
  const TaskNotificationSettings unmade;
  setRequiredChoice(row.badgeMode, settings.badgeMode, unmade.badgeMode);
  setTime(row.badgeFrom, settings.badgeFrom);
  setTime(row.badgeTo, settings.badgeTo);
  setChoice(row.badgeTimeZone, settings.badgeTimeZone);
  setRequiredChoice(row.reminderType, settings.reminderType, unmade.reminderType);
  row.maxReminders = settings.maxReminders;
  row.completedNotification = settings.completedNotification;
  row.partiallyCompletedNotification = settings.partiallyCompletedNotification;
  setChoice(row.soundCompletion, settings.completedOrMissedSound);
  setChoice(row.soundPartialCompletion, settings.partiallyCompletedOrMissedSound);
  setChoice(row.soundReminder, settings.reminderSound);
  setChoice(row.soundTimerNotification, settings.timerNotificationSound);
  row.automaticRemindersAreTimeSensitive = settings.automaticRemindersAreTimeSensitive;
  row.completedNotificationIsTimeSensitive = settings.completedNotificationIsTimeSensitive;
  row.partiallyCompletedNotificationIsTimeSensitive = settings.partiallyCompletedNotificationIsTimeSensitive;
  row.timerNotificationsAreTimeSensitive = settings.timerNotificationsAreTimeSensitive;
  setChoice(row.liveActivityDisplayMode, settings.liveActivityDisplayMode);
}

}  // namespace habitra
