#include "NaiveHistory.h"

#include <gtest/gtest.h>
#include <HabitraCore/HistoryWalk.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace habitra {
namespace {

struct History {
  TaskRules rules;
  HistoryScope scope;
  std::vector<LoggedEntry> log;
};

std::int32_t integer(const qz::YYYYMMDD& day) { return static_cast<std::int32_t>(day.intValue()); }

TaskRules someRules() {
  TaskRules rules{.isNegative = *rc::gen::arbitrary<bool>(), .firstDayOfWeek = qz::DayOfWeek::monday};
  if (*rc::gen::arbitrary<bool>()) {
    rules.frequency.days = qz::DaysOfWeek::fromRawValue(*rc::gen::inRange(1, 128)).value();
  } else {
    rules.frequency.dayMode = TaskFrequency::DayMode::specificDaysOfMonth;
    rules.frequency.daysOfMonth = DaysOfMonth(*rc::gen::arbitrary<std::int64_t>()) | DaysOfMonth::lastDay();
  }
  rules.frequency.numPartialCompletions = *rc::gen::inRange(1, 4);
  return rules;
}

LoggedEntry someEntry(const DatedPeriod& period, std::size_t order) {
  LoggedEntry entry{.order = static_cast<std::int64_t>(order), .entryDate = integer(period.date)};
  entry.entryType = RawValueTable<TaskLogEntryType>::rows[*rc::gen::inRange<std::size_t>(0, 16)].value;
  entry.periodType = period.period.periodType;
  // Now and then a day's entry has no period stored with it.
  if (entry.periodType != TaskFrequencyPeriodType::day || *rc::gen::inRange(0, 20) != 0) {
    entry.periodFrom = integer(period.period.startDate);
    entry.periodTo = integer(period.period.finishDate);
  }
  return entry;
}

/// Up to about five months of any entries at all, the first weeks perhaps from a time when weeks were measured.
History someHistory() {
  History history{.rules = someRules()};
  const qz::YYYYMMDD created = qz::YYYYMMDD(2023, 12, 1).add(*rc::gen::inRange(0, 100));
  const std::int64_t length = *rc::gen::inRange(0, 150);
  const qz::YYYYMMDD weeksUntil =
      created.add(*rc::gen::element(-1, 20)).startOfWeek(qz::DayOfWeek::monday).previousDay();
  history.scope = {.created = created, .today = created.add(length), .fillFrom = created};
  if (*rc::gen::arbitrary<bool>()) history.scope.fillFrom = created.add(*rc::gen::inRange<std::int64_t>(0, length + 1));
  history.scope.checkpointDay = created.add(*rc::gen::inRange<std::int64_t>(-5, length + 5));
  for (qz::YYYYMMDD day = created; day <= history.scope.today.add(2); day = day.nextDay()) {
    const auto type = day <= weeksUntil ? TaskFrequencyPeriodType::week : TaskFrequencyPeriodType::day;
    const DatedPeriod period(day, type, qz::DayOfWeek::monday);
    for (int count = *rc::gen::element(0, 0, 1, 1, 1, 2, 3); count > 0; --count)
      history.log.push_back(someEntry(period, history.log.size()));
  }
  return history;
}

RC_GTEST_PROP(Histories, AgreeWithTheRulesReadOneDayAtATime, ()) {
  const History history = someHistory();
  std::vector<std::string> lines;
  const HistoryResult result =
      HistoryWalk(history.rules, history.scope).walk(history.log, [&](const WalkedPeriod& walked) {
        lines.push_back(lineOf(walked));
      });
  lines.push_back(lineOf(result.figures));
  RC_ASSERT(lines == naiveHistory(history.rules, history.scope, history.log));
  RC_ASSERT(HistoryWalk(history.rules, history.scope).walk(history.log).figures == result.figures);
}

RC_GTEST_PROP(Histories, ResumedFromACheckpointAreTheWholeOnes, ()) {
  History history = someHistory();
  // As a store would ask: the days before last week were filled in, and the checkpoint is older than a month.
  if (*rc::gen::inRange(0, 4) != 0) {
    history.scope.fillFrom = std::max(history.scope.created, history.scope.today.add(-7));
    history.scope.checkpointDay = history.scope.today.add(-*rc::gen::inRange(31, 90));
  }
  const HistoryWalk walk(history.rules, history.scope);
  const HistoryResult whole = walk.walk(history.log);
  if (!whole.checkpoint) return;
  const HistoryCheckpoint& checkpoint = *whole.checkpoint;
  const auto closed = qz::YYYYMMDD::fromRawValue(checkpoint.closedThrough).value();
  RC_ASSERT(closed <= *history.scope.checkpointDay && closed < history.scope.today);
  RC_ASSERT(walk.canResume(checkpoint) ==
            (closed < history.scope.fillFrom && closed.distance(history.scope.today) > 30));
  if (!walk.canResume(checkpoint)) return;
  std::vector<LoggedEntry> rest;
  for (const LoggedEntry& entry : history.log)
    if (std::max(entry.periodFrom, entry.entryDate) > checkpoint.closedThrough) rest.push_back(entry);
  const HistoryResult resumed = walk.resume(checkpoint, rest);
  RC_ASSERT(resumed.figures == whole.figures);
  RC_ASSERT(resumed.fillIns == whole.fillIns);
  RC_ASSERT(resumed.checkpoint == whole.checkpoint);
  RC_ASSERT(walk.resume(checkpoint, history.log).figures == whole.figures);
}

RC_GTEST_PROP(Histories, ResumedAmongOverlappingPeriodsAreTheWholeOnes, ()) {
  History history = someHistory();
  history.scope.today = history.scope.created.add(*rc::gen::inRange(60, 150));
  history.scope.fillFrom = history.scope.today.add(-7);
  history.scope.checkpointDay = history.scope.today.add(-*rc::gen::inRange(31, 50));
  // Stored periods of any length around their days, across the checkpoint, too.
  for (LoggedEntry& entry : history.log) {
    if (*rc::gen::inRange(0, 3) != 0) continue;
    const qz::YYYYMMDD day = qz::YYYYMMDD::fromRawValue(entry.entryDate).value();
    entry.periodFrom = integer(day.add(-*rc::gen::inRange(0, 12)));
    entry.periodTo = integer(day.add(*rc::gen::inRange(0, 12)));
    entry.periodType = TaskFrequencyPeriodType::fortnight;
  }
  const HistoryWalk walk(history.rules, history.scope);
  const HistoryResult whole = walk.walk(history.log);
  if (!whole.checkpoint || !walk.canResume(*whole.checkpoint)) return;
  const HistoryResult resumed = walk.resume(*whole.checkpoint, history.log);
  RC_ASSERT(resumed.figures == whole.figures);
  RC_ASSERT(resumed.fillIns == whole.fillIns);
  RC_ASSERT(resumed.checkpoint == whole.checkpoint);
}

RC_GTEST_PROP(Histories, StayAsTheyAreWhenTheirFillInsAreWritten, ()) {
  History history = someHistory();
  const HistoryResult before = HistoryWalk(history.rules, history.scope).walk(history.log);
  for (const FillIn& fillIn : before.fillIns) {
    history.log.push_back({.order = static_cast<std::int64_t>(history.log.size()),
                           .entryDate = integer(fillIn.period.finishDate),
                           .periodFrom = integer(fillIn.period.startDate),
                           .periodTo = integer(fillIn.period.finishDate),
                           .entryType = fillIn.entryType,
                           .periodType = fillIn.period.periodType});
  }
  std::ranges::stable_sort(history.log, {}, &LoggedEntry::entryDate);
  const HistoryResult after = HistoryWalk(history.rules, history.scope).walk(history.log);
  RC_ASSERT(after.fillIns.empty());
  RC_ASSERT(after.figures == before.figures);
  RC_ASSERT(after.checkpoint == before.checkpoint);
}

LoggedEntry entryOf(std::int32_t date, std::int32_t from, std::int32_t to, std::int64_t order,
                    TaskLogEntryType type = TaskLogEntryType::completedManuallyFull) {
  return {.order = order, .entryDate = date, .periodFrom = from, .periodTo = to, .entryType = type};
}

TEST(Histories, EntriesThatNoDayMeets) {
  const TaskRules rules{.frequency = TaskFrequency::everyDay()};
  const HistoryScope scope{.created = {2023, 2, 27}, .today = {2023, 3, 3}, .fillFrom = {2023, 2, 27}};
  const auto streak = [&](std::vector<LoggedEntry> log) {
    return HistoryWalk(rules, scope).walk(log).figures.streak.current;
  };
  EXPECT_EQ(streak({entryOf(20230302, 20230302, 20230302, 0)}), 1);
  EXPECT_EQ(streak({entryOf(20230231, 20230231, 20230231, 0), entryOf(20230302, 20230302, 20230302, 1)}), 1);
  EXPECT_EQ(streak({entryOf(20230302, 0, 0, 0)}), 1) << "no period stored: that of the day";
  EXPECT_EQ(streak({entryOf(20230302, 20230309, 20230201, 0)}), 1) << "a period that ends before it begins";
  EXPECT_EQ(streak({entryOf(20230231, 0, 0, 0), entryOf(20230302, 20230302, 20230302, 1)}), 1);
  EXPECT_EQ(streak({entryOf(20230301, 20230301, 20230301, 5), entryOf(20230303, 20230302, 20230302, 6)}), 2)
      << "the stored period counts, not the day of the entry";
  EXPECT_EQ(streak({entryOf(20230302, 20230302, 20230302, 0), entryOf(20230304, 20230304, 20230304, 1)}), 1)
      << "a day that has not come";
  EXPECT_EQ(streak({}), 0);
  // Of overlapping periods the one that begins first stands: the week takes the day's entry in.
  EXPECT_EQ(streak({entryOf(20230228, 20230228, 20230228, 0), entryOf(20230301, 20230227, 20230302, 1)}), 1);
}

TEST(Histories, ResumedLeaveOutWhatBeganBeforeTheCheckpoint) {
  const TaskRules rules{.frequency = TaskFrequency::everyDay()};
  const HistoryScope scope{.created = {2024, 1, 1},
                           .today = {2024, 3, 3},
                           .fillFrom = {2024, 3, 2},
                           .checkpointDay = qz::YYYYMMDD(2024, 1, 14)};
  // The first fortnight ends at the checkpoint; the second one overlaps it and its entry, of a later day, counts for
  // it.
  const std::vector<LoggedEntry> log{entryOf(20240102, 20240101, 20240114, 0),
                                     entryOf(20240118, 20240110, 20240123, 1)};
  const HistoryWalk walk(rules, scope);
  const HistoryResult whole = walk.walk(log);
  EXPECT_EQ(whole.checkpoint.value().closedThrough, 20240114);
  EXPECT_EQ(whole.figures.streak.best, 1);
  EXPECT_EQ(walk.resume(*whole.checkpoint, std::span(log).last(1)).figures, whole.figures);
}

TEST(Histories, ThatBeginAfterTodayAreEmpty) {
  const TaskRules rules{.frequency = TaskFrequency::everyDay()};
  const HistoryScope scope{.created = {2024, 3, 5}, .today = {2024, 3, 3}, .fillFrom = {2024, 3, 5}};
  const HistoryResult result = HistoryWalk(rules, scope).walk({});
  EXPECT_EQ(result.figures.period.startDate, scope.today);
  EXPECT_TRUE(result.figures.isDueToday);
  EXPECT_EQ(result.figures.longTerm.numSamples, 0);
  EXPECT_TRUE(result.fillIns.empty());
}

TEST(Histories, CheckpointsOfOtherRulesAreRefused) {
  TaskRules rules{.frequency = TaskFrequency::everyDay()};
  HistoryScope scope{.created = {2024, 1, 1},
                     .today = {2024, 3, 3},
                     .fillFrom = {2024, 3, 2},
                     .checkpointDay = qz::YYYYMMDD(2024, 1, 20)};
  const HistoryCheckpoint checkpoint = HistoryWalk(rules, scope).walk({}).checkpoint.value();
  EXPECT_EQ(checkpoint.closedThrough, 20240120);
  EXPECT_TRUE(HistoryWalk(rules, scope).canResume(checkpoint));
  rules.isNegative = true;
  EXPECT_FALSE(HistoryWalk(rules, scope).canResume(checkpoint));
  rules.isNegative = false;
  scope.created = {2023, 12, 31};
  EXPECT_FALSE(HistoryWalk(rules, scope).canResume(checkpoint));
  EXPECT_FALSE(HistoryWalk(rules, scope).canResume(HistoryCheckpoint()));
}

TEST(HistoriesDeathTest, WhatMustHoldIsHeld) {
  TaskRules rules{.frequency = {.dayMode = TaskFrequency::DayMode::dayInterval, .dayInterval = 2}};
  const HistoryScope scope{.created = {2024, 1, 1}, .today = {2024, 3, 3}, .fillFrom = {2024, 1, 1}};
  EXPECT_FALSE(HistoryWalk::supports(rules.frequency));
  EXPECT_DEATH(HistoryWalk(rules, scope), "cannot be judged");
  rules.frequency = TaskFrequency::everyDay();
  EXPECT_DEATH(static_cast<void>(HistoryWalk(rules, scope).resume({}, {})), "checkpoint");
  const HistoryScope far{.created = {2024, 1, 1}, .today = {300'000, 1, 1}, .fillFrom = {2024, 1, 1}};
  EXPECT_DEATH(static_cast<void>(HistoryWalk(rules, far).walk({})), "width");
}

}  // namespace
}  // namespace habitra
