#include <HabitraCore/PeriodJudging.h>
#include <HabitraCore/ReportedAmount.h>

namespace habitra {

void MadeProgress::fill() {
  made_.numUnits = std::max(made_.numUnits, expectedUnits_);
  made_.secondsTimed = 0.0;
  if (made_.amount) made_.amount = std::max(*made_.amount, target_);
}

void MadeProgress::takeMeasured(const LoggedEntry& entry) {
  reported_ = isPartial(entry.entryType) ? reportedAmount(entry, measure_) : std::nullopt;
  if (isTimer(entry.entryType)) made_.secondsTimed += addedAmount(entry, measure_, expectedUnits_);
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
