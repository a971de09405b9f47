#include "NaiveHistoryJudged.h"
#include "NaiveHistoryProgress.h"

#include <algorithm>

namespace habitra {

namespace {

using T = TaskLogEntryType;
using Kind = NaivePeriod::Kind;

}  // namespace

NaiveHistory::NaiveHistory(const TaskRules& rules, const HistoryScope& scope, std::span<const LoggedEntry> log)
    : rules_(rules), scope_(scope), due_(rules_, scope_) {
  scope_.created = std::min(scope_.created, scope_.today);
  for (NaivePeriod& period : naivePeriods(rules_, scope_, log)) {
    judge(period);
    periods_.push_back(period);
  }
}

void NaiveHistory::gain(NaivePeriod& period) {
  ++streak_.current;
  streak_.best = std::max(streak_.best, streak_.current);
  period.hasGained = true;
}

void NaiveHistory::applyToDo(NaivePeriod& period, const LoggedEntry& entry) {
  const T type = entry.entryType;
  const NaiveShare share(rules_, period.progress);
  const bool wasReached = share.isReached();
  if (isCompletedFull(type)) share.fill();
  if (isCompletedPartial(type) && !wasReached) share.add(entry);
  if (isCompletedFull(type) || (isCompletedPartial(type) && !wasReached && share.isReached())) {
    if (period.kind != Kind::positiveComplete) gain(period);
    period.kind = Kind::positiveComplete;
  }
  if (isSkipped(type)) period.kind = Kind::positiveSkip;
  if (isMissedFull(type)) {
    streak_.current = 0;
    period.kind = Kind::positiveMiss;
  }
}

void NaiveHistory::applyToAvoid(NaivePeriod& period, const LoggedEntry& entry) {
  const T type = entry.entryType;
  const NaiveShare share(rules_, period.progress);
  const bool wasReached = share.isReached();
  if (isCompletedFull(type) && period.kind != Kind::negativeComplete) {
    share.empty();
    period.kind = Kind::negativeComplete;
    period.wasMended = true;
    gain(period);
  }
  if (isAllowableMissFull(type) || isMissedFull(type)) share.fill();
  if (isMissedPartial(type)) share.add(entry);
  if (isAllowableMissFull(type)) period.kind = Kind::negativeAllowedMiss;
  if (isMissedFull(type) || (isMissedPartial(type) && !wasReached && share.isReached())) {
    streak_.current = 0;
    period.kind = Kind::negativeMiss;
  }
}

void NaiveHistory::apply(NaivePeriod& period, const LoggedEntry& entry) {
  const Kind before = period.kind;
  if (isTimer(entry.entryType)) NaiveShare(rules_, period.progress).runTimer(entry);
  if (rules_.isNegative) {
    applyToAvoid(period, entry);
  } else {
    applyToDo(period, entry);
  }
  if (period.kind != before) period.decidedOn = qz::YYYYMMDD::fromRawValue(entry.entryDate);
}

void NaiveHistory::judge(NaivePeriod& period) {
  period.kind = rules_.isNegative ? Kind::negativeComplete : Kind::positiveIncomplete;
  for (const LoggedEntry& entry : period.entries) apply(period, entry);
  due_.judge(period, periods_);
  period.fillIn = fillIn(period);
  if (period.fillIn) {
    period.entries.push_back(
        {.entryDate = static_cast<std::int32_t>(period.to.intValue()), .entryType = *period.fillIn});
    apply(period, period.entries.back());
  }
  if (!period.isOpen && !period.hasGained && mayGain(period)) gain(period);
  period.streak = streak_;
  period.verdict = verdict(period);
  note(period);
}

/// What has to be written for a closed period without a full entry.
std::optional<T> NaiveHistory::fillIn(const NaivePeriod& period) const {
  if (period.isOpen || period.to < scope_.fillFrom || period.holds(isFull)) return std::nullopt;
  if (!rules_.isNegative) {
    if (period.kind == Kind::positiveComplete) return std::nullopt;
    return period.isDue ? T::missedAutomaticallyFull : T::skippedAutomaticallyFull;
  }
  if (period.kind == Kind::negativeMiss) return T::missedAutomaticallyFull;
  if (period.isDue || period.isCut) return std::nullopt;
  return T::skippedAutomaticallyFull;
}

/// To avoid: clean, no skip and no pause in it, due or holding a full completion, and not begun before the history.
bool NaiveHistory::mayGain(const NaivePeriod& period) const {
  return period.kind == Kind::negativeComplete && !period.holds(isSkipped) && !due_.isPausedSomeDay(period) &&
         (period.isDue || period.holds(isCompletedFull)) && !period.isCut;
}

PeriodVerdict NaiveHistory::verdict(const NaivePeriod& period) const {
  switch (period.kind) {
    case Kind::positiveComplete: return PeriodVerdict::success;
    case Kind::positiveMiss:
    case Kind::negativeMiss: return PeriodVerdict::failure;
    case Kind::negativeComplete: {
      const bool isDecided = period.isOpen && period.holds(isCompletedFull) && mayGain(period);
      return period.hasGained || isDecided ? PeriodVerdict::success : PeriodVerdict::notJudged;
    }
    case Kind::positiveIncomplete:
    case Kind::positiveSkip:
    case Kind::negativeAllowedMiss: break;
  }
  return PeriodVerdict::notJudged;
}

/// The newest days: of the entry that completed or failed a period, of a clean one its last; of a skip.
void NaiveHistory::note(const NaivePeriod& period) {
  const bool isClean = period.kind == Kind::negativeComplete;
  if (period.verdict == PeriodVerdict::failure) lastMissed_ = period.decidedOn;
  if (period.verdict == PeriodVerdict::success)
    lastCompleted_ = isClean ? period.dayOfLast(isCompletedFull).value_or(period.to) : period.decidedOn;
  const bool isUnjudgedClean = isClean && period.verdict == PeriodVerdict::notJudged;
  if (period.kind == Kind::positiveSkip || (isUnjudgedClean && period.holds(isSkipped)))
    lastSkipped_ = period.dayOfLast(isSkipped);
}

}  // namespace habitra
