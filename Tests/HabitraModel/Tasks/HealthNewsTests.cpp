#include <HabitraModel/Tasks/Processing/HealthNews.h>
#include <HabitraModel/Tasks/TaskPauses.h>

#include "AutomaticTask.h"

namespace habitra {
namespace {

using LateData = TaskProcessorSingleTaskOperation::LateData;
using O = qz::QZHKObjectType;
using U = qz::QZHKUnit;
using qz::YYYYMMDD;
using Log = std::vector<std::string>;

/// A task of steps that was processed up to 20 February, with a miss on every day that is over.
class HealthNewsTest : public AutomaticTask {
 protected:
  HealthNewsTest() {
    liveUntil("2024-02-20T12:00:00Z");
    pass(steps_);
  }
  /// What the log says of a day of February.
  Log day(int number, TaskEntity* task = nullptr) {
    const std::string text = std::to_string(20240200 + number);
    Log found;
    for (const std::string& line : log(task == nullptr ? steps_ : *task))
      if (line.starts_with(text)) found.push_back(line.substr(text.size() + 1));
    return found;
  }
  std::optional<HealthAnchor> anchor() {
    const auto text = context_->healthAnchor(steps_.objectID);
    return text ? HealthAnchor::fromText(*text) : std::nullopt;
  }
  const Log missed_{"missedAutomaticallyFull"};
  const Log reached_{"completedAutomaticallyFull"};
  TaskEntity& steps_ = addSteps();
};

TEST_F(HealthNewsTest, AnAnchorIsReadAsItWasWrittenOrNotAtAll) {
  const auto store = qz::UniqueID::generate(clock_->now());
  for (const HealthAnchor& anchor :
       {HealthAnchor{store, 17, {O::stepCount, O::workout}, "runOrWalk/km//all", YYYYMMDD(2024, 2, 20)},
        HealthAnchor{}})
    EXPECT_EQ(HealthAnchor::fromText(anchor.text()), anchor);
  for (const char* text :
       {"", "17", "- x stepCount", "- -1 ", "- 1 steps", "store 1 stepCount", "- 1 stepCount a 20240230"})
    EXPECT_EQ(HealthAnchor::fromText(text), std::nullopt) << text;
}

TEST_F(HealthNewsTest, WhatWasNotSavedIsNewAgain) {
  const auto before = anchor();
  ASSERT_TRUE(before);
  walk("2024-02-05", 12'000);
  context_->beginUnit();
  operation(steps_).runInUnit();
  EXPECT_EQ(day(5), reached_);
  EXPECT_NE(anchor(), before);
  context_->rollback();
  EXPECT_EQ(anchor(), before);
  pass(steps_);
  EXPECT_EQ(day(5), reached_);
  EXPECT_EQ(anchor()->change, health_->changesSince(0).newest);

  const ObjectID gone = steps_.objectID;
  context_->remove(steps_);
  context_->save({});
  EXPECT_EQ(context_->healthAnchor(gone), std::nullopt);
}

TEST_F(HealthNewsTest, ACommandLeavesLateDataToTheNextPass) {
  walk("2024-02-05", 12'000);
  walk("2024-02-20", 12'000);
  context_->beginUnit();
  operation(steps_, LateData::wait).runInUnit();
  context_->save({.command = "done"});
  EXPECT_EQ(day(5), missed_);
  EXPECT_EQ(day(20), reached_) << "today is not late";
  pass(steps_);
  EXPECT_EQ(day(5), reached_);
}

TEST_F(HealthNewsTest, ATaskThatIsNewHereBeginsWithWhatIsThere) {
  walk("2024-02-05", 12'000);
  TaskEntity& brought = addSteps();
  brought.created = at("2024-01-31T12:00:00Z");
  brought.lastProcessedDate = clock_->now();
  record(brought, TaskLogEntryType::missedManuallyFull, YYYYMMDD(2024, 2, 6));
  brought.lastProcessedDate = clock_->now();
  context_->save({});
  context_->beginUnit();
  operation(brought, LateData::wait).runInUnit();
  context_->save({});
  EXPECT_EQ(day(5, &brought), Log{}) << "it was judged elsewhere";
  pass(brought);
  EXPECT_EQ(day(5, &brought), Log{});
  walk("2024-02-07", 12'000);
  pass(brought);
  EXPECT_EQ(day(7, &brought), reached_);
}

TEST_F(HealthNewsTest, AnotherStoreIsLookedThroughAndDecidesWhatItCan) {
  for (const char* day : {"2024-02-05", "2024-02-06", "2024-02-07"}) walk(day, 12'000);
  pass(steps_);
  health_ = SampleStore::inMemory();
  pass(steps_);
  EXPECT_EQ(day(5), reached_) << "a store without anything says nothing";
  walk("2024-02-06", 900);
  walk("2024-02-08", 12'000);
  pass(steps_);
  EXPECT_EQ(day(5), reached_) << "of this day it knows nothing";
  EXPECT_EQ(day(7), reached_) << "nor of one between others";
  EXPECT_EQ(day(6), (Log{"completedAutomaticallyPartial", "missedAutomaticallyFull"}));
  EXPECT_EQ(day(8), reached_);
  EXPECT_EQ(anchor()->store, health_->changesSince(0).store);
}

TEST_F(HealthNewsTest, DaysBetweenThoseThatSamplesCameForStayAsTheyAre) {
  TaskEntity& brought = addSteps();
  brought.created = at("2024-01-31T12:00:00Z");
  context_->save({});
  const auto bring = [&](int number, TaskLogEntryType type, double steps) {
    auto entry = this->entry(brought, type, YYYYMMDD(2024, 2, number));
    entry.progressPct = steps / 10'000;
    entry.progressValue = steps;
    record(brought, {entry});
  };
  bring(6, TaskLogEntryType::completedAutomaticallyFull, 10'000);
  bring(8, TaskLogEntryType::completedAutomaticallyPartial, 4000);
  bring(9, TaskLogEntryType::completedAutomaticallyFull, 10'000);
  pass(brought);
  const Log before = log(brought);
  const auto late = [this](const char* day) {
    return qz::QZHKSample{.identifier = qz::UniqueID::generate(clock_->now()),
                          .objectType = O::stepCount,
                          .start = at(std::string(day) + "T10:00:00Z"),
                          .end = at(std::string(day) + "T10:10:00Z"),
                          .value = qz::QZHKQuantity{12'000, U::count},
                          .source = "Watch",
                          .device = std::nullopt,
                          .task = std::nullopt};
  };
  const std::vector both{late("2024-02-07"), late("2024-02-12")};
  health_->save(both);
  pass(brought);
  EXPECT_EQ(day(7, &brought), reached_);
  EXPECT_EQ(day(9, &brought), reached_);
  EXPECT_EQ(day(12, &brought), reached_);
  const std::vector<qz::UniqueID> gone{both[0].identifier, both[1].identifier};
  health_->remove(gone);
  pass(brought);
  EXPECT_EQ(log(brought), before) << "an import that is undone leaves no trace";
}

TEST_F(HealthNewsTest, AnOlderStateOfTheStoreIsLookedThrough) {
  walk("2024-02-05", 12'000);
  auto ahead = anchor();
  ahead->change = 1000;
  context_->setHealthAnchor(steps_.objectID, ahead->text());
  context_->save({});
  pass(steps_);
  EXPECT_EQ(day(5), reached_);
  walk("2024-02-06", 12'000);
  context_->setHealthAnchor(steps_.objectID, "damaged");
  context_->save({});
  pass(steps_);
  EXPECT_EQ(day(6), reached_);
}

TEST_F(HealthNewsTest, OtherKindsOfDataJudgeNoPast) {
  walk("2024-02-05", 12'000);
  pass(steps_);
  const auto cycle = [this](const char* start) {
    measure(O::distanceCycling, start, 30, qz::QZHKQuantity{9, U::kilometre});
  };
  cycle("2024-02-05T18:00:00Z");
  cycle("2024-02-06T18:00:00Z");
  setAutomaticType(steps_, AutomaticTaskType{.type = AutomaticTaskType::TaskType::healthKit(HealthType::cycle),
                                             .quantity = 5,
                                             .unit = TypeUnit::distanceKm});
  context_->save({});
  const Log before = log(steps_);
  EXPECT_FALSE(pass(steps_).taskWasUpdated);
  EXPECT_EQ(log(steps_), before) << "a past is judged by what it was asked for";
  cycle("2024-02-07T18:00:00Z");
  pass(steps_);
  EXPECT_EQ(day(6), missed_);
  EXPECT_EQ(day(7), reached_);
}

/// What was reached in one measure is no amount of another.
TEST_F(HealthNewsTest, ANewMeasureTakesNothingBack) {
  TaskEntity& water = addTask(HealthType::dietaryDrinkWater, 2000, TypeUnit::millilitres);
  pass(water);
  measure(O::dietaryWater, "2024-02-20T09:00:00Z", 0, qz::QZHKQuantity{2.5, U::litre});
  pass(water);
  liveUntil("2024-02-21T12:00:00Z");
  pass(water);
  EXPECT_EQ(day(20, &water), reached_);
  const auto measureBy = [&](HealthType::Case type, double quantity, TypeUnit unit) {
    setAutomaticType(
        water,
        AutomaticTaskType{.type = AutomaticTaskType::TaskType::healthKit(type), .quantity = quantity, .unit = unit});
    context_->save({});
  };
  measureBy(HealthType::dietaryDrinkWater, 3, TypeUnit::litres);
  for (int passes = 0; passes < 2; ++passes) {
    pass(water);
    EXPECT_EQ(day(20, &water), reached_);
  }
  measure(O::dietaryWater, "2024-02-20T10:00:00Z", 0, qz::QZHKQuantity{0.1, U::litre});
  pass(water);
  EXPECT_EQ(day(20, &water), reached_) << "late data count towards another target";
  measure(O::distanceCycling, "2024-02-20T18:00:00Z", 30, qz::QZHKQuantity{4, U::kilometre});
  measureBy(HealthType::cycle, 5, TypeUnit::distanceKm);
  for (int passes = 0; passes < 2; ++passes) {
    pass(water);
    EXPECT_EQ(day(20, &water), reached_);
  }
}

TEST_F(HealthNewsTest, WhatSaysNothingNewIsWrittenDownSeldom) {
  record(steps_, TaskLogEntryType::completedManuallyFull, YYYYMMDD(2024, 2, 5));
  pass(steps_);
  const auto before = anchor();
  const auto sequence = context_->sequence();
  int writes = 0;
  for (int change = 1; change <= 130; ++change) {
    walk("2024-02-05", 10);  // a person has decided that day
    measure(O::dietaryWater, "2024-02-05T09:00:00Z", 0, qz::QZHKQuantity{0.5, U::litre});
    const auto kept = anchor();
    EXPECT_FALSE(pass(steps_).taskWasUpdated);
    if (anchor() != kept) ++writes;
  }
  EXPECT_EQ(writes, 2);
  EXPECT_NE(anchor(), before);
  EXPECT_EQ(context_->sequence(), sequence) << "an anchor is no history";
  EXPECT_FALSE(context_->isInUnit());
}

TEST_F(HealthNewsTest, TheLastSampleThatGoesTakesBackWhatItCaused) {
  const auto only = walk("2024-02-05", 12'000);
  pass(steps_);
  EXPECT_EQ(day(5), reached_);
  health_->remove(std::span(&only, 1));
  pass(steps_);
  EXPECT_EQ(day(5), missed_);
}

TEST_F(HealthNewsTest, ADayWhoseEntryIsGoneIsJudgedWhenOnlyLateDataLookAtIt) {
  const auto entry = context_->fetchLogEntries(steps_.objectID, 20240205, 20240205).at(0);
  context_->removeLogEntry(entry.key());
  context_->save({});
  pass(steps_);
  EXPECT_EQ(day(5), Log{}) << "nobody looks so far back";
  const auto sample = walk("2024-02-05", 3000);
  health_->remove(std::span(&sample, 1));
  pass(steps_);
  EXPECT_EQ(day(5), missed_) << "no sample is left, and none was enough";
  EXPECT_FALSE(pass(steps_).taskWasUpdated);
}

TEST_F(HealthNewsTest, WhatCameWhileATaskWasDoneByHandIsNotLate) {
  walk("2024-02-05", 12'000);
  pass(steps_);
  const auto type = automaticTypeOf(steps_).value();
  const auto measureBy = [&](const std::optional<AutomaticTaskType>& by) {
    setAutomaticType(steps_, by);
    context_->save({});
  };
  measureBy(std::nullopt);
  clock_->advance(std::chrono::hours(24));
  pass(steps_);
  EXPECT_EQ(anchor(), std::nullopt);
  walk("2024-02-06", 12'000);
  measureBy(type);
  pass(steps_);
  EXPECT_EQ(day(6), missed_) << "it was judged by hand";
  walk("2024-02-07", 12'000);
  pass(steps_);
  EXPECT_EQ(day(7), reached_);
}

/// To avoid, some days a week, with a pause on Thursday.
TEST_F(HealthNewsTest, ALateFailureLeavesNoHoleInTheDaysThatFollow) {
  const auto add = [this] {
    TaskEntity& task = addSteps(1000, true);
    task.created = at("2024-01-31T12:00:00Z");
    setFrequency(task, {.dayMode = TaskFrequency::DayMode::numberOfDaysInWeek, .numCompletions = 5});
    setPauses(*context_, task, {{.from = YYYYMMDD(2024, 2, 8), .to = YYYYMMDD(2024, 2, 8)}});
    context_->save({});
    return &task;
  };
  TaskEntity& late = *add();
  pass(late);
  const Log paused = day(8, &late);
  ASSERT_EQ(paused, Log{"skippedAutomaticallyFull"});
  walk("2024-02-05", 2000);
  pass(late);
  EXPECT_EQ(day(5, &late).size(), 1u);
  EXPECT_EQ(day(8, &late), paused);
  const auto sequence = context_->sequence();
  EXPECT_FALSE(pass(late).taskWasUpdated);
  EXPECT_EQ(context_->sequence(), sequence);
  TaskEntity& atOnce = *add();
  pass(atOnce);
  EXPECT_EQ(log(late), log(atOnce));
}

/// What only happens, several times a day.
TEST_F(HealthNewsTest, EachTimeThatSomethingHappensIsAPart) {
  TaskEntity& task = addTask(HealthType::handwashingEvent, 0, std::nullopt);
  TaskFrequency inFour = TaskFrequency::everyDay();
  inFour.numPartialCompletions = 4;
  setFrequency(task, inFour);
  context_->save({});
  const auto wash = [this](const char* start) { return measure(O::handwashingEvent, start, 1); };
  const auto parts = [](std::size_t number) { return Log(number, "completedAutomaticallyPartial"); };
  wash("2024-02-20T07:00:00Z");
  pass(task);
  EXPECT_EQ(day(20, &task), parts(1));
  EXPECT_DOUBLE_EQ(figures(task).progress, 0.25);
  const auto second = wash("2024-02-20T08:00:00Z");
  wash("2024-02-20T09:00:00Z");
  pass(task);
  EXPECT_EQ(day(20, &task), parts(3));
  EXPECT_DOUBLE_EQ(figures(task).progress, 0.75);
  const auto last = context_->fetchLogEntries(task.objectID).back();
  EXPECT_DOUBLE_EQ(last.progress, 0.75);
  EXPECT_DOUBLE_EQ(last.progressTotal, 3);
  EXPECT_FALSE(pass(task).taskWasUpdated);
  health_->remove(std::span(&second, 1));
  pass(task);
  EXPECT_EQ(day(20, &task), parts(2));
  record(task, TaskLogEntryType::completedManuallyPartial, YYYYMMDD(2024, 2, 20));
  pass(task);
  EXPECT_DOUBLE_EQ(figures(task).progress, 0.75) << "two were seen, and one told of";
  wash("2024-02-20T10:00:00Z");
  EXPECT_TRUE(pass(task).decidedPeriod);
  EXPECT_EQ(day(20, &task).back(), "completedAutomaticallyFull");
}

}  // namespace
}  // namespace habitra
