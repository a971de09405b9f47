#include <QZHealthKit/QZHKQuery.h>

namespace qz {

namespace {

/// Whether the sample says one of the wanted values; any does when none is named.
template <typename Value>
bool isWanted(const std::set<Value>& wanted, const std::optional<Value>& value) {
  return wanted.empty() || (value && wanted.contains(*value));
}

std::optional<QZHKWorkoutActivityType> activityTypeOf(const QZHKSample& sample) {
  const auto workout = sample.workout();
  return workout ? std::optional(workout->activityType) : std::nullopt;
}

/// Whether figures are asked for that have the query's unit.
bool asksForAmounts(QZHKStatisticsOptions options) {
  constexpr QZHKStatisticsOptions unitless{QZHKStatisticsOption::duration};
  return (options | unitless) != unitless;
}

std::optional<std::string> problemOf(QZHKStatisticsOption option, QZHKObjectType type) {
  const bool hasAmounts = kind(type) == QZHKObjectKind::quantity;
  const bool isDiscrete = aggregation(type) == QZHKAggregation::discrete;
  switch (option) {
    case QZHKStatisticsOption::cumulativeSum: return isDiscrete ? std::optional("does not add up") : std::nullopt;
    case QZHKStatisticsOption::discreteMin:
    case QZHKStatisticsOption::discreteMax:
      return hasAmounts && isDiscrete ? std::nullopt : std::optional("has no extremes");
    case QZHKStatisticsOption::mostRecent: return hasAmounts ? std::nullopt : std::optional("has no amounts");
    case QZHKStatisticsOption::duration: return std::nullopt;
  }
  return std::nullopt;
}

}  // namespace

bool QZHKPredicate::matches(const QZHKSample& sample) const {
  return (!task || sample.task == task) && isWanted(workoutTypes, activityTypeOf(sample)) &&
         isWanted(sleepValues, sample.sleepValue()) && (sources.empty() || sources.contains(sample.source)) &&
         !excluded.contains(sample.identifier);
}

bool QZHKSampleQuery::matches(const QZHKSample& sample) const {
  return sample.objectType == objectType && span.overlaps(sample.start, sample.end) && predicate.matches(sample);
}

std::optional<std::string> problem(const QZHKStatisticsQuery& query) {
  const QZHKObjectType type = query.samples.objectType;
  const std::string name(rawValue(type));
  if (kind(type) == QZHKObjectKind::activitySummary && !query.options.isEmpty()) return name + " has no samples";
  if (asksForAmounts(query.options) && !isMeasured(type, query.unit)) {
    return name + " is not measured in " + std::string(rawValue(query.unit));
  }
  for (const QZHKStatisticsOption option : query.options) {
    if (const auto found = problemOf(option, type)) return name + " " + *found;
  }
  return std::nullopt;
}

std::string QZHKObserverQuery::debugDescription() const {
  std::string types;
  for (const QZHKObjectType type : objectTypes) {
    if (!types.empty()) types += ", ";
    types += rawValue(type);
  }
  return "identifier=" + identifier.text() + ", objectTypes=[" + types +
         "], updateFrequency=" + std::string(rawValue(updateFrequency));
}

}  // namespace qz
