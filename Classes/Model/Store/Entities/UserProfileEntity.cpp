#include <HabitraModel/Store/Entities/DescribeEntity.h>
#include <HabitraModel/Store/Entities/UserProfileEntity.h>

#include <array>

namespace habitra {

namespace {

constexpr std::array attributes{
    attribute<&UserProfileEntity::displayOrder>("displayOrder"),
    attribute<&UserProfileEntity::iconName>("iconName"),
    attribute<&UserProfileEntity::title>("title"),
    indexedAttribute<&UserProfileEntity::uniqueId>("uniqueId"),
};
static_assert(attributes.size() <= EntityDescription::maximalAttributeCount);

constexpr EntityDescription entity = describeEntity<UserProfileEntity>(EntityNumber::userProfile, "UserProfileEntity",
                                                                       "a page, which groups habits", attributes);

}  // namespace

const EntityDescription& UserProfileEntity::description() { return entity; }

}  // namespace habitra
