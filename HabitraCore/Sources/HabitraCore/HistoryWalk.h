#pragma once

#include <HabitraCore/CompletionStatus.h>
#include <HabitraCore/HistoryCheckpoint.h>
#include <HabitraCore/LoggedEntry.h>
#include <HabitraCore/PeriodReason.h>
#include <HabitraCore/StreakStatus.h>
#include <HabitraCore/TaskFrequencyPeriod.h>
#include <HabitraCore/TaskRecentHistory.h>
#include <HabitraCore/TaskRules.h>
#include <HabitraCore/WalkedPeriod.h>
#include <QZDateTime/YYYYMMDD.h>

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

/// The walk over a task's history: from its first day to today, period by period, each with the status that its
/// entries give it and the streak after it. Every figure that a front end shows about the past comes from here.
///
/// Which periods there are: an entry counts for the period that is stored with it, and the days that no stored period
/// covers are cut into periods by the frequency of today. So a changed frequency does not regroup the past. Where
/// stored periods overlap, the one that ends first stands, those that lie inside it give their entries to it, and the
/// others keep the days after it: when a habit of every day becomes one of the week, the days of this week that are
/// over stay what they were. An entry without a usable period counts for that of its day; one made for a day that the
/// calendar does not have, or after today, counts for nothing. A longer period that stored ones leave only a part of is
/// not due.
///
/// When a day is due, to do: the calendar says it (specific days); so many days after the last completed one, or after
/// the anchor (intervals); when the days left of the counting period would not suffice without it (counted days). To
/// avoid, every day is, but for the specific days. A paused day never is. DueRule.h has the rules in full.
///
/// How a period is judged: its entries are applied in order of creation, by the tables of CompletionStatus. A period of
/// a task to avoid that was kept clean gains its one when it closes: unless an entry counted it already, a skip or a
/// pause lies in it, or it was not due and holds no full completion. A closed period that no full entry decided gets
/// the entry that the rules give it (see FillIn), and is judged as if that stood in the log.
namespace habitra {

/// The days between which a history is walked.
struct HistoryScope {
  /// The first day: the earlier of the day the task was created on and the earliest entryDate of an entry that
  /// marksHistory(). A day after `today` counts as today.
  qz::YYYYMMDD created;
  /// The last day; the period that holds it is open.
  qz::YYYYMMDD today;
  /// Closed periods that end on this day or later are filled in.
  qz::YYYYMMDD fillFrom;
  /// The day as of which a checkpoint is wanted. It can be resumed from when it lies before `fillFrom` and before
  /// firstSampledDay().
  std::optional<qz::YYYYMMDD> checkpointDay;

  /// Where a log begins; both are none where it is empty.
  struct LogBeginning {
    std::optional<qz::YYYYMMDD> firstEntryDay{};  ///< the entryDate of its earliest entry, whatever that says
    std::optional<qz::YYYYMMDD> firstKeptDay{};   ///< that of its earliest entry that marksHistory()
  };

  /// The days of a task that was made on `creationDay`. `processedThrough` is the day of the last pass over it. The
  /// first pass fills in from the earliest entry on, without one from the creation day; later ones from where the last
  /// one was, but never from an earlier day than the first.
  [[nodiscard]] static HistoryScope of(const qz::YYYYMMDD& creationDay, const LogBeginning& log,
                                       const std::optional<qz::YYYYMMDD>& processedThrough, const qz::YYYYMMDD& today);
};

/// An entry that has to be written for a closed period that no full entry decided. To do: nothing where its partial
/// entries completed it, a miss where it was due, else a skip. To avoid: a miss where partial misses failed it,
/// whatever the allowance, else a skip where it was not due, else nothing. A longer period is due unless it began
/// before the history or was paused throughout; one to avoid that began before is left undecided.
struct FillIn {
  TaskFrequencyPeriod period;
  TaskLogEntryType entryType{};

  friend bool operator==(const FillIn&, const FillIn&) = default;
};

/// What a history comes to.
struct TaskFigures {
  StreakStatus streak;
  /// Status, with progress, and bounds of the period that holds today.
  CompletionStatus completionStatus;
  TaskFrequencyPeriod period;
  bool isDueToday = false;
  bool missIsAllowed = false;  ///< to avoid: a failure of this period would lie within the allowance
  /// The day of the entry that completed or failed the newest such period (of a clean one its last day; allowed misses
  /// are neither), and the day of the newest skip.
  std::optional<qz::YYYYMMDD> lastCompleted;
  std::optional<qz::YYYYMMDD> lastMissed;
  std::optional<qz::YYYYMMDD> lastSkipped;
  TaskRecentHistory::PreviousDaysSuccess shortTerm;
  TaskRecentHistory::PreviousDaysSuccess longTerm;
  /// Share of the current period that is done, and the day as of which that is.
  double progress = 0.0;
  qz::YYYYMMDD progressDate;
  /// Whether that share is worth keeping: the period needs more than one entry, or the task is measured.
  bool isProgressTracked = false;
  /// Counted-days modes: the counting period that holds today, and the days of it that were completed so far, to avoid
  /// kept clean so far.
  std::optional<TaskFrequency::DaysInPeriodCallbackResponse> daysInPeriod;
  /// Day intervals, to do: TaskFrequency::nextDueDay() asks for it.
  TaskFrequency::DayIntervalResponse dayInterval;

  friend bool operator==(const TaskFigures&, const TaskFigures&) = default;
};

struct HistoryResult {
  TaskFigures figures;
  std::vector<FillIn> fillIns;  ///< in order of days
  /// The state after the last period that ended on `checkpointDay` or before; none where there is no such period. A
  /// resumed walk that has none either gives back the one it was resumed from.
  std::optional<HistoryCheckpoint> checkpoint;
};

/// A failure of a task to avoid that stands in the log with a type that its place in the counting period does not give.
struct Retyping {
  std::int64_t order = 0;  ///< LoggedEntry::order of the entry
  std::int32_t entryDate = 0;
  TaskLogEntryType entryType{};  ///< that it has to have

  friend bool operator==(const Retyping&, const Retyping&) = default;
};

/// Immutable; may be used from any thread at the same time. One pass: the work for a day does not depend on the length
/// of the history, and nothing is allocated for it but the list of entries to fill in.
class HistoryWalk {
 public:
  /// Whether histories of this frequency can be judged: whether it is one that can be (see canBe()). The task of
  /// another one is shown and logged, and left alone.
  [[nodiscard]] static bool supports(const TaskFrequency& frequency);

  /// REQUIRES: supports(rules.frequency). Stops the program when a day of `scope` does not fit 32 bits.
  HistoryWalk(const TaskRules& rules, const HistoryScope& scope);

  /// Whether `checkpoint` was made under these rules and lies so far back (before the days to fill in, and before the
  /// spans of success) that going on from it gives what a whole walk gives.
  [[nodiscard]] bool canResume(const HistoryCheckpoint& checkpoint) const;

  /// Walks the whole history. `entries` is the task's log in order of entryDate, then of creation.
  [[nodiscard]] HistoryResult walk(std::span<const LoggedEntry> entries, const PeriodVisitor& visit = {}) const;

  /// Walks on from a checkpoint and visits only periods after its `closedThrough`. Of `entries` it needs those made for
  /// later days. The reasons of these periods lack the entries of earlier days. REQUIRES: canResume(checkpoint).
  [[nodiscard]] HistoryResult resume(const HistoryCheckpoint& checkpoint, std::span<const LoggedEntry> entries,
                                     const PeriodVisitor& visit = {}) const;

  /// Why the period that holds `date` has its status; none for a day before the first period or after today. Walks the
  /// whole history up to it.
  [[nodiscard]] std::optional<PeriodReason> why(const qz::YYYYMMDD& date, std::span<const LoggedEntry> entries) const;

  /// Whether a failure on `date` would be one within the allowance of a task to avoid, so that whoever records one
  /// knows which type to write. False for a day before the history or after today.
  [[nodiscard]] bool missIsAllowed(const qz::YYYYMMDD& date, std::span<const LoggedEntry> entries) const;

  /// The entries to write before the frequency, the target or the sign of the task is changed, so that a past that was
  /// judged stays judged: a completion for each closed period that is a success without a full entry. What is to be
  /// filled in is to be written before.
  [[nodiscard]] std::vector<FillIn> seals(std::span<const LoggedEntry> entries) const;

  /// The entries to re-type after a failure was recorded or taken back on `date`, to avoid, in order of days. Counted
  /// days: those of that day and of later ones of its counting period. Day intervals: those of that day and of the next
  /// failed one. Else: those of the period that holds it. The automatic miss of what partial misses failed stays one.
  [[nodiscard]] std::vector<Retyping> retypings(std::span<const LoggedEntry> entries, const qz::YYYYMMDD& date) const;

  /// What a calendar shows of the periods that hold the days from `from` to `to`, both included: those before the
  /// history are past, those after today lie in the future. Nothing where `from` comes after `to`.
  [[nodiscard]] TaskRecentHistory recentHistory(std::span<const LoggedEntry> entries, const qz::YYYYMMDD& from,
                                                const qz::YYYYMMDD& to) const;

 private:
  TaskRules rules_;
  HistoryScope scope_;
};

}  // namespace habitra
