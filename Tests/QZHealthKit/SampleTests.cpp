#include "QZHealthKit/SampleMaking.h"

#include <gtest/gtest.h>
#include <QZHealthKit/QZHKActivitySummary.h>

#include <chrono>
#include <limits>
#include <string>

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

TEST(SampleTests, LiesInAYearAndLastsAMonthAtMost) {
  const auto complaint = [](T type, Moment start, Moment end) {
    QZHKSample changed = sample(type, 0, 0);
    if (type == T::stepCount) changed.value = QZHKQuantity{1, U::count};
    changed.start = start;
    changed.end = end;
    return problem(changed).value_or("");
  };
  constexpr std::chrono::microseconds tick{1};
  const std::string outside = "stepCount lies outside the years 1900 to 2999";
  EXPECT_EQ(complaint(T::stepCount, Moment::min(), Moment::max()), outside);
  EXPECT_EQ(complaint(T::stepCount, Moment::max(), Moment::min()), "stepCount ends before it starts");
  EXPECT_EQ(complaint(T::stepCount, earliestSampleMoment - tick, earliestSampleMoment), outside);
  EXPECT_EQ(complaint(T::stepCount, latestSampleMoment, latestSampleMoment + tick), outside);
  EXPECT_EQ(complaint(T::stepCount, earliestSampleMoment, earliestSampleMoment + longestSample), "");
  EXPECT_EQ(complaint(T::stepCount, latestSampleMoment - longestSample, latestSampleMoment), "");
  EXPECT_EQ(complaint(T::stepCount, minute(0), minute(0) + longestSample + tick),
            "stepCount lasts longer than 31 days");
  EXPECT_EQ(complaint(T::standHour, minute(30), minute(90)), "");
  EXPECT_EQ(complaint(T::standHour, minute(30), minute(31)), "standHour needs to last one hour");
  EXPECT_EQ(complaint(T::rollHour, minute(30), minute(30)), "rollHour needs to last one hour");
}

TEST(SampleTests, RingsWithoutAGoalAreNotClosed) {
  QZHKActivitySummary summary{
      .day = {minute(0), minute(1440)}, .move = {420, 400}, .exercise = {15, 30}, .stand = {12, 0}};
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
