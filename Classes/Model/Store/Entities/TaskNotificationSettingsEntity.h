#pragma once

#include <HabitraModel/Store/EntityDescription.h>
#include <HabitraModel/Store/StoredValues.h>

#include <cstdint>
#include <optional>
#include <string>

namespace habitra {

/// How the system may draw attention to a task. An absent choice is not "no": it means that the default applies.
/// Times of day are seconds since midnight. What the rules make of it stands in Mapping/NotificationSettingsMapping.h.
struct TaskNotificationSettingsEntity {
  static const EntityDescription& description();

  ObjectID objectID = ObjectID::none;

  std::optional<bool> automaticRemindersAreTimeSensitive;
  std::optional<std::int64_t> badgeFrom;
  std::optional<std::string> badgeMode;
  std::optional<std::string> badgeTimeZone;
  std::optional<std::int64_t> badgeTo;
  bool completedNotification = false;
  std::optional<bool> completedNotificationIsTimeSensitive;
  std::optional<std::string> difficultyNotificationStatus;
  std::optional<qz::Moment> lastUpdated;
  std::optional<std::string> liveActivityDisplayMode;
  std::optional<std::int64_t> maxReminders;
  std::optional<bool> partiallyCompletedNotification;
  std::optional<bool> partiallyCompletedNotificationIsTimeSensitive;
  std::optional<std::string> reminderType;
  std::optional<std::int64_t> snoozeDuration;         ///< seconds
  std::optional<std::string> soundCompletion;         ///< of a miss, too
  std::optional<std::string> soundPartialCompletion;  ///< of a partial miss, too
  std::optional<std::string> soundReminder;
  std::optional<std::string> soundTimerNotification;
  std::optional<bool> timerNotificationsAreTimeSensitive;
  ObjectID task = ObjectID::none;

  friend bool operator==(const TaskNotificationSettingsEntity&, const TaskNotificationSettingsEntity&) = default;
};

}  // namespace habitra
