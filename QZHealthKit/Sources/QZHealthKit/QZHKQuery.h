#pragma once

#include <QZHealthKit/QZHKObjectType.h>
#include <QZHealthKit/QZHKSample.h>
#include <QZHealthKit/QZHKSleepValue.h>
#include <QZHealthKit/QZHKStatisticsOptions.h>
#include <QZHealthKit/QZHKUnit.h>
#include <QZHealthKit/QZHKUpdateFrequency.h>
#include <QZHealthKit/QZHKWorkoutActivityType.h>
#include <QZKit/Clock.h>
#include <QZKit/UniqueID.h>

#include <optional>
#include <set>
#include <string>

namespace qz {

/// The time from one moment up to, and without, another: a day, a night, a month. Nothing lies in it unless `from` is
/// before `to`.
struct QZHKSpan {
  Moment from;
  Moment to;

  [[nodiscard]] bool contains(Moment moment) const { return from <= moment && moment < to; }

  friend bool operator==(const QZHKSpan&, const QZHKSpan&) = default;
};

/// Which samples of a type count. What is absent or empty asks for nothing, so that the default lets all through.
struct QZHKPredicate {
  std::optional<std::string> source;               ///< only those that this source wrote
  std::optional<UniqueID> task;                    ///< only those that were written for this task
  std::set<QZHKWorkoutActivityType> workoutTypes;  ///< only workouts of these activities
  std::set<QZHKSleepValue> sleepValues;            ///< only sleep that says one of these

  [[nodiscard]] bool matches(const QZHKSample& sample) const;

  friend bool operator==(const QZHKPredicate&, const QZHKPredicate&) = default;
};

/// Asks for the samples of a type that start within a span.
///
/// A sample belongs, whole, to the span in which it starts. So every sample counts in exactly one of two adjoining
/// days, and a session that runs past midnight is not cut into two halves that both miss their target. Who wants a
/// night in one piece asks for a span from noon to noon.
struct QZHKSampleQuery {
  QZHKObjectType objectType;
  QZHKSpan span;
  QZHKPredicate predicate;

  [[nodiscard]] bool matches(const QZHKSample& sample) const;

  friend bool operator==(const QZHKSampleQuery&, const QZHKSampleQuery&) = default;
};

/// Asks for figures over those samples.
struct QZHKStatisticsQuery {
  QZHKSampleQuery samples;
  QZHKUnit unit = QZHKUnit::count;  ///< what the figures are given in, but for the duration, which has its own
  QZHKStatisticsOptions options;

  friend bool operator==(const QZHKStatisticsQuery&, const QZHKStatisticsQuery&) = default;
};

/// Why the figures cannot be told, as a sentence fit for an error; none when they can. The unit must measure the type,
/// where more than a duration is asked for. A sum needs a cumulative type; mean, least and greatest need amounts of a
/// discrete type; the most recent amount needs a quantity.
[[nodiscard]] std::optional<std::string> problem(const QZHKStatisticsQuery& query);

/// Asks to be told when samples or activity summaries of these types come or go.
struct QZHKObserverQuery {
  UniqueID identifier;
  std::set<QZHKObjectType> objectTypes;
  QZHKUpdateFrequency updateFrequency = QZHKUpdateFrequency::immediate;

  friend bool operator==(const QZHKObserverQuery&, const QZHKObserverQuery&) = default;
};

}  // namespace qz
