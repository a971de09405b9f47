#include <gtest/gtest.h>
#include <HabitraCore/FutureEntries.h>
#include <HabitraCore/TaskCalendarPeriodInfo.h>
#include <HabitraCore/TaskFrequency.h>
#include <HabitraCore/TaskLogEntryPeriod.h>
#include <HabitraCore/TaskPause.h>
#include <HabitraCore/TaskRecentHistory.h>
#include <QZDateTime/DecodingError.h>
#include <QZDateTime/ISO8601.h>
#include <rapidcheck/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>
#include <string>

#include "CodingComplaints.h"
#include "FrequencyGenerators.h"
#include "QZDateTime/Printing.h"

namespace habitra {
namespace {

using Mode = TaskFrequency::DayMode;
using Type = TaskFrequencyPeriodType;

qz::Moment moment(std::string_view text) { return qz::momentFromISO8601(text).value(); }

std::string bounds(Type type, const qz::YYYYMMDD& day, qz::DayOfWeek first = qz::DayOfWeek::monday,
                   const std::optional<qz::YYYYMMDD>& reference = std::nullopt) {
  return firstDate(type, day, first, reference).debugDescription() + ".." +
         lastDate(type, day, first, reference).debugDescription();
}

TEST(Periods, HoldTheirDay) {
  const qz::YYYYMMDD leapDay(2024, 2, 29);  // a Thursday
  EXPECT_EQ(bounds(Type::day, leapDay), "2024-02-29..2024-02-29");
  EXPECT_EQ(bounds(Type::week, leapDay), "2024-02-26..2024-03-03");
  EXPECT_EQ(bounds(Type::week, leapDay, qz::DayOfWeek::friday), "2024-02-23..2024-02-29");
  EXPECT_EQ(bounds(Type::month, leapDay), "2024-02-01..2024-02-29");
  EXPECT_EQ(bounds(Type::year, leapDay), "2024-01-01..2024-12-31");
  EXPECT_EQ(bounds(Type::week, {2025, 1, 1}), "2024-12-30..2025-01-05");
}

TEST(Periods, FortnightsAreWholeWeeksInBothDirections) {
  // 1 January 2000 was a Saturday, so a block begins on Monday, 27 December 1999.
  EXPECT_EQ(bounds(Type::fortnight, {2000, 1, 1}), "1999-12-27..2000-01-09");
  EXPECT_EQ(bounds(Type::fortnight, {2000, 1, 7}), bounds(Type::fortnight, {2000, 1, 8}));
  EXPECT_EQ(bounds(Type::fortnight, {1999, 12, 26}), "1999-12-13..1999-12-26");
  EXPECT_EQ(bounds(Type::fortnight, {2000, 1, 1}, qz::DayOfWeek::saturday), "2000-01-01..2000-01-14");
  // A Wednesday: its block begins before it, on the Monday of its week.
  const qz::YYYYMMDD reference(2024, 5, 15);
  EXPECT_EQ(bounds(Type::fortnight, {2024, 5, 14}, qz::DayOfWeek::monday, reference), "2024-05-13..2024-05-26");
  EXPECT_EQ(bounds(Type::fortnight, reference, qz::DayOfWeek::monday, reference), "2024-05-13..2024-05-26");
  EXPECT_EQ(bounds(Type::fortnight, {2024, 5, 12}, qz::DayOfWeek::monday, reference), "2024-04-29..2024-05-12");
}

TEST(Periods, OfAFrequencyAreOfTheTypeItMeasures) {
  const qz::YYYYMMDD reference(2024, 3, 6);
  const auto monday = qz::DayOfWeek::monday;
  const TaskFrequency fortnightly{.dayMode = Mode::aggregateOverFortnight};
  const DatedPeriod period = fortnightly.period({2024, 3, 1}, monday, reference);
  EXPECT_EQ(period, DatedPeriod(qz::YYYYMMDD(2024, 3, 1), Type::fortnight, monday, reference));
  EXPECT_EQ(fortnightly.startOfPeriod({2024, 3, 4}, monday, reference), qz::YYYYMMDD(2024, 3, 4));
  EXPECT_FALSE(period.isLastDay());
  EXPECT_TRUE(fortnightly.period({2024, 3, 3}, monday, reference).isLastDay());
  EXPECT_TRUE(TaskFrequency{.dayMode = Mode::numberOfDaysInYear}.period({2024, 3, 2}, monday).isLastDay());
}

TEST(Periods, OfAMomentFollowTheStartOfDayAndTheZone) {
  const TaskFrequency monthly{.dayMode = Mode::aggregateOverMonth};
  const qz::HHMMSS three(3, 0);
  const auto monday = qz::DayOfWeek::monday;
  const auto current = monthly.currentPeriod(three, monday, qz::TimeZone::utc(), moment("2024-03-01T01:30:00Z"));
  EXPECT_EQ(current, monthly.period({2024, 2, 29}, monday));
  const auto tokyo = qz::TimeZone::fromIdentifier("Asia/Tokyo").value();
  EXPECT_EQ(monthly.period(three, moment("2024-02-29T18:00:00Z"), monday, tokyo), monthly.period({2024, 3, 1}, monday));

  const TaskFrequency fortnightly{.dayMode = Mode::aggregateOverFortnight};
  const qz::YYYYMMDD reference(2024, 2, 26);
  EXPECT_EQ(fortnightly.currentPeriod(three, monday, tokyo, moment("2024-03-01T01:30:00Z"), reference).period.startDate,
            reference);
}

RC_GTEST_PROP(Periods, CoverEveryDayExactlyOnce, ()) {
  const Type type = anyCase<Type>();
  const qz::DayOfWeek first = qz::anyWeekday();
  const auto reference = anyReferenceDate();
  const qz::YYYYMMDD day = qz::anyDay();
  const auto periodOf = [&](const qz::YYYYMMDD& date) { return DatedPeriod(date, type, first, reference).period; };
  const TaskFrequencyPeriod period = periodOf(day);
  RC_ASSERT(period.contains(day));
  RC_ASSERT(periodOf(period.startDate.add(qz::between(0, period.numDays() - 1))) == period);
  const TaskFrequencyPeriod next = periodOf(period.finishDate.nextDay());
  RC_ASSERT(next.startDate == period.finishDate.nextDay());
  RC_ASSERT(periodOf(next.startDate.previousDay()) == period);
  RC_ASSERT(periodOf(period.startDate.previousDay()).finishDate == period.startDate.previousDay());
  RC_ASSERT(period.numDays() == numDays(multiDayCount(type, day)));
  RC_ASSERT(period.numDays() <= nominalLength(type));
}

RC_GTEST_PROP(Periods, ReferenceDatesOfOneWeekGiveTheSameFortnights, ()) {
  const qz::DayOfWeek first = qz::anyWeekday();
  const qz::YYYYMMDD reference = anyCommonDay();
  const qz::YYYYMMDD other = reference.startOfWeek(first).add(qz::between(0, 6));
  const qz::YYYYMMDD day = anyCommonDay();
  RC_ASSERT(bounds(Type::fortnight, day, first, reference) == bounds(Type::fortnight, day, first, other));
  RC_ASSERT(firstDate(Type::fortnight, reference, first, reference) == reference.startOfWeek(first));
}

TEST(Periods, OfAMomentHaveTheLengthOfItsDay) {
  // Before 03:00 on 1 May it is still April; in Tokyo it is long May.
  const qz::HHMMSS three(3, 0);
  const auto tokyo = qz::TimeZone::fromIdentifier("Asia/Tokyo").value();
  const qz::Moment now = moment("2024-05-01T02:59:59Z");
  EXPECT_EQ(multiDayCount(Type::month, three, qz::TimeZone::utc(), now), MultiDayCount::duration30);
  EXPECT_EQ(multiDayCount(Type::month, three, tokyo, now), MultiDayCount::duration31);
}

TEST(Periods, ProgressIsTheShareOfDaysThatAreOver) {
  const DatedPeriod april(qz::YYYYMMDD(2024, 4, 10), Type::month, qz::DayOfWeek::monday);
  const auto progressAt = [&](std::string_view now) {
    return april.periodProgressAtEndOfToday(qz::HHMMSS(3, 0), qz::TimeZone::utc(), moment(now));
  };
  EXPECT_EQ(progressAt("2024-04-01T02:59:59Z"), 0.0);  // still 31 March
  EXPECT_EQ(progressAt("2024-04-01T03:00:00Z"), 1.0 / 30);
  EXPECT_EQ(progressAt("2024-04-16T02:00:00Z"), 0.5);
  EXPECT_EQ(progressAt("2024-05-01T02:59:59Z"), 1.0);  // 30 April
  EXPECT_EQ(progressAt("2024-06-01T12:00:00Z"), 1.0);
  EXPECT_EQ(april.period.progressAtEndOf({2023, 4, 10}), 0.0);
}

RC_GTEST_PROP(PeriodForms, RoundTrip, ()) {
  const DatedPeriod period = anyPeriod();
  RC_ASSERT(nlohmann::json(period).get<DatedPeriod>() == period);
  const TaskLogEntryPeriod entryPeriod(period);
  RC_ASSERT(nlohmann::json(entryPeriod).get<TaskLogEntryPeriod>() == entryPeriod);
  const TaskCalendarPeriodInfo info{period.period, anyCase<TaskCalendarPeriodInfo::TaskCalendarPeriodStatus>()};
  RC_ASSERT(nlohmann::json(info).get<TaskCalendarPeriodInfo>() == info);
  TaskPause pause{.from = anyCommonDay()};
  RC_ASSERT(nlohmann::json(pause).get<TaskPause>() == pause);
  pause.to = anyCommonDay();
  RC_ASSERT(nlohmann::json(pause).get<TaskPause>() == pause);
}

TEST(PeriodForms, CodedKeys) {
  const DatedPeriod week(qz::YYYYMMDD(2025, 1, 1), Type::week, qz::DayOfWeek::monday);
  const auto weekForm = nlohmann::json::parse(
      R"({"periodType": "w", "startDate": 20241230, "finishDate": 20250105, "firstDayOfWeek": 1})");
  EXPECT_EQ(nlohmann::json(week), nlohmann::json({{"date", 20250101}, {"period", weekForm}}));
  EXPECT_EQ(nlohmann::json(TaskLogEntryPeriod(week)),
            nlohmann::json::parse(R"({"type": "w", "from": 20241230, "to": 20250105, "date": 20250101})"));
  const TaskCalendarPeriodInfo info{week.period, TaskCalendarPeriodInfo::TaskCalendarPeriodStatus::currentAllowedMiss};
  EXPECT_EQ(nlohmann::json(info), nlohmann::json({{"period", weekForm}, {"status", "currentAllowedMiss"}}));
  EXPECT_EQ(nlohmann::json(TaskPause{.from = {2024, 2, 29}}).dump(), R"({"from":20240229})");
}

TEST(PeriodForms, RefuseDaysThatCannotBe) {
  nlohmann::json period = DatedPeriod(qz::YYYYMMDD(2024, 2, 29), Type::week, qz::DayOfWeek::monday);
  period["date"] = 20240230;
  EXPECT_EQ(complaint<DatedPeriod>(period), R"(Unable to read "date" from 20240230)");
  period["date"] = 20240304;
  EXPECT_EQ(complaint<DatedPeriod>(period), R"(Unable to read "date" from 20240304: not in its "period")");
  period["period"]["finishDate"] = 20240225;
  EXPECT_EQ(complaint<DatedPeriod>(period), R"(Unable to read "finishDate" from 20240225: before "startDate")");
  period["period"]["startDate"] = 20240001;
  EXPECT_EQ(complaint<DatedPeriod>(period), R"(Unable to read "startDate" from 20240001)");

  const auto entryPeriod =
      nlohmann::json::parse(R"({"type": "d", "from": 20240302, "to": 20240301, "date": 20240301})");
  EXPECT_EQ(complaint<TaskLogEntryPeriod>(entryPeriod), R"(Unable to read "to" from 20240301: before "from")");
  nlohmann::json info =
      TaskCalendarPeriodInfo{DatedPeriod(qz::YYYYMMDD(2024, 2, 29), Type::day, qz::DayOfWeek::monday).period};
  info["status"] = "abandoned";
  EXPECT_EQ(complaint<TaskCalendarPeriodInfo>(info),
            R"(Unable to create TaskCalendarPeriodInfo.TaskCalendarPeriodStatus from "abandoned")");
}

TEST(Pauses, HoldTheirDaysUntilTheyEnd) {
  const TaskPause open{.from = {2024, 2, 28}};
  EXPECT_FALSE(open.contains({2024, 2, 27}));
  EXPECT_TRUE(open.contains({2024, 2, 28}));
  EXPECT_TRUE(open.contains({2999, 1, 1}));
  const TaskPause closed{.from = {2024, 2, 28}, .to = qz::YYYYMMDD(2024, 3, 1)};
  EXPECT_TRUE(closed.contains({2024, 2, 29}));
  EXPECT_TRUE(closed.contains({2024, 3, 1}));
  EXPECT_FALSE(closed.contains({2024, 3, 2}));

  EXPECT_EQ(complaint<TaskPause>({{"to", 20240301}}), R"(Unable to read "from": missing)");
  EXPECT_EQ(complaint<TaskPause>({{"from", 20230229}}), R"(Unable to read "from" from 20230229)");
  EXPECT_EQ(complaint<TaskPause>({{"from", 20240228}, {"to", "20240301"}}), R"(Unable to read "to" from "20240301")");
  const nlohmann::json withoutEnd{{"from", 20240228}, {"to", nullptr}};
  EXPECT_EQ(withoutEnd.get<TaskPause>(), open);
  const nlohmann::json backwards{{"from", 20240228}, {"to", 20240227}};
  EXPECT_FALSE(backwards.get<TaskPause>().contains({2024, 2, 28}));
}

TEST(RecentHistory, SpansEndToday) {
  using Span = TaskRecentHistory::PreviousSuccessType;
  EXPECT_EQ(firstDay(Span::last7, {2024, 3, 3}), qz::YYYYMMDD(2024, 2, 26));
  EXPECT_EQ(firstDay(Span::last30, {2024, 3, 3}), qz::YYYYMMDD(2024, 2, 3));
  EXPECT_EQ(firstDay(Span::pastMonth, {2024, 3, 15}), qz::YYYYMMDD(2024, 2, 16));
  EXPECT_EQ(firstDay(Span::pastMonth, {2024, 1, 1}), qz::YYYYMMDD(2023, 12, 2));
  EXPECT_EQ(firstDay(Span::pastMonth, {2024, 3, 29}), qz::YYYYMMDD(2024, 3, 1));
  EXPECT_EQ(firstDay(Span::pastMonth, {2024, 3, 31}), qz::YYYYMMDD(2024, 3, 1));
  EXPECT_EQ(firstDay(Span::pastMonth, {2024, 4, 30}), qz::YYYYMMDD(2024, 3, 31));
  EXPECT_EQ(firstDay(Span::pastYear, {2024, 12, 31}), qz::YYYYMMDD(2024, 1, 1));
  EXPECT_EQ(firstDay(Span::pastYear, {2024, 2, 29}), qz::YYYYMMDD(2023, 3, 1));
  EXPECT_EQ(firstDay(Span::allTime, {2024, 2, 29}), std::nullopt);
}

TEST(FutureEntryTests, AreThoseThatWereNotRecordedInTime) {
  const qz::Moment now = moment("2024-03-10T13:00:00Z");
  const qz::YYYYMMDD today(2024, 3, 10);
  const qz::HHMMSS midnight = qz::HHMMSS::midnight;
  const EntryRecording plain{.entryDate = 20240311};
  EXPECT_TRUE(liesInFuture(plain, today, midnight, now));
  EXPECT_FALSE(liesInFuture({.entryDate = 20240310}, today, midnight, now));
  EXPECT_FALSE(liesInFuture({.entryDate = 0}, today, midnight, now));

  // Recorded where it was already the 11th, at 02:30, by somebody who then flew west over the date line.
  EntryRecording flown{20240311, moment("2024-03-10T12:30:00Z"), "Pacific/Kiritimati"};
  EXPECT_FALSE(liesInFuture(flown, today, midnight, now));
  EXPECT_TRUE(liesInFuture(flown, today, qz::HHMMSS(3, 0), now)) << "there the 10th went on until 03:00";
  EXPECT_FALSE(liesInFuture(flown, today, midnight, *flown.createdTimestamp));
  EXPECT_TRUE(liesInFuture(flown, today, midnight, *flown.createdTimestamp - std::chrono::microseconds(1)));
  flown.entryDate = 20240312;
  EXPECT_TRUE(liesInFuture(flown, today, midnight, now)) << "not the 12th anywhere";
  flown.entryDate = 20240311;
  flown.createdTimeZone = "Nowhere/Atlantis";
  EXPECT_TRUE(liesInFuture(flown, today, midnight, now));
  flown.createdTimeZone = std::nullopt;
  EXPECT_TRUE(liesInFuture(flown, today, midnight, now));
  EXPECT_FALSE(wasRecordedInTime({.entryDate = 20240301, .createdTimeZone = "UTC"}, midnight, now));
}

}  // namespace
}  // namespace habitra
