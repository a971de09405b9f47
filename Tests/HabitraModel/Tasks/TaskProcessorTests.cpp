#include <HabitraModel/Settings/Settings.h>
#include <HabitraModel/Tasks/Processing/TaskClaim.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorSingleTaskOperation.h>
#include <HabitraModel/Tasks/TaskPauses.h>
#include <QZLog/Log.h>

#include "TaskWorld.h"

namespace habitra {
namespace {

using Type = TaskLogEntryType;
using qz::YYYYMMDD;
constexpr YYYYMMDD firstDay(2024, 1, 31);

class Processor : public TaskWorld {
 protected:
  void liveUntil(std::string_view moment) { clock_->set(at(moment)); }

  /// What a walk over the whole log comes to, without a checkpoint.
  TaskFigures wholeFigures(const TaskEntity& task, YYYYMMDD today) {
    std::vector<LoggedEntry> entries;
    context_->readLog(task.objectID, StoreContext::firstDay, storedDay(today), [&](const LogRow& row) {
      entries.push_back({.entryDate = row.entryDate,
                         .periodFrom = row.entryPeriodFrom,
                         .periodTo = row.entryPeriodTo,
                         .entryType = fromRawValue<Type>(row.entryType).value(),
                         .periodType = TaskFrequencyPeriodType::day});
    });
    const HistoryScope scope{.created = firstDay, .today = today, .fillFrom = today};
    return HistoryWalk(rulesOf(*context_, task).value(), scope).walk(entries).figures;
  }
};

TEST_F(Processor, FillsInTheDaysThatAreOverAndNothingElse) {
  TaskEntity& task = addTask();
  process();
  EXPECT_TRUE(log(task).empty());  // its first day is not over
  record(task, Type::completedManuallyFull, firstDay);
  liveUntil("2024-02-03T08:00:00Z");
  EXPECT_EQ(process().filledIn, 2u);
  EXPECT_EQ(log(task), (std::vector<std::string>{"20240131 completedManuallyFull", "20240201 missedAutomaticallyFull",
                                                 "20240202 missedAutomaticallyFull"}));
  EXPECT_EQ(figures(task).activeStreak, 0);
  EXPECT_EQ(figures(task).bestStreak, 1);
  EXPECT_EQ(figures(task).lastCompleted, 20240131);
  EXPECT_EQ(figures(task).lastMissed, 20240202);
  EXPECT_EQ(figures(task).recentShortTermNumSamples, 3);
  EXPECT_NEAR(figures(task).recentShortTermPct, 1.0 / 3, 1e-12);
}

TEST_F(Processor, APassThatFindsNothingNewWritesNothing) {
  TaskEntity& task = addTask();
  record(task, Type::completedManuallyFull, firstDay);
  EXPECT_TRUE(processor_.isDue(*context_, clock_->now()));
  EXPECT_EQ(process().changed, 1u);
  EXPECT_FALSE(processor_.isDue(*context_, clock_->now()));
  const auto sequence = context_->sequence();
  const auto lastUpdated = figures(task).lastUpdated;
  clock_->advance(std::chrono::hours(5));
  EXPECT_EQ(process().changed, 0u);
  EXPECT_EQ(context_->sequence(), sequence);
  EXPECT_EQ(figures(task).lastUpdated, lastUpdated);
}

TEST_F(Processor, OneTaskIsProcessedOnceAtATime) {
  TaskEntity& task = addTask();
  TaskEntity& other = addTask("Other");
  {
    const auto elsewhere = TaskClaim::make(context_->storeIdentifier(), task.objectID);
    TaskProcessorSingleTaskOperation operation(
        {.calendars = calendars_, .recorder = recorder_, .health = nullptr, .sharedTasks = receivers_.sharedTasks},
        *context_, task, TaskModifyContext::userInitiatedFromMainApp, LayoutDirection::leftToRight, true,
        clock_->now());
    EXPECT_THROW(operation.run(), TaskProcessorSingleTaskOperation::ProcessorError);
    EXPECT_FALSE(TaskClaim::make(context_->storeIdentifier(), task.objectID));
    EXPECT_TRUE(TaskClaim::make(context_->storeIdentifier(), other.objectID));
    EXPECT_TRUE(TaskClaim::make("another store", task.objectID));
  }
  EXPECT_EQ(process().changed, 2u);
}

TEST_F(Processor, ATaskToAvoidIsNotFilledInWhenClean) {
  TaskEntity& task = addTask();
  task.isNegative = true;
  context_->save({});
  liveUntil("2024-02-04T08:00:00Z");
  EXPECT_EQ(process().filledIn, 0u);
  EXPECT_EQ(figures(task).activeStreak, 4);
  EXPECT_EQ(figures(task).lastCompleted, 20240203);
}

TEST_F(Processor, PausedDaysAreSkipsOnceTheyAreOver) {
  TaskEntity& task = addTask();
  setPauses(*context_, task,
            {{.from = YYYYMMDD(2024, 2, 1), .to = YYYYMMDD(2024, 2, 2)}, {.from = YYYYMMDD(2024, 3, 1)}});
  record(task, Type::completedManuallyFull, firstDay);
  liveUntil("2024-02-04T08:00:00Z");
  process();
  EXPECT_EQ(log(task),
            (std::vector<std::string>{"20240131 completedManuallyFull", "20240201 skippedAutomaticallyFull",
                                      "20240202 skippedAutomaticallyFull", "20240203 missedAutomaticallyFull"}));
  EXPECT_EQ(figures(task).lastSkipped, 20240202);
  TaskEntity& other = addTask("Other");
  StoreSettings(*context_).set(settings::pausesOf(*other.uniqueId), Bytes{'x'});
  context_->save({});
  EXPECT_TRUE(pausesOf(*context_, other).empty()) << "what cannot be read pauses nothing";
}

TEST_F(Processor, AnUndoOfAnOldDayIsFilledInAgain) {
  TaskEntity& task = addTask();
  for (int day = 0; day < 4; ++day) {
    record(task, Type::completedManuallyFull, firstDay.add(day));
    clock_->advance(std::chrono::hours(24));
    process();
  }
  EXPECT_EQ(figures(task).activeStreak, 4);
  record(task, Type::unknown, firstDay.add(1));
  process();
  EXPECT_EQ(log(task), (std::vector<std::string>{"20240131 completedManuallyFull", "20240201 unknown",
                                                 "20240201 missedAutomaticallyFull", "20240202 completedManuallyFull",
                                                 "20240203 completedManuallyFull"}));
  EXPECT_EQ(figures(task).activeStreak, 2);
  record(task, Type::completedManuallyFull, firstDay.add(1));
  process();
  EXPECT_EQ(figures(task).activeStreak, 4);
}

TEST_F(Processor, EntriesOfTheFutureAreDeletedUnlessTheyWereRecordedInTime) {
  TaskEntity& task = addTask();
  auto fromTheEast = entry(task, Type::completedManuallyFull, firstDay.nextDay());
  auto invented = entry(task, Type::completedManuallyFull, firstDay.add(2));
  record(task, {fromTheEast, invented});
  auto row = *context_->findLogEntry(fromTheEast.uniqueId.text());
  row.createdTimestamp = at("2024-01-31T11:00:00Z");
  row.createdTimeZone = "Pacific/Kiritimati";  // there it was 1 February already
  context_->updateLogEntry(row.key(), row);
  context_->save({});
  EXPECT_EQ(process().removed, 1u);
  EXPECT_EQ(log(task), (std::vector<std::string>{"20240201 completedManuallyFull"}));
  EXPECT_EQ(figures(task).activeStreak, 0);
  liveUntil("2024-02-01T12:00:00Z");
  process();
  EXPECT_EQ(figures(task).activeStreak, 1);
}

TEST_F(Processor, AClockThatCannotBeRightCostsNothing) {
  TaskEntity& task = addTask();
  record(task, Type::completedManuallyFull, firstDay);
  process();
  const auto sequence = context_->sequence();
  liveUntil("1970-01-01T00:00:00Z");
  EXPECT_EQ(process().tasks, 0u);
  EXPECT_EQ(context_->sequence(), sequence);
  EXPECT_EQ(log(task).size(), 1u);
  liveUntil("2024-02-01T12:00:00Z");
  process();
  EXPECT_EQ(figures(task).activeStreak, 1);
}

TEST_F(Processor, ARecordMadeUnderAWrongClockLeavesTheHistoryAlone) {
  TaskEntity& task = addTask();
  record(task, Type::completedManuallyFull, firstDay);
  process();
  liveUntil("2015-06-01T12:00:00Z");
  record(task, Type::completedManuallyFull, YYYYMMDD(2015, 6, 1));
  EXPECT_EQ(process().removed, 0u);
  EXPECT_EQ(log(task).size(), 2u);
}

TEST_F(Processor, AClockThatStepsBackOverMidnightDeletesNothing) {
  TaskEntity& task = addTask();
  liveUntil("2024-02-01T00:05:00Z");
  record(task, Type::completedManuallyFull, YYYYMMDD(2024, 2, 1));
  liveUntil("2024-01-31T23:55:00Z");
  EXPECT_EQ(process().removed, 0u);
  EXPECT_EQ(figures(task).activeStreak, 0);  // it counts once its day has come
  liveUntil("2024-02-01T00:10:00Z");
  process();
  EXPECT_EQ(figures(task).activeStreak, 1);
}

TEST_F(Processor, ADayBetweenTwoZonesIsStillJudged) {
  TaskEntity& task = addTask();
  task.currentTimeZoneOverride = "Pacific/Honolulu";
  context_->save({});
  liveUntil("2024-02-03T09:30:00Z");  // 2 February, 23:30 in Honolulu
  process();
  task.currentTimeZoneOverride = "Pacific/Auckland";
  context_->save({});
  liveUntil("2024-02-04T09:30:00Z");
  process();
  EXPECT_EQ(log(task),
            (std::vector<std::string>{"20240131 missedAutomaticallyFull", "20240201 missedAutomaticallyFull",
                                      "20240202 missedAutomaticallyFull", "20240203 missedAutomaticallyFull"}));
}

TEST_F(Processor, AHistoryBeginsOnTheDayItBeganWhereverItIsReadLater) {
  clock_->set(at("2024-02-29T23:00:00Z"));  // 1 March in Berlin
  TaskEntity& task = addTask();
  task.createdTimeZone = "Europe/Berlin";
  task.currentTimeZoneOverride = "America/New_York";
  context_->save({});
  liveUntil("2024-03-03T12:00:00Z");
  process();
  EXPECT_EQ(log(task),
            (std::vector<std::string>{"20240301 missedAutomaticallyFull", "20240302 missedAutomaticallyFull"}));
}

TEST_F(Processor, ADayThatTheZoneLeftOutBreaksNoStreak) {
  clock_->set(at("2011-12-29T12:00:00-10:00"));
  TaskEntity& task = addTask();
  task.currentTimeZoneOverride = "Pacific/Apia";  // had no 30 December 2011
  context_->save({});
  record(task, Type::completedManuallyFull, YYYYMMDD(2011, 12, 29));
  clock_->set(at("2011-12-31T12:00:00+14:00"));
  record(task, Type::completedManuallyFull, YYYYMMDD(2011, 12, 31));
  process();
  EXPECT_EQ(log(task), (std::vector<std::string>{"20111229 completedManuallyFull", "20111230 skippedAutomaticallyFull",
                                                 "20111231 completedManuallyFull"}));
  EXPECT_EQ(figures(task).activeStreak, 2);
}

TEST_F(Processor, RowsWithDaysThatNoCalendarHasStopNobody) {
  TaskEntity& task = addTask();
  TaskLogEntryEntity row;
  row.task = task.objectID;
  row.entryDate = 20230230;
  row.entryType = rawValue(Type::completedManuallyFull);
  context_->insertLogEntry(row);
  task.created = qz::Moment::min();
  context_->save({});
  task.lastProcessedDate = at("2024-01-30T12:00:00Z");
  context_->save({});
  process();
  EXPECT_EQ(figures(task).activeStreak, 0);
}

TEST_F(Processor, DaysFollowTheTasksOwnZoneAndStartOfDay) {
  TaskEntity& task = addTask();
  task.startOfDayValue = 90'000;  // a day and an hour: 01:00
  task.currentTimeZoneOverride = "Asia/Tokyo";
  EXPECT_EQ(calendars_.of(task).day(at("2024-01-31T15:59:59Z")), YYYYMMDD(2024, 1, 31));
  EXPECT_EQ(calendars_.of(task).day(at("2024-01-31T16:00:00Z")), YYYYMMDD(2024, 2, 1));
  task.currentTimeZoneOverride = "Nowhere/Atlantis";
  EXPECT_EQ(calendars_.of(task).day(at("2024-01-31T00:59:59Z")), YYYYMMDD(2024, 1, 30));
  task.startOfDayValue = 0;
  EXPECT_EQ(calendars_.of(task).day(at("2024-01-31T00:00:00Z")), YYYYMMDD(2024, 1, 31));
}

TEST_F(Processor, AnUnreadableFrequencyIsLeftAloneAndStopsNobody) {
  TaskEntity& odd = addTask("Odd");
  odd.daysMode = 99;
  TaskEntity& plain = addTask("Plain");
  context_->save({});
  liveUntil("2024-02-02T08:00:00Z");
  EXPECT_TRUE(processor_.isDue(*context_, clock_->now()));
  EXPECT_EQ(process().filledIn, 2u);
  EXPECT_TRUE(log(odd).empty());
  EXPECT_EQ(log(plain).size(), 2u);
  EXPECT_FALSE(processor_.isDue(*context_, clock_->now())) << "a pass can do no more";
}

TEST_F(Processor, WhatCannotBeReadOfATaskIsSaidOnce) {
  TaskEntity& odd = addTask();
  odd.daysMode = 99;
  odd.currentTimeZoneOverride = "Nowhere/Atlantis";
  context_->save({});
  qz::log::configure({.verbose = true});
  testing::internal::CaptureStderr();
  process();
  process();
  const std::string log = testing::internal::GetCapturedStderr();
  qz::log::configure({});
  for (const std::string_view warning : {"cannot be read; it is left alone", "Unknown time zone Nowhere/Atlantis"}) {
    const auto found = log.find(warning);
    ASSERT_NE(found, std::string::npos) << log;
    EXPECT_EQ(log.find(warning, found + 1), std::string::npos) << log;
  }
}

TEST_F(Processor, AMeasuredTaskIsJudgedByItsAmount) {
  TaskEntity& task = addTask("Water");
  const auto water = AutomaticTaskType::TaskType::healthKit(HealthType::dietaryDrinkWater);
  setAutomaticType(task, AutomaticTaskType::ofNewTask(water, TaskFrequencyPeriodType::day));
  context_->save({});
  EXPECT_EQ(task.typeName, "hk_water");
  EXPECT_EQ(task.typeTarget, 2);
  const auto drink = [&](YYYYMMDD day, double litres) {
    auto reported = entry(task, Type::completedAutomaticallyPartial, day);
    reported.progressValue = litres;
    reported.progressPct = litres / 2;
    record(task, {reported});
  };
  drink(firstDay, 1.5);
  drink(firstDay, 2);
  drink(firstDay.add(1), 1.5);
  liveUntil("2024-02-02T08:00:00Z");
  process();
  EXPECT_EQ(figures(task).lastCompleted, 20240131) << "2 of 2 litres";
  EXPECT_EQ(figures(task).lastMissed, 20240201) << "1.5 of 2 litres";
  EXPECT_EQ(log(task).back(), "20240201 missedAutomaticallyFull");
  setAutomaticType(task, std::nullopt);
  EXPECT_EQ(task.typeName, std::nullopt);
  EXPECT_EQ(automaticTypeOf(task), std::nullopt);
}

TEST_F(Processor, RepairsWhatARowCannotDoWithoutAndTakesOverTheDifficulty) {
  TaskEntity values = newlyMadeTask("Old", qz::DayOfWeek::monday, clock_->now(), "UTC");
  values.created = std::nullopt;
  values.statusDate = std::nullopt;
  values.lastChangedDifficulty = at("2023-05-01T00:00:00Z");
  values.lastChangedDifficultyStatus = "harder_no";
  TaskEntity& task = context_->insert(values);
  context_->save({});
  process();
  EXPECT_EQ(task.created, clock_->now());
  EXPECT_EQ(task.statusDate, clock_->now());
  EXPECT_EQ(figures(task).lastChangedDifficulty, at("2023-05-01T00:00:00Z"));
  EXPECT_EQ(figures(task).lastChangedDifficultyStatus, "harder_no");
}

/// A long life lived day by day, with corrections of recent and of old days, ends as one pass over its log would.
TEST_F(Processor, CheckpointsNeverChangeAFigure) {
  TaskEntity& task = addTask();
  bool resumed = false;
  for (int day = 0; day < 200; ++day) {
    const YYYYMMDD today = firstDay.add(day);
    if (day % 7 != 3) record(task, Type::completedManuallyFull, today);
    if (day % 31 == 30) record(task, Type::skippedManuallyFull, today.add(-3));
    if (day % 67 == 66) record(task, Type::unknown, today.add(-60));
    process();
    resumed = resumed || context_->checkpoint(task.objectID).has_value();

    const TaskFigures expected = wholeFigures(task, today);
    ASSERT_EQ(figures(task).activeStreak, expected.streak.current) << today.debugDescription();
    ASSERT_EQ(figures(task).bestStreak, expected.streak.best) << today.debugDescription();
    ASSERT_EQ(figures(task).lastMissed, storedDay(expected.lastMissed)) << today.debugDescription();
    ASSERT_EQ(figures(task).lastSkipped, storedDay(expected.lastSkipped)) << today.debugDescription();
    ASSERT_EQ(figures(task).recentLongTermPct, expected.longTerm.successPct) << today.debugDescription();
    clock_->advance(std::chrono::hours(24));
  }
  EXPECT_TRUE(resumed);
}

TEST_F(Processor, KeepsWhatARuleCountsWithTheCheckpoint) {
  TaskEntity& task = addTask();
  setFrequency(task, {.dayMode = TaskFrequency::DayMode::numberOfDaysInMonth, .numCompletions = 20});
  context_->save({});
  bool resumed = false;
  for (int day = 0; day < 130; ++day) {
    const YYYYMMDD today = firstDay.add(day);
    if (day % 3 != 1) record(task, day % 11 == 0 ? Type::skippedManuallyFull : Type::completedManuallyFull, today);
    process();
    resumed = resumed || context_->checkpoint(task.objectID).has_value();
    const TaskFigures expected = wholeFigures(task, today);
    ASSERT_EQ(figures(task).activeStreak, expected.streak.current) << today.debugDescription();
    ASSERT_EQ(figures(task).lastMissed, storedDay(expected.lastMissed)) << today.debugDescription();
    clock_->advance(std::chrono::hours(24));
  }
  EXPECT_TRUE(resumed);
  EXPECT_GT(figures(task).lastMissed, 0);
}

TEST_F(Processor, EveryPassBeginsWhereTheFirstDid) {
  TaskEntity& task = addTask();
  liveUntil("2024-02-02T12:00:00Z");
  record(task, Type::completedManuallyFull, {2024, 2, 2});
  EXPECT_EQ(process().filledIn, 0u) << "nobody kept it before the first entry";
  liveUntil("2024-02-03T12:00:00Z");
  EXPECT_EQ(process().filledIn, 0u);
  EXPECT_EQ(figures(task).lastMissed, 0);
}

TEST_F(Processor, AnEntryWithoutAPeriodKeepsItsPlace) {
  TaskEntity& task = addTask();
  setFrequency(task, {.dayMode = TaskFrequency::DayMode::aggregateOverMonth, .numCompletions = 1});
  context_->save({});
  TaskLogEntryEntity row;
  row.task = task.objectID;
  row.entryDate = 20240131;
  row.entryType = rawValue(Type::completedAutomaticallyFull);
  context_->insertLogEntry(row);
  context_->save({});
  record(task, Type::completedAutomaticallyFull, {2024, 1, 31});
  EXPECT_EQ(log(task).size(), 2u) << "it counts for the month, not for the day";
}

}  // namespace
}  // namespace habitra
