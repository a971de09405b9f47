#pragma once

#include <HabitraCore/TaskPause.h>
#include <HabitraModel/Store/StoreContext.h>

#include <vector>

/// The pauses of a task, which lie in a setting of its own.
namespace habitra {

/// None where there are none or what is kept cannot be read.
[[nodiscard]] std::vector<TaskPause> pausesOf(StoreContext& context, const TaskEntity& task);

/// Begins a unit. REQUIRES: a task with an identifier.
void setPauses(StoreContext& context, const TaskEntity& task, const std::vector<TaskPause>& pauses);

}  // namespace habitra
