#include <gtest/gtest.h>
#include <HabitraCore/HistoryWalk.h>

#include <optional>
#include <vector>

namespace habitra {
namespace {

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
  EXPECT_EQ(streak({entryOf(20230302, 20230302, 20230302, 0), entryOf(20230231, 20230301, 20230301, 1)}), 1)
      << "a day that the calendar does not have, though its period does";
  EXPECT_EQ(streak({}), 0);
  // A period that lies inside another one, which has begun before, gives its entries to it.
  EXPECT_EQ(streak({entryOf(20230228, 20230228, 20230228, 0), entryOf(20230301, 20230227, 20230302, 1)}), 1);
  // ... and in order of creation, whichever period they came with.
  EXPECT_EQ(streak({entryOf(20230228, 20230228, 20230228, 0, TaskLogEntryType::missedManuallyFull),
                    entryOf(20230301, 20230227, 20230302, 1)}),
            1);
}

TEST(Histories, ResumedTakeThePartOfAPeriodThatIsLeft) {
  const TaskRules rules{.frequency = TaskFrequency::everyDay()};
  const HistoryScope scope{.created = {2024, 1, 1},
                           .today = {2024, 3, 3},
                           .fillFrom = {2024, 3, 2},
                           .checkpointDay = qz::YYYYMMDD(2024, 1, 14)};
  // The first fortnight ends at the checkpoint; the second one, which overlaps it, keeps the days after.
  const std::vector<LoggedEntry> log{entryOf(20240102, 20240101, 20240114, 0),
                                     entryOf(20240118, 20240110, 20240123, 1)};
  const HistoryWalk walk(rules, scope);
  const HistoryResult whole = walk.walk(log);
  EXPECT_EQ(whole.checkpoint.value().closedThrough, 20240114);
  EXPECT_EQ(whole.figures.streak.best, 2);
  EXPECT_EQ(walk.resume(*whole.checkpoint, std::span(log).last(1)).figures, whole.figures);
}

TEST(Histories, BeginAndAreFilledInFromTheSameDayOnEveryPass) {
  const qz::YYYYMMDD creation(2024, 1, 20);
  const qz::YYYYMMDD today(2024, 1, 31);
  const auto fillFrom = [&](std::optional<qz::YYYYMMDD> earliest, std::optional<qz::YYYYMMDD> processed) {
    return HistoryScope::of(creation, {earliest, earliest}, processed, today).fillFrom;
  };
  EXPECT_EQ(fillFrom({}, {}), creation);
  EXPECT_EQ(fillFrom(qz::YYYYMMDD(2024, 1, 25), {}), qz::YYYYMMDD(2024, 1, 25));
  EXPECT_EQ(fillFrom(qz::YYYYMMDD(2024, 1, 25), qz::YYYYMMDD(2024, 1, 22)), qz::YYYYMMDD(2024, 1, 25))
      << "a later pass begins nowhere before the first";
  EXPECT_EQ(fillFrom(qz::YYYYMMDD(2024, 1, 25), qz::YYYYMMDD(2024, 1, 29)), qz::YYYYMMDD(2024, 1, 29));
  const qz::YYYYMMDD early(2024, 1, 3);
  EXPECT_EQ(HistoryScope::of(creation, {early, early}, {}, today).created, early);

  // A day that was unchecked begins what is filled in, but no history.
  EXPECT_EQ(HistoryScope::of(creation, {creation, qz::YYYYMMDD(2024, 1, 25)}, {}, today).fillFrom, creation);
  const HistoryScope unchecked = HistoryScope::of(creation, {early, {}}, {}, today);
  EXPECT_EQ(unchecked.created, creation);
  EXPECT_EQ(unchecked.fillFrom, creation);
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
  TaskRules rules{.frequency = {.dayMode = TaskFrequency::DayMode::dayInterval, .dayInterval = 31}};
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
