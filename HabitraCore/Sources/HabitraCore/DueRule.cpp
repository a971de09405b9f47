#include <HabitraCore/DueRule.h>
#include <QZKit/Checked.h>

#include <algorithm>
#include <limits>

namespace habitra {

namespace {

std::int32_t numberOf(const qz::YYYYMMDD& day) { return qz::checkedNarrow<std::int32_t>(day.dayNumber()); }

std::int32_t numberOf(std::int32_t intForm, std::int32_t none) {
  const auto day = qz::YYYYMMDD::fromRawValue(intForm);
  return day ? numberOf(*day) : none;
}

std::int32_t intForm(std::int32_t number, std::int32_t none) {
  if (number == none) return 0;
  return qz::checkedNarrow<std::int32_t>(qz::YYYYMMDD::fromDayNumber(number).intValue());
}

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
  lastCompleted_ = numberOf(counts.lastCompletedDay, never);
  lastFailed_ = numberOf(counts.lastFailedDay, never);
}

DueCounts DueRule::counts() const {
  return {.completedDays = qz::checkedNarrow<std::int32_t>(completedDays_),
          .unavailableDays = qz::checkedNarrow<std::int32_t>(unavailableDays_),
          .failedDays = qz::checkedNarrow<std::int32_t>(failedDays_),
          .lastCompletedDay = intForm(lastCompleted_, never),
          .lastFailedDay = intForm(lastFailed_, never)};
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
