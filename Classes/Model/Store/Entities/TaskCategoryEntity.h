#pragma once

#include <HabitraModel/Store/EntityDescription.h>

#include <optional>
#include <string>

namespace habitra {

/// A user's category. Which tasks it has, TaskCategoryLink says.
struct TaskCategoryEntity {
  static const EntityDescription& description();

  ObjectID objectID = ObjectID::none;

  std::optional<std::string> colorInfo;
  std::optional<std::string> iconName;
  std::optional<std::string> title;
  std::optional<std::string> uniqueId;

  friend bool operator==(const TaskCategoryEntity&, const TaskCategoryEntity&) = default;
};

}  // namespace habitra
