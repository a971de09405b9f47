#include <HabitraModel/Store/Entities/DescribeEntity.h>
#include <HabitraModel/Store/Entities/TaskShareOwnerEntity.h>

#include <array>

namespace habitra {

namespace {

constexpr std::array attributes{
    attribute<&TaskShareOwnerEntity::ckRecordIdRecordName>("ckRecordIdRecordName"),
    attribute<&TaskShareOwnerEntity::ckRecordIdZoneName>("ckRecordIdZoneName"),
    attribute<&TaskShareOwnerEntity::ckRecordIdZoneOwnerName>("ckRecordIdZoneOwnerName"),
    attribute<&TaskShareOwnerEntity::ckUserDisplayName>("ckUserDisplayName"),
    attribute<&TaskShareOwnerEntity::cloudStatus>("cloudStatus"),
    attribute<&TaskShareOwnerEntity::cloudStatusDate>("cloudStatusDate"),
    attribute<&TaskShareOwnerEntity::cnFormattedName>("cnFormattedName"),
    attribute<&TaskShareOwnerEntity::cnIdentifier>("cnIdentifier"),
    attribute<&TaskShareOwnerEntity::cnPropertyIdentifier>("cnPropertyIdentifier"),
    attribute<&TaskShareOwnerEntity::cnPropertyLabel>("cnPropertyLabel"),
    attribute<&TaskShareOwnerEntity::cnPropertyType>("cnPropertyType"),
    attribute<&TaskShareOwnerEntity::cnPropertyValue>("cnPropertyValue"),
    attribute<&TaskShareOwnerEntity::imageName>("imageName"),
};
static_assert(attributes.size() <= EntityDescription::maximalAttributeCount);

constexpr EntityDescription entity = describeEntity<TaskShareOwnerEntity>(
    EntityNumber::taskShareOwner, "TaskShareOwnerEntity", "the person who owns a shared habit", attributes);

}  // namespace

const EntityDescription& TaskShareOwnerEntity::description() { return entity; }

}  // namespace habitra
