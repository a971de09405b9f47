#pragma once

#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/Deduplication/LogContradictions.h>

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

/// Several logs become one. For the deduplicator; TaskDeduplicator.h has the rules.
namespace habitra {

/// Identifiers of entries, by the ones that they had before.
using RenamedEntries = std::map<std::string, std::string, std::less<>>;

/// Leads the entries of `others` over to `survivor` and removes what then contradicts itself. Of entries that are one,
/// one row stays, and what led to the others leads to it: requests to the health store, and timers of all these tasks.
/// The survivor's `lastProcessedDate` moves back before what has to be judged anew. Gives how many rows went
/// since one log had their identifier twice. REQUIRES: a unit.
std::size_t uniteLogs(StoreContext& context, TaskEntity& survivor, const std::vector<TaskEntity*>& others);

/// Makes one entry of two with the same identifier: the row of `kept` stays and says what the one with the larger
/// amount says (no moment of change is kept; of equal amounts the rest of the content decides). The other row goes.
/// REQUIRES: a unit.
void uniteSameEntries(StoreContext& context, UnitedEntry& kept, const UnitedEntry& other);

/// Lets the timers of `task` name the entries that they produced by their new identifiers, all at once: what one entry
/// was called another may be called now. REQUIRES: a unit.
void renameEntriesOfTimers(StoreContext& context, ObjectID task, const RenamedEntries& renamed);

}  // namespace habitra
