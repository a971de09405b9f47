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

std::vector<Restamping> restampings(const TaskFrequencyPeriod& current, const TaskRules& newRules,
                                    std::span<const LoggedEntry> entries) {
  std::vector<Restamping> restampings;
  for (const LoggedEntry& entry : entries) {
    const auto day = qz::YYYYMMDD::fromRawValue(entry.entryDate);
    if (!day || !day->exists()) continue;
    const bool countsForCurrent =
        entry.periodFrom == current.startDate.intValue() && entry.periodTo == current.finishDate.intValue();
    if (!countsForCurrent) continue;
    const DatedPeriod dated = newRules.frequency.period(*day, newRules.firstDayOfWeek, newRules.referenceDate);
    if (dated.period.startDate == current.startDate && dated.period.finishDate == current.finishDate) continue;
    restampings.push_back({.order = entry.order, .entryDate = entry.entryDate, .period = dated.period});
  }
  return restampings;
}

}  // namespace habitra
