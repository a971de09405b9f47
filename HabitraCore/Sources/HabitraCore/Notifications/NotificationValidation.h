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

/// What a person has to mend, in the order of the fields; nothing when all is good:
/// - badgeFrom and badgeTo: both or neither; maxReminders: 0 or more; every reminder as below;
/// - of a reminder: daysOfWeek holds a day, no day index is below 0, snoozeTime and snoozeDate both or neither;
/// - of its trigger: the field that its type needs (neededField) is there and good, a duration 0 or more;
/// - of a region: latitude -90 to 90, longitude -180 to 180, radius above 0, notifyOnEntry or notifyOnExit.
[[nodiscard]] std::vector<NotificationProblem> problems(const TaskNotificationSettings& settings);
[[nodiscard]] std::vector<NotificationProblem> problems(const TaskReminder& reminder);
[[nodiscard]] std::vector<NotificationProblem> problems(const TaskReminder::Trigger& trigger);
[[nodiscard]] std::vector<NotificationProblem> problems(const TriggerRegion& region);

}  // namespace habitra
