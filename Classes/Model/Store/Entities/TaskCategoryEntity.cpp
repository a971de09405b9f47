#include <HabitraModel/Store/Entities/DescribeEntity.h>
#include <HabitraModel/Store/Entities/TaskCategoryEntity.h>

#include <array>

namespace habitra {

namespace {

constexpr std::array attributes{
    attribute<&TaskCategoryEntity::colorInfo>("colorInfo"),
    attribute<&TaskCategoryEntity::iconName>("iconName"),
    attribute<&TaskCategoryEntity::title>("title"),
    indexedAttribute<&TaskCategoryEntity::uniqueId>("uniqueId"),
};
static_assert(attributes.size() <= EntityDescription::maximalAttributeCount);

constexpr EntityDescription entity = describeEntity<TaskCategoryEntity>(
    EntityNumber::taskCategory, "TaskCategoryEntity", "a user's category", attributes);

}  // namespace

const EntityDescription& TaskCategoryEntity::description() { return entity; }

}  // namespace habitra
