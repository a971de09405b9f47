#include "NaiveHistoryDue.h"

#include <algorithm>

namespace habitra {

namespace {

using Mode = TaskFrequency::DayMode;
using Kind = NaivePeriod::Kind;

bool isCompleted(const NaivePeriod& period) { return period.kind == Kind::positiveComplete; }
bool isFailed(const NaivePeriod& period) {
  return period.kind == Kind::negativeMiss || period.kind == Kind::negativeAllowedMiss;
}

/// The days of [from, to] as which periods of this sort count.
std::int64_t numDays(std::span<const NaivePeriod> before, bool (*is)(const NaivePeriod&), const qz::YYYYMMDD& from,
                     const qz::YYYYMMDD& to) {
  return std::ranges::count_if(before, [&](const NaivePeriod& period) {
    return is(period) && from <= period.countsOn() && period.countsOn() <= to;
  });
}

std::optional<qz::YYYYMMDD> lastDayBefore(std::span<const NaivePeriod> before, bool (*is)(const NaivePeriod&)) {
  std::optional<qz::YYYYMMDD> day;
  for (const NaivePeriod& period : before)
    if (is(period)) day = period.countsOn();
  return day;
}

/// The length of a counting period by which failures are allowed, whatever the month or year.
std::int64_t longestLength(TaskFrequencyPeriodType type) {
  switch (type) {
    case TaskFrequencyPeriodType::day: return 1;
    case TaskFrequencyPeriodType::week: return 7;
    case TaskFrequencyPeriodType::fortnight: return 14;
    case TaskFrequencyPeriodType::month: return 31;
    case TaskFrequencyPeriodType::year: return 366;
  }
  return 0;
}

}  // namespace

bool NaiveDue::isAggregate() const { return rules_.frequency.measurementDuration() != TaskFrequencyPeriodType::day; }

bool NaiveDue::isCounted() const {
  const Mode mode = rules_.frequency.dayMode;
  return mode == Mode::numberOfDaysInWeek || mode == Mode::numberOfDaysInFortnight ||
         mode == Mode::numberOfDaysInMonth || mode == Mode::numberOfDaysInYear;
}

bool NaiveDue::isInterval() const { return rules_.frequency.dayMode == Mode::dayInterval; }

bool NaiveDue::dependsOnLog() const { return isCounted() || isInterval(); }

bool NaiveDue::isPaused(const qz::YYYYMMDD& day) const {
  return std::ranges::any_of(
      rules_.pauses, [&](const TaskPause& pause) { return pause.from <= day && (!pause.to || day <= *pause.to); });
}

bool NaiveDue::isPausedSomeDay(const NaivePeriod& period) const {
  for (qz::YYYYMMDD day = period.from; day <= period.to; day = day.nextDay())
    if (isPaused(day)) return true;
  return false;
}

bool NaiveDue::isPausedThroughout(const NaivePeriod& period) const {
  for (qz::YYYYMMDD day = period.from; day <= period.to; day = day.nextDay())
    if (!isPaused(day)) return false;
  return true;
}

/// Every day, but in the two modes of specific days those that are chosen.
bool NaiveDue::calendarSaysSo(const qz::YYYYMMDD& day) const {
  const TaskFrequency& frequency = rules_.frequency;
  if (frequency.dayMode == Mode::specificDaysOfWeek) return frequency.days.contains(day.dayOfWeek());
  if (frequency.dayMode != Mode::specificDaysOfMonth) return true;
  const std::int64_t left = day.numberOfDaysRemainingThisMonth(false);
  return frequency.daysOfMonth.contains(DaysOfMonth::day(day.d())) ||
         (left <= 7 && frequency.daysOfMonth.contains(DaysOfMonth::lastDay(left)));
}

void NaiveDue::judge(NaivePeriod& period, std::span<const NaivePeriod> before) const {
  if (period.isDay() && isCounted()) {
    const TaskFrequencyPeriodType type = rules_.frequency.periodTypeForCompletionCountCalculation();
    period.numbers.countingFrom = firstDate(type, period.from, rules_.firstDayOfWeek, rules_.referenceDate);
    period.numbers.countingTo = lastDate(type, period.from, rules_.firstDayOfWeek, rules_.referenceDate);
    if (rules_.isNegative) {
      countToAvoid(period, before);
    } else {
      countToDo(period, before);
    }
  }
  if (period.isDay() && isInterval()) measureInterval(period, before);
  period.isDue = isDue(period);
  period.missIsAllowed = missIsAllowed(period);
}

bool NaiveDue::isDue(const NaivePeriod& period) const {
  if (!period.isDay()) return !period.isCut && !period.isShortened && !isPausedThroughout(period);
  if (isAggregate() || isPaused(period.from)) return false;
  const NaiveNumbers& n = period.numbers;
  if (!rules_.isNegative && isCounted()) return *n.completed + *n.stillPossible < *n.required;
  if (!rules_.isNegative && isInterval()) return n.daysSince && *n.daysSince % rules_.frequency.dayInterval == 0;
  return calendarSaysSo(period.from);
}

bool NaiveDue::missIsAllowed(const NaivePeriod& period) const {
  if (!rules_.isNegative || !period.isDay() || isAggregate()) return false;
  if (isCounted()) return *period.numbers.allowanceLeft > 0;
  if (isInterval()) return !period.numbers.daysSince || *period.numbers.daysSince >= rules_.frequency.dayInterval;
  return !period.isDue;
}

/// Paused, or of a period that was skipped by hand; `today` is the day that is being judged.
bool NaiveDue::isUnavailable(const qz::YYYYMMDD& day, const NaivePeriod& today,
                             std::span<const NaivePeriod> before) const {
  if (isPaused(day)) return true;
  if (today.contains(day)) return today.isSkippedByHand();
  return std::ranges::any_of(
      before, [&](const NaivePeriod& period) { return period.contains(day) && period.isSkippedByHand(); });
}

void NaiveDue::countToDo(NaivePeriod& period, std::span<const NaivePeriod> before) const {
  NaiveNumbers& n = period.numbers;
  const qz::YYYYMMDD day = period.from;
  const qz::YYYYMMDD first = std::max(*n.countingFrom, scope_.created);
  n.completed = numDays(before, isCompleted, *n.countingFrom, day.previousDay());
  n.stillPossible = day.distance(*n.countingTo);
  n.wanted = std::max(rules_.frequency.numCompletions, std::int64_t{1});
  if (scope_.created >= *n.countingFrom)
    n.wanted = *n.wanted * scope_.created.distance(*n.countingTo, true) / n.countingFrom->distance(*n.countingTo, true);
  n.available = first.distance(*n.countingTo, true);
  for (qz::YYYYMMDD earlier = first; earlier <= day; earlier = earlier.nextDay())
    if (isUnavailable(earlier, period, before)) --*n.available;
  n.required = std::min(*n.wanted, *n.available);
}

void NaiveDue::countToAvoid(NaivePeriod& period, std::span<const NaivePeriod> before) const {
  NaiveNumbers& n = period.numbers;
  const std::int64_t length = longestLength(rules_.frequency.periodTypeForCompletionCountCalculation());
  n.allowance = length - std::clamp(rules_.frequency.numCompletions, std::int64_t{1}, length);
  const std::int64_t failed = numDays(before, isFailed, *n.countingFrom, period.from.previousDay());
  n.allowanceLeft = std::max(*n.allowance - failed, std::int64_t{0});
}

/// To do, from the last completed day, else from the anchor; to avoid, from the last failed day.
void NaiveDue::measureInterval(NaivePeriod& period, std::span<const NaivePeriod> before) const {
  NaiveNumbers& n = period.numbers;
  n.countedFrom = lastDayBefore(before, rules_.isNegative ? isFailed : isCompleted);
  if (!rules_.isNegative && !n.countedFrom) {
    const qz::YYYYMMDD anchor = rules_.referenceDate.value_or(scope_.created);
    if (anchor <= period.from) n.countedFrom = anchor;
  }
  if (n.countedFrom) n.daysSince = n.countedFrom->distance(period.from);
}

}  // namespace habitra
