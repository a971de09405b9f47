#include <gtest/gtest.h>
#include <HabitraCore/AutomaticTaskType/PeriodMeasurement.h>
#include <HabitraCore/AutomaticTaskType/ScreenTimeUse.h>
#include <HabitraCore/AutomaticTaskType/SleepNight.h>

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "QZHealthKit/SampleMaking.h"

namespace habitra {
namespace {

using qz::minute;
using qz::sample;
using O = qz::QZHKObjectType;
using Sleep = qz::QZHKSleepValue;
using TaskType = AutomaticTaskType::TaskType;

constexpr int hour = 60;

AutomaticTaskType typed(HealthType type, double quantity, std::optional<TypeUnit> unit, TypeSpeeds speeds = {}) {
  return {.type = TaskType::healthKit(type), .quantity = quantity, .unit = unit, .speeds = speeds};
}

TEST(PeriodMeasurement, WhatAPeriodNeedsFollowsFromHowItIsMeasured) {
  using F = MeasurementFamily;
  using H = HealthType;
  struct Row {
    AutomaticTaskType type;
    std::optional<F> family;
    double ofADay;   // that asks for three completions
    double ofAWeek;  // likewise
  };
  AutomaticTaskType ownSessions = typed(H::mindfulMinutes, 10, TypeUnit::durationMinutes, {TypeSpeed::timed});
  ownSessions.dataSource = DataSource::currentTask;
  for (const Row& row : std::vector<Row>{
           {typed(H::runOrWalk, 8000, TypeUnit::steps), F::amount, 8000, 8000},
           {typed(H::mindfulMinutes, 10, TypeUnit::durationMinutes, {TypeSpeed::timed}), F::amount, 600, 600},
           {ownSessions, std::nullopt, 0, 0},
           {typed(H::workout, 0, TypeUnit::durationMinutes), F::samples, 3, 3},
           {typed(H::workout, 30, TypeUnit::durationMinutes), F::amount, 30, 30},
           {typed(H::handwashingEvent, 0, std::nullopt), F::samples, 3, 3},
           {typed(H::activity, 0, std::nullopt), F::rings, 1, 3},
           {typed(H::bedtime, 82'800, TypeUnit::timeOfDay), F::bedtime, 3, 3},
           {typed(H::energyDeficit, 500, TypeUnit::calories), F::balance, 0, 0},
           {{.type = TaskType::screenTime(), .quantity = 90, .unit = TypeUnit::durationMinutes}, F::screenTime, 90, 90},
           {{.type = TaskType::timer(), .quantity = 90, .unit = TypeUnit::durationMinutes}, std::nullopt, 0, 0},
       }) {
    SCOPED_TRACE(row.ofADay);
    EXPECT_EQ(measurementFamily(row.type), row.family);
    EXPECT_EQ(neededAmount(row.type, 3, true), row.ofADay);
    EXPECT_EQ(neededAmount(row.type, 3, false), row.ofAWeek);
  }
}

TEST(PeriodMeasurement, RingsOfADayAreAMeanAndOfAWeekCountedWhenAllAreClosed) {
  const auto rings = [](double move, double exercise, double stand) {
    return std::optional(qz::QZHKActivitySummary{
        .day = {minute(0), minute(24 * hour)}, .move = {move, 400}, .exercise = {exercise, 30}, .stand = {stand, 12}});
  };
  using Days = std::vector<std::optional<qz::QZHKActivitySummary>>;
  EXPECT_EQ(measuredRings(Days{rings(800, 15, 0)}), (PeriodMeasurement{.hasData = true, .amount = 0.5})) << "each cut";
  EXPECT_EQ(measuredRings(Days{rings(400, 30, 12)}).amount, 1);
  EXPECT_EQ(measuredRings(Days{std::nullopt}), PeriodMeasurement{});
  EXPECT_EQ(measuredRings(Days{rings(400, 30, 12), std::nullopt, rings(900, 90, 11), rings(400, 31, 13)}),
            (PeriodMeasurement{.hasData = true, .amount = 2}));
}

TEST(PeriodMeasurement, ABalanceQualifiesOnItsSideAndNeverWithAnEmptyDiary) {
  const auto judged = [](TypeSpeed side, double eaten, double resting) {
    const auto type = typed(HealthType::energyDeficit, 500, TypeUnit::calories, {side});
    return measuredBalance(type, {.activeEnergy = 300, .restingEnergy = resting, .dietaryEnergy = eaten});
  };
  using S = TypeSpeed;
  EXPECT_EQ(judged(S::greaterThan, 1500, 1700), (PeriodMeasurement{.hasData = true, .amount = 500, .isReached = true}));
  EXPECT_EQ(judged(S::lessThan, 1500, 1700).isReached, true) << "exactly the target is both";
  EXPECT_EQ(judged(S::greaterThan, 1501, 1700).isReached, false);
  EXPECT_EQ(judged(S::lessThan, 1499, 1700).isReached, false);
  EXPECT_EQ(judged(S::greaterThan, 0, 1700).isReached, false);
  EXPECT_EQ(judged(S::lessThan, 2500, -300).isReached, false) << "nothing was used up";
}

TEST(SleepNight, IsTheLongestSleepAndGettingUpForAWhileDoesNotEndIt) {
  const std::vector samples{
      sample(O::sleepAnalysis, -2 * hour, 0, Sleep::inBed),
      sample(O::sleepAnalysis, -1 * hour, 2 * hour, Sleep::core),
      sample(O::sleepAnalysis, 4 * hour, 6 * hour, Sleep::deep),  // two hours later: the same sleep
      sample(O::sleepAnalysis, 6 * hour, 7 * hour, Sleep::awake),
      sample(O::sleepAnalysis, 9 * hour + 1, 17 * hour, Sleep::asleep),  // a minute more: another, and shorter
  };
  EXPECT_EQ(sleepNight(samples), (SleepNight{.inBed = minute(-2 * hour),
                                             .asleep = minute(-1 * hour),
                                             .awake = minute(6 * hour),
                                             .outOfBed = minute(7 * hour)}));
  const std::vector onlyInBed{sample(O::sleepAnalysis, 0, hour, Sleep::inBed)};
  EXPECT_EQ(momentOf(sleepNight(onlyInBed).value(), {TypeSpeed::asleepBefore}), std::nullopt);
  EXPECT_EQ(momentOf(sleepNight(onlyInBed).value(), {TypeSpeed::outOfBedAfter}), minute(hour));
  EXPECT_EQ(sleepNight({}), std::nullopt);
}

TEST(SleepNight, IsKeptOnTheSideOfTheNearestSuchTimeOfDay) {
  const qz::TimeZone utc = qz::TimeZone::utc();
  const qz::TimeZone tokyo = qz::TimeZone::fromIdentifier("Asia/Tokyo").value();
  constexpr double halfPastEleven = 23.5 * 3600;
  struct Row {
    int minutes;
    qz::TimeZone zone;
    bool isBefore;
    bool isAfter;
  };
  for (const Row& row : std::vector<Row>{{23 * hour, utc, true, false},
                                         {23 * hour + 30, utc, true, true},
                                         {10, utc, false, true},  // past midnight
                                         {11 * hour + 29, utc, false, true},
                                         {11 * hour + 31, utc, true, false},
                                         {14 * hour, tokyo, true, false},  // eleven there
                                         {15 * hour, tokyo, false, true}}) {
    SCOPED_TRACE(row.minutes);
    EXPECT_EQ(isKept(minute(row.minutes), halfPastEleven, {TypeSpeed::asleepBefore}, row.zone), row.isBefore);
    EXPECT_EQ(isKept(minute(row.minutes), halfPastEleven, {TypeSpeed::asleepAfter}, row.zone), row.isAfter);
  }
  const auto type = typed(HealthType::bedtime, halfPastEleven, TypeUnit::timeOfDay, {TypeSpeed::asleepBefore});
  const auto night = [](int asleep) { return std::optional(SleepNight{.asleep = minute(asleep)}); };
  using Nights = std::vector<std::optional<SleepNight>>;
  EXPECT_EQ(measuredBedtimes(type, Nights{night(23 * hour)}, utc),
            (PeriodMeasurement{.hasData = true, .amount = 23 * 3600, .isReached = true}));
  EXPECT_EQ(measuredBedtimes(type, Nights{night(22 * hour), std::nullopt, SleepNight{}, night(10), night(1)}, utc),
            (PeriodMeasurement{.hasData = true, .amount = 1}));
  EXPECT_EQ(measuredBedtimes(type, Nights{SleepNight{}}, utc), PeriodMeasurement{.isReached = false});
}

TEST(SleepNight, CountsTheStagesThatAreAskedFor) {
  using H = HealthType;
  const std::set all{Sleep::inBed, Sleep::asleep, Sleep::awake, Sleep::core, Sleep::deep, Sleep::rem};
  const std::set asleep{Sleep::asleep, Sleep::core, Sleep::deep, Sleep::rem};
  EXPECT_EQ(sleepValues(H::sleep, {}), asleep);
  EXPECT_EQ(sleepValues(H::sleep, {TypeSpeed::sleepDeep, TypeSpeed::sleepREM}), (std::set{Sleep::deep, Sleep::rem}));
  EXPECT_EQ(sleepValues(H::inBed, {TypeSpeed::sleepDeep}), all);
}

TEST(ScreenTimeUse, OfOneTimeTheKindThatSaysMostCounts) {
  const auto use = [](O type, int start, int end, double minutes, const char* source = "browser") {
    return sample(type, start, end, qz::QZHKQuantity{minutes, qz::QZHKUnit::minute}, source);
  };
  const qz::QZHKSpan day{minute(0), minute(24 * hour)};
  struct Row {
    double minutes;
    std::vector<qz::QZHKSample> samples;
  };
  for (const Row& row : std::vector<Row>{
           {0, {}},
           {80, {use(O::applicationUsage, 0, 60, 50), use(O::applicationUsage, 30, 90, 30, "game")}},
           {50, {use(O::applicationUsage, 0, 60, 50), use(O::websiteUsage, 0, 60, 20)}},
           {60,
            {use(O::applicationUsage, 0, 60, 30), use(O::websiteUsage, 0, 30, 30), use(O::websiteUsage, 60, 75, 15)}},
           {70,
            {use(O::categoryUsage, 0, 120, 70), use(O::applicationUsage, 0, 120, 40),
             use(O::websiteUsage, 0, 120, 60)}},
           {15, {use(O::applicationUsage, -45, 15, 60)}},  // of yesterday, too
           {15, {use(O::applicationUsage, 24 * hour - 30, 24 * hour + 30, 30)}},
           {0, {use(O::applicationUsage, 10, 10, 5), use(O::stepCount, 0, 60, 60)}},
       })
    EXPECT_NEAR(usedSeconds(day, row.samples), row.minutes * 60, 1e-3) << row.minutes;

  const FamilyActivitySelection selection{.applications = {"a"}, .categories = {"c"}, .webDomains = {"w", "v"}};
  EXPECT_EQ(selectedSources(selection, O::applicationUsage), std::set<std::string>{"a"});
  EXPECT_EQ(selectedSources(selection, O::websiteUsage), (std::set<std::string>{"v", "w"}));
  EXPECT_EQ(selectedSources(selection, O::categoryUsage), std::set<std::string>{"c"});
  EXPECT_TRUE(selectedSources(selection, O::stepCount).empty());
}

}  // namespace
}  // namespace habitra
