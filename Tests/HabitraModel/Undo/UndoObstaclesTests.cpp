#include <HabitraCore/TaskLogEntryType.h>
#include <HabitraModel/Mapping/FrequencyMapping.h>
#include <HabitraModel/Settings/Settings.h>
#include <HabitraModel/Store/Entities/TaskCategoryLink.h>
#include <HabitraModel/Store/Entities/TaskNoteEntity.h>
#include <HabitraModel/Store/Entities/TaskNotificationSettingsEntity.h>
#include <HabitraModel/Store/StoreVerification.h>
#include <HabitraModel/Tasks/Deduplication/TaskDeduplicator.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorSingleTaskOperation.h>
#include <HabitraModel/Tasks/Recording/TaskLogRecorder.h>
#include <HabitraModel/Tasks/TaskCategories.h>
#include <HabitraModel/Tasks/TaskNotifications.h>
#include <QZKit/MainQueue.h>

#include <fmt/format.h>

#include "../Store/SampleRows.h"
#include "UndoFixture.h"

// What commands and programs did since, by chance or on purpose, in place of what an undo would bring back.
#include "../Tasks/TestReceivers.h"

namespace habitra {
namespace {

using Type = TaskLogEntryType;

class UndoObstaclesTest : public UndoStackTest {
 protected:
  std::int64_t recordAs(ObjectID task, std::int32_t day, Type type, std::optional<std::string> command) {
    TaskLogEntryEntity entry = entryOn(task, day);
    entry.entryType = rawValue(type);
    context_->insertLogEntry(entry);
    return save(std::move(command));
  }
  std::int64_t obstacleOf(std::int64_t command) {
    const auto refused = refusal(command);
    return refused && refused->obstacle() ? refused->obstacle()->command.sequence : 0;
  }
  bool isGone(std::int64_t command) {
    const auto refused = refusal(command);
    return refused && refused->reason() == UndoStack::Error::Reason::rowsGone;
  }
  /// Each the same habit as the others.
  TaskEntity& addTwin() {
    TaskEntity values = titled("Walk");
    values.status = "active";
    values.uniqueId = "11111111-1111-4111-8111-111111111111";
    values.created = testMoment;
    return context_->insert(values);
  }
  void deduplicate() {
    ASSERT_EQ(TaskDeduplicator().deduplicate(*context_).unitedTasks, 1U);
    save(std::nullopt);
  }
};

TEST_F(UndoObstaclesTest, NothingComesBackBesideWhatWasPutInItsPlace) {
  TaskEntity& walk = add("Walk");
  TaskCategoryEntity& outside = context_->insert(sample<TaskCategoryEntity>(5));
  addCategory(*context_, walk, outside);
  save(std::nullopt);
  removeCategory(*context_, walk, outside);
  const std::int64_t off = save("off");
  addCategory(*context_, walk, outside);
  const std::int64_t on = save("on");
  EXPECT_EQ(obstacleOf(off), on);
  undo(on);
  addCategory(*context_, walk, outside);
  save(std::nullopt);
  undo(off);
  EXPECT_EQ(context_->fetchAll<TaskCategoryLink>().size(), 1U) << "a program had put it there already";

  const TaskEntity values = walk;
  context_->remove(walk);
  const std::int64_t removal = save("delete");
  context_->insert(values);
  const std::int64_t import = save("import");
  const auto refused = refusal(removal);
  ASSERT_TRUE(refused);
  EXPECT_EQ(refused->obstacle()->command.sequence, import);
  EXPECT_EQ(refused->obstacle()->habit, "Walk");
}

TEST_F(UndoObstaclesTest, ASettingIsWhatItsKeyIsInWhateverRow) {
  StoreSettings settings(*context_);
  const auto set = [&](std::int64_t value, std::optional<std::string> command) {
    settings.set<std::int64_t>("limit", value);
    return save(std::move(command));
  };
  const auto remove = [&](std::optional<std::string> command) {
    settings.remove("limit");
    return save(std::move(command));
  };
  set(1, "set 1");
  const std::int64_t removal = remove("remove");
  const std::int64_t again = set(3, "set 3");
  EXPECT_EQ(obstacleOf(removal), again);
  const std::int64_t last = remove("remove again");
  EXPECT_EQ(obstacleOf(removal), last) << "it would be there in spite of that";
  undo(last);
  undo(again);
  set(4, std::nullopt);
  undo(removal);
  EXPECT_EQ(settings.get<std::int64_t>("limit"), 4) << "a program had set it already";
  EXPECT_EQ(context_->fetchAll<SettingEntity>().size(), 1U);

  // Rows that were double before are so again.
  const SettingEntity values = *context_->fetchAll<SettingEntity>().at(0);
  context_->insert(values);
  save(std::nullopt);
  const auto before = rows();
  set(5, "set 5");
  ASSERT_EQ(context_->fetchAll<SettingEntity>().size(), 1U);
  undo();
  EXPECT_EQ(rows(), before);
}

TEST_F(UndoObstaclesTest, AHabitHasItsNotificationSettingsOnce) {
  TaskEntity& walk = add("Walk");
  const auto set = [&](std::optional<std::string> command) {
    setNotificationSettings(*context_, walk, {.completedNotification = true});
    return save(std::move(command));
  };
  const std::int64_t first = set("notify");
  undo(first);
  set(std::nullopt);
  redo();
  EXPECT_EQ(context_->fetchAll<TaskNotificationSettingsEntity>().size(), 1U);

  context_->remove(*context_->fetchAll<TaskNotificationSettingsEntity>().at(0));
  const std::int64_t off = save("off");
  const std::int64_t on = set("on");
  EXPECT_EQ(obstacleOf(off), on);
  undo(on);
  undo(off);
  EXPECT_EQ(context_->fetchAll<TaskNotificationSettingsEntity>().size(), 1U);
}

TEST_F(UndoObstaclesTest, CategoriesComeBackInTheirOrder) {
  TaskEntity& walk = add("Walk");
  std::vector<TaskCategoryEntity*> categories;
  for (int i = 0; i < 3; ++i) categories.insert(categories.begin(), &context_->insert(sample<TaskCategoryEntity>(i)));
  setCategories(*context_, walk, categories);
  save(std::nullopt);
  setCategories(*context_, walk, {});
  save("none");
  undo();
  EXPECT_EQ(categoriesOf(*context_, walk), categories);
}

TEST_F(UndoObstaclesTest, EntriesStandAgainstTheRulesTheyWereRecordedBy) {
  TaskEntity& task = add("Walk");
  setFrequency(task, {.dayMode = TaskFrequency::DayMode::dayInterval, .dayInterval = 3});
  const std::int64_t edit = save("edit");
  const std::int64_t done = recordAs(task.objectID, 20240110, Type::completedManuallyPartial, "done");
  EXPECT_EQ(obstacleOf(edit), done);
  setFrequency(task, {.dayMode = TaskFrequency::DayMode::dayInterval, .dayInterval = 2});
  const std::int64_t seal = recordAs(task.objectID, 20240110, Type::completedAutomaticallyFull, "edit again");
  EXPECT_EQ(obstacleOf(done), seal) << "the part was sealed by the rules it was recorded by";
  undo(seal);
  undo(done);
  undo(edit);
}

TEST_F(UndoObstaclesTest, AnEarlierFailureStandsUnderTheLaterOnes) {
  TaskEntity& task = add("Smoke");
  task.isNegative = true;
  setFrequency(task, {.dayMode = TaskFrequency::DayMode::numberOfDaysInWeek, .numCompletions = 6});
  save("edit");
  const std::int64_t first = recordAs(task.objectID, 20240108, Type::allowableMissManuallyFull, "failed");
  const std::int64_t second = recordAs(task.objectID, 20240110, Type::missedManuallyFull, "failed again");
  recordAs(task.objectID, 20240123, Type::allowableMissManuallyFull, "failed in another week");
  EXPECT_EQ(obstacleOf(first), second);
  undo(second);
  undo(first);
  EXPECT_EQ(context_->fetchLogEntries(task.objectID).size(), 1U);
}

TEST_F(UndoObstaclesTest, WhatAProgramWouldHaveReplacedDoesNotComeBack) {
  const ObjectID walk = add("Walk").objectID;
  recordAs(walk, 20240110, Type::completedAutomaticallyFull, std::nullopt);
  context_->removeLogEntry(context_->fetchLogEntries(walk).at(0).key());
  const std::int64_t skip = recordAs(walk, 20240110, Type::skippedManuallyFull, "skip");
  recordAs(walk, 20240110, Type::completedAutomaticallyFull, std::nullopt);
  undo(skip);
  EXPECT_EQ(context_->fetchLogEntries(walk).size(), 1U);

  // What a pass has filled in since does not keep it away.
  const auto measured = context_->fetchLogEntries(walk);
  context_->removeLogEntry(measured.at(0).key());
  const std::int64_t unchecked = recordAs(walk, 20240110, Type::unknown, "uncheck");
  recordAs(walk, 20240110, Type::missedAutomaticallyFull, std::nullopt);
  undo(unchecked);
  EXPECT_EQ(context_->fetchLogEntries(walk), measured);
}

TEST_F(UndoObstaclesTest, ASettingThatIsPutBackLetsItsHabitsBeJudgedAgain) {
  TaskEntity& walk = add("Walk");
  TaskEntity& run = add("Run");
  run.startOfDayValue = 3600;
  save(std::nullopt);
  std::int64_t value = 3600;
  const auto changed = [&](std::string_view key) {
    StoreSettings(*context_).set(key, ++value);
    save("set");
    const auto undone = stack_.undo(*context_);
    finish(undone);
    return undone.tasks;
  };
  const auto day = std::optional(qz::YYYYMMDD(2024, 1, 15));
  EXPECT_EQ(changed(settings::startOfDay.key), (std::vector<UndoStack::TouchedTask>{{walk.objectID, day}}));
  StoreSettings(*context_).set<std::int64_t>(settings::startOfDay.key, 1800);
  save("set for the first time");
  EXPECT_EQ(changed(settings::startOfDay.key), (std::vector<UndoStack::TouchedTask>{{walk.objectID, day}}));
  EXPECT_EQ(changed(settings::pausesOf(*run.uniqueId)), (std::vector<UndoStack::TouchedTask>{{run.objectID, day}}));
  EXPECT_TRUE(changed("another").empty());
}

TEST_F(UndoObstaclesTest, WhatADeduplicationHasUnitedIsNotSaidToBeUndone) {
  TaskEntity& older = addTwin();
  save(std::nullopt);
  addTwin();
  std::vector commands{save("add a copy")};
  deduplicate();

  TaskEntity& newer = addTwin();
  const auto entries = {context_->insertLogEntry(entryOn(newer.objectID, 20240110)),
                        context_->insertLogEntry(entryOn(newer.objectID, 20240111))};
  TaskNoteEntity content;
  content.task = newer.objectID;
  TaskNoteEntity& note = context_->insert(content);
  save(std::nullopt);
  for (const ObjectID entry : entries) {
    context_->removeLogEntry(context_->findLogEntry(entry)->key());
    commands.push_back(save("take the entry back"));
  }
  newer.status = "archived";
  newer.statusDate = clock_->now();
  commands.push_back(save("archive"));
  context_->remove(note);
  older.colorInfo = "red";
  const std::int64_t both = save("remove the note, and red");
  deduplicate();
  const auto before = rows();
  for (const std::int64_t command : commands) EXPECT_TRUE(isGone(command)) << command;
  EXPECT_EQ(rows(), before);
  undo(both);
  EXPECT_NE(older.colorInfo, "red") << "what can be taken back is";
}

TEST_F(UndoObstaclesTest, AnImportOfManyRowsGoesAndComesBack) {
  add("Walk");
  const auto before = rows();
  for (int habit = 0; habit < 3; ++habit) {
    TaskEntity values = titled(fmt::format("Habit {}", habit));
    values.status = "active";
    const ObjectID id = context_->insert(values).objectID;
    for (int i = 0; i < 400; ++i) context_->insertLogEntry(entryOn(id, 20200101 + i % 28 + i / 28 * 100 % 1200));
  }
  const std::int64_t import = save("import");
  const auto after = rows();
  const auto undone = stack_.undo(*context_, import);
  EXPECT_TRUE(undone.tasks.empty());
  finish(undone);
  EXPECT_EQ(rows(), before);
  redo();
  EXPECT_EQ(rows(), after);
  EXPECT_TRUE(StoreVerification::verifyChecksums(*context_).empty());

  // A big command stands in the way as others do, and names the habit that it removed.
  TaskEntity& habit = *context_->find<TaskEntity>("title", "Habit 1");
  const std::int64_t done = record(habit.objectID, 20240110, "done");
  for (TaskEntity* task : context_->fetchAll<TaskEntity>()) context_->remove(*task);
  const std::int64_t all = save("delete all");
  const auto refused = refusal(done);
  ASSERT_TRUE(refused);
  EXPECT_EQ(refused->obstacle()->command.sequence, all);
  EXPECT_EQ(refused->obstacle()->habit, "Habit 1");
}

TEST_F(UndoObstaclesTest, WithTheProcessorAllIsAsItWasInAFile) {
  qz::MainQueue mainQueue;
  TestReceivers receivers;
  TaskLogRecorder recorder(calendars_, mainQueue, receivers.all());
  const TaskProcessorSingleTaskOperation::Environment environment{
      .calendars = calendars_, .recorder = recorder, .health = nullptr, .sharedTasks = receivers.sharedTasks};
  TaskEntity& task = add("Walk");
  task.created = testMoment - std::chrono::days(9);
  task.createdTimeZone = "UTC";
  setFrequency(task, {.dayMode = TaskFrequency::DayMode::dayInterval, .dayInterval = 2});
  const auto process = [&] {
    context_->beginUnit();
    TaskProcessorSingleTaskOperation(environment, *context_, task,
                                     TaskModifyContext::systemInitiatedFromDeviceActivityExtension,
                                     LayoutDirection::leftToRight, true, clock_->now())
        .runInUnit();
  };
  const auto log = [&] {
    std::vector<std::string> lines;
    for (const auto& entry : context_->fetchLogEntries(task.objectID))
      lines.push_back(fmt::format("{} {}", entry.entryDate, entry.entryType));
    return lines;
  };
  process();
  save(std::nullopt);
  const auto before = log();
  ASSERT_EQ(before.size(), 9U);
  context_->beginUnit();
  for (const auto& entry : context_->fetchLogEntries(task.objectID, 20240109)) context_->removeLogEntry(entry.key());
  context_->insertLogEntry(entryOn(task.objectID, 20240109));
  task.lastProcessedDate = testMoment - std::chrono::days(7);
  process();
  save("done");
  const auto done = log();
  ASSERT_NE(done, before);
  for (const auto& expected : {before, done, before}) {
    const bool isUndo = expected == before;
    const auto undone = isUndo ? stack_.undo(*context_) : stack_.redo(*context_);
    process();
    finish(undone);
    EXPECT_EQ(log(), expected);
    process();
    EXPECT_FALSE(context_->hasChanges()) << "nothing is left to work out";
    context_->rollback();
  }
  EXPECT_TRUE(StoreVerification::verifyChecksums(*context_).empty());
}

}  // namespace
}  // namespace habitra
