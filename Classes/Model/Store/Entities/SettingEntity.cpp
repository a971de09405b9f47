#include <HabitraModel/Store/Entities/DescribeEntity.h>
#include <HabitraModel/Store/Entities/SettingEntity.h>

#include <array>

namespace habitra {

namespace {

constexpr std::array attributes{
    indexedAttribute<&SettingEntity::settingKey>("settingKey"),
    attribute<&SettingEntity::dateCreated>("dateCreated"),
    attribute<&SettingEntity::booleanValue>("booleanValue"),
    attribute<&SettingEntity::dataValue>("dataValue"),
    attribute<&SettingEntity::dateValue>("dateValue"),
    attribute<&SettingEntity::doubleValue>("doubleValue"),
    attribute<&SettingEntity::intValue>("intValue"),
    attribute<&SettingEntity::stringValue>("stringValue"),
};
static_assert(attributes.size() <= EntityDescription::maximalAttributeCount);

constexpr EntityDescription entity =
    describeEntity<SettingEntity>(EntityNumber::setting, "SettingEntity", "an app-wide setting", attributes);

}  // namespace

const EntityDescription& SettingEntity::description() { return entity; }

}  // namespace habitra
