#include "QZHealthKit/SampleMaking.h"

#include <gtest/gtest.h>
#include <QZHealthKit/QZHealthStoreError.h>
#include <QZHealthKit/QZHKCoveredTime.h>
#include <QZHealthKit/QZHKStatistics.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

namespace qz {
namespace {

using T = QZHKObjectType;
using U = QZHKUnit;
using O = QZHKStatisticsOption;
using std::chrono::minutes;

QZHKStatisticsQuery query(T type, U unit, QZHKStatisticsOptions options, std::int64_t from = 0,
                          std::int64_t to = 1440) {
  return {.samples = {.objectType = type, .span = {minute(from), minute(to)}, .predicate = {}},
          .unit = unit,
          .options = options};
}

QZHKSample steps(std::int64_t start, std::int64_t end, double amount, std::string source) {
  return sample(T::stepCount, start, end, QZHKQuantity{amount, U::count}, std::move(source));
}

TEST(StatisticsTests, FiguresOfDiscreteAmounts) {
  const std::vector<QZHKSample> samples{
      sample(T::bodyTemperature, 10, 10, QZHKQuantity{98.6, U::degreeFahrenheit}),
      sample(T::bodyTemperature, 20, 40, QZHKQuantity{38, U::degreeCelsius}),
      sample(T::bodyTemperature, 30, 35, QZHKQuantity{39, U::degreeCelsius}),
      sample(T::heartRate, 50, 50, QZHKQuantity{60, U::countPerMinute}),
      sample(T::bodyTemperature, 1440, 1441, QZHKQuantity{41, U::degreeCelsius}),
  };
  const QZHKStatistics answer =
      statistics(samples, query(T::bodyTemperature, U::degreeCelsius,
                                {O::discreteAverage, O::discreteMin, O::discreteMax, O::mostRecent, O::duration}));
  EXPECT_EQ(answer.unit, U::degreeCelsius);
  EXPECT_EQ(answer.figures.sum, std::nullopt);
  EXPECT_DOUBLE_EQ(answer.figures.average.value(), 38);
  EXPECT_DOUBLE_EQ(answer.figures.minimum.value(), 37);
  EXPECT_EQ(answer.figures.maximum, 39);
  EXPECT_EQ(answer.figures.mostRecent, 38);
  EXPECT_EQ(answer.figures.mostRecentEnd, minute(40));
  EXPECT_EQ(answer.figures.duration, minutes(20));
  EXPECT_TRUE(answer.bySource.empty());
}

TEST(StatisticsTests, NothingMeasuredIsNotZero) {
  const auto options = QZHKStatisticsOptions::cumulativeSum | QZHKStatisticsOptions::duration;
  EXPECT_EQ(statistics({}, query(T::stepCount, U::count, options)).figures, QZHKFigures());
  const std::array zero{steps(0, 10, 0, "Watch")};
  EXPECT_EQ(statistics(zero, query(T::stepCount, U::count, options)).figures.sum, 0);
}

TEST(StatisticsTests, TenTenthsMakeAWhole) {
  std::vector<QZHKSample> glasses;
  for (int glass = 0; glass < 10; ++glass) {
    glasses.push_back(sample(T::dietaryWater, glass, glass, QZHKQuantity{100, U::millilitre}));
    glasses.push_back(sample(T::dietaryWater, glass, glass, QZHKQuantity{0.1, U::litre}));
  }
  EXPECT_EQ(statistics(glasses, query(T::dietaryWater, U::litre, {O::cumulativeSum})).figures.sum, 2.0);
}

TEST(StatisticsTests, WhatTwoSourcesMeasureAtTheSameTimeCountsOnce) {
  const std::vector<QZHKSample> samples{
      steps(0, 60, 1000, "Phone"),   steps(60, 120, 700, "Phone"),  // the walk to work and back
      steps(30, 60, 900, "Watch"),   steps(40, 80, 300, "Watch"),   // put on half-way; its own may overlap
      steps(200, 230, 800, "Watch"),                                // the phone stayed at home
      steps(300, 310, 100, "Phone"),                                // the watch is charging
  };
  const auto options = QZHKStatisticsOptions::cumulativeSum | QZHKStatisticsOptions::separateBySource;
  const QZHKStatistics answer = statistics(samples, query(T::stepCount, U::count, options));
  EXPECT_EQ(answer.figures.sum, 2000 + 100);
  EXPECT_EQ(answer.bySource.at("Watch").sum, 2000);
  EXPECT_EQ(answer.bySource.at("Phone").sum, 1800);

  // A glass of water during a meal is one more, though the meal's time covers it.
  const std::vector<QZHKSample> drinks{
      sample(T::dietaryWater, 0, 30, QZHKQuantity{500, U::millilitre}, "Meals"),
      sample(T::dietaryWater, 10, 12, QZHKQuantity{250, U::millilitre}, "Glasses"),
  };
  EXPECT_EQ(statistics(drinks, query(T::dietaryWater, U::millilitre, options)).figures.sum, 750);
}

TEST(StatisticsTests, SamplesWithoutAmountsAreCountedAndTimed) {
  const std::vector<QZHKSample> hours{sample(T::standHour, 0, 60), sample(T::standHour, 60, 120),
                                      sample(T::standHour, 0, 60, {}, "Belt")};
  EXPECT_EQ(statistics(hours, query(T::standHour, U::count, {O::cumulativeSum})).figures.sum, 2);

  const std::vector<QZHKSample> night{sample(T::sleepAnalysis, 0, 420, QZHKSleepValue::inBed, "Mattress"),
                                      sample(T::sleepAnalysis, 30, 200, QZHKSleepValue::core),
                                      sample(T::sleepAnalysis, 190, 260, QZHKSleepValue::rem),
                                      sample(T::sleepAnalysis, 260, 270, QZHKSleepValue::awake),
                                      sample(T::sleepAnalysis, 270, 400, QZHKSleepValue::deep),
                                      sample(T::sleepAnalysis, 100, 300, QZHKSleepValue::asleep, "Mattress")};
  QZHKStatisticsQuery asleep = query(T::sleepAnalysis, U::count, {O::duration, O::separateBySource});
  asleep.samples.predicate.sleepValues = {QZHKSleepValue::core, QZHKSleepValue::rem, QZHKSleepValue::deep};
  EXPECT_EQ(statistics(night, asleep).figures.duration, minutes(230 + 130));
  asleep.samples.predicate.sleepValues.insert(QZHKSleepValue::asleep);
  EXPECT_EQ(statistics(night, asleep).figures.duration, minutes(370));
  EXPECT_EQ(statistics(night, asleep).bySource.at("Mattress").duration, minutes(200));
}

TEST(StatisticsTests, WorkoutsAreCountedTimedAndSummedByWhatTheyTook) {
  const auto workout = [](std::int64_t start, std::int64_t end, std::optional<double> kilocalories,
                          std::string source) {
    QZHKWorkout value{.activityType = QZHKWorkoutActivityType::running, .energy = {}, .distance = {}};
    if (kilocalories) value.energy = QZHKQuantity{*kilocalories, U::kilocalorie};
    return sample(T::workout, start, end, value, std::move(source));
  };
  // The watch saw one run without its energy, the phone the same one with it.
  const std::vector<QZHKSample> runs{workout(0, 30, {}, "Watch"), workout(5, 30, 250, "Phone"),
                                     workout(60, 90, 300, "Watch")};
  const auto options = QZHKStatisticsOptions::cumulativeSum | QZHKStatisticsOptions::duration;
  EXPECT_EQ(statistics(runs, query(T::workout, U::count, options)).figures.sum, 2);
  EXPECT_EQ(statistics(runs, query(T::workout, U::count, options)).figures.duration, minutes(60));
  EXPECT_EQ(statistics(runs, query(T::workout, U::kilojoule, options)).figures.sum, 2301.2);
  EXPECT_EQ(statistics(runs, query(T::workout, U::kilometre, options)).figures.sum, std::nullopt);
}

TEST(StatisticsTests, FiguresThatATypeHasNotAreRefused) {
  const auto complaint = [](const QZHKStatisticsQuery& asked) -> std::string {
    try {
      static_cast<void>(statistics({}, asked));
    } catch (const QZHealthStoreError& error) {
      EXPECT_EQ(error.reason(), QZHealthStoreError::Reason::invalidQuery);
      return error.what();
    }
    return {};
  };
  EXPECT_EQ(complaint(query(T::stepCount, U::litre, {O::mostRecent})), "stepCount is not measured in L");
  EXPECT_EQ(complaint(query(T::sleepAnalysis, U::hour, {O::duration})), "");
  EXPECT_EQ(complaint(query(T::sleepAnalysis, U::hour, {O::cumulativeSum})), "sleepAnalysis is not measured in hr");
  EXPECT_EQ(complaint(query(T::bodyMass, U::kilogram, {O::cumulativeSum})), "bodyMass does not add up");
  EXPECT_EQ(complaint(query(T::stepCount, U::count, {O::discreteMax})), "stepCount has neither a mean nor extremes");
  EXPECT_EQ(complaint(query(T::workout, U::count, {O::mostRecent})), "workout has no amounts");
  EXPECT_EQ(complaint(query(T::workout, U::count, {O::duration, O::cumulativeSum, O::separateBySource})), "");
  EXPECT_EQ(complaint(query(T::dietaryIron, U::microgram, {O::mostRecent})), "");
}

struct Interval {
  std::int64_t start;
  std::int64_t end;
};

std::vector<Interval> anyIntervals() {
  std::vector<Interval> intervals(*rc::gen::inRange<std::size_t>(0, 12));
  for (Interval& interval : intervals) {
    interval.start = *rc::gen::inRange(0, 40);
    interval.end = interval.start + *rc::gen::inRange(0, 12);
  }
  return intervals;
}

RC_GTEST_PROP(StatisticsTests, CoveredTimeIsTheMinutesThatSomeIntervalHolds, ()) {
  std::array<bool, 60> isCovered{};
  QZHKCoveredTime covered;
  for (const auto& [start, end] : anyIntervals()) {
    const auto first = isCovered.begin() + start;
    const auto last = isCovered.begin() + end;
    RC_ASSERT(covered.overlaps(minute(start), minute(end)) == std::any_of(first, last, [](bool is) { return is; }));
    covered.insert(minute(start), minute(end));
    std::fill(first, last, true);
    RC_ASSERT(covered.total() == minutes(std::ranges::count(isCovered, true)));
  }
}

RC_GTEST_PROP(StatisticsTests, AdjoiningSpansAddUpAndTheOrderOfSamplesDoesNotMatter, ()) {
  std::vector<QZHKSample> samples;
  for (const auto& [start, end] : anyIntervals()) {
    samples.push_back(steps(start, end, *rc::gen::inRange(0, 500), "Watch"));
  }
  const auto sumOf = [&](std::int64_t from, std::int64_t to) {
    return statistics(samples, query(T::stepCount, U::count, {O::cumulativeSum}, from, to)).figures.sum.value_or(0);
  };
  const std::int64_t cut = *rc::gen::inRange(0, 60);
  RC_ASSERT(sumOf(0, cut) + sumOf(cut, 60) == sumOf(0, 60));

  for (QZHKSample& own : samples) own.source = *rc::gen::element<std::string>("Watch", "Phone", "Ring");
  QZHKStatisticsQuery everything =
      query(T::stepCount, U::count, {O::cumulativeSum, O::mostRecent, O::separateBySource});
  const QZHKStatistics answer = statistics(samples, everything);
  double greatest = 0;
  double all = 0;
  for (const auto& [source, figures] : answer.bySource) {
    greatest = std::max(greatest, *figures.sum);
    all += *figures.sum;
  }
  RC_ASSERT(answer.figures.sum.value_or(0) >= greatest && answer.figures.sum.value_or(0) <= all);
  std::ranges::reverse(samples);
  RC_ASSERT(statistics(samples, everything) == answer);
}

}  // namespace
}  // namespace qz
