#include <stdexcept>
#include <vector>

#include "TaskWorld.h"

namespace habitra {
namespace {

using Type = TaskLogEntryType;
using qz::YYYYMMDD;
using DayMode = TaskFrequency::DayMode;
constexpr YYYYMMDD today(2024, 1, 31);

class Changes : public TaskWorld {
 protected:
  /// Gives what it failed with; empty for nothing.
  std::string set(TaskEntity& task, const TaskProcessor::DayStatuses& statuses) {
    std::string failure = "not completed";
    processor_.setBulkDayStatuses(*context_, task, statuses,
                                  [&](const std::exception_ptr& error) { failure = messageOf(error); });
    mainQueue_.drain();
    EXPECT_FALSE(context_->isInUnit());
    return failure;
  }

  /// A task that begins with a streak, or null and a message.
  TaskEntity* begin(const TaskFrequency& frequency, std::int64_t streak, bool isNegative = false,
                    std::optional<YYYYMMDD> referenceDate = std::nullopt) {
    TaskEntity values = newlyMadeTask("New", qz::DayOfWeek::monday, clock_->now(), "UTC");
    values.uniqueId = qz::UniqueID::generate(clock_->now()).text();
    values.isNegative = isNegative;
    values.referenceDateValue = referenceDate ? storedDay(*referenceDate) : 0;
    setFrequency(values, frequency);
    processor_.createTasksPopulateInitialStreak(*context_, {{.values = values, .initialStreak = streak}},
                                                [&](const std::exception_ptr& error) { message_ = messageOf(error); });
    mainQueue_.drain();
    return context_->find<TaskEntity>("uniqueId", *values.uniqueId);
  }

  std::string message_;
};

TEST_F(Changes, OfManyDaysAreOneCommandAndBringTheTaskUpToDate) {
  TaskEntity& task = addTask();
  clock_->set(at("2024-02-04T12:00:00Z"));
  process();
  const auto sequence = context_->sequence();
  EXPECT_EQ(set(task, {{today, Type::completedManuallyFull},
                       {today.add(1), Type::completedManuallyFull},
                       {today.add(2), Type::skippedManuallyFull},
                       {today.add(3), Type::completedManuallyFull}}),
            "");
  EXPECT_EQ(context_->sequence(), sequence + 1);
  EXPECT_EQ(log(task), (std::vector<std::string>{"20240131 completedManuallyFull", "20240201 completedManuallyFull",
                                                 "20240202 skippedManuallyFull", "20240203 completedManuallyFull"}));
  EXPECT_EQ(figures(task).activeStreak, 3);
  EXPECT_EQ(set(task, {{today.add(1), Type::unknown}, {today.add(3), Type::missedManuallyFull}}), "");
  EXPECT_EQ(log(task), (std::vector<std::string>{"20240131 completedManuallyFull", "20240201 unknown",
                                                 "20240201 missedAutomaticallyFull", "20240202 skippedManuallyFull",
                                                 "20240203 missedManuallyFull"}));
}

TEST_F(Changes, OfDaysBeforeTheTaskMoveItsCreationBack) {
  clock_->set(at("2024-02-01T12:00:00Z"));  // a Thursday
  TaskEntity& task = addTask();
  setFrequency(task, {.dayMode = DayMode::numberOfDaysInWeek, .numCompletions = 3});
  context_->save({});
  clock_->set(at("2024-02-05T12:00:00Z"));
  process();
  EXPECT_EQ(log(task).front(), "20240201 skippedAutomaticallyFull") << "one of four days was enough for the first week";
  EXPECT_EQ(set(task, {{YYYYMMDD(2024, 1, 29), Type::completedManuallyFull}}), "");
  EXPECT_EQ(calendars_.of(task).day(*task.created), YYYYMMDD(2024, 1, 29));
  EXPECT_EQ(log(task),
            (std::vector<std::string>{"20240129 completedManuallyFull", "20240130 skippedAutomaticallyFull",
                                      "20240131 skippedAutomaticallyFull", "20240201 skippedAutomaticallyFull",
                                      "20240202 skippedAutomaticallyFull", "20240203 missedAutomaticallyFull",
                                      "20240204 missedAutomaticallyFull"}))
      << "the whole week asks for three";
  const auto created = task.created;
  EXPECT_EQ(set(task, {{YYYYMMDD(2024, 1, 20), Type::unknown}}), "");
  EXPECT_EQ(task.created, created) << "nothing was kept then";
}

TEST_F(Changes, ThatCannotBeMadeChangeNothing) {
  TaskEntity& task = addTask();
  const auto sequence = context_->sequence();
  EXPECT_EQ(set(task, {{today.add(-9), Type::completedManuallyFull}, {today.nextDay(), Type::completedManuallyFull}}),
            "2024-02-01 has not come yet for 'Read'");
  EXPECT_EQ(set(task, {{today, Type::missedAutomaticallyFull}}), "a day cannot be set to missedAutomaticallyFull");
  EXPECT_EQ(set(task, {}), "No log entry data");
  auto mistake = environment();
  mistake.calendars = [](StoreContext&) -> TaskCalendars { throw std::logic_error("a mistake"); };
  TaskProcessor mistaken(mistake);
  mistaken.setBulkDayStatuses(*context_, task, {{today, Type::completedManuallyFull}}, {});
  mainQueue_.drain();
  EXPECT_FALSE(context_->isInUnit());
  EXPECT_EQ(context_->sequence(), sequence);
  EXPECT_EQ(calendars_.of(task).day(*task.created), today);
}

/// Each mode, to do and to avoid, at the beginning and at the end of its period: a pass comes to the streak that was
/// asked for, then and after everything that follows.
TEST_F(Changes, ThatBeginATaskComeToItsStreakInEveryMode) {
  const std::vector<TaskFrequency> frequencies{
      TaskFrequency::everyDay(),
      {.dayMode = DayMode::specificDaysOfWeek, .days = {qz::DayOfWeek::monday, qz::DayOfWeek::saturday}},
      {.dayMode = DayMode::specificDaysOfMonth, .daysOfMonth = DaysOfMonth::day31},
      {.dayMode = DayMode::dayInterval, .dayInterval = 3},
      {.dayMode = DayMode::numberOfDaysInWeek, .numPartialCompletions = 2, .numCompletions = 3},
      {.dayMode = DayMode::numberOfDaysInFortnight, .numCompletions = 9},
      {.dayMode = DayMode::numberOfDaysInMonth, .numCompletions = 20},
      {.dayMode = DayMode::numberOfDaysInYear, .numCompletions = 300},
      {.dayMode = DayMode::aggregateOverWeek, .numCompletions = 4},
      {.dayMode = DayMode::aggregateOverFortnight, .numCompletions = 2},
      {.dayMode = DayMode::aggregateOverMonth, .numCompletions = 1},
      {.dayMode = DayMode::aggregateOverYear, .numCompletions = 1},
  };
  for (const char* moment : {"2024-01-01T09:00:00Z", "2024-01-31T23:00:00Z"}) {
    clock_->set(at(moment));
    std::vector<const TaskEntity*> begun;
    for (const TaskFrequency& frequency : frequencies) {
      for (const bool isNegative : {false, true}) {
        for (const std::int64_t streak : {1, 25}) {
          const TaskEntity* task = begin(frequency, streak, isNegative);
          SCOPED_TRACE(testing::Message() << moment << " mode " << rawValue(frequency.dayMode) << " negative "
                                          << isNegative << " streak " << streak);
          ASSERT_NE(task, nullptr) << message_;
          begun.push_back(task);
          EXPECT_EQ(figures(*task).activeStreak, streak);
          EXPECT_EQ(figures(*task).bestStreak, streak);
          EXPECT_EQ(figures(*task).lastMissed, 0);
        }
      }
    }
    EXPECT_EQ(process().failure, nullptr);
    for (const TaskEntity* task : begun) EXPECT_EQ(figures(*task).activeStreak, figures(*task).bestStreak);
  }
}

TEST_F(Changes, ThatBeginATaskFollowItsReferenceDateAndLeaveTheCloudAlone) {
  const TaskFrequency everyThreeDays{.dayMode = DayMode::dayInterval, .dayInterval = 3};
  const TaskEntity* task = begin(everyThreeDays, 2, false, today.add(1));
  ASSERT_NE(task, nullptr);
  EXPECT_EQ(log(*task), (std::vector<std::string>{"20240126 completedManuallyFull", "20240127 skippedAutomaticallyFull",
                                                  "20240128 skippedAutomaticallyFull", "20240129 completedManuallyFull",
                                                  "20240130 skippedAutomaticallyFull"}));
  EXPECT_TRUE(context_->outbox(OutboxLink::sharedTask).empty());
}

TEST_F(Changes, ThatBeginNoTaskLeaveNothing) {
  const auto sequence = context_->sequence();
  EXPECT_EQ(begin(TaskFrequency::everyDay(), -1), nullptr);
  EXPECT_EQ(message_, "a habit begins with a streak of 0 to 10000, not -1");
  EXPECT_EQ(begin({.dayMode = DayMode::aggregateOverYear, .numCompletions = 1}, 9'000), nullptr);
  EXPECT_EQ(message_, "a streak of 9000 would begin before any calendar");
  EXPECT_EQ(context_->sequence(), sequence);
  ASSERT_NE(begin(TaskFrequency::everyDay(), 0), nullptr);
  EXPECT_EQ(context_->sequence(), sequence + 1);
}

}  // namespace
}  // namespace habitra
