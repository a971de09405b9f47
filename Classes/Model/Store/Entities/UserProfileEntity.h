#pragma once

#include <HabitraModel/Store/EntityDescription.h>

#include <optional>
#include <string>

namespace habitra {

/// A profile that groups tasks: a page of the list, whose number is `displayOrder` + 1.
struct UserProfileEntity {
  static const EntityDescription& description();

  ObjectID objectID = ObjectID::none;

  std::int16_t displayOrder = 0;
  std::optional<std::string> iconName;
  std::optional<std::string> title;
  std::optional<std::string> uniqueId;

  friend bool operator==(const UserProfileEntity&, const UserProfileEntity&) = default;
};

}  // namespace habitra
