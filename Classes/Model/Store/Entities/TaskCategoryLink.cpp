#include <HabitraModel/Store/Entities/DescribeEntity.h>
#include <HabitraModel/Store/Entities/TaskCategoryEntity.h>
#include <HabitraModel/Store/Entities/TaskCategoryLink.h>
#include <HabitraModel/Store/Entities/TaskEntity.h>

#include <array>

namespace habitra {

namespace {

constexpr std::array attributes{
    relationship<&TaskCategoryLink::task, TaskEntity>("task", "taskCategories", true, DeleteRule::cascade),
    relationship<&TaskCategoryLink::category, TaskCategoryEntity>("category", "tasks", true, DeleteRule::cascade),
};
static_assert(attributes.size() <= EntityDescription::maximalAttributeCount);

constexpr EntityDescription entity = describeEntity<TaskCategoryLink>(
    EntityNumber::taskCategoryLink, "TaskEntity_taskCategories", "that a habit is in a category", attributes);

}  // namespace

const EntityDescription& TaskCategoryLink::description() { return entity; }

}  // namespace habitra
