#pragma once

#include <HabitraCore/TaskFrequency.h>
#include <HabitraModel/Store/Entities/TaskEntity.h>

#include <optional>

/// The frequency of a task in its row.
namespace habitra {

/// None when the columns cannot be one.
[[nodiscard]] std::optional<TaskFrequency> frequencyOf(const TaskEntity& task);

/// Stops the program when a count does not fit its 16 bits.
void setFrequency(TaskEntity& task, const TaskFrequency& frequency);

}  // namespace habitra
