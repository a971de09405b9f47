#include <HabitraModel/Store/Entities/DescribeEntity.h>
#include <HabitraModel/Store/Entities/TaskCounterEntity.h>
#include <HabitraModel/Store/Entities/TaskEntity.h>

#include <array>

namespace habitra {

namespace {

constexpr std::array attributes{
    attribute<&TaskCounterEntity::createdTimestamp>("createdTimestamp"),
    attribute<&TaskCounterEntity::entryDate>("entryDate"),
    attribute<&TaskCounterEntity::quantity>("quantity"),
    attribute<&TaskCounterEntity::status>("status"),
    indexedAttribute<&TaskCounterEntity::uniqueId>("uniqueId"),
    relationship<&TaskCounterEntity::task, TaskEntity>("task", "taskCounter", true, DeleteRule::cascade),
};
static_assert(attributes.size() <= EntityDescription::maximalAttributeCount);

constexpr EntityDescription entity = describeEntity<TaskCounterEntity>(
    EntityNumber::taskCounter, "TaskCounterEntity", "one count towards a habit that is done several times a day",
    attributes, "entryDate");

}  // namespace

const EntityDescription& TaskCounterEntity::description() { return entity; }

}  // namespace habitra
