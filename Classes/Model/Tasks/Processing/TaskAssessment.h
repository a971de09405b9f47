#pragma once

#include <HabitraCore/HistoryWalk.h>
#include <HabitraCore/TaskFrequencyPeriod.h>
#include <HabitraCore/TaskRules.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/Processing/LogRevision.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Clock.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace habitra {

/// Passes look this many days further back than the last one. Somebody who flew east, or whose day now begins earlier,
/// reads the moment of that pass as a later day than it was; the days in between would never be judged.
inline constexpr std::int64_t passOverlap = 2;

/// A period with what its log says, as the walk passes it. Valid during the visit.
struct PeriodOfLog {
  TaskFrequencyPeriod period;
  bool isOpen = false;
  bool isPaused = false;       ///< on a day of it
  bool missIsAllowed = false;  ///< to avoid: a failure would lie within the allowance
  std::int64_t expectedUnits = 1;
  std::span<const LoggedEntry> entries;  ///< that count for it, in order of creation
};

/// How a task stands at a moment, worked out from its log without writing anything: what a pass would store, and what a
/// list shows.
struct TaskAssessment {
  TaskCalendar calendar;
  qz::YYYYMMDD today;  ///< the task's, at the moment asked about
  /// Entries to delete: dated after today, and not recorded in time by somebody who since flew west. While the clock is
  /// behind what the store has seen only those that passes have filled in: the others count for nothing, but may be
  /// right when it has caught up.
  std::vector<LogKey> futureEntries;
  /// Of these, the ones that were filled in for today, by a clock that was ahead or before its keeper flew west; the
  /// walk goes without them.
  std::vector<LogKey> premature;
  /// Entries of later days that were recorded in time: they count where their period has begun.
  std::vector<LoggedEntry> ahead;
  /// None when the frequency cannot be read or cannot be: the task is shown and left alone.
  std::optional<TaskRules> rules;
  std::optional<HistoryResult> history;  ///< present when `rules` are
  /// Whether the walk could not start from a kept checkpoint, or only from one that lies far back, so that keeping the
  /// one in `history` is worth a write.
  bool checkpointIsStale = false;
  /// The day up to which the task was processed, none: never; and the first day of its history. Present when `rules`
  /// are.
  std::optional<qz::YYYYMMDD> processedThrough;
  qz::YYYYMMDD created;
};

/// Whether the frequency of a task can be read and can be.
[[nodiscard]] bool canBeJudged(const TaskEntity& task);

/// Reads the task's log, from the last checkpoint on where that still holds, and walks it as of `now`. The days to fill
/// in begin where the task was processed last: by its own word or, where that is earlier, at `lastProcessedHere`.
[[nodiscard]] TaskAssessment assess(StoreContext& context, const TaskEntity& task, const TaskCalendars& calendars,
                                    qz::Moment now, std::optional<qz::Moment> lastProcessedHere = std::nullopt);

/// Lets an assessment be that of the log as `revision` leaves it. REQUIRES: rules.
void revise(StoreContext& context, const TaskEntity& task, const LogRevision& revision, TaskAssessment& assessment);

/// Visits the periods that end on the day `from` or later, up to the one that holds today, in a log as `revision`
/// leaves it. What is held does not grow with their number. REQUIRES: rules.
void visitPeriods(StoreContext& context, const TaskEntity& task, const TaskAssessment& assessment, qz::YYYYMMDD from,
                  const LogRevision& revision, const std::function<void(const PeriodOfLog&)>& visit);

/// What passes would have filled in from the day `from` on and before `day`, when no entry of the task had been made
/// for that day or a later one. None when its rules cannot be read.
[[nodiscard]] std::vector<FillIn> fillInsBefore(StoreContext& context, const TaskEntity& task,
                                                const TaskCalendars& calendars, qz::YYYYMMDD from, qz::YYYYMMDD day);

/// The row of a checkpoint, for StoreContext::setCheckpoint. It holds for that calendar of the task only.
[[nodiscard]] Checkpoint storedCheckpoint(const HistoryCheckpoint& checkpoint, const TaskCalendar& calendar);

}  // namespace habitra
