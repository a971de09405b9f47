#include <HabitraCore/TaskLogEntryChoice.h>

namespace habitra {

bool supersedes(TaskLogEntryType newType, TaskLogEntryType existingType) {
  if (!isFull(existingType) && !isPartial(existingType)) return false;
  if (isTimer(newType) || newType == TaskLogEntryType::externalHealthData) return false;
  const bool byHand = !isAutomatic(newType);
  if (!byHand && !isAutomatic(existingType)) return false;
  if (isPartial(newType)) return isFull(existingType) && !isCompletedFull(existingType);
  return byHand || isFull(existingType) || isCompletedFull(newType);
}

TaskLogEntryType nextEntryType(const CompletionStatus& status, bool isPartial, bool missIsAllowed) {
  using Kind = CompletionStatus::Status::Kind;
  switch (status.status.kind()) {
    case Kind::positiveIncomplete:
      // A timer can have reached the target without an entry; one unit more would then change nothing.
      return isPartial && !status.codableProgress.isReached() ? TaskLogEntryType::completedManuallyPartial
                                                              : TaskLogEntryType::completedManuallyFull;
    case Kind::positiveComplete: return TaskLogEntryType::skippedManuallyFull;
    case Kind::positiveSkip: return TaskLogEntryType::unknown;
    case Kind::positiveMiss:
    case Kind::negativeMiss:
    case Kind::negativeAllowedMiss: return TaskLogEntryType::completedManuallyFull;
    case Kind::negativeComplete: break;
  }
  TaskProgressCodable oneMore = status.codableProgress;
  oneMore.addUnit();
  if (isPartial && !oneMore.isReached()) return TaskLogEntryType::missedManuallyPartial;
  return missIsAllowed ? TaskLogEntryType::allowableMissManuallyFull : TaskLogEntryType::missedManuallyFull;
}

}  // namespace habitra
