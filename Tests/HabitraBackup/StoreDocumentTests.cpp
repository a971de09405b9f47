#include <gtest/gtest.h>
#include <HabitraBackup/Exchange/TaskDataExporter.h>
#include <HabitraBackup/HabitraBackup.h>
#include <HabitraModel/Mapping/AutomaticTypeMapping.h>
#include <HabitraModel/Store/Entities/TaskCategoryEntity.h>
#include <HabitraModel/Store/Entities/TaskCounterEntity.h>
#include <HabitraModel/Store/Entities/TaskNoteEntity.h>
#include <HabitraModel/Store/Entities/TaskNotificationRemindersEntity.h>
#include <HabitraModel/Store/Entities/TaskNotificationSettingsEntity.h>
#include <HabitraModel/Store/Entities/TaskTimerEntity.h>
#include <HabitraModel/Store/Store.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/TaskCategories.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <HabitraModel/Tasks/TaskPauses.h>
#include <QZDateTime/ISO8601.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ImportHome.h"

namespace habitra {
namespace {

const std::string id = "0A1B2C3D-0000-7000-8000-00000000ABCD";
const std::string categoryId = "0A1B2C3D-0000-7000-8000-00000000EF01";
const std::string entryId = "0A1B2C3D-0000-7000-8000-00000000EF02";

// A store that holds a task with one of everything, and one with nothing, on three pages.
class Everything {
 public:
  Everything() {
    const auto page = [this](std::int16_t number, const char* title) {
      return context.insert(UserProfileEntity{.displayOrder = number, .title = title}).objectID;
    };
    TaskEntity values = newlyMadeTask("Walk", qz::DayOfWeek::monday, now, "Europe/Berlin");
    values.uniqueId = id;
    values.imageName = "em_X";
    values.cloudStatus = "sent";
    values.lastProcessedDate = now;
    values.lastChangedDifficultyStatus = "of the task";
    values.userProfile = page(1, "Outside");
    task = &context.insert(values);
    context.insert(
        TaskTemporalDataEntity{.activeStreak = 9, .lastChangedDifficultyStatus = "newer", .task = task->objectID});
    addParts();
    TaskEntity other = newlyMadeTask("Read", qz::DayOfWeek::monday, now, "Europe/Berlin");
    other.userProfile = page(2, "Inside");
    context.insert(other);
    page(3, "Empty");
    context.insert(SettingEntity{.settingKey = "startOfDay", .dateCreated = now, .intValue = 10'800});
    setPauses(context, *task, {{qz::YYYYMMDD(2024, 2, 1), qz::YYYYMMDD(2024, 2, 9)}, {qz::YYYYMMDD(2024, 5, 1), {}}});
    context.save({});
  }

  HabitraJSONBackup document() {
    const TaskDataExporter exporter(context);
    return exporter.backup(exporter.allTasks(), HabitraJSONBackupType::scheduled, now);
  }

  qz::Moment now = qz::momentFromISO8601("2024-06-01T10:00:00.123456Z").value();
  StoreContext context{Store::inMemory(std::make_shared<qz::FixedClock>(now))};
  TaskEntity* task = nullptr;

 private:
  void addParts() {
    const ObjectID of = task->objectID;
    addCategory(context, *task,
                context.insert(TaskCategoryEntity{.colorInfo = "red", .title = "Sport", .uniqueId = categoryId}));
    context.insert(TaskCounterEntity{.entryDate = 20240131, .quantity = 2, .task = of});
    context.insert(TaskTimerEntity{.entryDate = 20240131, .entryId = entryId, .start = now, .task = of});
    context.insert(TaskNotificationSettingsEntity{.badgeMode = "none", .task = of});
    context.insert(TaskNotificationRemindersEntity{.timeOfDay = 3600, .task = of});
    for (const char* content : {"slept badly", "back hurts"})
      context.insert(TaskNoteEntity{.content = content, .noteDate = 20240131, .task = of});
    context.insertLogEntry({.entryDate = 20240131,
                            .entryPeriodFrom = 20240131,
                            .entryPeriodTo = 20240131,
                            .entryPeriodType = "d",
                            .entryType = 1,
                            .progress = 1,
                            .progressTotal = 2.5,
                            .createdTimestamp = now,
                            .createdTimeZone = "Europe/Berlin",
                            .uniqueId = entryId,
                            .cloudStatus = "TMP",
                            .task = of});
    context.insertLogEntry({.entryDate = 20230230, .entryType = 1, .task = of});
    context.insertLogEntry({.entryDate = 20240131, .entryType = 99, .task = of});
  }
};

TEST(StoreDocumentTests, ADocumentHoldsWhatAStoreHolds) {
  Everything store;
  const HabitraJSONBackup document = store.document();
  ASSERT_EQ(document.tasks.size(), 2U);
  const HabitraJSONBackupTask& task = document.tasks[0];
  ASSERT_TRUE(task.record);
  const TaskEntity& row = task.record->task;
  EXPECT_EQ(row.imageName, "em_X");
  EXPECT_EQ(row.created, store.now);
  EXPECT_EQ(row.lastChangedDifficultyStatus, "newer");
  EXPECT_FALSE(row.cloudStatus || row.lastProcessedDate) << "of this device";
  EXPECT_EQ(row.userProfile, ObjectID::none);
  EXPECT_EQ(task.pageNumber, TaskPageNumber::ofDisplayOrder(1));
  EXPECT_EQ(task.record->categories, std::vector{qz::UniqueID::fromText(categoryId).value()});
  EXPECT_EQ(task.record->pauses.size(), 2U);
  EXPECT_EQ(task.record->counters.at(0).quantity, 2);
  EXPECT_EQ(task.record->timers.at(0).entryId, entryId);
  EXPECT_EQ(task.record->reminders.at(0).timeOfDay, 3600);
  EXPECT_EQ(task.record->notificationSettings->badgeMode, "none");
  EXPECT_EQ(task.notes->size(), 2U);
  const HabitraJSONBackupTaskEntry& entry = task.log->at(0);
  EXPECT_EQ(entry.uniqueId, qz::UniqueID::fromText(entryId));
  EXPECT_EQ(entry.progressTotal, 2.5);
  ASSERT_TRUE(entry.details);
  EXPECT_EQ(entry.details->createdTimeZone, "Europe/Berlin");
  EXPECT_EQ(entry.details->cloudStatus, "TMP");
  EXPECT_EQ(document.pages->size(), 3U);
  EXPECT_EQ(document.categories->at(0).colorInfo, "red");
  ASSERT_EQ(document.settings->size(), 1U) << "pauses stand with their task";
  EXPECT_EQ(document.settings->at(0).intValue, 10'800);
}

TEST(StoreDocumentTests, TaskByTaskGivesTheSameBytesAsTheWholeDocument) {
  Everything store;
  const TaskDataExporter exporter(store.context);
  const auto tasks = exporter.allTasks();
  std::string text;
  const auto written = exporter.writeJson(tasks, exporter.header(tasks, HabitraJSONBackupType::scheduled, store.now),
                                          [&text](std::string_view bytes) { text += bytes; });
  EXPECT_EQ(written.tasks, 2U);
  EXPECT_EQ(written.entries, 1U);
  EXPECT_EQ(written.entriesLeftOut, 2U) << "of 30 February, and of a type that nobody knows";
  const LoadedBackup loaded = HabitraBackup::loadJson(std::as_bytes(std::span(text)));
  EXPECT_EQ(loaded.remarks, HabitraJSONRemarks{});
  const HabitraJSONBackup document = store.document();
  EXPECT_EQ(loaded.document.jsonString(), document.jsonString());
  EXPECT_EQ(loaded.document, document);
}

TEST(StoreDocumentTests, PagesWhoseTasksAreLeftOutAreNotInTheDocument) {
  Everything store;
  const TaskDataExporter exporter(store.context);
  const std::vector<ObjectID> tasks{store.task->objectID};
  std::vector<std::string> titles;
  const HabitraJSONBackup header = exporter.header(tasks, HabitraJSONBackupType::manual, store.now);
  for (const UserProfileEntity& page : *header.pages) titles.push_back(*page.title);
  EXPECT_EQ(titles, (std::vector<std::string>{"Outside", "Empty"}));
}

TEST(StoreDocumentTests, RowsHoldTheNotesOfTheirDay) {
  Everything store;
  const TaskDataExporter exporter(store.context);
  const std::vector<ObjectID> tasks{store.task->objectID};
  std::string text;
  exporter.writeCsv(tasks, [&text](std::string_view bytes) { text += bytes; });
  EXPECT_NE(text.find("2024-06-01T10:00:00Z,1.0,2,\"slept badly\nback hurts\"\n"), std::string::npos) << text;
  EXPECT_EQ(text, exporter.backup(tasks, HabitraJSONBackupType::manual, store.now).csvString());
}

TEST(StoreDocumentTests, AMeasuredHabitGoesOutUnderTheTitleThatIsReadAndIsFoundByIt) {
  ImportHome home;
  TaskEntity values = newlyMadeTask("Have {quantity} of tea", qz::DayOfWeek::monday, home.now, "Europe/Berlin");
  setAutomaticType(values,
                   AutomaticTaskType{.type = AutomaticTaskType::TaskType::healthKit(HealthType::dietaryDrinkWater),
                                     .quantity = 2,
                                     .unit = TypeUnit::litres});
  home.context.insert(values);
  home.save();
  const TaskDataExporter exporter(home.context);
  HabitraJSONBackup document = exporter.backup(exporter.allTasks(), HabitraJSONBackupType::manual, home.now);
  document.tasks.at(0).uniqueId.reset();
  EXPECT_EQ(document.tasks.at(0).title, "Have {quantity} of tea");
  EXPECT_EQ(document.tasks.at(0).titleFormatted, "Have 2 litres of tea");
  const std::string rows = document.csvString();
  EXPECT_NE(rows.find("\n,Have 2 litres of tea,"), std::string::npos) << rows;
  for (const ImportStrategy strategy : {ImportStrategy::merge, ImportStrategy::overwrite}) {
    home.import(HabitraBackup::loadCsv(std::as_bytes(std::span(rows)), home.now), strategy);
    EXPECT_EQ(home.context.fetchAll<TaskEntity>().size(), 1U);
    EXPECT_EQ(home.context.fetchAll<TaskEntity>().at(0)->title, "Have {quantity} of tea");
  }
}

}  // namespace
}  // namespace habitra
