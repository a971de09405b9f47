#pragma once

#include <HabitraCore/Notifications/TaskNotificationSettings.h>
#include <rapidcheck.h>

#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "FrequencyGenerators.h"

/// Arbitrary notification settings for property tests.
namespace habitra {

template <typename Make>
auto anyOrNone(Make&& make) {
  return qz::between(0, 1) == 0 ? std::nullopt : std::optional(make());
}

inline bool anyBool() { return qz::between(0, 1) == 1; }

/// With a fraction that does not come out even in binary, so that digits lost on the way would show.
inline double anyNumber() { return static_cast<double>(qz::between(-1'000'000'000, 1'000'000'000)) / 997.0; }

inline std::set<std::int64_t> anyDayIndexes() {
  std::set<std::int64_t> indexes;
  for (std::int64_t i = qz::between(0, 5); i > 0; --i) indexes.insert(*rc::gen::arbitrary<std::int64_t>());
  return indexes;
}

inline qz::UniqueID anyID() { return qz::UniqueID(*rc::gen::arbitrary<qz::UniqueID::Bytes>()); }

inline TriggerRegion anyRegion() {
  const auto anyText = [] { return *rc::gen::element<std::string>("", "ic_tree", "Café \"Zur Post\"\n"); };
  return {.type = anyOrNone(anyCase<RegionType>),
          .title = anyOrNone(anyText),
          .latitude = anyNumber(),
          .longitude = anyNumber(),
          .radius = anyNumber(),
          .notifyOnEntry = anyBool(),
          .notifyOnExit = anyBool(),
          .icon = anyOrNone(anyText)};
}

/// Perhaps without what its type needs, and perhaps with more.
inline TaskReminder::Trigger anyTrigger() {
  return {.type = anyCase<TaskReminder::TriggerType>(),
          .timeOfDay = anyOrNone(qz::anyTime),
          .region = anyOrNone(anyRegion),
          .duration = anyOrNone(anyNumber)};
}

inline TaskReminder anyReminder() {
  return {.uniqueId = anyID(),
          .timeZone = anyOrNone(anyCase<NotificationTimeZone>),
          .trigger = anyTrigger(),
          .daysOfWeek = qz::DaysOfWeek::fromRawValue(qz::between(0, 127)).value(),
          .dayIndexesFromStart = anyOrNone(anyDayIndexes),
          .dayIndexesFromFinish = anyOrNone(anyDayIndexes),
          .snoozeTime = anyOrNone(qz::anyTime),
          .snoozeDate = anyOrNone(anyCommonDay),
          .snoozeTimeZone = anyOrNone(anyCase<NotificationTimeZone>),
          .sound = anyOrNone(anyCase<SoundEffect>),
          .timeSensitive = anyOrNone(anyBool)};
}

inline TaskNotificationSettings anyNotificationSettings() {
  TaskNotificationSettings settings{
      .badgeMode = anyCase<BadgeMode>(),
      .badgeFrom = anyOrNone(qz::anyTime),
      .badgeTo = anyOrNone(qz::anyTime),
      .badgeTimeZone = anyOrNone(anyCase<NotificationTimeZone>),
      .reminderType = anyCase<ReminderType>(),
      .maxReminders = *rc::gen::arbitrary<std::int64_t>(),
      .completedNotification = anyBool(),
      .partiallyCompletedNotification = anyOrNone(anyBool),
      .completedOrMissedSound = anyOrNone(anyCase<SoundEffect>),
      .partiallyCompletedOrMissedSound = anyOrNone(anyCase<SoundEffect>),
      .reminderSound = anyOrNone(anyCase<SoundEffect>),
      .timerNotificationSound = anyOrNone(anyCase<SoundEffect>),
      .automaticRemindersAreTimeSensitive = anyOrNone(anyBool),
      .completedNotificationIsTimeSensitive = anyOrNone(anyBool),
      .partiallyCompletedNotificationIsTimeSensitive = anyOrNone(anyBool),
      .timerNotificationsAreTimeSensitive = anyOrNone(anyBool),
      .liveActivityDisplayMode = anyOrNone(anyCase<LiveActivityDisplayMode>),
  };
  for (std::int64_t i = qz::between(0, 2); i > 0; --i) settings.reminders.push_back(anyReminder());
  return settings;
}

}  // namespace habitra
