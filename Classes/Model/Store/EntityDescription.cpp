#include <HabitraModel/Store/Entities/SettingEntity.h>
#include <HabitraModel/Store/Entities/TaskEntity.h>
#include <HabitraModel/Store/Entities/TaskLogEntryEntity.h>
#include <HabitraModel/Store/Entities/TaskTemporalDataEntity.h>
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
  static const std::array entities{&TaskEntity::description(), &TaskTemporalDataEntity::description(),
                                   &TaskLogEntryEntity::description(), &UserProfileEntity::description(),
                                   &SettingEntity::description()};
  return entities;
}

const EntityDescription* entityWithNumber(EntityNumber number) {
  for (const EntityDescription* entity : allEntities())
    if (entity->number == number) return entity;
  return nullptr;
}

}  // namespace habitra
