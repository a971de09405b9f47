#pragma once

#include <HabitraCore/Notifications/NotificationTimeZone.h>
#include <HabitraCore/Notifications/SoundEffect.h>
#include <HabitraCore/Notifications/TaskReminder.h>
#include <HabitraCore/RawValue.h>
#include <QZDateTime/HHMMSS.h>

#include <array>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace habitra {

/// Whether a task counts toward the number on the app's icon.
enum class BadgeMode : std::uint8_t { doNotInclude, includeWhenIncomplete };

/// Whether a task reminds: never, when the scheduler thinks fit, or by its own reminders.
enum class ReminderType : std::uint8_t { none, automatic, custom };

/// Whether a running task is shown as a live activity.
enum class LiveActivityDisplayMode : std::uint8_t { automatic, yes, no };

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::BadgeMode> {
  using T = habitra::BadgeMode;
  static constexpr std::array<RawValueRow<T, std::string_view>, 2> rows{{
      {T::doNotInclude, "none", "doNotInclude"},
      {T::includeWhenIncomplete, "incomplete", "includeWhenIncomplete"},
  }};
};

template <>
struct qz::RawValueTable<habitra::ReminderType> {
  using T = habitra::ReminderType;
  static constexpr std::array<RawValueRow<T, std::string_view>, 3> rows{{
      {T::none, "none", "none"},
      {T::automatic, "automatic", "automatic"},
      {T::custom, "custom", "custom"},
  }};
};

template <>
struct qz::RawValueTable<habitra::LiveActivityDisplayMode> {
  using T = habitra::LiveActivityDisplayMode;
  static constexpr std::array<RawValueRow<T, std::string_view>, 3> rows{{
      {T::automatic, "automatic", "automatic"},
      {T::yes, "yes", "yes"},
      {T::no, "no", "no"},
  }};
};

namespace habitra {

/// How the system may draw attention to a task. An absent choice is not "no": it means that the default applies.
struct TaskNotificationSettings {
  static constexpr std::int64_t defaultMaxReminders = 3;

  BadgeMode badgeMode = BadgeMode::includeWhenIncomplete;
  /// The hours of the day in which it counts, the last moment excluded; from an evening to a morning they go past
  /// midnight. Both are there or neither is, and with neither it counts all day, as it does from a time to the same
  /// time. With one alone, which NotificationValidation.h complains of, it counts all day, too.
  std::optional<qz::HHMMSS> badgeFrom;
  std::optional<qz::HHMMSS> badgeTo;
  /// Whose clock they are read in; none: the viewer's.
  std::optional<NotificationTimeZone> badgeTimeZone;
  ReminderType reminderType = ReminderType::none;
  /// The most automatic reminders that a task sends on one day, however long it stays undone; reminders of the task's
  /// own are not counted. 0, or less, is none.
  std::int64_t maxReminders = defaultMaxReminders;
  bool completedNotification = false;
  std::optional<bool> partiallyCompletedNotification;
  std::optional<SoundEffect> completedOrMissedSound;
  std::optional<SoundEffect> partiallyCompletedOrMissedSound;
  std::optional<SoundEffect> reminderSound;
  std::optional<SoundEffect> timerNotificationSound;
  std::optional<bool> automaticRemindersAreTimeSensitive;
  std::optional<bool> completedNotificationIsTimeSensitive;
  std::optional<bool> partiallyCompletedNotificationIsTimeSensitive;
  std::optional<bool> timerNotificationsAreTimeSensitive;
  std::optional<LiveActivityDisplayMode> liveActivityDisplayMode;
  std::vector<TaskReminder> reminders;

  /// What a slot plays: the sound chosen for it, else the default one. A completion and a miss share a choice.
  [[nodiscard]] SoundEffect sound(SoundType slot) const;

  /// Each field as `name=value` in order, with a comma and a blank between; an absent one is "nil", times are
  /// "22:30:00", and reminders a list of what TaskReminder::debugDescription says, each in braces.
  [[nodiscard]] std::string debugDescription() const;

  friend bool operator==(const TaskNotificationSettings&, const TaskNotificationSettings&) = default;
};

/// Coded under the names of the fields; an absent field is an absent key.
void to_json(nlohmann::json& json, const TaskNotificationSettings& settings);
/// Throws qz::DecodingError naming the key that is missing or of the wrong kind, or an unknown badgeMode or
/// reminderType; an unknown text of an optional choice is no choice.
void from_json(const nlohmann::json& json, TaskNotificationSettings& settings);

}  // namespace habitra
