#include <HabitraCore/FollowingEntries.h>

namespace habitra {

std::optional<FollowingDays> followingDays(const TaskRules& rules, const qz::YYYYMMDD& date) {
  const TaskFrequency& frequency = rules.frequency;
  if (frequency.dayMode == TaskFrequency::DayMode::dayInterval)
    return FollowingDays{.first = date.nextDay(), .last = std::nullopt, .endAtCompletion = true};
  if (!frequency.isCountedDays()) return std::nullopt;
  const qz::YYYYMMDD last =
      lastDate(frequency.periodTypeForCompletionCountCalculation(), date, rules.firstDayOfWeek, rules.referenceDate);
  if (last == date) return std::nullopt;
  return FollowingDays{.first = date.nextDay(), .last = last};
}

bool followsFromEarlierDays(TaskLogEntryType type) {
  return isFull(type) && isAutomatic(type) && !isCompletedFull(type);
}

TaskLogEntryType retypedFailure(TaskLogEntryType type, bool missIsAllowed) {
  if (!isMissedFull(type) && !isAllowableMissFull(type)) return type;
  if (missIsAllowed) {
    return isAutomatic(type) ? TaskLogEntryType::allowableMissAutomaticallyFull
                             : TaskLogEntryType::allowableMissManuallyFull;
  }
  return isAutomatic(type) ? TaskLogEntryType::missedAutomaticallyFull : TaskLogEntryType::missedManuallyFull;
}

}  // namespace habitra
