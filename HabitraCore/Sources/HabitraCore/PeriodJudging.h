#pragma once

#include <HabitraCore/CompletionStatus.h>
#include <HabitraCore/EntryTables.h>
#include <HabitraCore/LoggedEntry.h>
#include <HabitraCore/StreakStatus.h>
#include <HabitraCore/TaskMeasure.h>
#include <QZKit/Checked.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>

/// For sources of this module.
namespace habitra {

/// What the entries of a period come to, as the walk counts it: the progress that the tables of the entries ask for,
/// without the record that shows it.
class MadeProgress {
 public:
  MadeProgress(const TaskMeasure& measure, std::int64_t expectedUnits)
      : measure_(measure),
        target_(measure.kind == TaskMeasure::Kind::rings ? 1.0 : measure.target),
        expectedUnits_(expectedUnits) {}

  /// A new period.
  void begin() {
    made_ = {};
    reported_.reset();
  }
  /// The entry that is applied next.
  void take(const LoggedEntry& entry) {
    if (measure_.kind != TaskMeasure::Kind::byHand) [[unlikely]]
      takeMeasured(entry);
  }

  [[nodiscard]] const ProgressMade& made() const { return made_; }
  [[nodiscard]] std::int64_t expectedUnits() const { return expectedUnits_; }
  [[nodiscard]] bool isReached() const {
    if (measure_.kind == TaskMeasure::Kind::byHand) [[likely]]
      return made_.numUnits >= expectedUnits_;
    return isTargetReached();
  }
  void fill();
  void addUnit() {
    if (measure_.kind == TaskMeasure::Kind::byHand) [[likely]] {
      made_.numUnits = qz::checkedAdd(made_.numUnits, std::int64_t{1});
    } else {
      addMeasuredUnit();
    }
  }
  void empty() { made_ = {}; }

 private:
  void takeMeasured(const LoggedEntry& entry);
  void addMeasuredUnit();
  [[nodiscard]] bool isTargetReached() const;

  const TaskMeasure& measure_;
  const double target_;
  const std::int64_t expectedUnits_;
  ProgressMade made_;
  std::optional<double> reported_;  ///< by the partial entry that is applied next
};

/// A period and what its entries have come to so far.
struct PeriodJudging {
  std::int32_t from = 0;  ///< integer form
  std::int32_t to = 0;
  std::int32_t number = 0;  ///< day number of a period of one day
  TaskFrequencyPeriodType type = TaskFrequencyPeriodType::day;
  std::span<const LoggedEntry> entries;  ///< that count for it, in order of creation
  bool isDue = false;
  bool isCut = false;        ///< a longer period that began before the history did
  bool isShortened = false;  ///< a longer period that stored ones left only a part of
  bool isPaused = false;     ///< on a day of it
  bool missIsAllowed = false;
  CompletionStatus::Status status = CompletionStatus::Status::positiveSkip();
  std::optional<TaskLogEntryType> lastFull;  ///< the type of the last full entry
  bool hasSkip = false;
  bool isCounted = false;           ///< to avoid: the streak has counted this period
  std::int32_t decidedOn = 0;       ///< day of the entry that gave the status
  std::int32_t completionHeld = 0;  ///< to avoid: day of a full completion
  std::int32_t skippedOn = 0;

  [[nodiscard]] bool isSingleDay() const { return from == to; }
  [[nodiscard]] bool isComplete() const { return status.kind() == CompletionStatus::Status::Kind::positiveComplete; }
  /// To do: not complete, and the last full entry is a skip by hand.
  [[nodiscard]] bool isSkippedByHand() const {
    return lastFull == TaskLogEntryType::skippedManuallyFull && !isComplete();
  }

  /// Applies an entry made for `day`.
  template <bool isNegative>
  void apply(TaskLogEntryType entryType, std::int32_t day, MadeProgress& progress, StreakStatus& streak) {
    const CompletionStatus::Status::Kind before = status.kind();
    if constexpr (isNegative) {
      applyToNegative(status, progress, streak, entryType);
      if (isCompletedFull(entryType)) {
        completionHeld = day;
        // A completion counts at once where it makes a failed period clean again.
        if (status.kind() != before) isCounted = true;
      }
    } else {
      applyToPositive(status, progress, streak, entryType);
    }
    if (status.kind() != before) decidedOn = day;
    if (isFull(entryType)) lastFull = entryType;
    if (isSkipped(entryType)) {
      hasSkip = true;
      skippedOn = day;
    }
  }

  /// The entry that a closed period needs; REQUIRES: it has no full one.
  template <bool isNegative>
  [[nodiscard]] std::optional<TaskLogEntryType> missingEntry() const {
    if constexpr (isNegative) {
      // Only partial misses can have failed a period without a full entry.
      if (status.isFailed()) return TaskLogEntryType::missedAutomaticallyFull;
      if (isDue || isCut) return std::nullopt;
      return TaskLogEntryType::skippedAutomaticallyFull;
    } else {
      if (isComplete()) return std::nullopt;
      return isDue ? TaskLogEntryType::missedAutomaticallyFull : TaskLogEntryType::skippedAutomaticallyFull;
    }
  }

  /// To avoid: whether nothing in the period speaks against a clean one being a success.
  [[nodiscard]] bool mayBeClean() const {
    return status.kind() == CompletionStatus::Status::Kind::negativeComplete && !hasSkip && !isPaused && !isCut;
  }
};

}  // namespace habitra
