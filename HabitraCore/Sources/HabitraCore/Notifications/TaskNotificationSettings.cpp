#include <HabitraCore/Notifications/RecordFields.h>
#include <HabitraCore/Notifications/TaskNotificationSettings.h>

#include <concepts>
#include <type_traits>

namespace habitra {

template <typename Settings, typename Visit>
requires std::same_as<std::remove_const_t<Settings>, TaskNotificationSettings>
static void visitFields(Settings& settings, Visit&& visit) {
  visit("badgeMode", settings.badgeMode);
  visit("badgeFrom", settings.badgeFrom);
  visit("badgeTo", settings.badgeTo);
  visit("badgeTimeZone", settings.badgeTimeZone);
  visit("reminderType", settings.reminderType);
  visit("maxReminders", settings.maxReminders);
  visit("completedNotification", settings.completedNotification);
  visit("partiallyCompletedNotification", settings.partiallyCompletedNotification);
  visit("completedOrMissedSound", settings.completedOrMissedSound);
  visit("partiallyCompletedOrMissedSound", settings.partiallyCompletedOrMissedSound);
  visit("reminderSound", settings.reminderSound);
  visit("timerNotificationSound", settings.timerNotificationSound);
  visit("automaticRemindersAreTimeSensitive", settings.automaticRemindersAreTimeSensitive);
  visit("completedNotificationIsTimeSensitive", settings.completedNotificationIsTimeSensitive);
  visit("partiallyCompletedNotificationIsTimeSensitive", settings.partiallyCompletedNotificationIsTimeSensitive);
  visit("timerNotificationsAreTimeSensitive", settings.timerNotificationsAreTimeSensitive);
  visit("liveActivityDisplayMode", settings.liveActivityDisplayMode);
  visit("reminders", settings.reminders);
}

namespace {

const std::optional<SoundEffect>& chosenSound(const TaskNotificationSettings& settings, SoundType slot) {
  switch (slot) {
    case SoundType::taskComplete:
    case SoundType::taskMissed: break;
    case SoundType::taskPartiallyComplete:
    case SoundType::taskPartiallyMissed: return settings.partiallyCompletedOrMissedSound;
    case SoundType::reminder: return settings.reminderSound;
    case SoundType::timerNotification: return settings.timerNotificationSound;
  }
  return settings.completedOrMissedSound;
}

}  // namespace

SoundEffect TaskNotificationSettings::sound(SoundType slot) const {
  return chosenSound(*this, slot).value_or(defaultSound(slot));
}

std::string TaskNotificationSettings::debugDescription() const { return describeFields(*this); }

void to_json(nlohmann::json& json, const TaskNotificationSettings& settings) { json = encodeFields(settings); }

void from_json(const nlohmann::json& json, TaskNotificationSettings& settings) { decodeFields(json, settings); }

}  // namespace habitra
