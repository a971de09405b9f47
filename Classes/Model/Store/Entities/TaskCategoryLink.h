#pragma once

#include <HabitraModel/Store/EntityDescription.h>

namespace habitra {

/// That a task is in a category: the many-to-many relationship of both, a row for each pair. Tasks/TaskCategories.h
/// adds and removes them.
struct TaskCategoryLink {
  static const EntityDescription& description();

  ObjectID objectID = ObjectID::none;

  ObjectID task = ObjectID::none;
  ObjectID category = ObjectID::none;

  friend bool operator==(const TaskCategoryLink&, const TaskCategoryLink&) = default;
};

}  // namespace habitra
