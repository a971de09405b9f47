#include "TaskWorld.h"

namespace habitra {
namespace {

using Type = TaskLogEntryType;
using qz::YYYYMMDD;
constexpr YYYYMMDD today(2024, 1, 31);

class Recorder : public TaskWorld {};

TEST_F(Recorder, WritesARowWithItsPeriodAndTheProgressOfTheTask) {
  TaskEntity& task = addTask();
  auto data = entry(task, Type::completedManuallyFull, today);
  data.progressPct = 1.0;
  EXPECT_EQ(messageOf(record(task, {data})), "");
  const auto row = context_->findLogEntry(data.uniqueId.text());
  ASSERT_TRUE(row);
  EXPECT_EQ(row->entryDate, 20240131);
  EXPECT_EQ(row->entryPeriodFrom, 20240131);
  EXPECT_EQ(row->entryPeriodTo, 20240131);
  EXPECT_EQ(row->entryPeriodType, "d");
  EXPECT_EQ(row->progress, 1.0);
  EXPECT_EQ(row->progressTotal, 0.0);
  EXPECT_EQ(row->createdTimestamp, clock_->now());
  EXPECT_EQ(row->createdTimeZone, "UTC");
  EXPECT_EQ(figures(task).progress, 1.0);
  EXPECT_EQ(figures(task).progressDate, 20240131);
  EXPECT_FALSE(context_->hasChanges());
}

TEST_F(Recorder, RefusesWithoutWriting) {
  TaskEntity& task = addTask();
  EXPECT_EQ(messageOf(record(task, std::vector<TaskLogRecorder::LogEntryData>{})), "No log entry data");
  task.status = task_status::archived;
  context_->save({});
  const auto before = context_->sequence();
  EXPECT_EQ(messageOf(record(task, Type::completedManuallyFull, today)), "Invalid task");
  EXPECT_FALSE(context_->isInUnit());
  const TaskLogRecorder::Request request{.managedObjectContext = *context_,
                                         .context = TaskModifyContext::userInitiatedFromDeepLink,
                                         .logEntries = {entry(task, Type::completedManuallyFull, today)},
                                         .createdTimestamp = clock_->now(),
                                         .createdTimeZone = qz::TimeZone::utc()};
  std::exception_ptr outcome;
  recorder_.record(qz::UniqueID::generate(clock_->now()), request, [&](std::exception_ptr error) { outcome = error; });
  EXPECT_FALSE(outcome);  // not before the main queue runs
  mainQueue_.drain();
  EXPECT_EQ(messageOf(outcome), "Task not found");
  EXPECT_EQ(context_->sequence(), before);
  EXPECT_TRUE(log(task).empty());
}

TEST_F(Recorder, AKnownIdentifierUpdatesItsRowWhereverItMoves) {
  TaskEntity& task = addTask();
  auto data = entry(task, Type::completedManuallyFull, today);
  record(task, {data});
  const auto before = context_->findLogEntry(data.uniqueId.text());
  clock_->advance(std::chrono::hours(1));
  auto moved = entry(task, Type::skippedManuallyFull, today.previousDay());
  moved.uniqueId = data.uniqueId;
  record(task, {moved});
  EXPECT_EQ(log(task), (std::vector<std::string>{"20240130 skippedManuallyFull"}));
  const auto after = context_->findLogEntry(data.uniqueId.text());
  EXPECT_EQ(after->objectID, before->objectID);
  EXPECT_EQ(after->createdTimestamp, before->createdTimestamp);
}

TEST_F(Recorder, WhereARowStoodBeforeItMovedIsJudgedAgain) {
  TaskEntity& task = addTask();
  setFrequency(task, {.dayMode = TaskFrequency::DayMode::dayInterval, .dayInterval = 2});
  record(task, Type::completedManuallyFull, today.previousDay());
  auto data = entry(task, Type::completedManuallyFull, today.nextDay());
  clock_->advance(std::chrono::days(4));
  record(task, {data});
  process();
  EXPECT_EQ(log(task), (std::vector<std::string>{"20240130 completedManuallyFull", "20240131 skippedAutomaticallyFull",
                                                 "20240201 completedManuallyFull", "20240202 skippedAutomaticallyFull",
                                                 "20240203 missedAutomaticallyFull"}));
  auto moved = entry(task, Type::completedManuallyFull, today.add(3));
  moved.uniqueId = data.uniqueId;
  record(task, {moved});
  process();
  EXPECT_EQ(log(task),
            (std::vector<std::string>{"20240130 completedManuallyFull", "20240131 skippedAutomaticallyFull",
                                      "20240201 missedAutomaticallyFull", "20240202 skippedAutomaticallyFull",
                                      "20240203 completedManuallyFull"}));
}

TEST_F(Recorder, AnIdentifierOfAnotherTasksEntryIsRefusedWithAllOfItsRequest) {
  TaskEntity& task = addTask();
  TaskEntity& other = addTask("Other");
  const auto data = entry(task, Type::completedManuallyFull, today);
  record(task, {data});
  EXPECT_EQ(messageOf(record(other, {entry(other, Type::completedManuallyFull, today), data})), "Invalid task");
  EXPECT_TRUE(log(other).empty());
  EXPECT_EQ(log(task).size(), 1u);
}

TEST_F(Recorder, ANewEntryTakesThePlaceOfWhatItSupersedesInItsPeriodOnly) {
  TaskEntity& task = addTask();
  record(task, Type::completedManuallyFull, today.previousDay());
  record(task, Type::completedManuallyPartial, today);
  record(task, Type::timerManual, today);
  record(task, Type::skippedManuallyFull, today);
  EXPECT_EQ(log(task), (std::vector<std::string>{"20240130 completedManuallyFull", "20240131 timerManual",
                                                 "20240131 skippedManuallyFull"}));
  record(task, Type::unknown, today);
  EXPECT_EQ(log(task),
            (std::vector<std::string>{"20240130 completedManuallyFull", "20240131 timerManual", "20240131 unknown"}));
}

TEST_F(Recorder, LeavesTheRowsUnsavedWhenAskedTo) {
  TaskEntity& task = addTask();
  record(task, {entry(task, Type::completedManuallyFull, today)}, false);
  EXPECT_TRUE(context_->hasChanges());
  EXPECT_EQ(log(task).size(), 1u);
  context_->rollback();
  EXPECT_TRUE(log(task).empty());
}

TEST_F(Recorder, DescribesRequestsForTheLog) {
  TaskEntity& task = addTask();
  const auto data = entry(task, Type::completedManuallyFull, today);
  const TaskLogRecorder::Request request{.managedObjectContext = *context_,
                                         .context = TaskModifyContext::userInitiatedFromShortcut,
                                         .logEntries = {data},
                                         .createdTimestamp = clock_->now(),
                                         .createdTimeZone = qz::TimeZone::utc()};
  EXPECT_EQ(request.debugDescription(),
            "<Request context=userInitiatedFromShortcut, logEntries=[<LogEntryData unique=" + data.uniqueId.text() +
                ", period=2024-01-31 to 2024-01-31, startDate=2024-01-31T00:00:00Z, "
                "endDate=2024-01-31T00:00:00Z>]>");
}

}  // namespace
}  // namespace habitra
