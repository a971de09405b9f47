#include "NaiveHistoryProgress.h"

#include <algorithm>

namespace habitra {

std::int64_t expectedUnits(const TaskRules& rules) {
  const TaskFrequency& frequency = rules.frequency;
  const std::int64_t perCompletion = std::max(frequency.numPartialCompletions, std::int64_t{1});
  if (frequency.measurementDuration() == TaskFrequencyPeriodType::day) return perCompletion;
  return perCompletion * std::max(frequency.numCompletions, std::int64_t{1});
}

double NaiveShare::valueWithTimer() const {
  if (rules_.measure.kind != TaskMeasure::Kind::timed || target() <= 0.0) return value();
  if (progress_.secondsTimed == 0.0) return value();
  const double units = static_cast<double>(progress_.units) * target() / static_cast<double>(expectedUnits(rules_));
  return (progress_.amount.value_or(units) + progress_.secondsTimed) / target();
}

double NaiveShare::value() const {
  if (!isByHand() && target() <= 0.0) return 0.0;
  if (progress_.amount) return *progress_.amount / target();
  return static_cast<double>(progress_.units) / static_cast<double>(expectedUnits(rules_));
}

void NaiveShare::fill() const {
  progress_.units = std::max(progress_.units, expectedUnits(rules_));
  if (progress_.amount) progress_.amount = std::max(*progress_.amount, target());
  progress_.secondsTimed = 0.0;
}

void NaiveShare::add(const LoggedEntry& entry) const {
  progress_.secondsTimed = 0.0;
  const bool reportsTotal = entry.progressTotal > 0.0 && !isRings();
  if (!isByHand() && (reportsTotal || entry.progress > 0.0)) {
    progress_.amount = reportsTotal ? entry.progressTotal : entry.progress * target();
    return;
  }
  ++progress_.units;
  if (progress_.amount) *progress_.amount += target() / static_cast<double>(expectedUnits(rules_));
}

}  // namespace habitra
