#include <gtest/gtest.h>
#include <HabitraCore/StoredFrequency.h>
#include <HabitraCore/TaskFrequency.h>
#include <HabitraCore/TaskFrequencyValidation.h>
#include <HabitraCore/TaskRules.h>
#include <QZDateTime/DecodingError.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "CodingComplaints.h"
#include "FrequencyGenerators.h"
#include "QZDateTime/Printing.h"

namespace habitra {
namespace {

using Mode = TaskFrequency::DayMode;
using Type = TaskFrequencyPeriodType;

constexpr std::int64_t least64 = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t most64 = std::numeric_limits<std::int64_t>::max();

/// The days of a month that a set marks, "1 15 31 ".
std::string daysIn(DaysOfMonth days, std::int64_t y, std::int64_t m) {
  const std::int64_t length = qz::YYYYMM(y, m).numberOfDays();
  std::string found;
  for (std::int64_t d = 1; d <= length; ++d)
    if (days.isDue(d, length)) found += std::to_string(d) + " ";
  return found;
}

TEST(DaysOfMonthTests, CountFromBothEndsOfTheMonth) {
  EXPECT_EQ(DaysOfMonth::day1.rawValue(), 2);
  EXPECT_EQ(DaysOfMonth::day31, DaysOfMonth::day(31));
  EXPECT_EQ(DaysOfMonth::lastDay().rawValue(), least64);
  EXPECT_EQ(DaysOfMonth::lastDayMinus7, DaysOfMonth::day(56));
  EXPECT_EQ(DaysOfMonth::day(0).rawValue(), 1);
  for (const std::int64_t n : {std::int64_t{-1}, std::int64_t{64}, least64, most64}) {
    EXPECT_EQ(DaysOfMonth::day(n), DaysOfMonth());
    EXPECT_EQ(DaysOfMonth::lastDay(n), DaysOfMonth());
  }

  EXPECT_EQ(daysIn(DaysOfMonth::lastDay(), 2023, 2), "28 ");
  EXPECT_EQ(daysIn(DaysOfMonth::lastDay(), 2024, 2), "29 ");
  EXPECT_EQ(daysIn(DaysOfMonth::lastDay() | DaysOfMonth::lastDayMinus7, 2024, 4), "23 30 ");
  EXPECT_EQ(daysIn(DaysOfMonth::day31 | DaysOfMonth::day30, 2024, 2), "");
  EXPECT_EQ(daysIn(DaysOfMonth::day31, 2024, 4), "");
  EXPECT_EQ(daysIn(DaysOfMonth::day31 | DaysOfMonth::day1 | DaysOfMonth::lastDay(), 2024, 12), "1 31 ");
}

TEST(DaysOfMonthTests, AreASetOfDaysInOrder) {
  DaysOfMonth days = DaysOfMonth::lastDay() | DaysOfMonth::day15 | DaysOfMonth::lastDayMinus2 | DaysOfMonth::day1;
  days.insert(DaysOfMonth::day(40));  // means no day
  EXPECT_EQ(days.count(), 4);
  EXPECT_EQ(std::vector<DaysOfMonth>(days.begin(), days.end()),
            (std::vector{DaysOfMonth::day1, DaysOfMonth::day15, DaysOfMonth::lastDayMinus2, DaysOfMonth::lastDay()}));
  days.remove(DaysOfMonth::day1 | DaysOfMonth::day2 | DaysOfMonth::lastDay());
  EXPECT_EQ(days & DaysOfMonth::every(), DaysOfMonth::day15 | DaysOfMonth::lastDayMinus2);
  EXPECT_TRUE(days.contains(DaysOfMonth::day15));
  EXPECT_FALSE(days.contains(DaysOfMonth::day15 | DaysOfMonth::day1));
  EXPECT_TRUE((DaysOfMonth::day(0) | DaysOfMonth::day(32) | DaysOfMonth::day(55)).isEmpty());
  EXPECT_EQ(DaysOfMonth::every().count(), 39);
}

TEST(Frequencies, ReadCountsBelowOneAsOneAndStopAtAnOverflow) {
  TaskFrequency frequency{.dayMode = Mode::aggregateOverWeek, .numPartialCompletions = -1, .numCompletions = 0};
  EXPECT_EQ(frequency.numPartialCompletionsPerPeriod(), 1);
  frequency = {.dayMode = Mode::aggregateOverWeek, .numPartialCompletions = most64, .numCompletions = 2};
  EXPECT_DEATH(static_cast<void>(frequency.numPartialCompletionsPerPeriod()), "overflow in a multiplication");
}

TEST(Intervals, GoOnFromTheAnchorWithoutACompletion) {
  const TaskFrequency everyThird{.dayMode = Mode::dayInterval, .dayInterval = 3};
  const qz::YYYYMMDD anchor(2024, 2, 27);
  const auto next = [&](const qz::YYYYMMDD& today) { return everyThird.nextDueDay({}, anchor, today); };
  EXPECT_EQ(next({2024, 2, 1}), anchor);
  EXPECT_EQ(next(anchor), anchor);
  EXPECT_EQ(next({2024, 2, 28}), qz::YYYYMMDD(2024, 3, 1));
  EXPECT_EQ(next({2024, 3, 1}), qz::YYYYMMDD(2024, 3, 1));
  EXPECT_DEATH(static_cast<void>(TaskFrequency{.dayInterval = 0}.nextDueDay({}, anchor, anchor)), "interval");
}

RC_GTEST_PROP(Intervals, NextDueDayIsTheFirstMultipleFromTodayOn, ()) {
  const TaskFrequency frequency{.dayMode = Mode::dayInterval, .dayInterval = qz::between(1, 30)};
  const qz::YYYYMMDD last = anyCommonDay();
  const qz::YYYYMMDD today = last.add(qz::between(1, 400));
  const qz::YYYYMMDD next =
      frequency.nextDueDay({DatedPeriod(last, Type::day, qz::anyWeekday()).period}, anyCommonDay(), today);
  RC_ASSERT(next >= today);
  RC_ASSERT(last.distance(next) % frequency.dayInterval == 0);
  RC_ASSERT(next.add(-frequency.dayInterval) < std::max(today, last.nextDay()));
}

/// The fields that a person would be told to mend.
std::string badFields(const TaskFrequency& frequency) {
  std::string fields;
  for (const FrequencyProblem& problem : problems(frequency)) fields += std::string(problem.field) + " ";
  return fields;
}

/// A frequency of this mode in which everything is good.
TaskFrequency good(Mode mode) {
  return {.dayMode = mode, .days = {qz::DayOfWeek::friday}, .daysOfMonth = DaysOfMonth::lastDay(), .dayInterval = 2};
}

TEST(Validation, AcceptsExactlyTheRangeOfEachCount) {
  struct Range {
    Mode mode;
    std::string field;
    std::int64_t TaskFrequency::*count;
    std::int64_t least;
    std::int64_t most;
  };
  std::vector<Range> ranges{
      {Mode::dayInterval, "dayInterval", &TaskFrequency::dayInterval, 2, 30},
      {Mode::numberOfDaysInWeek, "numCompletions", &TaskFrequency::numCompletions, 1, 7},
      {Mode::numberOfDaysInFortnight, "numCompletions", &TaskFrequency::numCompletions, 1, 14},
      {Mode::numberOfDaysInMonth, "numCompletions", &TaskFrequency::numCompletions, 1, 31},
      {Mode::numberOfDaysInYear, "numCompletions", &TaskFrequency::numCompletions, 1, 366},
      {Mode::aggregateOverWeek, "numCompletions", &TaskFrequency::numCompletions, 1, 32'767},
      {Mode::aggregateOverFortnight, "numCompletions", &TaskFrequency::numCompletions, 1, 32'767},
      {Mode::aggregateOverMonth, "numCompletions", &TaskFrequency::numCompletions, 1, 32'767},
      {Mode::aggregateOverYear, "numCompletions", &TaskFrequency::numCompletions, 1, 32'767},
  };
  for (const auto& row : RawValueTable<Mode>::rows)
    ranges.push_back({row.value, "numPartialCompletions", &TaskFrequency::numPartialCompletions, 1, 32'767});
  for (const Range& range : ranges) {
    TaskFrequency frequency = good(range.mode);
    for (const std::int64_t value : {least64, range.least - 1, range.least, range.most, range.most + 1, most64}) {
      SCOPED_TRACE(std::string(caseName(range.mode)) + " " + range.field + " " + std::to_string(value));
      frequency.*range.count = value;
      const bool isGood = range.least <= value && value <= range.most;
      EXPECT_EQ(badFields(frequency), isGood ? "" : range.field + " ");
      EXPECT_EQ(canBe(frequency), isGood || range.field != "dayInterval");
    }
  }
}

TEST(Validation, AsksForADayOnlyWhereDaysAreChosen) {
  for (const auto& row : RawValueTable<Mode>::rows) {
    TaskFrequency frequency = good(row.value);
    EXPECT_EQ(badFields(frequency), "") << row.name;
    frequency.days = {};
    EXPECT_EQ(badFields(frequency), row.value == Mode::specificDaysOfWeek ? "days " : "") << row.name;
    EXPECT_EQ(canBe(frequency), row.value != Mode::specificDaysOfWeek) << row.name;
    frequency.days = qz::DayOfWeek::every();
    frequency.daysOfMonth = DaysOfMonth::day(0) | DaysOfMonth::day(32);
    EXPECT_EQ(badFields(frequency), row.value == Mode::specificDaysOfMonth ? "daysOfMonth " : "") << row.name;
    EXPECT_EQ(canBe(frequency), row.value != Mode::specificDaysOfMonth) << row.name;
  }
}

TEST(Validation, SaysWhatWasFoundAndWhatIsAllowedForEveryField) {
  const auto found = problems({.dayMode = Mode::numberOfDaysInWeek, .numPartialCompletions = 0, .numCompletions = 8});
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(found[0].message(), "numPartialCompletions must be from 1 to 32767, not 0");
  EXPECT_EQ(found[1].message(), "numCompletions must be from 1 to 7, not 8");
  EXPECT_EQ(problems({.dayMode = Mode::dayInterval, .dayInterval = 31}).at(0).message(),
            "dayInterval must be from 2 to 30, not 31");
  EXPECT_EQ(problems({}).at(0).message(), "days must hold at least one day");
}

TEST(StoredFrequencies, StopAtACountThatDoesNotFit) {
  EXPECT_DEATH(static_cast<void>(stored({.numPartialCompletions = 32'768})), "does not fit its width");
}

RC_GTEST_PROP(StoredFrequencies, ReadAnyColumnsAsWhatTheyWouldBeWrittenFrom, ()) {
  const StoredFrequency columns{
      .daysMode = static_cast<std::int16_t>(qz::between(-1, 11)),
      .daysOfWeek = static_cast<std::int16_t>(qz::between(-1, 128)),
      .daysPerWeek = static_cast<std::int16_t>(*rc::gen::oneOf(rc::gen::inRange(-2, 35), rc::gen::arbitrary<int>())),
      .daysTimesPerDay = *rc::gen::arbitrary<std::int16_t>(),
      .daysOfMonth = *rc::gen::arbitrary<std::int64_t>()};
  const auto value = frequency(columns);
  if (!value) return;
  RC_ASSERT(canBe(*value));
  RC_ASSERT(value->numPartialCompletions >= 1 && value->numCompletions >= 1 && value->dayInterval >= 1);
  RC_ASSERT(frequency(stored(*value)) == value);
}

RC_GTEST_PROP(FrequencyForms, RoundTrip, ()) {
  const TaskFrequency value = anyFrequency();
  RC_ASSERT(problems(value).empty() && canBe(value));
  RC_ASSERT(frequency(stored(value)) == value);
  RC_ASSERT(nlohmann::json(value).get<TaskFrequency>() == value);
}

TEST(FrequencyForms, CodedKeys) {
  TaskFrequency value{.dayMode = Mode::specificDaysOfWeek, .daysOfMonth = DaysOfMonth::day1};
  value.days = {qz::DayOfWeek::friday, qz::DayOfWeek::monday};
  EXPECT_EQ(nlohmann::json(value).dump(), R"({"dayInterval":1,"dayMode":0,"days":[1,5],"daysOfMonth":2,)"
                                          R"("numCompletions":1,"numPartialCompletions":1})");
}

TEST(FrequencyForms, RefuseValuesOfTheWrongKindAndMissingKeysByName) {
  const nlohmann::json good = TaskFrequency::everyDay();
  for (const auto& [key, value] : good.items()) {
    nlohmann::json json = good;
    json.erase(key);
    EXPECT_EQ(complaint<TaskFrequency>(json), "Unable to read \"" + key + "\": missing");
    if (key == "days" || key == "dayMode") continue;
    for (const nlohmann::json& wrong : std::vector<nlohmann::json>{1.9, true, "1"}) {
      json[key] = wrong;
      EXPECT_EQ(complaint<TaskFrequency>(json), "Unable to read \"" + key + "\" from " + wrong.dump());
    }
    if (key == "daysOfMonth") continue;
    // Counts are stored in 16 bits.
    for (const std::int64_t count : {-32'769, -32'768, 32'767, 32'768}) {
      json[key] = count;
      const bool fits = count == -32'768 || count == 32'767;
      EXPECT_EQ(complaint<TaskFrequency>(json), fits ? "" : "Unable to read \"" + key + "\" from " + json[key].dump());
    }
  }
  for (const char* const wrong :
       {R"({"dayMode": 0.0})", R"({"dayMode": 11})", R"({"dayMode": 18446744073709551615})", R"({"days": {"a": 1}})",
        R"({"days": [1, 2.5]})", R"({"days": [7]})", R"({"days": [true]})", R"({"days": 127})"}) {
    nlohmann::json json = good;
    json.update(nlohmann::json::parse(wrong));
    EXPECT_NE(complaint<TaskFrequency>(json), "") << wrong;
  }
  EXPECT_NE(complaint<TaskFrequency>(nlohmann::json::array()), "");
}

TEST(Rules, FingerprintsTellApartWhatCouldBeJudgedDifferently) {
  const TaskRules rules{.frequency = TaskFrequency::everyDay()};
  // Kept in stores: a new value for the same rules drops every checkpoint, which only a changed walk may do.
  EXPECT_EQ(fingerprint(rules, {2024, 1, 1}), 14859131509419127813u);
  std::set<std::uint64_t> found{fingerprint(rules, {2024, 1, 1}), fingerprint(rules, {2024, 1, 2})};
  const std::vector<std::function<void(TaskRules&)>> changes{
      [](TaskRules& other) { other.frequency.dayMode = Mode::aggregateOverWeek; },
      [](TaskRules& other) { other.frequency.days.remove(qz::DayOfWeek::sunday); },
      [](TaskRules& other) { other.frequency.daysOfMonth.insert(DaysOfMonth::lastDay()); },
      [](TaskRules& other) { other.frequency.numPartialCompletions = 2; },
      [](TaskRules& other) { other.frequency.numCompletions = 2; },
      [](TaskRules& other) { other.frequency.dayInterval = 2; },
      [](TaskRules& other) { other.isNegative = true; },
      [](TaskRules& other) { other.firstDayOfWeek = qz::DayOfWeek::monday; },
      [](TaskRules& other) { other.referenceDate = qz::YYYYMMDD(2024, 1, 1); },
      [](TaskRules& other) { other.measure.kind = TaskMeasure::Kind::quantity; },
      [](TaskRules& other) { other.measure.target = 2.5; },
      [](TaskRules& other) {
        other.pauses = {{.from = {2024, 1, 1}}};
      },
      [](TaskRules& other) {
        other.pauses = {{.from = {2024, 1, 1}, .to = qz::YYYYMMDD(2024, 1, 2)}};
      },
  };
  for (const auto& change : changes) {
    TaskRules other = rules;
    change(other);
    found.insert(fingerprint(other, {2024, 1, 1}));
  }
  EXPECT_EQ(found.size(), changes.size() + 2);
}

}  // namespace
}  // namespace habitra
