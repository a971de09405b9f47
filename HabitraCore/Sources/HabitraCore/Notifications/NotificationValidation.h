#pragma once

#include <HabitraCore/Notifications/TaskNotificationSettings.h>
#include <HabitraCore/Notifications/TaskReminder.h>
#include <HabitraCore/Notifications/TriggerRegion.h>
#include <QZKit/UniqueID.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Which notification settings are fit to be entered.
namespace habitra {

/// A field that is not what it must be.
struct NotificationProblem {
  std::string_view field;                ///< as it is coded: "latitude"
  std::string_view rule;                 ///< "be from -90 to 90"
  std::optional<double> found;           ///< what a number is
  std::optional<qz::UniqueID> reminder;  ///< whose field it is; none: the settings' own, or those of a reminder alone

  /// "latitude must be from -90 to 90, not 91"; "region must be given".
  [[nodiscard]] std::string message() const;

  friend bool operator==(const NotificationProblem&, const NotificationProblem&) = default;
};

/// What a person has to mend; nothing when all is good:
/// - badgeFrom and badgeTo: both or neither; maxReminders: 0 or more; every reminder as below;
/// - of a reminder: daysOfWeek holds a day, day indexes are 0 to greatestDayIndex, snoozeTime and snoozeDate both or
///   neither, the date one that exists;
/// - of its trigger: the field that its type needs (neededField) is there; a duration, needed or not, is 0 to
///   longestDuration, and a region is good;
/// - of a region: latitude -90 to 90, longitude -180 to 180, radius above 0 and up to longestRadius, notifyOnEntry or
///   notifyOnExit.
/// Readers let all of this pass, so whoever counts or schedules by such a number asks here first.
[[nodiscard]] std::vector<NotificationProblem> problems(const TaskNotificationSettings& settings);
[[nodiscard]] std::vector<NotificationProblem> problems(const TaskReminder& reminder);
[[nodiscard]] std::vector<NotificationProblem> problems(const TaskReminder::Trigger& trigger);
[[nodiscard]] std::vector<NotificationProblem> problems(const TriggerRegion& region);

}  // namespace habitra
