#pragma once

#include <HabitraCore/AutomaticTaskType/PeriodMeasurement.h>
#include <HabitraCore/TaskFrequencyPeriod.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <QZHealthKit/QZHealthStore.h>
#include <QZHealthKit/QZHKChanges.h>
#include <QZKit/UniqueID.h>

#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace habitra {

/// Measures periods of a task from the samples of a health store. A period is the time from the first moment of its
/// first day up to that of the day after its last, in the task's own calendar; for sleep all of it six hours earlier.
///
/// Walking and running are told apart by workouts: what was measured during a run is run, everything else is walked.
///
/// Belongs to one thread; the store must live longer. Functions that read throw QZHealthStoreError.
class HealthMeasuring {
 public:
  /// `task`: the identifier of the task, of which a type may want only its own samples. `withdrawn`: samples that are
  /// not to count, since they are about to be taken out (withdrawnSamples()).
  HealthMeasuring(const qz::QZHealthStore& health, AutomaticTaskType type, std::optional<qz::UniqueID> task,
                  TaskCalendar calendar, std::set<qz::UniqueID> withdrawn = {});

  /// The kinds of data that a task of this type is measured by.
  [[nodiscard]] static std::vector<qz::QZHKObjectType> readTypes(const AutomaticTaskType& type);

  [[nodiscard]] std::vector<qz::QZHKObjectType> readTypes() const { return readTypes(type_); }

  /// What amounts are amounts of, as one word: the type, its unit, what narrows it down and whose data count. The
  /// target is none of it.
  [[nodiscard]] std::string yardstick() const;

  /// Whether the health store has the sample, as one of those that are measured.
  [[nodiscard]] bool holds(const qz::QZHKSample& sample) const;

  /// REQUIRES: the type has a measurementFamily().
  [[nodiscard]] PeriodMeasurement measure(const TaskFrequencyPeriod& period) const;

  /// The first and the last day of which changes within this time can alter a measurement.
  [[nodiscard]] std::pair<qz::YYYYMMDD, qz::YYYYMMDD> daysOf(const qz::QZHKChanges::Reach& reach) const;

 private:
  [[nodiscard]] bool isOfNights() const;
  [[nodiscard]] qz::QZHKSpan span(qz::YYYYMMDD first, qz::YYYYMMDD last) const;
  [[nodiscard]] qz::QZHKSampleQuery query(qz::QZHKObjectType type, const qz::QZHKSpan& span) const;
  [[nodiscard]] std::optional<double> sum(qz::QZHKObjectType type, qz::QZHKUnit unit, const qz::QZHKSpan& span) const;
  [[nodiscard]] PeriodMeasurement amount(const qz::QZHKSpan& span) const;
  [[nodiscard]] PeriodMeasurement walkedOrRun(const qz::QZHKSpan& span) const;
  [[nodiscard]] PeriodMeasurement numberOfSamples(const qz::QZHKSpan& span) const;
  [[nodiscard]] PeriodMeasurement rings(const TaskFrequencyPeriod& period) const;
  [[nodiscard]] PeriodMeasurement bedtimes(const TaskFrequencyPeriod& period) const;
  [[nodiscard]] PeriodMeasurement balance(const qz::QZHKSpan& span) const;
  [[nodiscard]] PeriodMeasurement screenTime(const qz::QZHKSpan& span) const;

  const qz::QZHealthStore& health_;
  const AutomaticTaskType type_;
  const TaskCalendar calendar_;
  qz::QZHKPredicate predicate_;
  bool hasNoTask_ = false;  // whose samples are asked for
};

}  // namespace habitra
