#pragma once

#include <HabitraModel/Store/StoreContext.h>

#include <cstddef>

/// Rows that are there twice, of any entity but the tasks themselves. For the deduplicator; TaskDeduplicator.h has the
/// rules.
namespace habitra {

struct DoubleRows {
  std::size_t united = 0;   ///< rows that went, since another one says the same or counts in their place
  std::size_t renamed = 0;  ///< rows with a new identifier
};

/// Leads the notes, counters, timers, reminders and categories of `other` over to `survivor`; what that has already
/// stays behind. Notification settings, temporal data and share go over as well; then those that count stay
/// (RowOfTask.h). REQUIRES: a unit.
void uniteRelatedRows(StoreContext& context, const TaskEntity& survivor, const TaskEntity& other);

/// Resolves the double identifiers of all entities but tasks, double links between tasks and categories, and several
/// rows of a setting or of what a task has one of. REQUIRES: a unit.
DoubleRows resolveDoubleRows(StoreContext& context);

}  // namespace habitra
