#include <HabitraCore/ReportedAmount.h>

#include <cmath>

namespace habitra {

std::optional<double> reportedAmount(const LoggedEntry& entry, const TaskMeasure& measure) {
  if (measure.kind == TaskMeasure::Kind::byHand) return std::nullopt;
  const bool isRings = measure.kind == TaskMeasure::Kind::rings;
  if (!isRings && std::isfinite(entry.progressTotal) && entry.progressTotal > 0) return entry.progressTotal;
  if (!std::isfinite(entry.progress) || entry.progress <= 0) return std::nullopt;
  return isRings ? entry.progress : entry.progress * measure.target;
}

double addedAmount(const LoggedEntry& entry, const TaskMeasure& measure, std::int64_t expectedUnits) {
  if (!isTimer(entry.entryType)) return amountOfUnits(1, measure.target, expectedUnits);
  const bool isRun = measure.kind == TaskMeasure::Kind::timed && std::isfinite(entry.progressTotal);
  return isRun && entry.progressTotal > 0 ? entry.progressTotal : 0.0;
}

}  // namespace habitra
