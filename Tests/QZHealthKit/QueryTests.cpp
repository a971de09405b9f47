#include "QZHealthKit/SampleMaking.h"

#include <gtest/gtest.h>
#include <QZHealthKit/QZHKQuery.h>
#include <rapidcheck/gtest.h>

#include <string>

namespace qz {
namespace {

using T = QZHKObjectType;
using U = QZHKUnit;
using O = QZHKStatisticsOption;
using enum QZHKWorkoutActivityType;

TEST(QueryTests, SamplesLieInEverySpanThatTheyReachInto) {
  const QZHKSampleQuery query{.objectType = T::mindfulSession, .span = {minute(60), minute(120)}, .predicate = {}};
  EXPECT_TRUE(query.matches(sample(T::mindfulSession, 60, 60)));
  EXPECT_TRUE(query.matches(sample(T::mindfulSession, 119, 140)));
  EXPECT_TRUE(query.matches(sample(T::mindfulSession, 59, 61)));
  EXPECT_TRUE(query.matches(sample(T::mindfulSession, 0, 1440)));
  EXPECT_FALSE(query.matches(sample(T::mindfulSession, 30, 60)));
  EXPECT_FALSE(query.matches(sample(T::mindfulSession, 120, 130)));
  EXPECT_FALSE(query.matches(sample(T::mindfulSession, 120, 120)));
  EXPECT_FALSE(query.matches(sample(T::flossingEvent, 60, 61)));
}

RC_GTEST_PROP(QueryTests, ASpanOverlapsWhatAMomentOfItIsIn, ()) {
  const int from = *rc::gen::inRange(0, 12);
  const int to = *rc::gen::inRange(0, 12);
  const int start = *rc::gen::inRange(0, 12);
  const int end = *rc::gen::inRange(start, 12);
  bool isShared = from <= start && start < to;
  for (int at = start; at < end; ++at) isShared = isShared || (from <= at && at < to);
  RC_ASSERT((QZHKSpan{minute(from), minute(to)}.overlaps(minute(start), minute(end))) == isShared);
}

TEST(QueryTests, PredicatesLetThroughWhatTheyName) {
  QZHKSample walk = sample(T::workout, 0, 30, QZHKWorkout{walking});
  EXPECT_TRUE(QZHKPredicate{}.matches(walk));

  QZHKPredicate ofTask;
  ofTask.task = identifier(200);
  EXPECT_FALSE(ofTask.matches(walk));
  walk.task = identifier(201);
  EXPECT_FALSE(ofTask.matches(walk));
  walk.task = identifier(200);
  EXPECT_TRUE(ofTask.matches(walk));

  QZHKPredicate onFoot;
  onFoot.workoutTypes = {walking, hiking};
  EXPECT_TRUE(onFoot.matches(walk));
  EXPECT_FALSE(onFoot.matches(sample(T::workout, 0, 30, QZHKWorkout{rowing})));
  EXPECT_FALSE(onFoot.matches(sample(T::sleepAnalysis, 0, 30, QZHKSleepValue::core)));

  QZHKPredicate ofPhone;
  ofPhone.sources = {"Phone", "Tablet"};
  EXPECT_FALSE(ofPhone.matches(walk));
  EXPECT_TRUE(ofPhone.matches(sample(T::workout, 0, 30, QZHKWorkout{walking}, "Tablet")));

  QZHKPredicate others;
  others.excluded = {identifier(99), walk.identifier};
  EXPECT_FALSE(others.matches(walk));
  others.excluded.erase(walk.identifier);
  EXPECT_TRUE(others.matches(walk));

  QZHKPredicate asleep;
  asleep.sleepValues = {QZHKSleepValue::deep, QZHKSleepValue::core};
  EXPECT_TRUE(asleep.matches(sample(T::sleepAnalysis, 0, 30, QZHKSleepValue::core)));
  EXPECT_FALSE(asleep.matches(sample(T::sleepAnalysis, 0, 30, QZHKSleepValue::awake)));
}

TEST(QueryTests, FiguresThatATypeHasNotAreRefused) {
  const auto complaint = [](T type, U unit, QZHKStatisticsOptions options) {
    const QZHKSampleQuery samples{.objectType = type, .span = {minute(0), minute(1440)}, .predicate = {}};
    return problem(QZHKStatisticsQuery{.samples = samples, .unit = unit, .options = options}).value_or("");
  };
  EXPECT_EQ(complaint(T::stepCount, U::litre, {O::mostRecent}), "stepCount is not measured in L");
  EXPECT_EQ(complaint(T::sleepAnalysis, U::hour, {O::duration}), "");
  EXPECT_EQ(complaint(T::sleepAnalysis, U::hour, {O::cumulativeSum}), "sleepAnalysis is not measured in hr");
  EXPECT_EQ(complaint(T::bodyMass, U::kilogram, {O::cumulativeSum}), "bodyMass does not add up");
  EXPECT_EQ(complaint(T::stepCount, U::count, {O::discreteMax}), "stepCount has no extremes");
  EXPECT_EQ(complaint(T::workout, U::count, {O::mostRecent}), "workout has no amounts");
  EXPECT_EQ(complaint(T::workout, U::kilojoule, {O::duration, O::cumulativeSum}), "");
  EXPECT_EQ(complaint(T::dietaryIron, U::microgram, {O::mostRecent}), "");
  for (const O option : {O::cumulativeSum, O::discreteMin, O::mostRecent, O::duration}) {
    EXPECT_EQ(complaint(T::activitySummary, U::count, {option}), "activitySummary has no samples");
  }
}

TEST(QueryTests, ObserversAreDescribedForALog) {
  const QZHKObserverQuery query{.identifier = identifier(7),
                                .objectTypes = {T::workout, T::stepCount},
                                .updateFrequency = QZHKUpdateFrequency::hourly};
  EXPECT_EQ(
      query.debugDescription(),
      "identifier=00000000-0000-0000-0000-000000000007, objectTypes=[stepCount, workout], updateFrequency=hourly");
}

}  // namespace
}  // namespace qz
