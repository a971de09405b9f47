#pragma once

#include <HabitraModel/Store/StoreContext.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <tuple>
#include <vector>

/// What contradicts itself in a log that was several. For the deduplicator; TaskDeduplicator.h has the rules.
namespace habitra {

/// An entry of the united log.
struct UnitedEntry {
  TaskLogEntryEntity entry;
  std::map<ObjectID, ObjectID> rows = {};  ///< by the tasks whose logs had it as it is now: its row there
  std::int32_t firstDay = 0;               ///< the earliest day that one of the logs had it for
};

/// The order of creation, the same on every device: by moment, where none is earliest, then by identifier.
[[nodiscard]] inline auto creation(const TaskLogEntryEntity& entry) {
  return std::tie(entry.createdTimestamp, entry.uniqueId);
}

/// Removes from the log of `survivor`, which was those of `logs` tasks, what would not be there had all been recorded
/// for one. What stood side by side in one of the logs does not contradict itself, and what was filled in stays where
/// one of them had it and all that speaks against it. Within a period, by whose rows a walk goes, they are in the order
/// of the logs that had all of it, where these agree, else in order of creation. Gives the earliest day that has to be
/// judged anew, none when no log has learned anything. REQUIRES: a unit; `entries` is that log.
[[nodiscard]] std::optional<std::int32_t> removeContradictions(StoreContext& context, const TaskEntity& survivor,
                                                               std::size_t logs, std::vector<UnitedEntry> entries);

}  // namespace habitra
