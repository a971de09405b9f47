#pragma once

#include <QZHealthKit/QZHKObjectType.h>
#include <QZHealthKit/QZHKQuery.h>

#include <array>

namespace qz {

/// One ring of the day: what was reached of what was meant to be, both in the ring's unit.
struct QZHKActivityRing {
  double value = 0;
  double goal = 0;

  /// The value as a share of the goal; above 1 beyond it, and 0 when there is no goal (0 or less).
  [[nodiscard]] double share() const { return goal > 0 ? value / goal : 0; }

  friend bool operator==(const QZHKActivityRing&, const QZHKActivityRing&) = default;
};

/// What the values of the rings are made of, and their goals.
inline constexpr std::array ringValueTypes{QZHKObjectType::activeEnergyBurned, QZHKObjectType::exerciseTime,
                                           QZHKObjectType::standHour, QZHKObjectType::rollHour};
inline constexpr std::array ringGoalTypes{QZHKObjectType::activeEnergyGoal, QZHKObjectType::exerciseGoal,
                                          QZHKObjectType::standGoal};

/// The three rings of one day. The values are sums over the day, as QZHKStatistics tells them; goals are samples as
/// well, of `activeEnergyGoal`, `exerciseGoal` and `standGoal`: on a day stands the one that starts last before the day
/// is over (of several, the one with the greatest identifier), however long ago, and without any the goal is 0.
struct QZHKActivitySummary {
  QZHKSpan day;               ///< from the first moment of the day to that of the next
  QZHKActivityRing move;      ///< `activeEnergyBurned`, in kilocalories
  QZHKActivityRing exercise;  ///< `exerciseTime`, in minutes
  QZHKActivityRing stand;     ///< the number of `standHour` or, where it is greater, of `rollHour`

  /// Whether each ring has a goal and reached it.
  [[nodiscard]] bool isComplete() const { return move.share() >= 1 && exercise.share() >= 1 && stand.share() >= 1; }

  friend bool operator==(const QZHKActivitySummary&, const QZHKActivitySummary&) = default;
};

}  // namespace qz
