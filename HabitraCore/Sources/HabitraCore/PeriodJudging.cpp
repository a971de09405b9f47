#include <HabitraCore/PeriodJudging.h>

#include <cmath>

namespace habitra {

namespace {

/// The amount that a partial entry reports: the amount itself, else the share of the target that it names.
std::optional<double> reportedAmount(const LoggedEntry& entry, const TaskMeasure& measure) {
  const bool isRings = measure.kind == TaskMeasure::Kind::rings;
  if (!isRings && std::isfinite(entry.progressTotal) && entry.progressTotal > 0) return entry.progressTotal;
  if (!std::isfinite(entry.progress) || entry.progress <= 0) return std::nullopt;
  return isRings ? entry.progress : entry.progress * measure.target;
}

}  // namespace

void MadeProgress::fill() {
  made_.numUnits = std::max(made_.numUnits, expectedUnits_);
  made_.secondsTimed = 0.0;
  if (made_.amount) made_.amount = std::max(*made_.amount, target_);
}

void MadeProgress::takeMeasured(const LoggedEntry& entry) {
  reported_ = isPartial(entry.entryType) ? reportedAmount(entry, measure_) : std::nullopt;
  if (measure_.kind != TaskMeasure::Kind::timed || !isTimer(entry.entryType)) return;
  if (std::isfinite(entry.progressTotal) && entry.progressTotal > 0) made_.secondsTimed += entry.progressTotal;
}

void MadeProgress::addMeasuredUnit() {
  made_.secondsTimed = 0.0;
  if (reported_) {
    made_.amount = reported_;
  } else if (made_.amount) {
    made_.amount = amountAfterUnit(*made_.amount, target_, expectedUnits_);
  } else {
    made_.numUnits = qz::checkedAdd(made_.numUnits, std::int64_t{1});
  }
}

/// Timed runs do not count here: an entry of a run changes no status, and the completion that it leads to is an entry
/// of its own, which must not find the target reached already.
bool MadeProgress::isTargetReached() const {
  if (target_ <= 0) return false;
  return made_.amount ? *made_.amount >= target_ : made_.numUnits >= expectedUnits_;
}

}  // namespace habitra
