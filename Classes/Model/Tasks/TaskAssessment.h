#pragma once

#include <HabitraCore/HistoryWalk.h>
#include <HabitraCore/TaskRules.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Clock.h>

#include <optional>
#include <vector>

namespace habitra {

/// How a task stands at a moment, worked out from its log without writing anything: what a pass would store, and what a
/// list shows.
struct TaskAssessment {
  TaskCalendar calendar;
  qz::YYYYMMDD today;  ///< the task's, at the moment asked about
  /// Entries to delete: dated after today, and not recorded in time by somebody who since flew west. None while the
  /// clock is behind what the store has seen: such entries count for nothing, but may be right when it has caught up.
  std::vector<LogKey> futureEntries;
  /// None when the frequency cannot be read or cannot be: the task is shown and left alone.
  std::optional<TaskRules> rules;
  std::optional<HistoryResult> history;  ///< present when `rules` are
  /// Whether the walk could not start from a kept checkpoint, or only from one that lies far back, so that keeping the
  /// one in `history` is worth a write.
  bool checkpointIsStale = false;
};

/// Reads the task's log, from the last checkpoint on where that still holds, and walks it as of `now`.
[[nodiscard]] TaskAssessment assess(StoreContext& context, const TaskEntity& task, const TaskCalendars& calendars,
                                    qz::Moment now);

/// What passes would have filled in from the day `from` on and before `day`, when no entry of the task had been made
/// for that day or a later one. None when its rules cannot be read.
[[nodiscard]] std::vector<FillIn> fillInsBefore(StoreContext& context, const TaskEntity& task,
                                                const TaskCalendars& calendars, qz::YYYYMMDD from, qz::YYYYMMDD day);

/// The row of a checkpoint, for StoreContext::setCheckpoint. It holds for that calendar of the task only.
[[nodiscard]] Checkpoint storedCheckpoint(const HistoryCheckpoint& checkpoint, const TaskCalendar& calendar);

}  // namespace habitra
