#pragma once

#include <QZHealthKit/QZHKObjectType.h>
#include <QZHealthKit/QZHKQuantity.h>
#include <QZHealthKit/QZHKSleepValue.h>
#include <QZHealthKit/QZHKWorkoutActivityType.h>
#include <QZKit/Clock.h>
#include <QZKit/UniqueID.h>

#include <optional>
#include <string>
#include <variant>

namespace qz {

/// What a sample of `workout` says: the activity, and what it took where that was measured.
struct QZHKWorkout {
  QZHKWorkoutActivityType activityType = QZHKWorkoutActivityType::other;
  std::optional<QZHKQuantity> energy;
  std::optional<QZHKQuantity> distance;

  friend bool operator==(const QZHKWorkout&, const QZHKWorkout&) = default;
};

/// What a sample says. Which alternative it is follows from the type: an amount for every quantity, a sleep value for
/// `sleepAnalysis`, a workout for `workout`. The rest say nothing but that it was so: that the person stood or rolled
/// in an hour (there is no sample for an idle one), brushed, washed, was warned, had a recording made.
using QZHKSampleValue = std::variant<std::monostate, QZHKQuantity, QZHKSleepValue, QZHKWorkout>;

/// One record of a health store: what was measured, or took place, from one moment to another. A fact: it is written
/// once and not changed.
struct QZHKSample {
  UniqueID identifier;
  QZHKObjectType objectType;
  Moment start;
  Moment end;  ///< not before the start; equal to it for what has no length
  QZHKSampleValue value;
  std::string source;                 ///< the program that wrote it, not empty; what statistics tell sources apart by
  std::optional<std::string> device;  ///< what measured it
  std::optional<UniqueID> task;       ///< the task it was written for

  /// What it says, where it says that.
  [[nodiscard]] std::optional<QZHKQuantity> quantity() const;
  [[nodiscard]] std::optional<QZHKSleepValue> sleepValue() const;
  [[nodiscard]] std::optional<QZHKWorkout> workout() const;

  /// What it adds to a sum in this unit, in the unit it came in: its amount; of a workout, the energy for a unit of
  /// energy and the distance for one of length, where they were measured; else one, in `count`.
  [[nodiscard]] std::optional<QZHKQuantity> contribution(QZHKUnit unit) const;

  friend bool operator==(const QZHKSample&, const QZHKSample&) = default;
};

/// What every amount is below, in any unit: no measurement comes near it, and sums of amounts stay finite.
inline constexpr double amountLimit = 1e12;

/// Why this cannot be a record, as a sentence fit for an error; none when it can. A record says what its type asks for,
/// does not end before it starts and names its source. Amounts are in a unit that measures the type, below the limit
/// (and so finite), and not below zero unless they are temperatures.
[[nodiscard]] std::optional<std::string> problem(const QZHKSample& sample);

}  // namespace qz
