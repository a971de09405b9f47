#include <HabitraCore/DayForms.h>
#include <HabitraCore/DueRule.h>
#include <QZKit/Checked.h>

#include <algorithm>
#include <limits>

namespace habitra {

namespace {

constexpr std::int32_t noDay = std::numeric_limits<std::int32_t>::min();

std::int32_t numberOrNoDay(std::int32_t intForm) { return intForm == 0 ? noDay : numberOf(intForm); }

std::int32_t intFormOrNone(std::int32_t number) { return number == noDay ? 0 : intForm(dayOfNumber(number)); }

std::int64_t wantedDays(const TaskFrequency& frequency) { return std::max(frequency.numCompletions, std::int64_t{1}); }

}  // namespace

DueRule::Kind DueRule::kindOf(const TaskFrequency& frequency) {
  using Mode = TaskFrequency::DayMode;
  switch (frequency.dayMode) {
    case Mode::specificDaysOfWeek: return Kind::daysOfWeek;
    case Mode::specificDaysOfMonth: return Kind::daysOfMonth;
    case Mode::dayInterval: return Kind::interval;
    case Mode::numberOfDaysInWeek:
    case Mode::numberOfDaysInMonth:
    case Mode::numberOfDaysInYear:
    case Mode::numberOfDaysInFortnight: return Kind::countedDays;
    case Mode::aggregateOverWeek:
    case Mode::aggregateOverMonth:
    case Mode::aggregateOverFortnight:
    case Mode::aggregateOverYear: break;
  }
  return Kind::longerPeriods;
}

DueRule::DueRule(const TaskRules& rules, const qz::YYYYMMDD& created)
    : rules_(rules),
      kind_(kindOf(rules.frequency)),
      days_(rules.frequency.days),
      daysOfMonth_(rules.frequency.daysOfMonth),
      interval_(kind_ == Kind::interval ? qz::checkedNarrow<std::int32_t>(rules.frequency.dayInterval) : 1),
      created_(numberOf(created)),
      anchor_(numberOf(rules.referenceDate.value_or(created))),
      allowance_(qz::checkedSubtract(nominalLength(rules.frequency.periodTypeForCompletionCountCalculation()),
                                     wantedDays(rules.frequency))),
      periodStart_(std::numeric_limits<std::int32_t>::min()),
      periodEnd_(kind_ == Kind::countedDays ? std::numeric_limits<std::int32_t>::min()
                                            : std::numeric_limits<std::int32_t>::max()) {}

void DueRule::goOnFrom(const DueCounts& counts, const qz::YYYYMMDD& closedThrough) {
  if (kind_ == Kind::countedDays) beginPeriod(closedThrough);
  completedDays_ = counts.completedDays;
  unavailableDays_ = counts.unavailableDays;
  failedDays_ = counts.failedDays;
  lastCompleted_ = numberOrNoDay(counts.lastCompletedDay);
  lastFailed_ = numberOrNoDay(counts.lastFailedDay);
}

DueCounts DueRule::counts() const {
  return {.completedDays = qz::checkedNarrow<std::int32_t>(completedDays_),
          .unavailableDays = qz::checkedNarrow<std::int32_t>(unavailableDays_),
          .failedDays = qz::checkedNarrow<std::int32_t>(failedDays_),
          .lastCompletedDay = intFormOrNone(lastCompleted_),
          .lastFailedDay = intFormOrNone(lastFailed_)};
}

void DueRule::beginPeriod(const qz::YYYYMMDD& date) {
  const TaskFrequencyPeriodType type = rules_.frequency.periodTypeForCompletionCountCalculation();
  periodStart_ = numberOf(firstDate(type, date, rules_.firstDayOfWeek, rules_.referenceDate));
  periodEnd_ = numberOf(lastDate(type, date, rules_.firstDayOfWeek, rules_.referenceDate));
  usableDays_ = periodEnd_ - std::max(periodStart_, created_) + 1;
  wanted_ = wantedDays(rules_.frequency);
  if (periodStart_ < created_) {
    wanted_ = qz::checkedMultiply(wanted_, usableDays_) / (periodEnd_ - periodStart_ + 1);
  }
  completedDays_ = 0;
  unavailableDays_ = 0;
  failedDays_ = 0;
}

}  // namespace habitra
