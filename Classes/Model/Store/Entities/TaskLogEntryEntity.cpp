#include <HabitraModel/Store/Entities/DescribeEntity.h>
#include <HabitraModel/Store/Entities/TaskEntity.h>
#include <HabitraModel/Store/Entities/TaskLogEntryEntity.h>

#include <array>

namespace habitra {

namespace {

constexpr std::array attributes{
    attribute<&TaskLogEntryEntity::entryDate>("entryDate"),
    attribute<&TaskLogEntryEntity::entryPeriodFrom>("entryPeriodFrom"),
    attribute<&TaskLogEntryEntity::entryPeriodTo>("entryPeriodTo"),
    attribute<&TaskLogEntryEntity::entryPeriodType>("entryPeriodType"),
    attribute<&TaskLogEntryEntity::entryType>("entryType"),
    attribute<&TaskLogEntryEntity::progress>("progress"),
    attribute<&TaskLogEntryEntity::progressTotal>("progressTotal"),
    attribute<&TaskLogEntryEntity::createdTimestamp>("createdTimestamp"),
    attribute<&TaskLogEntryEntity::createdTimeZone>("createdTimeZone"),
    indexedAttribute<&TaskLogEntryEntity::uniqueId>("uniqueId"),
    attribute<&TaskLogEntryEntity::cloudStatus>("cloudStatus"),
    attribute<&TaskLogEntryEntity::cloudStatusDate>("cloudStatusDate"),
    relationship<&TaskLogEntryEntity::task, TaskEntity>("task", "taskEntry", true, DeleteRule::cascade),
};
static_assert(attributes.size() <= EntityDescription::maximalAttributeCount);

constexpr EntityDescription entity =
    describeEntity<TaskLogEntryEntity>(EntityNumber::taskLogEntry, "TaskLogEntryEntity", "one entry of a log",
                                       attributes, "entryDate", Layout::byTaskAndDay);

}  // namespace

const EntityDescription& TaskLogEntryEntity::description() { return entity; }

}  // namespace habitra
