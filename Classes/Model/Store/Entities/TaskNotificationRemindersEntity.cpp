#include <HabitraModel/Store/Entities/DescribeEntity.h>
#include <HabitraModel/Store/Entities/TaskEntity.h>
#include <HabitraModel/Store/Entities/TaskNotificationRemindersEntity.h>

#include <array>

namespace habitra {

namespace {

constexpr std::array attributes{
    attribute<&TaskNotificationRemindersEntity::daysFromFinish>("daysFromFinish"),
    attribute<&TaskNotificationRemindersEntity::daysFromStart>("daysFromStart"),
    attribute<&TaskNotificationRemindersEntity::daysOfWeek>("daysOfWeek"),
    attribute<&TaskNotificationRemindersEntity::duration>("duration"),
    attribute<&TaskNotificationRemindersEntity::icon>("icon"),
    attribute<&TaskNotificationRemindersEntity::region>("region"),
    attribute<&TaskNotificationRemindersEntity::reminderType>("reminderType"),
    attribute<&TaskNotificationRemindersEntity::snoozeDate>("snoozeDate"),
    attribute<&TaskNotificationRemindersEntity::snoozeTime>("snoozeTime"),
    attribute<&TaskNotificationRemindersEntity::snoozeTimeZone>("snoozeTimeZone"),
    attribute<&TaskNotificationRemindersEntity::sound>("sound"),
    attribute<&TaskNotificationRemindersEntity::timeOfDay>("timeOfDay"),
    attribute<&TaskNotificationRemindersEntity::timeZone>("timeZone"),
    indexedAttribute<&TaskNotificationRemindersEntity::uniqueId>("uniqueId"),
    attribute<&TaskNotificationRemindersEntity::timeSensitive>("timeSensitive"),
    relationship<&TaskNotificationRemindersEntity::task, TaskEntity>("task", "taskNotificationReminders", true,
                                                                     DeleteRule::cascade),
};
static_assert(attributes.size() <= EntityDescription::maximalAttributeCount);

constexpr EntityDescription entity = describeEntity<TaskNotificationRemindersEntity>(
    EntityNumber::taskNotificationReminders, "TaskNotificationRemindersEntity", "one reminder of a habit", attributes);

}  // namespace

const EntityDescription& TaskNotificationRemindersEntity::description() { return entity; }

}  // namespace habitra
