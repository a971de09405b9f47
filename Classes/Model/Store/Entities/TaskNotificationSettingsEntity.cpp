#include <HabitraModel/Store/Entities/DescribeEntity.h>
#include <HabitraModel/Store/Entities/TaskEntity.h>
#include <HabitraModel/Store/Entities/TaskNotificationSettingsEntity.h>

#include <array>

namespace habitra {

namespace {

constexpr std::array attributes{
    attribute<&TaskNotificationSettingsEntity::automaticRemindersAreTimeSensitive>(
        "automaticRemindersAreTimeSensitive"),
    attribute<&TaskNotificationSettingsEntity::badgeFrom>("badgeFrom"),
    attribute<&TaskNotificationSettingsEntity::badgeMode>("badgeMode"),
    attribute<&TaskNotificationSettingsEntity::badgeTimeZone>("badgeTimeZone"),
    attribute<&TaskNotificationSettingsEntity::badgeTo>("badgeTo"),
    attribute<&TaskNotificationSettingsEntity::completedNotification>("completedNotification"),
    attribute<&TaskNotificationSettingsEntity::completedNotificationIsTimeSensitive>(
        "completedNotificationIsTimeSensitive"),
    attribute<&TaskNotificationSettingsEntity::difficultyNotificationStatus>("difficultyNotificationStatus"),
    attribute<&TaskNotificationSettingsEntity::lastUpdated>("lastUpdated"),
    attribute<&TaskNotificationSettingsEntity::liveActivityDisplayMode>("liveActivityDisplayMode"),
    attribute<&TaskNotificationSettingsEntity::maxReminders>("maxReminders"),
    attribute<&TaskNotificationSettingsEntity::partiallyCompletedNotification>("partiallyCompletedNotification"),
    attribute<&TaskNotificationSettingsEntity::partiallyCompletedNotificationIsTimeSensitive>(
        "partiallyCompletedNotificationIsTimeSensitive"),
    attribute<&TaskNotificationSettingsEntity::reminderType>("reminderType"),
    attribute<&TaskNotificationSettingsEntity::snoozeDuration>("snoozeDuration"),
    attribute<&TaskNotificationSettingsEntity::soundCompletion>("soundCompletion"),
    attribute<&TaskNotificationSettingsEntity::soundPartialCompletion>("soundPartialCompletion"),
    attribute<&TaskNotificationSettingsEntity::soundReminder>("soundReminder"),
    attribute<&TaskNotificationSettingsEntity::soundTimerNotification>("soundTimerNotification"),
    attribute<&TaskNotificationSettingsEntity::timerNotificationsAreTimeSensitive>(
        "timerNotificationsAreTimeSensitive"),
    relationship<&TaskNotificationSettingsEntity::task, TaskEntity>("task", "taskNotificationSettings", false,
                                                                    DeleteRule::cascade),
};
static_assert(attributes.size() <= EntityDescription::maximalAttributeCount);

constexpr EntityDescription entity = describeEntity<TaskNotificationSettingsEntity>(
    EntityNumber::taskNotificationSettings, "TaskNotificationSettingsEntity",
    "how the system may draw attention to a habit", attributes);

}  // namespace

const EntityDescription& TaskNotificationSettingsEntity::description() { return entity; }

}  // namespace habitra
