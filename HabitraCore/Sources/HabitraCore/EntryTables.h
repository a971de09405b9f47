#pragma once

#include <HabitraCore/CompletionStatus.h>
#include <HabitraCore/StreakStatus.h>
#include <HabitraCore/TaskLogEntryType.h>

#include <concepts>

/// What one entry does to a period and to the streak. Written once, for the progress records that statuses carry and
/// for the bare count of units that the walk over a history keeps. For sources of this module.
namespace habitra {

template <typename P>
concept PeriodProgress = requires(P& progress) {
  { progress.isReached() } -> std::convertible_to<bool>;
  progress.fill();
  progress.addUnit();
  progress.empty();
};

/// The table of a task to do. REQUIRES: !status.isNegative().
template <PeriodProgress Progress>
void applyToPositive(CompletionStatus::Status& status, Progress& progress, StreakStatus& streak,
                     TaskLogEntryType type) {
  using Status = CompletionStatus::Status;
  const auto complete = [&] {
    if (status.kind() == Status::Kind::positiveComplete) return;
    streak.increment();
    status = Status::positiveComplete();
  };
  switch (type) {
    case TaskLogEntryType::completedManuallyFull:
    case TaskLogEntryType::completedAutomaticallyFull:
      progress.fill();
      complete();
      break;
    case TaskLogEntryType::completedManuallyPartial:
    case TaskLogEntryType::completedAutomaticallyPartial:
      if (progress.isReached()) break;
      progress.addUnit();
      if (progress.isReached()) complete();
      break;
    case TaskLogEntryType::skippedManuallyFull:
    case TaskLogEntryType::skippedAutomaticallyFull: status = Status::positiveSkip(); break;
    case TaskLogEntryType::missedAutomaticallyFull:
    case TaskLogEntryType::missedManuallyFull:
      // A miss leaves what was reached.
      streak.reset();
      status = Status::positiveMiss();
      break;
    case TaskLogEntryType::unknown:
    case TaskLogEntryType::allowableMissManuallyFull:
    case TaskLogEntryType::allowableMissAutomaticallyFull:
    case TaskLogEntryType::missedManuallyPartial:
    case TaskLogEntryType::missedAutomaticallyPartial:
    case TaskLogEntryType::timerManual:
    case TaskLogEntryType::timerAutomatic:
    case TaskLogEntryType::externalHealthData: break;
  }
}

/// The table of a task to avoid, whose progress measures the failure. REQUIRES: status.isNegative().
template <PeriodProgress Progress>
void applyToNegative(CompletionStatus::Status& status, Progress& progress, StreakStatus& streak,
                     TaskLogEntryType type) {
  using Status = CompletionStatus::Status;
  const auto fail = [&] {
    streak.reset();
    status = Status::negativeMiss();
  };
  switch (type) {
    case TaskLogEntryType::completedManuallyFull:
    case TaskLogEntryType::completedAutomaticallyFull:
      if (status.kind() == Status::Kind::negativeComplete) break;
      progress.empty();
      streak.increment();
      status = Status::negativeComplete(TaskFrequency::SkipMode::willMissWithoutIndicator);
      break;
    case TaskLogEntryType::allowableMissManuallyFull:
    case TaskLogEntryType::allowableMissAutomaticallyFull:
      progress.fill();
      status = Status::negativeAllowedMiss();
      break;
    case TaskLogEntryType::missedAutomaticallyFull:
    case TaskLogEntryType::missedManuallyFull:
      progress.fill();
      fail();
      break;
    case TaskLogEntryType::missedManuallyPartial:
    case TaskLogEntryType::missedAutomaticallyPartial: {
      const bool wasReached = progress.isReached();
      progress.addUnit();
      if (!wasReached && progress.isReached()) fail();
      break;
    }
    case TaskLogEntryType::unknown:
    case TaskLogEntryType::completedManuallyPartial:
    case TaskLogEntryType::completedAutomaticallyPartial:
    case TaskLogEntryType::skippedManuallyFull:
    case TaskLogEntryType::skippedAutomaticallyFull:
    case TaskLogEntryType::timerManual:
    case TaskLogEntryType::timerAutomatic:
    case TaskLogEntryType::externalHealthData: break;
  }
}

}  // namespace habitra
