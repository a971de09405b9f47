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
/// Stops the program when a day does not fit its width. Counts of samples are cut to their 16 bits: over all time a
/// file may bring more judged periods than that (a century of days, of a task that is now asked for by the month), and
/// the share says the same about as many as fit.
void putFigures(TaskTemporalDataEntity& data, const TaskFigures& figures);

}  // namespace habitra
