#pragma once

#include <HabitraModel/Tasks/Recording/FilledInEntries.h>
#include <QZDateTime/YYYYMMDD.h>

#include <vector>

namespace habitra {

/// What an undo lets go of that takes the beginning of a task's history along. An entry before the day on which the
/// task was made carries the history's beginning to its own day, and passes fill in all that follows; when it is taken
/// back (its day had been mistyped), the history begins with the earliest entry that a person or a device recorded, or
/// with the creation day. These are the entries that were filled in from the day of `undone`, an undo in the log, up to
/// there, and those of the period that then is asked for only in part. None where the beginning stays.
[[nodiscard]] std::vector<LogKey> refutedByLostBeginning(StoreContext& context, const TaskLogEntryEntity& undone,
                                                         qz::YYYYMMDD creationDay, const FilledInEntries& filledIn);

}  // namespace habitra
