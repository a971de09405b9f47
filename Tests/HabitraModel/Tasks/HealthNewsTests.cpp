#include <HabitraModel/Tasks/Processing/HealthNews.h>

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
  for (const HealthAnchor& anchor : {HealthAnchor{store, 17, {O::stepCount, O::workout}}, HealthAnchor{}})
    EXPECT_EQ(HealthAnchor::fromText(anchor.text()), anchor);
  for (const char* text : {"", "17", "- x stepCount", "- -1 ", "- 1 steps", "store 1 stepCount"})
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
  walk("2024-02-05", 12'000);
  walk("2024-02-06", 12'000);
  pass(steps_);
  health_ = SampleStore::inMemory();
  pass(steps_);
  EXPECT_EQ(day(5), reached_) << "a store without anything says nothing";
  walk("2024-02-06", 900);
  walk("2024-02-08", 12'000);
  pass(steps_);
  EXPECT_EQ(day(5), reached_) << "of this day it knows nothing";
  EXPECT_EQ(day(6), (Log{"completedAutomaticallyPartial", "missedAutomaticallyFull"}));
  EXPECT_EQ(day(8), reached_);
  EXPECT_EQ(anchor()->store, health_->changesSince(0).store);
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
