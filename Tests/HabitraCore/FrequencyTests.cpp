#include <gtest/gtest.h>
#include <HabitraCore/StoredFrequency.h>
#include <HabitraCore/TaskFrequency.h>
#include <HabitraCore/TaskRules.h>
#include <QZDateTime/DecodingError.h>
#include <rapidcheck/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>
#include <string>

namespace habitra {
namespace {

using Mode = TaskFrequency::DayMode;
using Type = TaskFrequencyPeriodType;

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
  const DatedPeriod week(qz::YYYYMMDD(2024, 3, 3), Type::week, qz::DayOfWeek::monday);
  EXPECT_TRUE(week.isLastDay());
  EXPECT_FALSE(TaskFrequency::everyDay().period({2024, 3, 2}, qz::DayOfWeek::monday).period.contains({2024, 3, 3}));
}

TEST(Periods, FortnightsAreWholeWeeksInBothDirections) {
  // 1 January 2000 was a Saturday, so a block begins on Monday, 27 December 1999.
  EXPECT_EQ(bounds(Type::fortnight, {2000, 1, 1}), "1999-12-27..2000-01-09");
  EXPECT_EQ(bounds(Type::fortnight, {2000, 1, 7}), bounds(Type::fortnight, {2000, 1, 8}));
  EXPECT_EQ(bounds(Type::fortnight, {1999, 12, 26}), "1999-12-13..1999-12-26");
  EXPECT_EQ(bounds(Type::fortnight, {2024, 5, 15}, qz::DayOfWeek::monday, qz::YYYYMMDD(2024, 5, 15)),
            "2024-05-13..2024-05-26");
  EXPECT_EQ(bounds(Type::fortnight, {2024, 5, 12}, qz::DayOfWeek::monday, qz::YYYYMMDD(2024, 5, 19)),
            "2024-04-29..2024-05-12");
}

TEST(Periods, OfAMomentFollowTheStartOfDay) {
  const TaskFrequency frequency{.dayMode = Mode::aggregateOverMonth};
  const qz::Moment halfPastOne =
      qz::Moment(std::chrono::sys_days(std::chrono::year(2024) / 3 / 1)) + std::chrono::minutes(90);
  const auto current =
      frequency.currentPeriod(qz::HHMMSS(3, 0), qz::DayOfWeek::monday, qz::TimeZone::utc(), halfPastOne);
  EXPECT_EQ(current.date, qz::YYYYMMDD(2024, 2, 29));
  EXPECT_EQ(current.period.finishDate, qz::YYYYMMDD(2024, 2, 29));
  EXPECT_EQ(frequency.startOfPeriod(current.date, qz::DayOfWeek::monday), qz::YYYYMMDD(2024, 2, 1));
}

TEST(DaysOfMonthTests, CountFromBothEnds) {
  EXPECT_EQ(DaysOfMonth::day(1).rawValue(), 2);
  EXPECT_EQ(DaysOfMonth::lastDay().rawValue(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(DaysOfMonth::lastDay(7), DaysOfMonth::day(56));
  EXPECT_TRUE(DaysOfMonth::day(64).isEmpty() && DaysOfMonth::day(-1).isEmpty() && DaysOfMonth::lastDay(-1).isEmpty());
  EXPECT_TRUE((DaysOfMonth::day(0) | DaysOfMonth::day(32) | DaysOfMonth::day(55)).isEmpty());

  const auto dueIn = [](DaysOfMonth days, std::int64_t y, std::int64_t m) {
    const TaskFrequency frequency{.dayMode = Mode::specificDaysOfMonth, .daysOfMonth = days};
    std::string due;
    for (qz::YYYYMMDD day(y, m, 1); day.m() == m; day = day.nextDay())
      if (isDueByCalendar(frequency, day)) due += std::to_string(day.d()) + " ";
    return due;
  };
  EXPECT_EQ(dueIn(DaysOfMonth::lastDay(), 2023, 2), "28 ");
  EXPECT_EQ(dueIn(DaysOfMonth::lastDay(), 2024, 2), "29 ");
  EXPECT_EQ(dueIn(DaysOfMonth::lastDay() | DaysOfMonth::lastDay(7), 2024, 4), "23 30 ");
  EXPECT_EQ(dueIn(DaysOfMonth::day(31), 2024, 4), "");
  EXPECT_EQ(dueIn(DaysOfMonth::day(31) | DaysOfMonth::day(1) | DaysOfMonth::lastDay(), 2024, 12), "1 31 ");
}

TEST(StoredFrequencies, UseOneColumnPerCount) {
  const TaskFrequency daily = TaskFrequency::everyDay();
  EXPECT_EQ(stored(daily), (StoredFrequency{.daysOfWeek = 127}));
  TaskFrequency interval{
      .dayMode = Mode::dayInterval, .numPartialCompletions = 2, .numCompletions = 9, .dayInterval = 30};
  EXPECT_EQ(stored(interval), (StoredFrequency{.daysMode = 2, .daysPerWeek = 30, .daysTimesPerDay = 2}));
  interval.numCompletions = 1;
  EXPECT_EQ(frequency(stored(interval)), interval);
  const TaskFrequency monthly{.dayMode = Mode::numberOfDaysInMonth, .numPartialCompletions = 3, .numCompletions = 31};
  EXPECT_EQ(stored(monthly), (StoredFrequency{.daysMode = 3, .daysPerWeek = 31, .daysTimesPerDay = 3}));
  EXPECT_EQ(frequency({.daysMode = 9, .daysPerWeek = -4, .daysTimesPerDay = 0}),
            (TaskFrequency{.dayMode = Mode::aggregateOverYear}));
}

TEST(StoredFrequencies, ThatCannotBeReadAsNone) {
  for (const StoredFrequency& impossible : {
           StoredFrequency{.daysMode = 11},
           StoredFrequency{.daysMode = -1},
           StoredFrequency{.daysMode = 0, .daysOfWeek = 0},
           StoredFrequency{.daysMode = 0, .daysOfWeek = 128},
           StoredFrequency{.daysMode = 10, .daysOfMonth = 1},
           StoredFrequency{.daysMode = 2, .daysPerWeek = 1},
           StoredFrequency{.daysMode = 2, .daysPerWeek = 31},
       }) {
    EXPECT_EQ(frequency(impossible), std::nullopt) << impossible.daysMode << " " << impossible.daysPerWeek;
  }
}

RC_GTEST_PROP(FrequencyForms, RoundTrip, ()) {
  TaskFrequency value;
  value.dayMode = fromRawValue<Mode>(*rc::gen::inRange(0, 11)).value();
  value.days = qz::DaysOfWeek::fromRawValue(*rc::gen::inRange(1, 128)).value();
  value.daysOfMonth = DaysOfMonth(*rc::gen::arbitrary<std::int64_t>()) | DaysOfMonth::day(*rc::gen::inRange(1, 32));
  value.numPartialCompletions = *rc::gen::inRange(1, 32'767);
  if (rawValue(value.dayMode) % 10 != 0 && value.dayMode != Mode::dayInterval)
    value.numCompletions = *rc::gen::inRange(1, 367);
  if (value.dayMode == Mode::dayInterval) value.dayInterval = *rc::gen::inRange(2, 31);
  RC_ASSERT(frequency(stored(value)) == value);
  RC_ASSERT(nlohmann::json(value).get<TaskFrequency>() == value);
}

TEST(FrequencyForms, CodedKeys) {
  TaskFrequency value{.dayMode = Mode::specificDaysOfWeek, .daysOfMonth = DaysOfMonth::day(1)};
  value.days = {qz::DayOfWeek::friday, qz::DayOfWeek::monday};
  EXPECT_EQ(nlohmann::json(value).dump(), R"({"dayInterval":1,"dayMode":0,"days":[1,5],"daysOfMonth":2,)"
                                          R"("numCompletions":1,"numPartialCompletions":1})");
  nlohmann::json unknown = value;
  unknown["dayMode"] = 11;
  EXPECT_THROW(static_cast<void>(unknown.get<TaskFrequency>()), qz::DecodingError);
}

TEST(FrequencyForms, RefuseValuesOfTheWrongKindAndMissingKeysByName) {
  const nlohmann::json good = TaskFrequency::everyDay();
  const auto complaint = [](const nlohmann::json& json) -> std::string {
    try {
      static_cast<void>(json.get<TaskFrequency>());
    } catch (const qz::DecodingError& error) {
      return error.what();
    }
    return {};
  };
  for (const auto& [key, value] : good.items()) {
    nlohmann::json json = good;
    json.erase(key);
    EXPECT_EQ(complaint(json), "Unable to read \"" + key + "\": missing");
    if (key == "days" || key == "dayMode") continue;
    for (const nlohmann::json& wrong : {nlohmann::json(1.9), nlohmann::json(true), nlohmann::json("1")}) {
      json[key] = wrong;
      EXPECT_EQ(complaint(json), "Unable to read \"" + key + "\" from " + wrong.dump());
    }
  }
  for (const char* const wrong :
       {R"({"dayMode": 0.0})", R"({"dayMode": 18446744073709551615})", R"({"days": {"a": 1}})", R"({"days": [1, 2.5]})",
        R"({"days": [true]})", R"({"days": 127})"}) {
    nlohmann::json json = good;
    json.update(nlohmann::json::parse(wrong));
    EXPECT_NE(complaint(json), "") << wrong;
  }
  EXPECT_NE(complaint(nlohmann::json::array()), "");
}

TEST(Rules, FingerprintsAreStableAndTellRulesApart) {
  TaskRules rules{.frequency = TaskFrequency::everyDay()};
  // Kept in stores: a new value for the same rules would drop every checkpoint, which only a changed walk may do.
  EXPECT_EQ(fingerprint(rules, {2024, 1, 1}), 11642709528683766314u);
  const auto original = fingerprint(rules, {2024, 1, 1});
  EXPECT_NE(fingerprint(rules, {2024, 1, 2}), original);
  rules.isNegative = true;
  EXPECT_NE(fingerprint(rules, {2024, 1, 1}), original);
  rules = {.frequency = TaskFrequency::everyDay(), .referenceDate = qz::YYYYMMDD(2024, 1, 1)};
  EXPECT_NE(fingerprint(rules, {2024, 1, 1}), original);
  rules = {.frequency = {.numPartialCompletions = 2}};
  rules.frequency.days = qz::DayOfWeek::every();
  EXPECT_NE(fingerprint(rules, {2024, 1, 1}), original);
}

}  // namespace
}  // namespace habitra
