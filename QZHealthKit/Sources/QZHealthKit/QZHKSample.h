#pragma once

#include <QZHealthKit/QZHKObjectType.h>
#include <QZHealthKit/QZHKQuantity.h>
#include <QZHealthKit/QZHKSleepValue.h>
#include <QZHealthKit/QZHKWorkoutActivityType.h>
#include <QZKit/Clock.h>
#include <QZKit/UniqueID.h>

#include <chrono>
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
/// `sleepAnalysis`, a workout for `workout`. The rest say nothing but that it was so: that the person brushed, washed,
/// was warned, had a recording made, or stood or rolled in an hour. Such a sample covers its whole hour, however much
/// of it the person stood, and there is none for an idle hour.
using QZHKSampleValue = std::variant<std::monostate, QZHKQuantity, QZHKSleepValue, QZHKWorkout>;

/// One record of a health store: what was measured, or took place, from one moment to another. A fact: it is written
/// once and not changed.
struct QZHKSample {
  UniqueID identifier;
  QZHKObjectType objectType;
  Moment start;
  Moment end;  ///< not before the start; equal to it for what has no length
  QZHKSampleValue value;
  std::string source;                 ///< the program that wrote it, not empty; sums tell sources apart by it
  std::optional<std::string> device;  ///< what measured it
  std::optional<UniqueID> task;       ///< the task it was written for

  /// What it says, where it says that.
  [[nodiscard]] std::optional<QZHKQuantity> quantity() const;
  [[nodiscard]] std::optional<QZHKSleepValue> sleepValue() const;
  [[nodiscard]] std::optional<QZHKWorkout> workout() const;

  friend bool operator==(const QZHKSample&, const QZHKSample&) = default;
};

/// What every amount is below, in any unit: no measurement comes near it, and sums of amounts stay finite.
inline constexpr double amountLimit = 1e12;

/// The years 1900 to 2999 in UTC, between which every sample lies: no living person was measured before, what lies
/// beyond is a slip of the pen, and differences of such moments never overflow.
inline constexpr Moment earliestSampleMoment = std::chrono::sys_days(std::chrono::year(1900) / 1 / 1);
inline constexpr Moment latestSampleMoment = std::chrono::sys_days(std::chrono::year(3000) / 1 / 1);

/// The longest that a sample lasts: programs export totals of days, weeks and months at most. What is longer is a total
/// that says nothing of a day, and a store need not look further back than this for what reaches into a span.
inline constexpr std::chrono::days longestSample{31};

/// Why this cannot be a record, as a sentence fit for an error; none when it can. A record says what its type asks for,
/// does not end before it starts, lies within the years above, lasts no longer than that (`standHour` and `rollHour`:
/// one hour exactly) and names its source. Amounts are in a unit that measures the type, below the limit (and so
/// finite), and not below zero unless they are temperatures.
[[nodiscard]] std::optional<std::string> problem(const QZHKSample& sample);

/// The same of its start and end alone.
[[nodiscard]] std::optional<std::string> problemOfTime(const QZHKSample& sample);

}  // namespace qz
