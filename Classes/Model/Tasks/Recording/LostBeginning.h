#pragma once

#include <HabitraModel/Tasks/Recording/FilledInEntries.h>
#include <QZDateTime/YYYYMMDD.h>

#include <vector>

namespace habitra {

/// What an undo, or an entry that moves to a later day, lets go of when it takes the beginning of a task's history
/// along. An entry before the day on which the task was made carries the history's beginning to its own day, and passes
/// fill in all that follows; when it is taken away from there (its day had been mistyped), the history begins with the
/// earliest entry that a person or a device recorded, or with the creation day. These are the entries that were filled
/// in up to there, from the day of `undone` on, which is an undo in the log or the entry as it was before it moved; and
/// those of the period that then is asked for only in part. None where the beginning stays.
[[nodiscard]] std::vector<LogKey> refutedByLostBeginning(StoreContext& context, const TaskLogEntryEntity& undone,
                                                         qz::YYYYMMDD creationDay, const FilledInEntries& filledIn);

}  // namespace habitra
