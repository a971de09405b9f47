#pragma once

#include <HabitraCore/AutomaticTaskType/AutomaticTaskType.h>
#include <HabitraModel/Store/Entities/TaskEntity.h>

#include <optional>

/// What completes a task in place of a person, in the task's row.
namespace habitra {

/// None for a task completed by hand, and none when the type in the row is not known.
[[nodiscard]] std::optional<AutomaticTaskType> automaticTypeOf(const TaskEntity& task);

/// Writes an automatic type into the columns, or that a person completes the task; nothing where they say so already,
/// so that a type that is not known stays until another is chosen. Entries keep the amounts that they
/// reported without their unit: whoever changes the unit converts those of the open period, too.
void setAutomaticType(TaskEntity& task, const std::optional<AutomaticTaskType>& type);

}  // namespace habitra
