#include <HabitraCore/DayForms.h>
#include <HabitraCore/FollowingEntries.h>
#include <HabitraCore/HistoryWalk.h>
#include <HabitraCore/LoggedEntries.h>
#include <HabitraCore/TaskFrequencyValidation.h>
#include <HabitraCore/Walker.h>
#include <QZKit/Trap.h>

#include <algorithm>

namespace habitra {

namespace {

using CalendarStatus = TaskCalendarPeriodInfo::TaskCalendarPeriodStatus;

CalendarStatus calendarStatus(const WalkedPeriod& walked) {
  using Kind = CompletionStatus::Status::Kind;
  switch (walked.status.kind()) {
    case Kind::positiveComplete: return walked.isOpen ? CalendarStatus::currentCompleted : CalendarStatus::completed;
    case Kind::positiveMiss:
    case Kind::negativeMiss: return walked.isOpen ? CalendarStatus::currentMissed : CalendarStatus::missed;
    case Kind::negativeAllowedMiss:
      return walked.isOpen ? CalendarStatus::currentAllowedMiss : CalendarStatus::allowedMiss;
    case Kind::positiveSkip: return walked.isOpen ? CalendarStatus::current : CalendarStatus::skipped;
    case Kind::positiveIncomplete: return walked.isOpen ? CalendarStatus::current : CalendarStatus::past;
    case Kind::negativeComplete: break;
  }
  if (walked.verdict == PeriodVerdict::success)
    return walked.isOpen ? CalendarStatus::currentCompleted : CalendarStatus::completed;
  if (walked.isOpen) return CalendarStatus::current;
  return walked.hasSkip ? CalendarStatus::skipped : CalendarStatus::past;
}

void put(TaskRecentHistory& history, const TaskFrequencyPeriod& period, CalendarStatus status) {
  if (period.periodType == TaskFrequencyPeriodType::day) {
    history.single.emplace(period.startDate, status);
  } else {
    history.multi.push_back({.period = period, .status = status});
  }
}

}  // namespace

HistoryScope HistoryScope::of(const qz::YYYYMMDD& creationDay, const LogBeginning& log,
                              const std::optional<qz::YYYYMMDD>& processedThrough, const qz::YYYYMMDD& today) {
  HistoryScope scope;
  scope.today = today;
  scope.created = std::min(creationDay, log.firstKeptDay.value_or(creationDay));
  // A day that was unchecked again lies in the history only where that begins no later.
  const qz::YYYYMMDD firstFilled = std::max(log.firstEntryDay.value_or(creationDay), scope.created);
  scope.fillFrom = std::max(firstFilled, processedThrough.value_or(firstFilled));
  return scope;
}

bool HistoryWalk::supports(const TaskFrequency& frequency) { return canBe(frequency); }

HistoryWalk::HistoryWalk(const TaskRules& rules, const HistoryScope& scope) : rules_(rules), scope_(scope) {
  qz::require(supports(rules.frequency), "a history that cannot be judged is walked");
  qz::require(scope.created.exists() && scope.today.exists(), "a history is walked between days that do not exist");
}

bool HistoryWalk::canResume(const HistoryCheckpoint& checkpoint) const {
  const auto closedThrough = qz::YYYYMMDD::fromRawValue(checkpoint.closedThrough);
  if (!closedThrough || !closedThrough->exists() || *closedThrough >= scope_.fillFrom) return false;
  const auto firstSampled = firstSampledDay(rules_.frequency, scope_.today);
  if (firstSampled && *closedThrough >= *firstSampled) return false;
  return checkpoint.created == scope_.created.intValue() &&
         checkpoint.fingerprint == fingerprint(rules_, scope_.created);
}

HistoryResult HistoryWalk::walk(std::span<const LoggedEntry> entries, const PeriodVisitor& visit) const {
  const LoggedEntries log(entries, rules_,
                          {.created = intForm(std::min(scope_.created, scope_.today)), .today = intForm(scope_.today)});
  return Walker(rules_, scope_, log.inOrder(), visit).run();
}

HistoryResult HistoryWalk::resume(const HistoryCheckpoint& checkpoint, std::span<const LoggedEntry> entries,
                                  const PeriodVisitor& visit) const {
  qz::require(canResume(checkpoint), "a walk is resumed from a checkpoint of other rules or days");
  const LoggedEntries log(entries, rules_,
                          {.created = intForm(std::min(scope_.created, scope_.today)),
                           .today = intForm(scope_.today),
                           .closedThrough = checkpoint.closedThrough});
  Walker walker(rules_, scope_, log.inOrder(), visit);
  walker.goOnFrom(checkpoint);
  return walker.run();
}

std::optional<PeriodReason> HistoryWalk::why(const qz::YYYYMMDD& date, std::span<const LoggedEntry> entries) const {
  std::optional<PeriodReason> reason;
  if (date > scope_.today) return reason;
  const std::int32_t day = intForm(date);
  static_cast<void>(walk(entries, [&](const WalkedPeriod& walked) {
    if (walked.from <= day && day <= walked.to) reason = walked.reason();
  }));
  return reason;
}

bool HistoryWalk::missIsAllowed(const qz::YYYYMMDD& date, std::span<const LoggedEntry> entries) const {
  bool isAllowed = false;
  const std::int32_t day = intForm(date);
  static_cast<void>(walk(entries, [&](const WalkedPeriod& walked) {
    if (walked.from <= day && day <= walked.to) isAllowed = walked.missIsAllowed;
  }));
  return isAllowed;
}

std::vector<FillIn> HistoryWalk::seals(std::span<const LoggedEntry> entries) const {
  std::vector<FillIn> seals;
  static_cast<void>(walk(entries, [&](const WalkedPeriod& walked) {
    if (!walked.isOpen && !walked.hasFull && walked.verdict == PeriodVerdict::success)
      seals.push_back({.period = walked.period(), .entryType = TaskLogEntryType::completedAutomaticallyFull});
  }));
  return seals;
}

std::vector<Retyping> HistoryWalk::retypings(std::span<const LoggedEntry> entries, const qz::YYYYMMDD& date) const {
  std::vector<Retyping> retypings;
  if (!rules_.isNegative) return retypings;
  const auto following = followingDays(rules_, date);
  const bool daysFollow = rules_.frequency.isCountedDays() || following;
  const std::int32_t first = intForm(date);
  std::int32_t last = first;
  if (following) last = intForm(following->last.value_or(scope_.today));
  static_cast<void>(walk(entries, [&](const WalkedPeriod& walked) {
    const bool isMeant = daysFollow ? walked.from == walked.to && first <= walked.from && walked.from <= last
                                    : walked.from <= first && first <= walked.to;
    if (!isMeant) return;
    const bool failedByParts = walked.holdsPartialMiss();
    for (const LoggedEntry& entry : walked.entries) {
      // The automatic miss of a period that partial misses failed stands whatever room there was.
      if (failedByParts && isAutomatic(entry.entryType)) continue;
      const TaskLogEntryType type = retypedFailure(entry.entryType, walked.missIsAllowed);
      if (type != entry.entryType)
        retypings.push_back({.order = entry.order, .entryDate = entry.entryDate, .entryType = type});
    }
    // An interval is counted from the failed day before; those after the next one have not changed.
    const bool isInterval = following && !following->last;
    if (isInterval && walked.status.isFailed() && walked.from > first) last = walked.from;
  }));
  return retypings;
}

TaskRecentHistory HistoryWalk::recentHistory(std::span<const LoggedEntry> entries, const qz::YYYYMMDD& from,
                                             const qz::YYYYMMDD& to) const {
  TaskRecentHistory history;
  history.firstDayOfWeek = rules_.firstDayOfWeek;
  // Periods that no day of the history lies in; periods do not overlap.
  qz::YYYYMMDD day = from;
  bool isFirst = true;
  const auto putUntil = [&](const qz::YYYYMMDD& end, CalendarStatus status) {
    for (; day < end; isFirst = false) {
      TaskFrequencyPeriod period = rules_.frequency.period(day, rules_.firstDayOfWeek, rules_.referenceDate).period;
      if (!isFirst) period.startDate = day;
      period.finishDate = std::min(period.finishDate, end.previousDay());
      put(history, period, status);
      day = period.finishDate.nextDay();
    }
  };
  const HistoryResult result = walk(entries, [&](const WalkedPeriod& walked) {
    const TaskFrequencyPeriod period = walked.period();
    if (period.finishDate < from || period.startDate > to || from > to) return;
    putUntil(period.startDate, CalendarStatus::past);
    put(history, period, calendarStatus(walked));
    day = period.finishDate.nextDay();
    isFirst = false;
  });
  if (day <= to) {
    const DatedPeriod last = rules_.frequency.period(to, rules_.firstDayOfWeek, rules_.referenceDate);
    putUntil(last.period.finishDate.nextDay(), day <= scope_.today ? CalendarStatus::past : CalendarStatus::future);
  }
  history.shortTerm = result.figures.shortTerm;
  history.longTerm = result.figures.longTerm;
  return history;
}

}  // namespace habitra
