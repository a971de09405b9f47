#include <HabitraModel/Store/Entities/DescribeEntity.h>
#include <HabitraModel/Store/Entities/TaskEntity.h>
#include <HabitraModel/Store/Entities/TaskTimerEntity.h>

#include <array>

namespace habitra {

namespace {

constexpr std::array attributes{
    attribute<&TaskTimerEntity::entryDate>("entryDate"),
    attribute<&TaskTimerEntity::entryId>("entryId"),
    attribute<&TaskTimerEntity::entryPeriodFrom>("entryPeriodFrom"),
    attribute<&TaskTimerEntity::entryPeriodTo>("entryPeriodTo"),
    attribute<&TaskTimerEntity::entryPeriodType>("entryPeriodType"),
    attribute<&TaskTimerEntity::finish>("finish"),
    attribute<&TaskTimerEntity::start>("start"),
    relationship<&TaskTimerEntity::task, TaskEntity>("task", "taskTimer", true, DeleteRule::cascade),
};
static_assert(attributes.size() <= EntityDescription::maximalAttributeCount);

constexpr EntityDescription entity =
    describeEntity<TaskTimerEntity>(EntityNumber::taskTimer, "TaskTimerEntity",
                                    "a running or finished timing of a timed habit", attributes, "entryDate");

}  // namespace

const EntityDescription& TaskTimerEntity::description() { return entity; }

}  // namespace habitra
