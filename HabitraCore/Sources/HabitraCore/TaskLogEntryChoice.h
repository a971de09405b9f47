#pragma once

#include <HabitraCore/CompletionStatus.h>
#include <HabitraCore/TaskLogEntryType.h>

/// Which entry a person's action writes, and which entries of the same period it takes the place of.
namespace habitra {

/// Whether writing an entry of `newType` removes an existing entry of the same period.
///
/// - A full entry made by a person, and an undo (`unknown`), take the place of every completion, miss, allowed miss and
///   skip, full or partial.
/// - A partial entry takes the place of full skips, misses and allowed misses.
/// - An automatic entry only ever takes the place of automatic ones, and a filled-in skip or miss leaves every partial
///   entry beside it.
/// - Timer runs and external health data take no place, and nothing takes theirs. An undo stays as well.
[[nodiscard]] bool supersedes(TaskLogEntryType newType, TaskLogEntryType existingType);

/// The entry that one tap on a period writes. To do: incomplete, then complete (with `isPartial` one unit more, until
/// it is complete), then skipped, then unchecked again; from a miss to complete. To avoid: from clean to a miss, or to
/// an allowed one where `missIsAllowed`, and back; with `isPartial` one unit of a failure as long as it is not the
/// last.
[[nodiscard]] TaskLogEntryType nextEntryType(const CompletionStatus& status, bool isPartial, bool missIsAllowed);

}  // namespace habitra
