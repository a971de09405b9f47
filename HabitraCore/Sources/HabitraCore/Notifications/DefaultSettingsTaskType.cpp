#include <HabitraCore/Notifications/DefaultSettingsTaskType.h>
#include <QZKit/OrderedRows.h>

#include <array>
#include <cstddef>
#include <optional>

namespace habitra {

namespace {

using Kind = DefaultSettingsTaskType::Kind;
using LiveActivity = LiveActivityDisplayMode;

struct DefaultsRow {
  Kind kind;
  bool completedNotification = false;
  std::optional<SoundEffect> completionSound;
  std::optional<SoundEffect> timerSound;
  std::optional<SoundEffect> everyOtherSound;
  std::optional<bool> timerIsTimeSensitive;
  std::optional<bool> everythingElseIsTimeSensitive;
  std::optional<LiveActivity> liveActivity;
};

/// A tick by hand needs no telling; what ends by itself does. Who meditates hears when the time is up, is not startled
/// by it, and hears nothing else.
constexpr std::array<DefaultsRow, 4> defaults{{
    {.kind = Kind::timer,
     .completedNotification = true,
     .timerIsTimeSensitive = true,
     .liveActivity = LiveActivity::automatic},
    {.kind = Kind::screenTime, .completedNotification = true},
    {.kind = Kind::untimed},
    {.kind = Kind::meditation,
     .completedNotification = true,
     .completionSound = SoundEffect::softBell,
     .timerSound = SoundEffect::softBell,
     .everyOtherSound = SoundEffect::silent,
     .timerIsTimeSensitive = false,
     .everythingElseIsTimeSensitive = false},
}};

static_assert(qz::standInOrder(defaults, &DefaultsRow::kind), "a kind's place is its number");

/// A timer that is over before anyone has looked at it is not shown (seconds).
constexpr double shortestShownTimer = 60;
/// A screen-time limit longer than this reminds so long before it is reached (seconds).
constexpr double longestUnannouncedLimit = 10 * 60;
constexpr double announcedBefore = 5 * 60;

}  // namespace

TaskNotificationSettings defaultNotificationSettings(const DefaultSettingsTaskType& type,
                                                     const qz::UniqueID& reminderID) {
  const DefaultsRow& row = defaults[static_cast<std::size_t>(type.kind())];
  TaskNotificationSettings settings;
  settings.completedNotification = row.completedNotification;
  settings.completedOrMissedSound = row.completionSound;
  settings.partiallyCompletedOrMissedSound = row.everyOtherSound;
  settings.reminderSound = row.everyOtherSound;
  settings.timerNotificationSound = row.timerSound;
  settings.automaticRemindersAreTimeSensitive = row.everythingElseIsTimeSensitive;
  settings.completedNotificationIsTimeSensitive = row.everythingElseIsTimeSensitive;
  settings.partiallyCompletedNotificationIsTimeSensitive = row.everythingElseIsTimeSensitive;
  settings.timerNotificationsAreTimeSensitive = row.timerIsTimeSensitive;
  settings.liveActivityDisplayMode = row.liveActivity;
  if (type.kind() == Kind::timer && type.duration() < shortestShownTimer)
    settings.liveActivityDisplayMode = LiveActivity::no;
  if (type.kind() == Kind::screenTime && type.duration() > longestUnannouncedLimit) {
    settings.reminderType = ReminderType::custom;
    settings.reminders.push_back(
        {.uniqueId = reminderID,
         .trigger = {.type = TaskReminder::TriggerType::durationBeforeFinish, .duration = announcedBefore}});
  }
  return settings;
}

}  // namespace habitra
