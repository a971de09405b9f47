#include <HabitraCore/TaskMeasure.h>

#include <algorithm>
#include <cmath>

namespace habitra {

namespace {

TaskProgress byHand(const DatedPeriod& period, std::int64_t expectedUnits, std::int64_t numUnits) {
  if (expectedUnits > 1) {
    return TaskProgressDiscrete{.period = period, .expectedCompletions = expectedUnits, .numCompletions = numUnits};
  }
  const double share = static_cast<double>(numUnits);
  return TaskProgressSimple{
      .period = period, .progressPct = share, .currentCompletionProgressPct = std::min(share, 1.0)};
}

TaskProgress byQuantity(double target, const DatedPeriod& period, std::int64_t expectedUnits,
                        const ProgressMade& made) {
  return TaskProgressContinuous{
      .period = period,
      .expectedCompletions = expectedUnits,
      .targetValue = target,
      .currentValue = made.amount ? nearestFinite(*made.amount) : amountOfUnits(made.numUnits, target, expectedUnits)};
}

/// Whole completions of so many seconds; no more than doubles tell apart.
std::int64_t completionsIn(double seconds, double target, std::int64_t expectedUnits) {
  if (!(target > 0.0) || !(seconds > 0.0)) return 0;
  const double completions = seconds / target * static_cast<double>(expectedUnits);
  auto count = static_cast<std::int64_t>(std::min(completions, 0x1p53));
  // The quotient is rounded either way.
  if (amountOfUnits(count, target, expectedUnits) > seconds) --count;
  if (amountOfUnits(count + 1, target, expectedUnits) <= seconds) ++count;
  return count;
}

TaskProgress byTime(const TaskMeasure& measure, double target, const DatedPeriod& period, std::int64_t expectedUnits,
                    const ProgressMade& made) {
  TaskProgressTimer timer{.period = period,
                          .unit = measure.unit,
                          .expectedCompletions = expectedUnits,
                          .numCompletions = made.numUnits,
                          .totalTargetDuration = target,
                          .currentCompletionDuration = nearestFinite(made.secondsTimed)};
  if (made.amount) {
    const double seconds = std::max(nearestFinite(*made.amount + made.secondsTimed), 0.0);
    timer.numCompletions = completionsIn(seconds, target, expectedUnits);
    timer.currentCompletionDuration = seconds - amountOfUnits(timer.numCompletions, target, expectedUnits);
  }
  return timer;
}

TaskProgress byRings(const DatedPeriod& period, std::int64_t expectedUnits, const ProgressMade& made) {
  const double ring = made.amount ? nearestFinite(*made.amount) : made.numUnits >= expectedUnits ? 1.0 : 0.0;
  return TaskProgressActivityRings{.period = period, .energy = ring, .exercise = ring, .stand = ring};
}

}  // namespace

TaskProgressCodable progressRecord(const TaskMeasure& measure, const DatedPeriod& period, std::int64_t expectedUnits,
                                   const ProgressMade& made) {
  const double target = nearestFinite(measure.target);
  switch (measure.kind) {
    case TaskMeasure::Kind::byHand: break;
    case TaskMeasure::Kind::quantity: return {byQuantity(target, period, expectedUnits, made)};
    case TaskMeasure::Kind::timed: return {byTime(measure, target, period, expectedUnits, made)};
    case TaskMeasure::Kind::rings: return {byRings(period, expectedUnits, made)};
  }
  return {byHand(period, expectedUnits, made.numUnits)};
}

}  // namespace habitra
