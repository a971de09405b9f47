#pragma once

#include <HabitraModel/Store/Entities/TaskEntity.h>

#include <string>

namespace habitra {

/// The title of a task as it is read: where its words leave the place of a measured amount open ("Drink {quantity} of
/// water"), its target stands there. Empty for a task without a title.
[[nodiscard]] std::string shownTitle(const TaskEntity& task);

}  // namespace habitra
