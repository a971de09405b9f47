#include <HabitraModel/Store/Entities/HealthKitRequestEntity.h>
#include <HabitraModel/Store/Entities/SettingEntity.h>
#include <HabitraModel/Store/Entities/TaskCategoryEntity.h>
#include <HabitraModel/Store/Entities/TaskCategoryLink.h>
#include <HabitraModel/Store/Entities/TaskCounterEntity.h>
#include <HabitraModel/Store/Entities/TaskEntity.h>
#include <HabitraModel/Store/Entities/TaskLogEntryEntity.h>
#include <HabitraModel/Store/Entities/TaskNoteEntity.h>
#include <HabitraModel/Store/Entities/TaskNotificationRemindersEntity.h>
#include <HabitraModel/Store/Entities/TaskNotificationSettingsEntity.h>
#include <HabitraModel/Store/Entities/TaskShareEntity.h>
#include <HabitraModel/Store/Entities/TaskShareOwnerEntity.h>
#include <HabitraModel/Store/Entities/TaskTemporalDataEntity.h>
#include <HabitraModel/Store/Entities/TaskTimerEntity.h>
#include <HabitraModel/Store/Entities/UserProfileEntity.h>
#include <HabitraModel/Store/EntityDescription.h>

#include <array>

namespace habitra {

std::optional<std::size_t> EntityDescription::position(std::string_view attributeName) const {
  for (std::size_t i = 0; i < attributes.size(); ++i)
    if (attributes[i].name == attributeName) return i;
  return std::nullopt;
}

std::span<const EntityDescription* const> allEntities() {
  static const std::array entities{&TaskEntity::description(),
                                   &TaskTemporalDataEntity::description(),
                                   &TaskLogEntryEntity::description(),
                                   &UserProfileEntity::description(),
                                   &SettingEntity::description(),
                                   &TaskCounterEntity::description(),
                                   &TaskNoteEntity::description(),
                                   &TaskTimerEntity::description(),
                                   &TaskNotificationSettingsEntity::description(),
                                   &TaskNotificationRemindersEntity::description(),
                                   &TaskCategoryEntity::description(),
                                   &TaskShareEntity::description(),
                                   &TaskShareOwnerEntity::description(),
                                   &HealthKitRequestEntity::description(),
                                   &TaskCategoryLink::description()};
  return entities;
}

const EntityDescription* entityWithNumber(EntityNumber number) {
  for (const EntityDescription* entity : allEntities())
    if (entity->number == number) return entity;
  return nullptr;
}

std::vector<HeldRelationship> relationshipsTo(const EntityDescription& target) {
  std::vector<HeldRelationship> found;
  for (const EntityDescription* holder : allEntities())
    for (const AttributeDescription& attribute : holder->attributes)
      if (attribute.type == StoredType::reference && &attribute.relationship.target() == &target)
        found.push_back({holder, &attribute});
  return found;
}

}  // namespace habitra
