#pragma once

#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/DoubleRows.h>

#include <string_view>

/// Two logs become one. For the deduplicator; TaskDeduplicator.h has the rules.
namespace habitra {

/// Leads the entries of `other` over to `survivor`. Those that `survivor` has already stay behind, and what led to them
/// leads to their partners: requests to the health store, and timers of either task. Those whose identifier says
/// something else there get a new one, and their timers name it. Gives what became of double identifiers. REQUIRES: a
/// unit.
DoubleRows uniteLogs(StoreContext& context, const TaskEntity& survivor, const TaskEntity& other);

/// Leads the requests to the health store of the entry `from` over to `to`, unless that has one alike.
void leadRequestsOver(StoreContext& context, ObjectID from, ObjectID to);

/// Lets the timers of `task` that say they produced the entry `from` name the entry `to`.
void renameEntryOfTimers(StoreContext& context, ObjectID task, std::string_view from, std::string_view to);

}  // namespace habitra
