#pragma once

#include <QZHealthKit/QZHKQuery.h>
#include <QZHealthKit/QZHKUnit.h>

namespace qz {

/// One ring of the day: what was reached of what was meant to be, both in the ring's unit.
struct QZHKActivityRing {
  double value = 0;
  double goal = 0;

  /// The value as a share of the goal; above 1 beyond it, and 0 when there is no goal (0 or less).
  [[nodiscard]] double share() const { return goal > 0 ? value / goal : 0; }

  friend bool operator==(const QZHKActivityRing&, const QZHKActivityRing&) = default;
};

/// The three rings of one day.
struct QZHKActivitySummary {
  QZHKSpan day;                               ///< from the first moment of the day to that of the next
  QZHKActivityRing move;                      ///< energy spent by moving, or the time spent moving
  QZHKUnit moveUnit = QZHKUnit::kilocalorie;  ///< of the move ring: a unit of energy or of time
  QZHKActivityRing exercise;                  ///< minutes of exercise
  QZHKActivityRing stand;                     ///< hours in which the person stood, or rolled in a wheelchair

  /// Whether each ring has a goal and reached it.
  [[nodiscard]] bool isComplete() const { return move.share() >= 1 && exercise.share() >= 1 && stand.share() >= 1; }

  friend bool operator==(const QZHKActivitySummary&, const QZHKActivitySummary&) = default;
};

}  // namespace qz
