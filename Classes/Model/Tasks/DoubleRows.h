#pragma once

#include <HabitraModel/Store/StoreContext.h>

#include <cstddef>

/// Rows that are there twice, of any entity but the tasks themselves. For the deduplicator; TaskDeduplicator.h has the
/// rules.
namespace habitra {

struct DoubleRows {
  std::size_t united = 0;   ///< rows that went, since an older one says the same
  std::size_t renamed = 0;  ///< rows with a new identifier
};

/// Leads the notes, counters, timers, reminders and categories of `other` over to `survivor`; what that has already
/// stays behind. REQUIRES: a unit.
void uniteRelatedRows(StoreContext& context, const TaskEntity& survivor, const TaskEntity& other);

/// Resolves the double identifiers of all entities but tasks, and double links between tasks and categories. REQUIRES:
/// a unit.
DoubleRows resolveDoubleRows(StoreContext& context);

}  // namespace habitra
