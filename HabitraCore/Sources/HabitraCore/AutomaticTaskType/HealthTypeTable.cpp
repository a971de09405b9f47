#include <HabitraCore/AutomaticTaskType/HealthTypeTable.h>

#include <cmath>

namespace habitra {

namespace {

struct Period {
  double numDays;
  double steps;  ///< the growth of steps
};

Period period(const QuantityRow& row, TaskFrequencyPeriodType measurementDuration) {
  if (row.unit == TypeUnit::timeOfDay) return {.numDays = 1, .steps = 1};
  switch (measurementDuration) {
    case TaskFrequencyPeriodType::day: break;
    case TaskFrequencyPeriodType::week: return {.numDays = 7, .steps = row.steps.week};
    case TaskFrequencyPeriodType::fortnight: return {.numDays = 14, .steps = row.steps.fortnight};
    case TaskFrequencyPeriodType::month: return {.numDays = 30, .steps = row.steps.month};
    case TaskFrequencyPeriodType::year: return {.numDays = 365, .steps = row.steps.year};
  }
  return {.numDays = 1, .steps = 1};
}

/// The double nearest to a product's decimal form: 0.15 and not 0.15000000000000002.
double product(double a, double b) { return std::round(a * b * 1'000) / 1'000; }

}  // namespace

const HealthTypeRow& healthTypeRow(HealthType type) {
  auto index = static_cast<std::size_t>(type.compactNumber());
  if (index < numActivityRows) return activityRows()[index];
  index -= numActivityRows;
  return index < numNutritionRows ? nutritionRows()[index] : recordRows()[index - numNutritionRows];
}

const QuantityRow* quantityRow(std::span<const QuantityRow> rows, TypeUnit unit) {
  for (const QuantityRow& row : rows) {
    if (row.unit == unit) return &row;
  }
  return nullptr;
}

ValueRange quantityOptions(const QuantityRow& row, TaskFrequencyPeriodType measurementDuration) {
  const auto [numDays, steps] = period(row, measurementDuration);
  ValueRange range{
      .lowest = product(row.lowest, steps), .highest = product(row.highest, numDays), .step = product(row.step, steps)};
  range.highest = range.at(range.count() - 1);
  return range;
}

double usualQuantity(const QuantityRow& row, TaskFrequencyPeriodType measurementDuration) {
  return quantityOptions(row, measurementDuration)
      .nearest(product(row.usual, period(row, measurementDuration).numDays));
}

}  // namespace habitra
