#include <HabitraCore/DayForms.h>
#include <HabitraCore/DueRule.h>
#include <HabitraCore/WalkedPeriod.h>

#include <algorithm>

namespace habitra {

namespace {

using Ground = PeriodReason::Ground;
using Kind = CompletionStatus::Status::Kind;

PeriodReason::Entry reasonEntry(const LoggedEntry& entry) {
  return {.date = dayOf(entry.entryDate), .entryType = entry.entryType, .order = entry.order};
}

Ground groundOfRule(const WalkedPeriod& walked) {
  if (walked.isDue) return Ground::due;
  if (walked.source.isCut) return Ground::beganBeforeHistory;
  if (walked.source.isShortened) return Ground::cutShort;
  return walked.isPaused ? Ground::paused : Ground::notDue;
}

/// Skips and misses that were filled in stand in the log for a rule, and it is the rule that people ask for; unless it
/// was another one, of a frequency that the task has no more.
bool speaksForItself(TaskLogEntryType type, const WalkedPeriod& walked) {
  if (!isAutomatic(type) || isCompletedFull(type) || isAllowableMissFull(type)) return true;
  return !walked.source.rules->isNegative && isMissedFull(type) != walked.isDue;
}

Ground groundOf(const WalkedPeriod& walked) {
  const auto lastFull = std::ranges::find_if(walked.entries.rbegin(), walked.entries.rend(),
                                             [](const auto& entry) { return isFull(entry.entryType); });
  if (lastFull != walked.entries.rend() && speaksForItself(lastFull->entryType, walked)) return Ground::fullEntry;
  const Kind kind = walked.status.kind();
  if (kind == Kind::positiveComplete) return Ground::partialEntries;
  if (kind == Kind::negativeMiss) return walked.holdsPartialMiss() ? Ground::partialEntries : Ground::fullEntry;
  if (kind == Kind::negativeComplete && walked.isDue && !walked.hasSkip) return Ground::keptClean;
  return groundOfRule(walked);
}

/// Whether an entry was a part of what the counting period of its task counts.
bool isCounted(TaskLogEntryType type, bool isNegative) {
  if (!isNegative) return isCompletedFullOrPartial(type);
  return isMissedFullOrPartial(type) || isAllowableMissFull(type);
}

void putCounts(PeriodReason& reason, const WalkedPeriod& walked) {
  const TaskRules& rules = *walked.source.rules;
  const DueRule& due = *walked.source.due;
  const std::int32_t number = walked.source.number;
  const bool isUnavailable = walked.source.isUnavailable;
  if (due.countsDays()) {
    const TaskFrequencyPeriodType type = rules.frequency.periodTypeForCompletionCountCalculation();
    reason.countingPeriod = DatedPeriod(dayOf(walked.from), type, rules.firstDayOfWeek, rules.referenceDate).period;
    const std::int32_t first = intForm(reason.countingPeriod->startDate);
    for (const LoggedEntry& entry : walked.source.countedEntries) {
      if (entry.entryDate >= first && isCounted(entry.entryType, rules.isNegative))
        reason.entries.push_back(reasonEntry(entry));
    }
    if (rules.isNegative) {
      reason.allowance = std::max(due.allowance(), std::int64_t{0});
      reason.allowanceLeft = std::max(due.allowance() - due.failedDays(), std::int64_t{0});
    } else {
      reason.completed = due.completedDays();
      reason.wanted = due.wanted();
      reason.available = due.available(isUnavailable);
      reason.required = due.required(isUnavailable);
      reason.stillPossible = due.stillPossible(number);
    }
  } else if (due.dependsOnLog()) {
    const auto last = rules.isNegative ? due.lastFailed() : due.lastCompleted().value_or(due.anchor());
    if (!last || *last > number) return;
    reason.countedFrom = dayOfNumber(*last);
    reason.daysSince = number - *last;
  }
}

}  // namespace

TaskFrequencyPeriod WalkedPeriod::period() const {
  return {.periodType = periodType,
          .startDate = dayOf(from),
          .finishDate = dayOf(to),
          .firstDayOfWeek = source.rules->firstDayOfWeek};
}

CompletionStatus WalkedPeriod::completionStatus() const {
  const DatedPeriod dated(dayOf(progressDay), period());
  return {status, progressRecord(source.rules->measure, dated, expectedUnits, progress)};
}

bool WalkedPeriod::holdsPartialMiss() const {
  return std::ranges::any_of(entries, [](const LoggedEntry& entry) { return isMissedPartial(entry.entryType); });
}

PeriodReason WalkedPeriod::reason() const {
  PeriodReason reason{.period = period(),
                      .status = status,
                      .ground = groundOf(*this),
                      .dayMode = source.rules->frequency.dayMode,
                      .isOpen = isOpen,
                      .numUnits = progress.numUnits,
                      .expectedUnits = expectedUnits};
  if (from == to) putCounts(reason, *this);
  for (const LoggedEntry& entry : entries) reason.entries.push_back(reasonEntry(entry));
  return reason;
}

}  // namespace habitra
