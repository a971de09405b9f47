#include <HabitraCore/TaskLogEntryType.h>
#include <HabitraModel/Mapping/FrequencyMapping.h>
#include <HabitraModel/Store/Entities/TaskTemporalDataEntity.h>
#include <HabitraModel/Tasks/Deduplication/TaskDeduplicator.h>

#include "UndoFixture.h"

// What becomes of the days that passes had filled in.
namespace habitra {
namespace {

using Type = TaskLogEntryType;

class UndoneDaysTest : public UndoStackTest {
 protected:
  TaskEntity& addWithInterval(std::int64_t days) {
    TaskEntity values = titled("Walk");
    values.status = "active";
    values.uniqueId = "11111111-1111-4111-8111-111111111111";
    values.created = testMoment - std::chrono::days(14);
    setFrequency(values, {.dayMode = TaskFrequency::DayMode::dayInterval, .dayInterval = days});
    return context_->insert(values);
  }
  ObjectID insert(ObjectID task, std::int32_t day, Type type) {
    TaskLogEntryEntity entry = entryOn(task, day);
    entry.entryType = rawValue(type);
    return context_->insertLogEntry(entry);
  }
  void fillIn(ObjectID task, std::int32_t from, std::int32_t to) {
    for (std::int32_t day = from; day <= to; ++day) insert(task, day, Type::missedAutomaticallyFull);
    context_->find<TaskEntity>(task)->lastProcessedDate = clock_->now();
  }
  void remove(ObjectID task, std::int32_t from, std::int32_t to) {
    for (const auto& entry : context_->fetchLogEntries(task, from, to)) context_->removeLogEntry(entry.key());
  }
  std::vector<ObjectID> numbers(ObjectID task, std::int32_t from, std::int32_t to) {
    std::vector<ObjectID> found;
    for (const auto& entry : context_->fetchLogEntries(task, from, to)) found.push_back(entry.objectID);
    return found;
  }
  /// Done on the 4th, for which the days up to the 9th are taken out; a pass fills them in again.
  std::int64_t doneOnTheFourth(ObjectID task) {
    remove(task, 20240105, 20240109);
    insert(task, 20240104, Type::completedManuallyFull);
    context_->find<TaskEntity>(task)->lastProcessedDate = testMoment - std::chrono::days(12);
    const std::int64_t done = save("done");
    fillIn(task, 20240105, 20240109);
    save(std::nullopt);
    return done;
  }
};

TEST_F(UndoneDaysTest, WhatWasTakenOutComesBackInPlaceOfWhatWasFilledInSince) {
  TaskEntity& task = addWithInterval(2);
  fillIn(task.objectID, 20240105, 20240109);
  save(std::nullopt);
  const auto before = numbers(task.objectID, 20240101, 20240131);
  const std::int64_t done = doneOnTheFourth(task.objectID);
  setFrequency(task, {.dayMode = TaskFrequency::DayMode::dayInterval, .dayInterval = 3});
  save("edit");
  undo(done);
  EXPECT_EQ(numbers(task.objectID, 20240101, 20240131), before);
}

TEST_F(UndoneDaysTest, WhatALaterCommandOnAnEarlierDayRefutesDoesNotComeBack) {
  const ObjectID run = addWithInterval(2).objectID;
  fillIn(run, 20240114, 20240114);
  save(std::nullopt);
  remove(run, 20240114, 20240114);
  insert(run, 20240114, Type::skippedManuallyFull);
  const std::int64_t skip = save("skip");
  const ObjectID done = insert(run, 20240113, Type::completedManuallyFull);
  save("done");
  undo(skip);
  EXPECT_EQ(numbers(run, 20240101, 20240131), std::vector{done}) << "the day after it is no miss any more";
}

TEST_F(UndoneDaysTest, DaysOfTheTaskThatADeduplicationLedAnEntryOverToAreJudgedAnew) {
  const ObjectID older = addWithInterval(3).objectID;
  const ObjectID newer = addWithInterval(3).objectID;
  save(std::nullopt);
  const std::int64_t done = record(newer, 20240111, "done");
  ASSERT_EQ(TaskDeduplicator().deduplicate(*context_).unitedTasks, 1);
  save(std::nullopt);
  fillIn(older, 20240112, 20240114);
  save(std::nullopt);
  const auto undone = stack_.undo(*context_, done);
  EXPECT_EQ(undone.tasks, (std::vector<UndoStack::TouchedTask>{{older, qz::YYYYMMDD(2024, 1, 11)}}));
  finish(undone);
  EXPECT_TRUE(context_->fetchLogEntries(older).empty());
}

TEST_F(UndoneDaysTest, AnEntryOfADayThatNobodyLivesToSeeGoesAndComesBack) {
  using DayMode = TaskFrequency::DayMode;
  for (const DayMode mode : {DayMode::numberOfDaysInWeek, DayMode::dayInterval, DayMode::aggregateOverWeek}) {
    TaskEntity& task = addWithInterval(2);
    setFrequency(task, {.dayMode = mode, .numCompletions = 3, .dayInterval = 3});
    task.isNegative = mode == DayMode::numberOfDaysInWeek;
    save(std::nullopt);
    for (const std::int32_t day : {2147481225, 2147481231}) {
      TaskLogEntryEntity entry = entryOn(task.objectID, day);
      entry.entryPeriodFrom = entry.entryPeriodTo = 0;
      entry.entryType = rawValue(task.isNegative ? Type::missedManuallyFull : Type::completedManuallyFull);
      context_->insertLogEntry(entry);
      const std::int64_t far = save("far");
      record(task.objectID, 20240110, "near");
      undo(far);
      EXPECT_EQ(context_->fetchLogEntries(task.objectID, day).size(), 0U);
      redo();
      EXPECT_EQ(context_->fetchLogEntries(task.objectID, day).size(), 1U);
    }
  }
}

TEST_F(UndoneDaysTest, ThePastOfAnArchivedHabitIsNotTornOpen) {
  TaskEntity& task = addWithInterval(2);
  fillIn(task.objectID, 20240105, 20240109);
  save(std::nullopt);
  const std::int64_t done = doneOnTheFourth(task.objectID);
  const auto filledIn = numbers(task.objectID, 20240105, 20240109);
  const auto processed = task.lastProcessedDate;
  task.status = "archived";
  save("archive");
  const auto undone = stack_.undo(*context_, done);
  EXPECT_TRUE(undone.tasks.empty()) << "no pass will come";
  finish(undone);
  EXPECT_EQ(numbers(task.objectID, 20240101, 20240131), filledIn);
  EXPECT_EQ(task.lastProcessedDate, processed);
}

TEST_F(UndoneDaysTest, WhatAProgramRecordedSinceIsNotDoubled) {
  const ObjectID walk = add("Walk").objectID;
  const ObjectID part = insert(walk, 20240110, Type::completedManuallyPartial);
  const ObjectID miss = insert(walk, 20240110, Type::missedAutomaticallyFull);
  save(std::nullopt);
  remove(walk, 20240110, 20240110);
  insert(walk, 20240110, Type::skippedManuallyFull);
  const std::int64_t skip = save("skip");
  undo(skip);
  EXPECT_EQ(numbers(walk, 20240110, 20240110), (std::vector{part, miss})) << "a miss stands beside the part before it";
  redo();
  const ObjectID measured = insert(walk, 20240110, Type::completedAutomaticallyFull);
  save(std::nullopt);
  undo(skip);
  EXPECT_EQ(numbers(walk, 20240110, 20240110), (std::vector{part, measured}));
}

TEST_F(UndoneDaysTest, OnlyWhatComesBackCanBeInTheWayOfAnotherEntry) {
  const ObjectID walk = add("Walk").objectID;
  insert(walk, 20240110, Type::completedManuallyPartial);
  save(std::nullopt);
  TaskLogEntryEntity entry = context_->fetchLogEntries(walk).at(0);
  entry.progress = 0.5;
  context_->updateLogEntry(entry.key(), entry);
  const std::int64_t amount = save("amount");
  insert(walk, 20240110, Type::completedManuallyPartial);
  save("part");
  undo(amount);
  redo();
  const LogKey key = context_->fetchLogEntries(walk).at(0).key();
  entry.entryDate = entry.entryPeriodFrom = entry.entryPeriodTo = 20240111;
  context_->updateLogEntry(key, entry);
  const std::int64_t move = save("move");
  insert(walk, 20240110, Type::skippedManuallyFull);
  const std::int64_t skip = save("skip");
  EXPECT_EQ(refusal(move)->obstacle()->command.sequence, skip) << "one of both would have replaced the other";
}

TEST_F(UndoneDaysTest, ADeduplicationCanBeTakenBackAndPutBack) {
  for (int i = 0; i < 2; ++i) {
    TaskEntity& task = addWithInterval(2);
    insert(task.objectID, 20240105 + i, Type::completedManuallyFull);
    TaskTemporalDataEntity data;
    data.task = task.objectID;
    context_->insert(data);
  }
  save(std::nullopt);
  const auto before = rows();
  ASSERT_EQ(TaskDeduplicator().deduplicate(*context_).unitedTasks, 1);
  save("deduplicate");
  const auto after = rows();
  undo();
  auto undone = rows();
  redo();
  EXPECT_EQ(context_->fetchAll<TaskEntity>().size(), 1U);
  EXPECT_EQ(context_->fetchAll<TaskTemporalDataEntity>().size(), 1U);
  EXPECT_EQ(rows().size(), after.size());
  undo();
  EXPECT_EQ(undone.size(), before.size());
  EXPECT_EQ(rows(), undone);
}

}  // namespace
}  // namespace habitra
