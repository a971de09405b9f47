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

bool MadeProgress::isTargetReached() const {
  if (!(target_ > 0)) return false;
  if (!made_.amount && made_.secondsTimed == 0.0) return made_.numUnits >= expectedUnits_;
  const double amount = made_.amount.value_or(amountOfUnits(made_.numUnits, target_, expectedUnits_));
  return amount + made_.secondsTimed >= target_;
}

}  // namespace habitra
