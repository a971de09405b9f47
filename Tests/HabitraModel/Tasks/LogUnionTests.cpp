#include <HabitraModel/Tasks/Deduplication/TaskDeduplicator.h>
#include <HabitraModel/Tasks/Recording/FilledInEntries.h>

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "TaskWorld.h"

namespace habitra {
namespace {

using Type = TaskLogEntryType;
using DayMode = TaskFrequency::DayMode;

/// What somebody recorded, in the order of a list.
struct Event {
  int day;  ///< of January 2024, which begins on a Monday
  Type type;
  double amount = 0;
};
using Places = std::vector<std::size_t>;  ///< in a list of events

/// Habits that mirroring has doubled, and one that was never double.
class LogUnionTest : public TaskWorld {
 protected:
  TaskEntity& addHabit(const std::string& title, const TaskFrequency& frequency, bool isNegative = false) {
    TaskEntity values = newlyMadeTask(title, qz::DayOfWeek::monday, at("2023-12-28T12:00:00Z"), "UTC");
    setFrequency(values, frequency);
    values.isNegative = isNegative;
    values.uniqueId = title;
    TaskEntity& task = context_->insert(values);
    context_->save({});
    return task;
  }

  /// Records events for a habit, lets a pass fill in, and gives the entries the same names wherever they are.
  void keep(TaskEntity& task, const std::vector<Event>& events, const Places& places, double share = 0) {
    std::map<std::string, std::string> names;
    for (const std::size_t place : places) {
      const Event& event = events[place];
      auto data = entry(task, event.type, qz::YYYYMMDD(2024, 1, 1).add(event.day - 1));
      const TaskRules rules = rulesOf(*context_, task).value();
      data.period = rules.frequency.period(data.period.date, rules.firstDayOfWeek);
      data.progressValue = event.amount;
      data.progressPct = share;
      data.createdTimestamp = at("2024-01-20T08:00:00Z") + std::chrono::seconds(place);
      names[data.uniqueId.text()] = fmt::format("{} {:02}", *task.title, place);
      ASSERT_EQ(messageOf(record(task, {data})), "");
    }
    process();
    for (TaskLogEntryEntity row : context_->fetchLogEntries(task.objectID)) {
      if (!names.contains(*row.uniqueId)) continue;
      row.uniqueId = names[*row.uniqueId];
      context_->updateLogEntry(row.key(), row);
    }
    context_->save({});
  }

  /// Makes one habit of those with the same title, and lets a pass follow.
  void unite() {
    TaskDeduplicator().deduplicate(*context_);
    context_->save({});
    process();
  }

  static std::string placeOf(const TaskLogEntryEntity& row) { return row.uniqueId->substr(row.uniqueId->size() - 2); }

  /// The events that a log still has.
  Places placesIn(const TaskEntity& task) {
    Places places;
    for (const auto& row : context_->fetchLogEntries(task.objectID))
      if (!isFilledIn(row)) places.push_back(std::stoul(placeOf(row)));
    return places;
  }

  /// The last parts of failures, which stand as these, have to be recorded as they stand.
  void followFailures(const TaskEntity& task, std::vector<Event>& events) {
    for (const auto& row : context_->fetchLogEntries(task.objectID)) {
      const Type type = fromRawValue<Type>(row.entryType).value();
      if (!isFilledIn(row) && isMissedFull(type)) events[std::stoul(placeOf(row))].type = type;
    }
  }

  /// What a log says; what was filled in bears another name each time.
  std::vector<std::string> describe(const TaskEntity& task) {
    std::vector<std::string> lines;
    for (const auto& row : context_->fetchLogEntries(task.objectID))
      lines.push_back(fmt::format("{} to {} {} {} {}", row.entryDate, row.entryPeriodTo,
                                  caseName(fromRawValue<Type>(row.entryType).value()), row.progressTotal,
                                  isFilledIn(row) ? "" : placeOf(row)));
    std::ranges::sort(lines);
    return lines;
  }
};

TEST_F(LogUnionTest, WhatWasFilledInWithoutKnowingTheOtherLogIsFilledInAnew) {
  const TaskFrequency threeDays{.dayMode = DayMode::numberOfDaysInWeek, .numCompletions = 3};
  const std::vector<Event> events{
      {1, Type::completedManuallyFull}, {2, Type::completedManuallyFull}, {3, Type::completedManuallyFull}};
  clock_->set(at("2024-01-08T12:00:00Z"));
  TaskEntity& habit = addHabit("Walk", threeDays);
  keep(habit, events, {0});
  TaskEntity& other = addHabit("Walk", threeDays);
  keep(other, events, {1, 2});
  const auto misses = [&](const TaskEntity& task) {
    return std::ranges::count_if(context_->fetchLogEntries(task.objectID), [](const TaskLogEntryEntity& row) {
      return fromRawValue<Type>(row.entryType) == Type::missedAutomaticallyFull;
    });
  };
  EXPECT_EQ(misses(habit), 2);
  EXPECT_EQ(misses(other), 1);
  unite();
  EXPECT_EQ(misses(habit), 0);
  EXPECT_EQ(context_->fetchLogEntries(habit.objectID).size(), 7u) << "each day once";
}

TEST_F(LogUnionTest, APeriodIsReadAsInTheLogThatHadAllOfIt) {
  const TaskFrequency threeDays{.dayMode = DayMode::numberOfDaysInWeek, .numCompletions = 3};
  const std::vector<Event> events{{0, Type::completedManuallyFull},
                                  {11, Type::missedManuallyFull},
                                  {8, Type::completedAutomaticallyPartial},
                                  {11, Type::completedAutomaticallyPartial}};
  clock_->set(at("2024-01-17T12:00:00Z"));
  TaskEntity& habit = addHabit("Walk", threeDays);
  keep(habit, events, {0});
  keep(addHabit("Walk", threeDays), events, {0, 2, 3});  // brings the later of both of the 11th first
  keep(addHabit("Walk", threeDays), events, {0, 1, 3});
  TaskEntity& single = addHabit("single", threeDays);
  keep(single, events, {0, 1, 2, 3});
  unite();
  EXPECT_EQ(describe(habit), describe(single));
}

TaskFrequency twiceADay() {
  TaskFrequency frequency = TaskFrequency::everyDay();
  frequency.numPartialCompletions = 2;
  return frequency;
}

TEST_F(LogUnionTest, PartsThatFailADayTogetherAreAFailureThoughNoLogKnewIt) {
  const std::vector<Event> events{{15, Type::missedManuallyPartial}, {15, Type::missedManuallyPartial}};
  clock_->set(at("2024-01-17T12:00:00Z"));
  TaskEntity& habit = addHabit("Smoke", twiceADay(), true);
  keep(habit, events, {0});
  keep(addHabit("Smoke", twiceADay(), true), events, {1});
  TaskEntity& single = addHabit("single", twiceADay(), true);
  keep(single, events, {0, 1});
  unite();
  EXPECT_EQ(describe(habit), std::vector<std::string>{"20240115 to 20240115 missedManuallyFull 0 01"});
  EXPECT_EQ(describe(habit), describe(single));
}

TEST_F(LogUnionTest, PartsThatOneLogHadAllOfStandAsItJudgedThem) {
  const std::vector<Event> events{{15, Type::missedManuallyPartial}, {15, Type::missedManuallyPartial}};
  clock_->set(at("2024-01-17T12:00:00Z"));
  TaskFrequency threeParts = TaskFrequency::everyDay();
  threeParts.numPartialCompletions = 3;
  TaskEntity& habit = addHabit("Smoke", threeParts, true);
  keep(habit, events, {0, 1});
  TaskEntity& other = addHabit("Smoke", threeParts, true);
  keep(other, events, {0, 1});
  const auto before = describe(habit);
  for (TaskEntity* task : {&habit, &other}) setFrequency(*task, twiceADay());
  context_->save({});
  TaskDeduplicator().deduplicate(*context_);
  context_->save({});
  EXPECT_EQ(describe(habit), before);
}

TEST_F(LogUnionTest, WhatDataDecidedOnTwoDevicesStandsOnce) {
  const std::vector<Event> events{{15, Type::missedAutomaticallyFull, 7}, {15, Type::missedAutomaticallyFull, 7}};
  clock_->set(at("2024-01-17T12:00:00Z"));
  TaskEntity& habit = addHabit("Sweets", TaskFrequency::everyDay(), true);
  keep(habit, events, {0}, 1.0);
  keep(addHabit("Sweets", TaskFrequency::everyDay(), true), events, {1}, 1.0);
  unite();
  EXPECT_EQ(describe(habit), std::vector<std::string>{"20240115 to 20240115 missedAutomaticallyFull 7 01"});
}

/// A frequency of any kind that fills in.
rc::Gen<TaskFrequency> frequencies() {
  return rc::gen::element(TaskFrequency::everyDay(), twiceADay(),
                          TaskFrequency{.dayMode = DayMode::numberOfDaysInWeek, .numCompletions = 3},
                          TaskFrequency{.dayMode = DayMode::dayInterval, .dayInterval = 3},
                          TaskFrequency{.dayMode = DayMode::aggregateOverWeek, .numCompletions = 3});
}

RC_GTEST_FIXTURE_PROP(LogUnionTest, LogsBecomeWhatOneWouldBeIntoWhichAllWasRecordedWhicheverRowIsOlder, ()) {
  const TaskFrequency frequency = *frequencies();
  const bool isNegative = *rc::gen::arbitrary<bool>();
  const int logs = *rc::gen::inRange(2, 4);
  // A pass begins with the earliest entry; it is the same everywhere.
  std::vector<Event> events{{0, Type::completedManuallyFull}};
  std::vector<Places> known(static_cast<std::size_t>(logs), Places{0});
  for (int i = *rc::gen::inRange(0, 12); i > 0; --i) {
    const Type type = *rc::gen::element(Type::completedManuallyFull, Type::completedManuallyPartial,
                                        Type::skippedManuallyFull, Type::missedManuallyFull, Type::unknown,
                                        Type::missedManuallyPartial, Type::completedAutomaticallyPartial);
    for (Places& places : known)
      if (*rc::gen::arbitrary<bool>()) places.push_back(events.size());
    events.push_back({*rc::gen::inRange(1, 15), type, *rc::gen::element(0.0, 1.0)});
  }
  clock_->set(at("2024-01-17T12:00:00Z"));

  std::set<std::size_t> present;
  std::vector<TaskEntity*> united;
  for (const std::string title : {"there", "back"}) {
    for (const Places& places : known) {
      TaskEntity& task = addHabit(title, frequency, isNegative);
      if (&places == &known.front()) united.push_back(&task);
      keep(task, events, places);
      for (const std::size_t place : placesIn(task)) present.insert(place);
    }
    std::ranges::reverse(known);
  }
  for (const TaskEntity* task : TaskProcessor::activeTasks(*context_)) followFailures(*task, events);
  TaskEntity& single = addHabit("single", frequency, isNegative);
  keep(single, events, {present.begin(), present.end()});
  unite();
  RC_ASSERT(describe(*united[0]) == describe(single));
  RC_ASSERT(describe(*united[1]) == describe(single));
}

}  // namespace
}  // namespace habitra
