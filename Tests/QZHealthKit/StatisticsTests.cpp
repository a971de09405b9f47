#include "QZHealthKit/SampleMaking.h"

#include <gtest/gtest.h>
#include <QZHealthKit/QZHKStatisticsCalculation.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <set>
#include <string>
#include <vector>

namespace qz {
namespace {

using T = QZHKObjectType;
using U = QZHKUnit;
using O = QZHKStatisticsOption;
using Samples = std::vector<QZHKSample>;

constexpr std::int64_t quarter = 15;

QZHKStatistics figures(Samples samples, std::int64_t from, std::int64_t to, T type, U unit,
                       QZHKStatisticsOptions options) {
  std::ranges::stable_sort(samples, {}, &QZHKSample::start);
  const QZHKSampleQuery query{.objectType = type, .span = {minute(from), minute(to)}, .predicate = {}};
  QZHKStatisticsCalculation calculation({.samples = query, .unit = unit, .options = options});
  for (const QZHKSample& sample : samples) calculation.add(sample);
  return calculation.figures();
}

std::optional<double> sum(const Samples& samples, std::int64_t from, std::int64_t to, T type = T::stepCount,
                          U unit = U::count) {
  return figures(samples, from, to, type, unit, {O::cumulativeSum}).sum;
}

QZHKSample steps(std::int64_t start, std::int64_t end, double count, std::string source = "Watch") {
  return sample(T::stepCount, start, end, QZHKQuantity{count, U::count}, std::move(source));
}

bool areClose(double a, double b) { return std::abs(a - b) <= 1e-9 * std::max({1.0, std::abs(a), std::abs(b)}); }

/// The second way, minute by minute. All samples of these tests begin and end at whole minutes, so nothing happens
/// within one.
struct MinuteByMinute {
  explicit MinuteByMinute(const Samples& samples) {
    for (const QZHKSample& sample : samples) {
      const std::int64_t start = (sample.start - minute(0)) / std::chrono::minutes(1);
      const std::int64_t end = (sample.end - minute(0)) / std::chrono::minutes(1);
      const double amount = sample.quantity()->value;
      if (start == end) amounts[sample.source][start] += amount;
      for (std::int64_t at = start; at < end; ++at) {
        amounts[sample.source][at] += amount / static_cast<double>(end - start);
        covered.insert(at);
      }
    }
  }

  [[nodiscard]] double ofSource(const std::string& source, std::int64_t from, std::int64_t to) const {
    double sum = 0;
    const auto found = amounts.find(source);
    if (found == amounts.end()) return 0;
    for (const auto& [at, amount] : found->second)
      if (from <= at && at < to) sum += amount;
    return sum;
  }

  [[nodiscard]] double sumOfAll(std::int64_t from, std::int64_t to) const {
    double sum = 0;
    for (const auto& [source, ignored] : amounts) sum += ofSource(source, from, to);
    return sum;
  }

  [[nodiscard]] double sumOfGreatest(std::int64_t from, std::int64_t to) const {
    double sum = 0;
    for (std::int64_t at = from; at < to;) {
      const std::int64_t end = std::min(to, (at / quarter + 1) * quarter);
      double most = 0;
      for (const auto& [source, ignored] : amounts) most = std::max(most, ofSource(source, at, end));
      sum += most;
      at = end;
    }
    return sum;
  }

  [[nodiscard]] std::chrono::minutes duration(std::int64_t from, std::int64_t to) const {
    return std::chrono::minutes(std::ranges::count_if(covered, [&](std::int64_t at) { return from <= at && at < to; }));
  }

  std::map<std::string, std::map<std::int64_t, double>> amounts;
  std::set<std::int64_t> covered;
};

Samples arbitrarySamples(T type, U unit) {
  const auto one = [type, unit] {
    const auto start = *rc::gen::inRange<std::int64_t>(0, 120);
    const auto length = *rc::gen::element<std::int64_t>(0, 1, 7, 15, 40, 100);
    const auto amount = *rc::gen::inRange(0, 50);
    return sample(type, start, start + length, QZHKQuantity{static_cast<double>(amount), unit},
                  *rc::gen::element<std::string>("Watch", "Phone", "Scale"));
  };
  return *rc::gen::container<Samples>(rc::gen::exec(one));
}

RC_GTEST_PROP(StatisticsTests, SumsOfWhatIsMeasuredAreThoseOfTheGreatestSourceOfEachQuarter, ()) {
  const Samples samples = arbitrarySamples(T::stepCount, U::count);
  const MinuteByMinute slow(samples);
  const auto from = *rc::gen::inRange<std::int64_t>(0, 200);
  const auto to = *rc::gen::inRange<std::int64_t>(from, 240);
  const auto found = sum(samples, from, to);
  RC_ASSERT(areClose(found.value_or(0), slow.sumOfGreatest(from, to)));
  RC_ASSERT(found.value_or(0) <= slow.sumOfAll(from, to) + 1e-9);
  for (const auto& [source, ignored] : slow.amounts)
    RC_ASSERT(found.value_or(0) >= slow.ofSource(source, from, to) - 1e-9);

  const auto cut = from / quarter * quarter + quarter * *rc::gen::inRange<std::int64_t>(0, 8);
  if (from <= cut && cut <= to)
    RC_ASSERT(areClose(found.value_or(0), sum(samples, from, cut).value_or(0) + sum(samples, cut, to).value_or(0)));

  Samples more = samples;
  more.push_back(steps(from, from + 20, 3, "Phone"));
  RC_ASSERT(sum(more, from, to).value_or(0) >= found.value_or(0) - 1e-9);
}

RC_GTEST_PROP(StatisticsTests, SumsOfWhatIsEnteredAndDurationsAreThoseOfAllSources, ()) {
  const Samples samples = arbitrarySamples(T::dietaryWater, U::litre);
  const MinuteByMinute slow(samples);
  const auto from = *rc::gen::inRange<std::int64_t>(0, 200);
  const auto to = *rc::gen::inRange<std::int64_t>(from, 240);
  const QZHKStatistics found =
      figures(samples, from, to, T::dietaryWater, U::millilitre, {O::cumulativeSum, O::duration});
  RC_ASSERT(areClose(found.sum.value_or(0), 1000 * slow.sumOfAll(from, to)));
  RC_ASSERT(found.duration.value_or(std::chrono::seconds(0)) == slow.duration(from, to));
}

TEST(StatisticsTests, WhatTwoDevicesCountOfOneWalkCountsOnce) {
  const Samples walk{steps(0, 10, 1000), steps(0, 1, 90, "Phone"), steps(10, 14, 400), steps(20, 20, 700, "Phone")};
  EXPECT_EQ(sum(walk, 0, 60), 2100);
  EXPECT_EQ(sum(walk, 0, 15), 1400);
  EXPECT_EQ(sum(walk, 60, 120), std::nullopt);
  // Of a whole number that was cut into parts nothing is lost.
  EXPECT_EQ(sum({steps(3, 3 + 31 * 24 * 60, 10'000)}, 0, 60 * 24 * 60), 10'000);
  EXPECT_EQ(sum({steps(-20, 10, 900)}, 0, 60), 300);
}

TEST(StatisticsTests, WhatHasNoAmountCountsOneWhereItStarts) {
  const Samples events{sample(T::mindfulSession, -5, 10), sample(T::mindfulSession, 20, 20),
                       sample(T::mindfulSession, 21, 70), sample(T::mindfulSession, 22, 40, {}, "Phone")};
  const QZHKStatistics found = figures(events, 0, 60, T::mindfulSession, U::count, {O::cumulativeSum, O::duration});
  EXPECT_EQ(found.sum, 2);
  EXPECT_EQ(found.duration, std::chrono::minutes(10 + 39));
  EXPECT_EQ(sum({events[0]}, 0, 60, T::mindfulSession), std::nullopt);
  EXPECT_EQ(figures({events[1]}, 0, 60, T::mindfulSession, U::count, {O::duration}).duration, std::chrono::minutes(0));
  EXPECT_EQ(figures({}, 0, 60, T::mindfulSession, U::count, {O::duration}).duration, std::nullopt);
}

TEST(StatisticsTests, WorkoutsCountOrAddWhatTheyTook) {
  using enum QZHKWorkoutActivityType;
  const Samples workouts{sample(T::workout, -30, 30,
                                QZHKWorkout{running, QZHKQuantity{400, U::kilocalorie}, QZHKQuantity{8, U::kilometre}}),
                         sample(T::workout, 30, 60, QZHKWorkout{yoga, QZHKQuantity{50, U::kilocalorie}, std::nullopt})};
  EXPECT_EQ(sum(workouts, 0, 60, T::workout, U::count), 1);
  EXPECT_EQ(sum(workouts, 0, 60, T::workout, U::kilocalorie), 250);
  EXPECT_EQ(sum(workouts, 0, 60, T::workout, U::metre), 4000);
  EXPECT_EQ(sum(workouts, 30, 60, T::workout, U::metre), std::nullopt);
}

TEST(StatisticsTests, ExtremesAndTheMostRecentTakeWholeAmounts) {
  const auto weight = [](std::int64_t start, std::int64_t end, double amount) {
    return sample(T::bodyMass, start, end, QZHKQuantity{amount, U::kilogram});
  };
  const Samples weights{weight(-10, 1, 90), weight(5, 9, 80), weight(6, 9, 85), weight(6, 9, 84), weight(60, 60, 10)};
  const QZHKStatistics found =
      figures(weights, 0, 60, T::bodyMass, U::gram, {O::discreteMin, O::discreteMax, O::mostRecent});
  EXPECT_EQ(found.minimum, 80'000);
  EXPECT_EQ(found.maximum, 90'000);
  EXPECT_EQ(found.mostRecent, 84'000);  // of equal times the greatest identifier, which the later one has
  EXPECT_EQ(found.mostRecentEnd, minute(9));
  EXPECT_EQ(found.sum, std::nullopt);
  EXPECT_EQ(figures(weights, 0, 60, T::bodyMass, U::gram, {O::discreteMin}),
            (QZHKStatistics{.unit = U::gram, .minimum = 80'000}));
}

}  // namespace
}  // namespace qz
