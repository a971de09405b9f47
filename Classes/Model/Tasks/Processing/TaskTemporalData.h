#pragma once

#include <HabitraCore/HistoryWalk.h>
#include <HabitraModel/Store/StoreContext.h>

/// The record that keeps the derived figures of a task.
namespace habitra {

/// The temporal record of a task, or null.
[[nodiscard]] TaskTemporalDataEntity* findTemporalData(StoreContext& context, const TaskEntity& task);

/// The same; a task that has none gets one that takes over the task's change of difficulty. May begin a unit.
[[nodiscard]] TaskTemporalDataEntity& findOrInsertTemporalData(StoreContext& context, const TaskEntity& task);

/// Puts the figures into the record. The progress is that of the current period, for tasks whose progress is tracked.
/// Stops the program when a count or a day does not fit its width.
void putFigures(TaskTemporalDataEntity& data, const TaskFigures& figures);

}  // namespace habitra
