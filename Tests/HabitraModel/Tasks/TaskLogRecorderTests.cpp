#include <HabitraModel/Mapping/StoredIdentifier.h>

#include <utility>

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
  EXPECT_EQ(messageOf(record(task, {data})), "");
  EXPECT_FALSE(context_->isInUnit()) << "nothing was to be saved, and others may write";
}

TEST_F(Recorder, GivesAnEntryTheDayOfItsStart) {
  TaskEntity& task = addTask();
  auto early = entry(task, Type::completedManuallyFull, today);
  early.startDate = early.endDate = at("2024-01-29T10:00:00Z");
  record(task, {early});
  EXPECT_EQ(log(task), std::vector<std::string>{"20240129 completedManuallyFull"});

  TaskEntity& inApia = addTask("In Apia");
  inApia.currentTimeZoneOverride = "Pacific/Apia";
  context_->save({});
  record(inApia, Type::completedManuallyFull, YYYYMMDD(2011, 12, 30));
  record(inApia, Type::completedManuallyFull, YYYYMMDD(2011, 12, 31));
  EXPECT_EQ(log(inApia), (std::vector<std::string>{"20111230 completedManuallyFull", "20111231 completedManuallyFull"}))
      << "the first day had no moment there";
}

TEST_F(Recorder, FindsIdentifiersThatOthersWroteInLowerCase) {
  TaskEntity& task = addTask();
  const auto identifier = qz::UniqueID::fromText(*task.uniqueId).value();
  const auto data = entry(task, Type::completedManuallyFull, today);
  record(task, {data});
  task.uniqueId = storedForms(identifier).at(1);
  auto row = context_->findLogEntry(data.uniqueId.text()).value();
  row.uniqueId = storedForms(data.uniqueId).at(1);
  context_->updateLogEntry(row.key(), row);
  context_->save({});
  auto changed = data;
  changed.type = Type::skippedManuallyFull;
  const TaskLogRecorder::Request request{.managedObjectContext = *context_,
                                         .context = TaskModifyContext::userInitiatedFromDeepLink,
                                         .logEntries = {changed},
                                         .createdTimestamp = clock_->now(),
                                         .createdTimeZone = qz::TimeZone::utc()};
  std::exception_ptr outcome;
  recorder_.record(identifier, request, [&](std::exception_ptr error) { outcome = std::move(error); });
  mainQueue_.drain();
  EXPECT_EQ(messageOf(outcome), "");
  EXPECT_EQ(log(task), std::vector<std::string>{"20240131 skippedManuallyFull"});
  process();
  EXPECT_EQ(task.uniqueId, identifier.text()) << "a pass puts it right";
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
  context_->beginUnit();
  (void)record(other, {entry(other, Type::completedManuallyFull, today), data}, false);
  context_->save({});
  EXPECT_TRUE(log(other).empty()) << "nor in a unit that goes on";
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

/// What is known of the days that follow from one entry must not hide what the next one changes.
TEST_F(Recorder, WritesManyEntriesAtOnceAsItDoesOneByOne) {
  std::vector<std::vector<std::string>> logs;
  for (const bool atOnce : {false, true}) {
    TaskEntity& task = addTask("Habit");
    setFrequency(task, {.dayMode = TaskFrequency::DayMode::dayInterval, .dayInterval = 3});
    task.created = at("2023-03-01T12:00:00Z");
    context_->save({});
    const YYYYMMDD first(2023, 3, 1);
    const auto later = entry(task, Type::completedManuallyFull, first.add(200));
    record(task, {entry(task, Type::completedManuallyFull, first), later});
    process();
    std::vector<TaskLogRecorder::LogEntryData> entries;
    const auto add = [&](int day, Type type) { entries.push_back(entry(task, type, first.add(day))); };
    for (int day = 10; day < 60; ++day) add(day, day % 20 == 0 ? Type::completedManuallyFull : Type::unknown);
    add(70, Type::skippedAutomaticallyFull);
    add(65, Type::missedManuallyFull);
    add(199, Type::missedManuallyFull);
    entries.push_back(entry(task, Type::skippedManuallyFull, first.add(200)));
    entries.back().uniqueId = later.uniqueId;
    add(150, Type::missedManuallyFull);
    add(260, Type::completedManuallyFull);
    if (atOnce) record(task, entries);
    for (const auto& entry : entries)
      if (!atOnce) record(task, {entry});
    logs.push_back(log(task));
  }
  EXPECT_EQ(logs.at(0).size(), 65u);
  EXPECT_EQ(logs.at(0), logs.at(1));
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
