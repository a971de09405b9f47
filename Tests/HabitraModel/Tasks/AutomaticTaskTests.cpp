#include <HabitraModel/Mapping/TaskCloudSummaryCoreDataContainer.h>
#include <HabitraModel/Store/Entities/TaskShareEntity.h>

#include <tuple>

#include "AutomaticTask.h"

namespace habitra {
namespace {

using Type = TaskLogEntryType;
using O = qz::QZHKObjectType;
using U = qz::QZHKUnit;
using qz::YYYYMMDD;
using Log = std::vector<std::string>;
constexpr YYYYMMDD firstDay(2024, 1, 31);

TEST_F(AutomaticTask, ADayIsCarriedAlongUntilItIsReached) {
  TaskEntity& task = addSteps();
  walk("2024-01-31", 4000);
  EXPECT_EQ(pass(task).filledIn, 1u);
  const auto begun = context_->fetchLogEntries(task.objectID).front();
  EXPECT_DOUBLE_EQ(figures(task).progress, 0.4);
  walk("2024-01-31", 2500);
  pass(task);
  EXPECT_EQ(log(task), Log{"20240131 completedAutomaticallyPartial"});
  EXPECT_EQ(context_->fetchLogEntries(task.objectID).front().uniqueId, begun.uniqueId);
  EXPECT_EQ(amounts(task), std::vector{6500.0});
  EXPECT_DOUBLE_EQ(context_->fetchLogEntries(task.objectID).front().progress, 0.65);
  EXPECT_DOUBLE_EQ(figures(task).progress, 0.65);

  const auto last = walk("2024-01-31", 3500);
  EXPECT_TRUE(pass(task).decidedPeriod);
  EXPECT_EQ(log(task), Log{"20240131 completedAutomaticallyFull"});
  EXPECT_EQ(figures(task).activeStreak, 1);
  health_->remove(std::span(&last, 1));
  pass(task);
  EXPECT_EQ(log(task), Log{"20240131 completedAutomaticallyPartial"}) << "what was said was taken back";
  EXPECT_EQ(figures(task).activeStreak, 0);
}

TEST_F(AutomaticTask, APassThatFindsNothingNewWritesNothing) {
  TaskEntity& task = addSteps();
  walk("2024-01-31", 4000);
  pass(task);
  const auto sequence = context_->sequence();
  const auto lastUpdated = figures(task).lastUpdated;
  clock_->advance(std::chrono::hours(3));
  EXPECT_FALSE(pass(task).taskWasUpdated);
  EXPECT_EQ(context_->sequence(), sequence);
  EXPECT_EQ(figures(task).lastUpdated, lastUpdated);
}

TEST_F(AutomaticTask, DaysThatAreOverAreMissedBesideWhatWasReached) {
  TaskEntity& task = addSteps();
  walk("2024-01-31", 12'000);
  walk("2024-02-01", 3000);
  liveUntil("2024-02-03T09:00:00Z");
  const auto report = operation(task).dryRun();
  ASSERT_EQ(report.entries.size(), 4u);
  EXPECT_EQ(report.entries[0].entryType, Type::completedAutomaticallyFull);
  EXPECT_EQ(report.entries[3].period.startDate, YYYYMMDD(2024, 2, 2));
  EXPECT_TRUE(log(task).empty()) << "a dry run writes nothing";
  EXPECT_FALSE(context_->isInUnit());
  EXPECT_EQ(pass(task).filledIn, 4u);
  EXPECT_EQ(log(task), (Log{"20240131 completedAutomaticallyFull", "20240201 completedAutomaticallyPartial",
                            "20240201 missedAutomaticallyFull", "20240202 missedAutomaticallyFull"}));
}

TEST_F(AutomaticTask, LateDataOpenExactlyThePeriodsTheyTouch) {
  TaskEntity& task = addSteps();
  liveUntil("2024-05-01T09:00:00Z");
  pass(task);
  const auto before = context_->fetchLogEntries(task.objectID);
  EXPECT_EQ(before.size(), 91u);
  const auto late = walk("2024-02-10", 11'000);
  walk("2024-02-11", 10'000);
  EXPECT_EQ(pass(task).filledIn, 2u);
  EXPECT_EQ(context_->fetchLogEntries(task.objectID, 20240210, 20240211).front().entryType,
            rawValue(Type::completedAutomaticallyFull));
  EXPECT_EQ(figures(task).bestStreak, 2);
  EXPECT_EQ(context_->fetchLogEntries(task.objectID, 20240212), (std::vector(before.begin() + 12, before.end())));

  setAutomaticType(task, AutomaticTaskType{.type = AutomaticTaskType::TaskType::healthKit(HealthType::runOrWalk),
                                           .quantity = 20'000,
                                           .unit = TypeUnit::steps});
  context_->save({});
  walk("2024-02-11", 1000);
  pass(task);
  EXPECT_EQ(figures(task).bestStreak, 2) << "a past that was reached is not judged by another target";
  health_->remove(std::span(&late, 1));
  pass(task);
  EXPECT_EQ(figures(task).bestStreak, 1);
  EXPECT_EQ(log(task)[10], "20240210 missedAutomaticallyFull") << "filled in anew";
}

TEST_F(AutomaticTask, ALogFromElsewhereStandsWhereNothingIsKnownOfIt) {
  TaskEntity& task = addSteps();
  auto reached = entry(task, Type::completedAutomaticallyFull, firstDay);
  reached.progressPct = 1.0;
  reached.progressValue = 12'000;
  record(task, {reached});
  liveUntil("2024-02-01T09:00:00Z");
  walk("2024-02-01", 500);
  pass(task);
  EXPECT_EQ(log(task), (Log{"20240131 completedAutomaticallyFull", "20240201 completedAutomaticallyPartial"}));
}

TEST_F(AutomaticTask, WhatAPersonDecidedStandsAndTheirPartsCountAlong) {
  TaskEntity& task = addSteps();
  walk("2024-01-31", 12'000);
  record(task, Type::skippedManuallyFull, firstDay);
  pass(task);
  EXPECT_EQ(log(task), Log{"20240131 skippedManuallyFull"});
  record(task, Type::unknown, firstDay);
  pass(task);
  EXPECT_EQ(log(task).back(), "20240131 completedAutomaticallyFull") << "an undo decides nothing";

  TaskEntity& water = addTask(HealthType::dietaryDrinkWater, 2, TypeUnit::litres);
  TaskFrequency inFour = TaskFrequency::everyDay();
  inFour.numPartialCompletions = 4;
  setFrequency(water, inFour);
  context_->save({});
  measure(O::dietaryWater, "2024-01-31T09:00:00Z", 0, qz::QZHKQuantity{0.5, U::litre});
  pass(water);
  record(water, Type::completedManuallyPartial, firstDay);
  pass(water);
  EXPECT_DOUBLE_EQ(figures(water).progress, 0.5) << "half a litre measured, a part by hand";
  EXPECT_EQ(log(water), (Log{"20240131 completedManuallyPartial", "20240131 completedAutomaticallyPartial"}));
  measure(O::dietaryWater, "2024-01-31T10:00:00Z", 0, qz::QZHKQuantity{1, U::litre});
  pass(water);
  EXPECT_EQ(log(water).back(), "20240131 completedAutomaticallyFull");
}

TEST_F(AutomaticTask, WhatAnEntryReportsIsWhatTheDayHadReached) {
  TaskEntity& task = addSteps();
  const auto report = [&](double steps) {
    auto reached = entry(task, Type::completedManuallyPartial, firstDay);
    reached.progressValue = steps;
    record(task, {reached});
    const double shown = assess(*context_, task, calendars_, clock_->now()).history->figures.progress;
    pass(task);
    EXPECT_DOUBLE_EQ(figures(task).progress, shown) << "a list and a pass agree";
  };
  walk("2024-01-31", 6000);
  pass(task);
  report(6500);
  EXPECT_DOUBLE_EQ(figures(task).progress, 0.65);
  EXPECT_EQ(log(task), (Log{"20240131 completedManuallyPartial", "20240131 completedAutomaticallyPartial"}));

  TaskEntity& inTen = addSteps(20'000);
  TaskFrequency frequency = TaskFrequency::everyDay();
  frequency.numPartialCompletions = 10;
  setFrequency(inTen, frequency);
  context_->save({});
  const auto share = [&] {
    operation(inTen).run();
    return figures(inTen).progress;
  };
  record(inTen, Type::completedManuallyPartial, firstDay);
  EXPECT_DOUBLE_EQ(share(), 0.4) << "a part that nobody measured is on top";
  auto reached = entry(inTen, Type::completedManuallyPartial, firstDay);
  reached.progressPct = 0.5;
  record(inTen, {reached});
  EXPECT_DOUBLE_EQ(share(), 0.5) << "what is reported holds the part before it";
  record(inTen, Type::completedManuallyPartial, firstDay);
  EXPECT_DOUBLE_EQ(share(), 0.6);
  walk("2024-01-31", 5000);
  EXPECT_DOUBLE_EQ(share(), 0.75) << "eleven thousand were measured, and two parts by hand";
}

TEST_F(AutomaticTask, LateDataOfManyDaysAreWhatTheyWouldHaveBeenDayByDay) {
  for (const TaskFrequency& frequency :
       std::vector<TaskFrequency>{{.dayMode = TaskFrequency::DayMode::dayInterval, .dayInterval = 3},
                                  {.dayMode = TaskFrequency::DayMode::numberOfDaysInMonth, .numCompletions = 12},
                                  {.dayMode = TaskFrequency::DayMode::aggregateOverWeek, .numCompletions = 2}})
    for (const bool isNegative : {false, true}) {
      SCOPED_TRACE(std::to_string(static_cast<int>(frequency.dayMode)) + (isNegative ? " to avoid" : " to do"));
      health_ = SampleStore::inMemory();
      liveUntil("2021-01-31T12:00:00Z");
      TaskEntity& late = addSteps(10'000, isNegative);
      setFrequency(late, frequency);
      context_->save({});
      liveUntil("2024-03-20T12:00:00Z");  // more than what is walked at once
      pass(late);
      for (int day = 0; day < 1100; ++day) {
        const YYYYMMDD date = YYYYMMDD(2021, 2, 1).add(day);
        if (day % 7 < 5) walk(date.debugDescription(), day % 4 == 0 ? 12'000 : 300);
      }
      pass(late);
      EXPECT_FALSE(pass(late).taskWasUpdated);

      TaskEntity& fresh = addSteps(10'000, isNegative);
      fresh.created = at("2021-01-31T12:00:00Z");
      setFrequency(fresh, frequency);
      context_->save({});
      operation(fresh).run();
      EXPECT_EQ(log(late), log(fresh));
      EXPECT_EQ(figures(late).bestStreak, figures(fresh).bestStreak);
    }
}

TEST_F(AutomaticTask, AnOpenDayGoesOverToAnotherUnit) {
  TaskEntity& task = addTask(HealthType::dietaryDrinkWater, 2, TypeUnit::litres);
  measure(O::dietaryWater, "2024-01-31T09:00:00Z", 0, qz::QZHKQuantity{0.5, U::litre});
  pass(task);
  EXPECT_EQ(amounts(task), std::vector{0.5});
  task.typeUnit = "mls";
  task.typeTarget = 2000;
  context_->save({});
  pass(task);
  EXPECT_EQ(amounts(task), std::vector{500.0});
  EXPECT_DOUBLE_EQ(figures(task).progress, 0.25);
}

TEST_F(AutomaticTask, ToAvoidAmountsFailDaysWithinTheAllowanceFirst) {
  TaskEntity& task = addSteps(100, true);
  setFrequency(task, {.dayMode = TaskFrequency::DayMode::numberOfDaysInWeek, .numCompletions = 5});
  context_->save({});  // five clean days a week: two failures are allowed
  walk("2024-01-31", 40);
  pass(task);
  EXPECT_EQ(log(task), Log{"20240131 missedAutomaticallyPartial"});
  for (const char* day : {"2024-02-02", "2024-02-03", "2024-02-04"}) walk(day, 150);
  liveUntil("2024-02-05T09:00:00Z");
  pass(task);
  EXPECT_EQ(log(task), (Log{"20240131 missedAutomaticallyPartial", "20240202 allowableMissAutomaticallyFull",
                            "20240203 allowableMissAutomaticallyFull", "20240204 missedAutomaticallyFull"}));
  walk("2024-02-01", 100);  // comes late and takes the first place
  pass(task);
  EXPECT_EQ(log(task), (Log{"20240131 missedAutomaticallyPartial", "20240201 allowableMissAutomaticallyFull",
                            "20240202 allowableMissAutomaticallyFull", "20240203 missedAutomaticallyFull",
                            "20240204 missedAutomaticallyFull"}));
  EXPECT_EQ(figures(task).lastMissed, 20240204);
}

TEST_F(AutomaticTask, ABalanceIsDecidedWhenItsDayIsOver) {
  TaskEntity& task = addTask(HealthType::energyDeficit, 500, TypeUnit::calories, {TypeSpeed::greaterThan});
  measure(O::basalEnergyBurned, "2024-01-31T01:00:00Z", 600, qz::QZHKQuantity{2000, U::kilocalorie});
  measure(O::dietaryEnergyConsumed, "2024-01-31T09:00:00Z", 0, qz::QZHKQuantity{1200, U::kilocalorie});
  pass(task);
  EXPECT_TRUE(log(task).empty());
  liveUntil("2024-02-02T09:00:00Z");
  pass(task);
  EXPECT_EQ(log(task), (Log{"20240131 completedAutomaticallyFull", "20240201 missedAutomaticallyFull"}))
      << "an empty diary is no success";
}

TEST_F(AutomaticTask, ALongerPeriodIsJudgedAsOne) {
  TaskEntity& task = addSteps(20'000);
  setFrequency(task, {.dayMode = TaskFrequency::DayMode::aggregateOverWeek});
  context_->save({});
  walk("2024-01-30", 9000);  // the week began on Monday
  walk("2024-01-31", 9000);
  pass(task);
  EXPECT_EQ(log(task), Log{"20240131 completedAutomaticallyPartial"});
  liveUntil("2024-02-02T09:00:00Z");
  walk("2024-02-02", 3000);
  pass(task);
  EXPECT_EQ(log(task), Log{"20240202 completedAutomaticallyFull"});
  liveUntil("2024-02-06T09:00:00Z");
  EXPECT_EQ(pass(task).filledIn, 0u);
  EXPECT_EQ(figures(task).activeStreak, 1);
}

TEST_F(AutomaticTask, DaysAreThoseOfTheTasksOwnCalendar) {
  for (const auto& [zone, startOfDay, expected] : std::vector<std::tuple<const char*, int, double>>{
           {"Asia/Tokyo", 0, 300}, {"America/New_York", 0, 100}, {"Nowhere/Atlantis", 0, 200}, {"UTC", 90'000, 400}}) {
    TaskEntity& task = addSteps();
    task.currentTimeZoneOverride = zone;
    task.startOfDayValue = startOfDay;
    context_->save({});
    health_ = SampleStore::inMemory();
    // In Tokyo the 31st begins at 15:00 UTC the day before, in New York at 05:00 UTC.
    if (expected == 300) measure(O::stepCount, "2024-01-30T15:05:00Z", 5, qz::QZHKQuantity{300, U::count});
    if (expected == 300) measure(O::stepCount, "2024-01-31T15:05:00Z", 5, qz::QZHKQuantity{1, U::count});
    if (expected == 100) measure(O::stepCount, "2024-01-31T04:50:00Z", 5, qz::QZHKQuantity{1, U::count});
    if (expected == 100) measure(O::stepCount, "2024-01-31T05:00:00Z", 5, qz::QZHKQuantity{100, U::count});
    if (expected == 200) measure(O::stepCount, "2024-01-31T00:00:00Z", 5, qz::QZHKQuantity{200, U::count});
    if (expected == 400) measure(O::stepCount, "2024-02-01T00:50:00Z", 5, qz::QZHKQuantity{400, U::count});
    operation(task).run();
    EXPECT_EQ(amounts(task), std::vector{expected}) << zone;
  }
}

TEST_F(AutomaticTask, EachKindOfTaskIsMeasuredByItsOwnData) {
  const auto energy = [](double kcal) {
    return qz::QZHKWorkout{qz::QZHKWorkoutActivityType::running, qz::QZHKQuantity{kcal, U::kilocalorie}, {}};
  };
  measure(O::workout, "2024-01-31T07:00:00Z", 45, energy(400));
  measure(O::workout, "2024-01-31T18:00:00Z", 20, qz::QZHKWorkout{qz::QZHKWorkoutActivityType::yoga, {}, {}});
  measure(O::stepCount, "2024-01-31T07:00:00Z", 45, qz::QZHKQuantity{6000, U::count});
  measure(O::stepCount, "2024-01-31T12:00:00Z", 15, qz::QZHKQuantity{1500, U::count});
  measure(O::sleepAnalysis, "2024-01-30T22:10:00Z", 60, qz::QZHKSleepValue::inBed);
  measure(O::sleepAnalysis, "2024-01-30T22:40:00Z", 240, qz::QZHKSleepValue::core);
  measure(O::sleepAnalysis, "2024-01-31T02:40:00Z", 180, qz::QZHKSleepValue::deep);
  measure(O::sleepAnalysis, "2024-01-31T13:00:00Z", 30, qz::QZHKSleepValue::asleep);  // a nap
  measure(O::sleepAnalysis, "2024-01-31T23:30:00Z", 20, qz::QZHKSleepValue::asleep);  // belongs to tomorrow
  measure(O::bodyMass, "2024-01-31T06:00:00Z", 0, qz::QZHKQuantity{70, U::kilogram});
  measure(O::handwashingEvent, "2024-01-31T06:10:00Z", 1);
  measure(O::mindfulSession, "2024-01-31T06:20:00Z", 8);
  measure(O::activeEnergyBurned, "2024-01-31T07:00:00Z", 45, qz::QZHKQuantity{300, U::kilocalorie});
  measure(O::activeEnergyGoal, "2024-01-01T00:00:00Z", 0, qz::QZHKQuantity{400, U::kilocalorie});
  liveUntil("2024-01-31T23:55:00Z");
  struct Row {
    HealthType::Case type;
    double quantity;
    std::optional<TypeUnit> unit;
    TypeSpeeds speeds;
    const char* expected;  // the type of the entry
    double amount;
  };
  const char* const full = "completedAutomaticallyFull";
  const char* const part = "completedAutomaticallyPartial";
  using H = HealthType;
  for (const Row& row : std::vector<Row>{
           {H::runOrWalk, 7000, TypeUnit::steps, {}, full, 7500},
           {H::runOrWalk, 6000, TypeUnit::steps, {TypeSpeed::run}, full, 6000},
           {H::runOrWalk, 6000, TypeUnit::steps, {TypeSpeed::walk}, part, 1500},
           {H::runOrWalk, 0, TypeUnit::steps, {}, part, 7500},  // no target is never reached
           {H::workout, 60, TypeUnit::durationMinutes, {}, full, 65},
           {H::workout, 500, TypeUnit::calories, {}, part, 400},
           {H::workout, 0, std::nullopt, {}, full, 2},
           {H::habitraWorkout, 30, TypeUnit::durationMinutes, {}, "", 0},  // none was written for the task
           {H::sleep, 8, TypeUnit::durationHours, {}, part, 7.5},
           {H::sleep, 3, TypeUnit::durationHours, {TypeSpeed::sleepDeep}, full, 3},
           {H::inBed, 8, TypeUnit::durationHours, {}, full, 8},
           {H::bedtime, 82'800, TypeUnit::timeOfDay, {TypeSpeed::asleepBefore}, full, 81'600},
           {H::bedtime, 79'200, TypeUnit::timeOfDay, {TypeSpeed::inBedBefore}, "", 0},
           {H::bedtime, 1800, TypeUnit::timeOfDay, {TypeSpeed::inBedBefore}, full, 79'800},
           {H::bedtime, 18'000, TypeUnit::timeOfDay, {TypeSpeed::awakeAfter}, full, 20'400},
           {H::recordWeight, 0, std::nullopt, {}, full, 1},
           {H::recordHeight, 0, std::nullopt, {}, "", 0},
           {H::handwashingEvent, 0, std::nullopt, {}, full, 1},
           {H::mindfulMinutes, 10, TypeUnit::durationMinutes, {TypeSpeed::timed}, part, 480},  // seconds
           {H::activity, 0, std::nullopt, {}, part, 0.25},
       }) {
    TaskEntity& task = addTask(row.type, row.quantity, row.unit, row.speeds);
    operation(task).run();
    const auto entries = context_->fetchLogEntries(task.objectID);
    const std::string what = std::string(rawValue(HealthType(row.type))) + " " + row.speeds.storedText();
    if (*row.expected == '\0') {
      EXPECT_TRUE(entries.empty()) << what;
      continue;
    }
    ASSERT_EQ(entries.size(), 1u) << what;
    EXPECT_EQ(caseName(fromRawValue<Type>(entries[0].entryType).value()), row.expected) << what;
    EXPECT_NEAR(entries[0].progressTotal, row.amount, 1e-9) << what;
  }
}

TEST_F(AutomaticTask, ScreenTimeCountsOnceWhatTwoKindsSayOfOneTime) {
  TaskEntity& task = TaskWorld::addTask();
  AutomaticTaskType type{
      .type = AutomaticTaskType::TaskType::screenTime(), .quantity = 90, .unit = TypeUnit::durationMinutes};
  type.extra.emplace().screenTimeSettings.emplace().setFamilyActivitySelection(
      FamilyActivitySelection{.applications = {"browser", "game"}, .categories = {}, .webDomains = {"news"}});
  setAutomaticType(task, type);
  task.isNegative = true;
  context_->save({});
  const auto use = [&](O usage, const char* source, const char* start, int minutes) {
    measure(usage, start, minutes, qz::QZHKQuantity{static_cast<double>(minutes), U::minute}, source);
  };
  use(O::applicationUsage, "browser", "2024-01-31T09:00:00Z", 60);
  use(O::websiteUsage, "news", "2024-01-31T09:20:00Z", 20);  // in the browser
  use(O::applicationUsage, "game", "2024-01-31T10:00:00Z", 15);
  use(O::applicationUsage, "mail", "2024-01-31T10:15:00Z", 60);  // not chosen
  pass(task);
  EXPECT_EQ(log(task), Log{"20240131 missedAutomaticallyPartial"});
  EXPECT_EQ(amounts(task), std::vector{75.0});
  use(O::websiteUsage, "news", "2024-01-31T11:00:00Z", 15);
  pass(task);
  EXPECT_EQ(log(task), Log{"20240131 missedAutomaticallyFull"});
}

TEST_F(AutomaticTask, ThoseWhoShareATaskAreToldWhenItChanges) {
  TaskEntity& task = addSteps();
  TaskShareEntity share;
  share.task = task.objectID;
  TaskShareEntity& mine = context_->insert(share);
  context_->save({});
  walk("2024-01-31", 4200);
  pass(task);
  EXPECT_EQ(summaryOf(mine)->todayStatus,
            "\u2066"
            "42%"
            "\u2069");
  EXPECT_EQ(context_->outbox(OutboxLink::sharedTask).size(), 1u);
}

}  // namespace
}  // namespace habitra
