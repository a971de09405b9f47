#include <QZHealthKit/QZHKQuery.h>

namespace qz {

namespace {

/// Whether the sample says one of the wanted values; any does when none is named.
template <typename Value>
bool isWanted(const std::set<Value>& wanted, const std::optional<Value>& value) {
  return wanted.empty() || (value && wanted.contains(*value));
}

std::optional<std::string> problemOf(QZHKStatisticsOption option, QZHKObjectType type) {
  const bool hasAmounts = kind(type) == QZHKObjectKind::quantity;
  const bool isDiscrete = aggregation(type) == QZHKAggregation::discrete;
  switch (option) {
    case QZHKStatisticsOption::cumulativeSum: return isDiscrete ? std::optional("does not add up") : std::nullopt;
    case QZHKStatisticsOption::discreteAverage:
    case QZHKStatisticsOption::discreteMin:
    case QZHKStatisticsOption::discreteMax:
      return hasAmounts && isDiscrete ? std::nullopt : std::optional("has neither a mean nor extremes");
    case QZHKStatisticsOption::mostRecent: return hasAmounts ? std::nullopt : std::optional("has no amounts");
    case QZHKStatisticsOption::duration:
    case QZHKStatisticsOption::separateBySource: return std::nullopt;
  }
  return std::nullopt;
}

}  // namespace

bool QZHKPredicate::matches(const QZHKSample& sample) const {
  return (!source || sample.source == *source) && (!task || sample.task == task) &&
         isWanted(workoutTypes, sample.workoutActivityType()) && isWanted(sleepValues, sample.sleepValue());
}

bool QZHKSampleQuery::matches(const QZHKSample& sample) const {
  return sample.objectType == objectType && span.contains(sample.start) && predicate.matches(sample);
}

std::optional<std::string> problem(const QZHKStatisticsQuery& query) {
  const QZHKObjectType type = query.samples.objectType;
  const std::string name(rawValue(type));
  if (!isMeasured(type, query.unit)) return name + " is not measured in " + std::string(rawValue(query.unit));
  for (const QZHKStatisticsOption option : query.options) {
    if (const auto found = problemOf(option, type)) return name + " " + *found;
  }
  return std::nullopt;
}

}  // namespace qz
