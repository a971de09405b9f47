#pragma once

#include "NaiveHistoryPeriods.h"

namespace habitra {

/// How many partial entries a period needs.
[[nodiscard]] std::int64_t expectedUnits(const TaskRules& rules);

/// How entries move the progress of a period.
class NaiveShare {
 public:
  NaiveShare(const TaskRules& rules, NaiveProgress& progress) : rules_(rules), progress_(progress) {}

  [[nodiscard]] double value() const;
  /// The same with the timer that runs towards the next completion.
  [[nodiscard]] double valueWithTimer() const;
  [[nodiscard]] bool isReached() const { return valueWithTimer() >= 1.0; }
  /// A full entry takes the whole of it.
  void fill() const;
  /// A partial entry brings the amount it reports, else one unit.
  void add(const LoggedEntry& entry) const;
  void empty() const { progress_ = {}; }
  void runTimer(const LoggedEntry& entry) const { progress_.secondsTimed += entry.progressTotal; }

 private:
  [[nodiscard]] bool isByHand() const { return rules_.measure.kind == TaskMeasure::Kind::byHand; }
  [[nodiscard]] bool isRings() const { return rules_.measure.kind == TaskMeasure::Kind::rings; }
  [[nodiscard]] double target() const { return isRings() ? 1.0 : rules_.measure.target; }

  const TaskRules& rules_;
  NaiveProgress& progress_;
};

}  // namespace habitra
