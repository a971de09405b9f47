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

/// The time from one moment up to, and without, another: a day, a month. Nothing lies in it unless `from` is before
/// `to`.
struct QZHKSpan {
  Moment from;
  Moment to;

  [[nodiscard]] bool contains(Moment moment) const { return from <= moment && moment < to; }

  /// Whether some of the time from `start` to `end` lies in it; where the two are one moment, whether that does.
  /// REQUIRES: start <= end.
  [[nodiscard]] bool overlaps(Moment start, Moment end) const {
    return contains(start) || (from < to && start < from && from < end);
  }

  friend bool operator==(const QZHKSpan&, const QZHKSpan&) = default;
};

/// Which samples of a type count. What is absent or empty asks for nothing, so that the default lets all through.
struct QZHKPredicate {
  std::optional<UniqueID> task;                    ///< only those that were written for this task
  std::set<QZHKWorkoutActivityType> workoutTypes;  ///< only workouts of these activities
  std::set<QZHKSleepValue> sleepValues;            ///< only sleep that says one of these
  std::set<std::string> sources;                   ///< only what is from these sources
  std::set<UniqueID> excluded;                     ///< none of these samples

  [[nodiscard]] bool matches(const QZHKSample& sample) const;

  friend bool operator==(const QZHKPredicate&, const QZHKPredicate&) = default;
};

/// Asks for the samples of a type that lie in a span at least in part; of a sample without length, its moment has to.
///
/// Samples come as they were written: a night is many of them, one for each stretch of a stage, and a source may write
/// one walk in pieces. Who judges whole nights or sessions puts together what belongs together.
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
/// where more than a duration is asked for. A sum needs a cumulative type; least and greatest need amounts of a
/// discrete type; the most recent amount needs a quantity. Activity summaries have no figures at all.
[[nodiscard]] std::optional<std::string> problem(const QZHKStatisticsQuery& query);

/// Asks to be told when samples or activity summaries of these types come or go.
struct QZHKObserverQuery {
  UniqueID identifier;
  std::set<QZHKObjectType> objectTypes;
  QZHKUpdateFrequency updateFrequency = QZHKUpdateFrequency::immediate;

  /// For a line of a log: "identifier=..., objectTypes=[stepCount, workout], updateFrequency=hourly".
  [[nodiscard]] std::string debugDescription() const;

  friend bool operator==(const QZHKObserverQuery&, const QZHKObserverQuery&) = default;
};

}  // namespace qz
