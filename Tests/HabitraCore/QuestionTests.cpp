#include <gtest/gtest.h>
#include <HabitraCore/FollowingEntries.h>
#include <HabitraCore/HistoryWalk.h>

#include <nlohmann/json.hpp>
#include <vector>

/// What is asked of a history besides its figures: why, what a change sets off, what a calendar shows.
namespace habitra {
namespace {

using T = TaskLogEntryType;
using Mode = TaskFrequency::DayMode;
using CalendarStatus = TaskCalendarPeriodInfo::TaskCalendarPeriodStatus;

TaskRules rulesOf(Mode mode, std::int64_t count, bool isNegative = false) {
  TaskRules rules{.isNegative = isNegative, .firstDayOfWeek = qz::DayOfWeek::monday};
  rules.frequency.dayMode = mode;
  (mode == Mode::dayInterval ? rules.frequency.dayInterval : rules.frequency.numCompletions) = count;
  return rules;
}

/// January 2024 begins on a Monday.
HistoryScope januaryUntil(std::int64_t today) {
  return {.created = {2024, 1, 1}, .today = {2024, 1, today}, .fillFrom = {2024, 1, 1}};
}

/// A log with one entry per pair of a day of January 2024 and a type, counting for the period of the rules.
std::vector<LoggedEntry> logOf(const TaskRules& rules, const std::vector<std::pair<std::int64_t, T>>& entries) {
  std::vector<LoggedEntry> log;
  for (const auto& [d, type] : entries) {
    const auto period = rules.frequency.period(qz::YYYYMMDD(2024, 1, d), rules.firstDayOfWeek).period;
    log.push_back({.order = static_cast<std::int64_t>(log.size()),
                   .entryDate = static_cast<std::int32_t>(20240100 + d),
                   .periodFrom = static_cast<std::int32_t>(period.startDate.intValue()),
                   .periodTo = static_cast<std::int32_t>(period.finishDate.intValue()),
                   .entryType = type,
                   .periodType = period.periodType});
  }
  return log;
}

TEST(Reasons, TellTheNumbersOfAMissAmongCountedDays) {
  const TaskRules rules = rulesOf(Mode::numberOfDaysInWeek, 3);
  const auto log = logOf(rules, {{1, T::completedManuallyFull}, {3, T::completedManuallyFull}});
  const HistoryWalk walk(rules, januaryUntil(9));
  const PeriodReason reason = walk.why({2024, 1, 7}, log).value();
  EXPECT_EQ(reason.ground, PeriodReason::Ground::due);
  EXPECT_EQ(reason.status, CompletionStatus::Status::positiveMiss());
  EXPECT_EQ(reason.completed, 2);
  EXPECT_EQ(reason.required, 3);
  EXPECT_EQ(reason.stillPossible, 0) << "only that day was left";
  EXPECT_EQ(reason.countingPeriod.value().startDate, qz::YYYYMMDD(2024, 1, 1));
  ASSERT_EQ(reason.entries.size(), 2U);
  EXPECT_EQ(reason.entries[1].date, qz::YYYYMMDD(2024, 1, 3));
  EXPECT_EQ(walk.why({2024, 1, 6}, log).value().ground, PeriodReason::Ground::notDue);
  EXPECT_EQ(walk.why({2024, 1, 3}, log).value().ground, PeriodReason::Ground::fullEntry);
  EXPECT_FALSE(walk.why({2023, 12, 31}, log));
  EXPECT_FALSE(walk.why({2024, 1, 10}, log));
  EXPECT_EQ(nlohmann::json(reason).get<PeriodReason>(), reason);
}

TEST(Reasons, TellWhatIsLeftOfAnAllowance) {
  const TaskRules rules = rulesOf(Mode::numberOfDaysInWeek, 5, true);
  const auto log = logOf(rules, {{2, T::allowableMissManuallyFull}, {3, T::allowableMissManuallyFull}});
  const HistoryWalk walk(rules, januaryUntil(9));
  EXPECT_EQ(walk.why({2024, 1, 3}, log).value().allowanceLeft, 1);
  const PeriodReason clean = walk.why({2024, 1, 4}, log).value();
  EXPECT_EQ(clean.allowance, 2);
  EXPECT_EQ(clean.allowanceLeft, 0);
  EXPECT_EQ(clean.ground, PeriodReason::Ground::keptClean);
}

TEST(Reasons, TellFromWhichDayAnIntervalIsCounted) {
  TaskRules rules = rulesOf(Mode::dayInterval, 3);
  const auto log = logOf(rules, {{2, T::completedManuallyFull}});
  const HistoryWalk walk(rules, januaryUntil(9));
  const PeriodReason reason = walk.why({2024, 1, 8}, log).value();
  EXPECT_EQ(reason.ground, PeriodReason::Ground::due);
  EXPECT_EQ(reason.countedFrom, qz::YYYYMMDD(2024, 1, 2));
  EXPECT_EQ(reason.daysSince, 6);
  rules.pauses.push_back({.from = {2024, 1, 8}});
  EXPECT_EQ(HistoryWalk(rules, januaryUntil(9)).why({2024, 1, 8}, log).value().ground, PeriodReason::Ground::paused);
}

TEST(Reasons, NameTheGround) {
  using Ground = PeriodReason::Ground;
  const TaskRules weekly = rulesOf(Mode::aggregateOverWeek, 2);
  HistoryScope scope = januaryUntil(17);
  scope.created = {2024, 1, 3};
  const auto log = logOf(weekly, {{9, T::completedManuallyPartial}, {10, T::completedManuallyPartial}});
  EXPECT_EQ(HistoryWalk(weekly, scope).why({2024, 1, 3}, log).value().ground, Ground::beganBeforeHistory);
  EXPECT_EQ(HistoryWalk(weekly, scope).why({2024, 1, 9}, log).value().ground, Ground::partialEntries);
  // By the day until Tuesday: the rest of that week asks for nothing.
  const TaskRules daily{.frequency = TaskFrequency::everyDay(), .firstDayOfWeek = qz::DayOfWeek::monday};
  const auto days = logOf(daily, {{1, T::missedAutomaticallyFull}, {2, T::completedManuallyFull}});
  EXPECT_EQ(HistoryWalk(weekly, januaryUntil(9)).why({2024, 1, 5}, days).value().ground, Ground::cutShort);
  EXPECT_EQ(HistoryWalk(weekly, januaryUntil(9)).why({2024, 1, 1}, days).value().ground, Ground::fullEntry)
      << "a miss of the rule of that time";
  EXPECT_EQ(HistoryWalk(daily, januaryUntil(9)).why({2024, 1, 1}, days).value().ground, Ground::due);
  const TaskRules avoided = rulesOf(Mode::numberOfDaysInWeek, 5, true);
  const auto parts = logOf(avoided, {{2, T::missedManuallyPartial}});
  EXPECT_EQ(HistoryWalk(avoided, januaryUntil(9)).why({2024, 1, 2}, parts).value().ground, Ground::partialEntries);
  EXPECT_TRUE(HistoryWalk(avoided, januaryUntil(9)).missIsAllowed({2024, 1, 3}, parts));
  EXPECT_FALSE(HistoryWalk(avoided, januaryUntil(9)).missIsAllowed({2024, 1, 10}, parts)) << "after today";
}

TEST(Reasons, ReachBackIntoPeriodsOfAnOlderFrequency) {
  // Weeks, then 26 days a month: the week from the 1st was completed on the 3rd.
  const TaskRules weekly = rulesOf(Mode::aggregateOverWeek, 1);
  const TaskRules monthly = rulesOf(Mode::numberOfDaysInMonth, 26);
  auto log = logOf(weekly, {{3, T::completedManuallyFull}});
  for (LoggedEntry entry : logOf(monthly, {{8, T::completedManuallyFull}, {9, T::completedManuallyFull}})) {
    entry.order += 1;
    log.push_back(entry);
  }
  const PeriodReason reason = HistoryWalk(monthly, januaryUntil(10)).why({2024, 1, 10}, log).value();
  EXPECT_EQ(reason.completed, 3);
  EXPECT_EQ(reason.entries.size(), 3U);
  // A week that holds today and ends in the next month.
  HistoryScope scope = januaryUntil(31);
  auto open = logOf(weekly, {{31, T::completedManuallyFull}});
  EXPECT_EQ(HistoryWalk(monthly, scope).walk(open).figures.daysInPeriod.value().toDate, qz::YYYYMMDD(2024, 1, 31));
}

TEST(FollowingEntries, AreThoseOfLaterDaysThatTheRuleCounts) {
  const qz::YYYYMMDD tuesday(2024, 1, 2);
  EXPECT_EQ(followingDays(rulesOf(Mode::numberOfDaysInWeek, 3), tuesday).value().last, qz::YYYYMMDD(2024, 1, 7));
  EXPECT_EQ(followingDays(rulesOf(Mode::numberOfDaysInYear, 3), tuesday).value().last, qz::YYYYMMDD(2024, 12, 31));
  EXPECT_TRUE(followingDays(rulesOf(Mode::dayInterval, 3), tuesday).value().endAtCompletion);
  EXPECT_FALSE(followingDays(rulesOf(Mode::numberOfDaysInWeek, 3), {2024, 1, 7})) << "the last day of its week";
  for (const Mode mode : {Mode::specificDaysOfWeek, Mode::specificDaysOfMonth, Mode::aggregateOverMonth})
    EXPECT_FALSE(followingDays(rulesOf(mode, 1), tuesday));
  EXPECT_TRUE(followsFromEarlierDays(T::missedAutomaticallyFull));
  EXPECT_FALSE(followsFromEarlierDays(T::missedManuallyFull));
  EXPECT_FALSE(followsFromEarlierDays(T::completedAutomaticallyFull));
}

TEST(FollowingEntries, AreRetypedInTheOrderOfTheirDays) {
  const TaskRules rules = rulesOf(Mode::numberOfDaysInWeek, 5, true);
  // Two failures a week are allowed; the one of the 1st was recorded last, and the one of the 4th is a miss of its own.
  std::vector<LoggedEntry> log = logOf(rules, {{1, T::allowableMissManuallyFull},
                                               {2, T::allowableMissAutomaticallyFull},
                                               {3, T::allowableMissManuallyFull},
                                               {4, T::missedManuallyFull},
                                               {8, T::missedManuallyFull}});
  const auto retypings = HistoryWalk(rules, januaryUntil(9)).retypings(log, {2024, 1, 1});
  EXPECT_EQ(retypings, (std::vector<Retyping>{{2, 20240103, T::missedManuallyFull}})) << "of that week alone";
  EXPECT_TRUE(HistoryWalk(rules, januaryUntil(9)).retypings(log, {2024, 1, 4}).empty());
  const TaskRules interval = rulesOf(Mode::dayInterval, 3, true);
  EXPECT_EQ(HistoryWalk(interval, januaryUntil(9)).retypings(log, {2024, 1, 1}),
            (std::vector<Retyping>{{1, 20240102, T::missedAutomaticallyFull}}))
      << "the next failed day";
  // What partial misses made necessary stays a miss.
  log = logOf(rules, {{1, T::missedManuallyPartial}, {1, T::missedAutomaticallyFull}});
  EXPECT_TRUE(HistoryWalk(rules, januaryUntil(9)).retypings(log, {2024, 1, 1}).empty());
  TaskRules measured = rules;
  measured.frequency.numPartialCompletions = 2;
  measured.measure = {.kind = TaskMeasure::Kind::quantity, .target = 10};
  log.front().progressTotal = 12;
  EXPECT_TRUE(HistoryWalk(measured, januaryUntil(9)).retypings(log, {2024, 1, 1}).empty());
}

TEST(FollowingEntries, OfTheOpenPeriodGoOverToANewFrequency) {
  const TaskRules weekly = rulesOf(Mode::aggregateOverWeek, 3);
  const TaskRules daily{.frequency = TaskFrequency::everyDay(), .firstDayOfWeek = qz::DayOfWeek::monday};
  auto log = logOf(weekly, {{5, T::completedManuallyPartial}, {8, T::completedManuallyPartial}, {9, T::unknown}});
  const auto current = weekly.frequency.period({2024, 1, 10}, qz::DayOfWeek::monday).period;
  const auto restamped = restampings(current, daily, log);
  ASSERT_EQ(restamped.size(), 2U) << "the week before stays";
  EXPECT_EQ(restamped[0].period.finishDate, qz::YYYYMMDD(2024, 1, 8));
  EXPECT_TRUE(restampings(current, weekly, log).empty());

  // By the day until Tuesday the 9th, then by the week: Monday stays what it was, and the week is the rest of it.
  log = logOf(daily, {{8, T::completedManuallyPartial}, {9, T::completedManuallyPartial}});
  const auto today = daily.frequency.period({2024, 1, 9}, qz::DayOfWeek::monday).period;
  for (const Restamping& restamping : restampings(today, weekly, log)) {
    LoggedEntry& entry = log[static_cast<std::size_t>(restamping.order)];
    entry.periodFrom = static_cast<std::int32_t>(restamping.period.startDate.intValue());
    entry.periodTo = static_cast<std::int32_t>(restamping.period.finishDate.intValue());
    entry.periodType = restamping.period.periodType;
  }
  log.front().entryType = T::completedManuallyFull;
  const TaskFigures figures = HistoryWalk(weekly, januaryUntil(9)).walk(log).figures;
  EXPECT_EQ(figures.period.startDate, qz::YYYYMMDD(2024, 1, 9));
  EXPECT_EQ(figures.period.finishDate, current.finishDate);
  EXPECT_EQ(figures.progress, 1.0 / 3.0);
  EXPECT_EQ(figures.streak.current, 1);
}

TEST(RecentHistories, ShowEveryDayOfTheirSpan) {
  TaskRules rules{.frequency = TaskFrequency::everyDay()};
  const auto log = logOf(rules, {{3, T::completedManuallyFull}, {4, T::skippedManuallyFull}});
  HistoryScope scope = januaryUntil(6);
  scope.created = {2024, 1, 3};
  const TaskRecentHistory history = HistoryWalk(rules, scope).recentHistory(log, {2024, 1, 1}, {2024, 1, 8});
  using S = CalendarStatus;
  const std::vector<S> expected{S::past,   S::past,    S::completed, S::skipped,
                                S::missed, S::current, S::future,    S::future};
  std::vector<S> found;
  for (const auto& [day, status] : history.single) found.push_back(status);
  EXPECT_EQ(found, expected);
  EXPECT_TRUE(history.multi.empty());
  EXPECT_EQ(history.shortTerm.numSamples, 2);

  rules.isNegative = true;
  const auto failed = logOf(rules, {{4, T::missedManuallyFull}, {6, T::allowableMissManuallyFull}});
  const auto avoided = HistoryWalk(rules, scope).recentHistory(failed, {2024, 1, 3}, {2024, 1, 6}).single;
  EXPECT_EQ(avoided.at({2024, 1, 3}), S::completed);
  EXPECT_EQ(avoided.at({2024, 1, 4}), S::missed);
  EXPECT_EQ(avoided.at({2024, 1, 6}), S::currentAllowedMiss);
}

TEST(RecentHistories, ListLongerPeriods) {
  const TaskRules rules = rulesOf(Mode::aggregateOverWeek, 2);
  HistoryScope scope = januaryUntil(17);
  scope.created = {2024, 1, 3};
  const auto log = logOf(rules, {{9, T::completedManuallyPartial}, {10, T::completedManuallyPartial}});
  const auto history = HistoryWalk(rules, scope).recentHistory(log, {2023, 12, 28}, {2024, 1, 23});
  std::vector<std::pair<qz::YYYYMMDD, CalendarStatus>> found;
  for (const auto& info : history.multi) found.emplace_back(info.period.startDate, info.status);
  EXPECT_EQ(found, (std::vector<std::pair<qz::YYYYMMDD, CalendarStatus>>{{{2023, 12, 25}, CalendarStatus::past},
                                                                         {{2024, 1, 1}, CalendarStatus::skipped},
                                                                         {{2024, 1, 8}, CalendarStatus::completed},
                                                                         {{2024, 1, 15}, CalendarStatus::current},
                                                                         {{2024, 1, 22}, CalendarStatus::future}}));
  EXPECT_EQ(history.shortTerm.type, TaskRecentHistory::PreviousSuccessType::pastMonth);
}

TEST(RecentHistories, HoldNoDayTwice) {
  // Today was judged by the day; the week that is asked for since then begins after it.
  const TaskRules weekly = rulesOf(Mode::aggregateOverWeek, 2);
  const TaskRules daily{.frequency = TaskFrequency::everyDay(), .firstDayOfWeek = qz::DayOfWeek::monday};
  const auto log = logOf(daily, {{8, T::completedManuallyFull}});
  const auto history = HistoryWalk(weekly, januaryUntil(8)).recentHistory(log, {2024, 1, 8}, {2024, 1, 14});
  EXPECT_EQ(history.single.at({2024, 1, 8}), CalendarStatus::currentCompleted);
  ASSERT_EQ(history.multi.size(), 1U);
  EXPECT_EQ(history.multi.front().period.startDate, qz::YYYYMMDD(2024, 1, 9));
}

TEST(EntriesAhead, CountForALongerPeriodThatHasBegun) {
  const TaskRules rules = rulesOf(Mode::aggregateOverWeek, 2);
  auto log = logOf(rules, {{1, T::completedManuallyPartial}, {3, T::completedManuallyPartial}});
  const HistoryWalk walk(rules, januaryUntil(2));
  EXPECT_EQ(walk.walk(log).figures.progress, 0.5) << "the 3rd has not come";
  log.back().isAhead = true;
  EXPECT_EQ(walk.walk(log).figures.progress, 1.0) << "it was recorded in time, further east";
}

TEST(Figures, CountTheDaysOfTheCurrentPeriod) {
  const TaskRules rules = rulesOf(Mode::numberOfDaysInWeek, 3);
  const auto log = logOf(rules, {{8, T::completedManuallyFull}, {9, T::completedManuallyFull}});
  const auto days = HistoryWalk(rules, januaryUntil(9)).walk(log).figures.daysInPeriod.value();
  EXPECT_EQ(days.numUniqueCompletions, 2);
  EXPECT_EQ(days.fromDate, qz::YYYYMMDD(2024, 1, 8));
  const TaskRules interval = rulesOf(Mode::dayInterval, 4);
  const auto figures =
      HistoryWalk(interval, januaryUntil(9)).walk(logOf(interval, {{8, T::completedManuallyFull}})).figures;
  EXPECT_EQ(figures.dayInterval.periodOfLastCompletionBeforeToday.value().finishDate, qz::YYYYMMDD(2024, 1, 8));
  EXPECT_EQ(interval.frequency.nextDueDay(figures.dayInterval, {2024, 1, 1}, {2024, 1, 9}), qz::YYYYMMDD(2024, 1, 12));
}

}  // namespace
}  // namespace habitra
