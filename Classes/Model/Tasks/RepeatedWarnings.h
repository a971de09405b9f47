#pragma once

#include <string>

namespace habitra {

struct TaskEntity;

/// Logs a warning of a task that would come again with every look at it: once in the life of the process. Safe from any
/// thread.
void warnOnce(const TaskEntity& task, const std::string& warning);

}  // namespace habitra
