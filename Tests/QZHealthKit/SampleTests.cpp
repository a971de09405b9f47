#include "QZHealthKit/SampleMaking.h"

#include <gtest/gtest.h>
#include <QZHealthKit/QZHKActivitySummary.h>
#include <QZHealthKit/QZHKQuery.h>

#include <limits>

namespace qz {
namespace {

using T = QZHKObjectType;
using U = QZHKUnit;
using enum QZHKWorkoutActivityType;

TEST(SampleTests, SaysWhatItsTypeAsksFor) {
  EXPECT_EQ(problem(sample(T::stepCount, 0, 10, QZHKQuantity{900, U::count})), std::nullopt);
  EXPECT_EQ(problem(sample(T::bodyTemperature, 0, 0, QZHKQuantity{-2, U::degreeCelsius})), std::nullopt);
  EXPECT_EQ(problem(sample(T::sleepAnalysis, 0, 480, QZHKSleepValue::deep)), std::nullopt);
  EXPECT_EQ(problem(sample(T::workout, 0, 30, QZHKWorkout{rowing})), std::nullopt);
  EXPECT_EQ(problem(sample(T::electrocardiogram, 0, 1)), std::nullopt);

  EXPECT_EQ(problem(sample(T::stepCount, 10, 9, QZHKQuantity{1, U::count})), "stepCount ends before it starts");
  EXPECT_EQ(problem(sample(T::standHour, 0, 60, {}, "")), "standHour needs a source");
  EXPECT_EQ(problem(sample(T::stepCount, 0, 1)), "stepCount needs an amount");
  EXPECT_EQ(problem(sample(T::dietaryWater, 0, 0, QZHKQuantity{1, U::gram})), "dietaryWater is not measured in g");
  EXPECT_EQ(problem(sample(T::dietaryWater, 0, 0, QZHKQuantity{-1, U::litre})), "dietaryWater cannot be below zero");
  for (const double amount :
       {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(), amountLimit}) {
    EXPECT_EQ(problem(sample(T::height, 0, 0, QZHKQuantity{amount, U::metre})), "height needs an amount below 10^12");
  }
  EXPECT_EQ(problem(sample(T::sleepAnalysis, 0, 1, QZHKWorkout{running})), "sleepAnalysis needs a sleep value");
  EXPECT_EQ(problem(sample(T::workout, 0, 1, QZHKSleepValue::rem)), "workout needs an activity");
  const QZHKWorkout byWeight{.activityType = rowing, .energy = std::nullopt, .distance = QZHKQuantity{1, U::kilogram}};
  EXPECT_EQ(problem(sample(T::workout, 0, 1, byWeight)), "workout is not measured in kg");
  EXPECT_EQ(problem(sample(T::flossingEvent, 0, 1, QZHKQuantity{1, U::count})), "flossingEvent takes no value");
  EXPECT_EQ(problem(sample(T::activitySummary, 0, 1)), "activitySummary has no samples");
}

TEST(SampleTests, BelongsToTheSpanInWhichItStarts) {
  const QZHKSampleQuery query{.objectType = T::mindfulSession, .span = {minute(60), minute(120)}, .predicate = {}};
  EXPECT_TRUE(query.matches(sample(T::mindfulSession, 60, 60)));
  EXPECT_TRUE(query.matches(sample(T::mindfulSession, 119, 140)));
  EXPECT_FALSE(query.matches(sample(T::mindfulSession, 59, 100)));
  EXPECT_FALSE(query.matches(sample(T::mindfulSession, 120, 130)));
  EXPECT_FALSE(query.matches(sample(T::flossingEvent, 60, 61)));
  EXPECT_FALSE((QZHKSpan{minute(2), minute(1)}.contains(minute(1))));
}

TEST(SampleTests, PredicatesLetThroughWhatTheyName) {
  QZHKSample walk = sample(T::workout, 0, 30, QZHKWorkout{walking});
  EXPECT_TRUE(QZHKPredicate{}.matches(walk));

  QZHKPredicate ofTask;
  ofTask.task = identifier(200);
  EXPECT_FALSE(ofTask.matches(walk));
  walk.task = identifier(201);
  EXPECT_FALSE(ofTask.matches(walk));
  walk.task = identifier(200);
  EXPECT_TRUE(ofTask.matches(walk));

  QZHKPredicate ofSource;
  ofSource.source = "Phone";
  EXPECT_FALSE(ofSource.matches(walk));
  walk.source = "Phone";
  EXPECT_TRUE(ofSource.matches(walk));

  QZHKPredicate onFoot;
  onFoot.workoutTypes = {walking, hiking};
  EXPECT_TRUE(onFoot.matches(walk));
  EXPECT_FALSE(onFoot.matches(sample(T::workout, 0, 30, QZHKWorkout{rowing})));
  EXPECT_FALSE(onFoot.matches(sample(T::sleepAnalysis, 0, 30, QZHKSleepValue::core)));

  QZHKPredicate asleep;
  asleep.sleepValues = {QZHKSleepValue::deep, QZHKSleepValue::core};
  EXPECT_TRUE(asleep.matches(sample(T::sleepAnalysis, 0, 30, QZHKSleepValue::core)));
  EXPECT_FALSE(asleep.matches(sample(T::sleepAnalysis, 0, 30, QZHKSleepValue::awake)));
}

TEST(SampleTests, RingsWithoutAGoalAreNotClosed) {
  QZHKActivitySummary summary{.day = {minute(0), minute(1440)},
                              .move = {420, 400},
                              .moveUnit = U::kilocalorie,
                              .exercise = {15, 30},
                              .stand = {12, 0}};
  EXPECT_EQ(summary.move.share(), 1.05);
  EXPECT_EQ(summary.exercise.share(), 0.5);
  EXPECT_EQ(summary.stand.share(), 0);
  summary.exercise.value = 30;
  EXPECT_FALSE(summary.isComplete());
  summary.stand.goal = 12;
  EXPECT_TRUE(summary.isComplete());
}

}  // namespace
}  // namespace qz
