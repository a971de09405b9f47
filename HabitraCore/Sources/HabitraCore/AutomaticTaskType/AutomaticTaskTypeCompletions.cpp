// Into how many parts the target of an automatic task is split.

#include <HabitraCore/AutomaticTaskType/AutomaticTaskType.h>
#include <QZKit/Checked.h>

#include <algorithm>
#include <cmath>

namespace habitra {

namespace {

using Kind = AutomaticTaskType::TaskType::Kind;

/// The most parts that anybody keeps count of, in a day and in a longer period.
std::int64_t longCap(TaskFrequencyPeriodType measurementDuration) {
  return measurementDuration == TaskFrequencyPeriodType::day ? 18 : 36;
}

/// From dietaryDrinkWater to energyDeficit.
bool isNutrition(HealthType type) { return type.isDietary() || type == HealthType::energyDeficit; }

/// As many glasses as the water fills: of 8 US fluid ounces, a quarter of a litre, or a cup.
double numGlasses(double quantity, std::optional<TypeUnit> unit) {
  if (unit == TypeUnit::fluidOuncesUS) return quantity * 0.125;
  if (unit == TypeUnit::litres) return quantity * 4;
  if (unit == TypeUnit::millilitres) return quantity / 250;
  if (unit == TypeUnit::cupsUS) return quantity;
  return 1;
}

std::int64_t capped(std::int64_t count, std::int64_t cap) {
  return std::max(std::min(count, cap), AutomaticTaskType::minPartialCompletions);
}

}  // namespace

std::int64_t AutomaticTaskType::maxPartialCompletions(TaskFrequencyPeriodType measurementDuration) const {
  const std::int64_t most = longCap(measurementDuration);
  if (type.kind() == Kind::timer) return most;
  const auto healthType = type.healthType();
  if (!healthType || healthType == HealthType::activity || healthType == HealthType::energyDeficit) return 1;
  if (healthType->canBeTimed() || isNutrition(*healthType) || healthType == HealthType::alcoholConsumption) return most;
  return unit ? 1 : most;
}

std::int64_t AutomaticTaskType::suggestedNumPartialCompletions(TaskFrequencyPeriodType measurementDuration) const {
  const auto healthType = type.healthType();
  if (!healthType) return 1;
  const std::int64_t most = longCap(measurementDuration);
  switch (*healthType) {
    case HealthType::toothbrushingEventBrush: return 2;
    case HealthType::dietaryDrinkWater: return capped(qz::checkedCount(numGlasses(quantity, unit)), most);
    case HealthType::handwashingEvent: return unit ? 1 : 6;
    case HealthType::alcoholConsumption: return capped(qz::checkedCount(quantity), most);
    default: return 1;
  }
}

std::int64_t AutomaticTaskType::defaultPartialCompletions(TaskFrequencyPeriodType measurementDuration) const {
  const bool isInCups = type.healthType() == HealthType::dietaryDrinkWater && unit == TypeUnit::cupsUS;
  return isInCups ? capped(qz::checkedCount(quantity), maxPartialCompletions(measurementDuration)) : 1;
}

AutomaticTaskType AutomaticTaskType::timer(double durationPerCompletion, std::int64_t numPartialCompletions,
                                           TypeUnit unit, DataSource dataSource) {
  AutomaticTaskType timer{.type = TaskType::timer(), .unit = unit};
  timer.speeds = {TypeSpeed::timed};
  timer.dataSource = dataSource;
  timer.setTimerDuration(durationPerCompletion, numPartialCompletions);
  return timer;
}

double AutomaticTaskType::timerDurationPerCompletion(std::int64_t numPartialCompletions) const {
  const double total = unit ? unit->convertToTimeInterval(quantity) : quantity;
  // To the millisecond: 125 seconds kept in minutes would come back as a little more, and a timer that has run to its
  // end would not be done.
  return std::round(total * 1'000) / 1'000 /
         static_cast<double>(std::max(numPartialCompletions, minPartialCompletions));
}

void AutomaticTaskType::setTimerDuration(double duration, std::int64_t numPartialCompletions) {
  const double total = static_cast<double>(std::max(numPartialCompletions, minPartialCompletions)) * duration;
  quantity = unit ? unit->convertFromTimeInterval(total) : total;
}

}  // namespace habitra
