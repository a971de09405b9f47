#include "ImportHome.h"

#include <gtest/gtest.h>
#include <HabitraModel/Mapping/FrequencyMapping.h>
#include <HabitraModel/Settings/Settings.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/TaskCategories.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <HabitraModel/Tasks/TaskPauses.h>
#include <QZDateTime/ISO8601.h>
#include <QZKit/Error.h>

#include <algorithm>
#include <cctype>
#include <memory>
#include <string>
#include <vector>

namespace habitra {
namespace {

using Outcome = ImportReport::Outcome;
using Rows = ImportReport::Rows;
using Home = ImportHome;

const std::string idOfSwim = "0A1B2C3D-0000-7000-8000-00000000ABCD";
const std::string idOfHealth = "0A1B2C3D-0000-7000-8000-0000000000CA";

std::string id(int number) { return "0A1B2C3D-0000-7000-8000-00000000000" + std::to_string(number); }
qz::UniqueID uniqueId(const std::string& text) { return qz::UniqueID::fromText(text).value(); }
qz::Moment moment(std::string_view text) { return qz::momentFromISO8601(text).value(); }

HabitraJSONBackupTaskEntry entry(qz::YYYYMMDD day, std::optional<qz::UniqueID> identifier = std::nullopt) {
  HabitraJSONBackupTaskEntry entry;
  entry.uniqueId = identifier;
  entry.entryType = TaskLogEntryType::completedManuallyFull;
  entry.entryDate = day;
  return entry;
}

/// The row of a task as a store holds it that has not been processed.
TaskEntity swimRow() {
  TaskEntity row;
  row.uniqueId = idOfSwim;
  row.title = "Swim";
  row.imageName = "em_S";
  row.colorInfo = "blue";
  TaskFrequency weekly;
  weekly.dayMode = TaskFrequency::DayMode::aggregateOverWeek;
  setFrequency(row, weekly);
  row.typeName = "distanceSwimming";
  row.typeTarget = 1.5;
  row.typeExtra = Bytes{1, 2};
  row.currentTimeZoneOverride = "Pacific/Auckland";
  row.startOfDayValue = 3600;
  row.firstDayOfWeekValue = 6;
  row.displayOrder = 7;
  row.created = moment("2024-05-01T08:00:00Z");
  row.createdTimeZone = "America/New_York";
  row.status = task_status::archived;
  row.statusDate = moment("2024-05-30T08:00:00Z");
  row.lastChangedDifficultyStatus = "harder_no";
  row.snoozeDate = 20240601;
  return row;
}

/// A task with one of everything, its timer's entry included.
HabitraJSONBackupTask swim() {
  HabitraJSONBackupTask task;
  task.uniqueId = uniqueId(idOfSwim);
  task.title = "Swim";
  task.pageNumber = TaskPageNumber::fromRawValue(3);
  auto timed = entry({2024, 5, 20}, uniqueId(id(1)));
  timed.progress = 0.5;
  timed.progressTotal = 750;
  timed.createdTimestamp = moment("2024-05-20T07:00:00Z");
  timed.details = std::make_shared<HabitraJSONBackupTaskEntryDetails>(HabitraJSONBackupTaskEntryDetails{
      .createdTimeZone = "Asia/Tokyo", .cloudStatus = "TMP", .cloudStatusDate = moment("2024-05-20T07:00:01Z")});
  task.log = {timed, entry({2024, 5, 21}, uniqueId(id(2)))};
  task.notes.emplace().push_back({.content = "cold", .noteDate = 20240520, .uniqueId = id(1)});
  auto& record = task.record.emplace();
  record.task = swimRow();
  record.task.lastProcessedDate = moment("2024-05-31T08:00:00Z");
  record.task.activeStreak = 12;
  record.notificationSettings = {.maxReminders = 3, .soundReminder = "bell"};
  record.reminders = {{.reminderType = "time", .timeOfDay = 3600, .uniqueId = id(1)}};
  record.counters = {{.entryDate = 20240520, .quantity = 2, .uniqueId = id(1)}};
  record.timers = {{.entryDate = 20240520, .entryId = id(1), .start = moment("2024-05-20T06:00:00Z")}};
  record.categories = {uniqueId(idOfHealth)};
  record.pauses = {{.from = {2024, 5, 25}, .to = qz::YYYYMMDD(2024, 5, 26)}};
  return task;
}

HabitraJSONBackup document() {
  HabitraJSONBackup document;
  document.tasks.push_back(swim());
  document.pages = {{.displayOrder = 2, .iconName = "sun", .title = "Evening", .uniqueId = id(3)}};
  document.categories = {{.title = "Health", .uniqueId = idOfHealth}};
  document.settings = {{.settingKey = "startOfDay", .intValue = 10800},
                       {.settingKey = "of.a.newer.program", .doubleValue = 2.5, .stringValue = "both"}};
  return document;
}

TEST(DocumentImportTests, ATaskWithoutIdentifierIsFoundAgainByTheTitleThatItGot) {
  Home home;
  HabitraJSONBackup document;
  document.tasks.resize(2);  // one has no title at all
  document.tasks[0].titleFormatted = "20 pages";
  home.import(document);
  EXPECT_EQ(home.import(document).count(Outcome::left), 2U);
  EXPECT_EQ(home.context.fetchAll<TaskEntity>().size(), 2U);
}

TEST(DocumentImportTests, WhatIsOddInAHabitIsSaid) {
  Home home;
  HabitraJSONBackup document;
  document.tasks.emplace_back().log = {entry({204, 6, 1})};
  TaskEntity& row = document.tasks[0].record.emplace().task;
  row.daysMode = 99;
  row.currentTimeZoneOverride = "Nowhere/City";
  const auto report = home.import(document);
  EXPECT_EQ(
      report.tasks.at(0).remarks,
      (std::vector<std::string>{
          "it has no title", "how often it is to be done cannot be read; until that is changed no day of it is judged",
          "\"Nowhere/City\" is no time zone that is known here; its days are those of this device",
          "its first entry is of 0204-06-01, and all days since then count"}));
  EXPECT_TRUE(home.import(document).tasks.at(0).remarks.empty()) << "nothing has changed";
}

TEST(DocumentImportTests, AnIdentifierIsTakenInWhateverCaseItIsStored) {
  Home home;
  HabitraJSONBackup document;
  document.tasks.resize(2);
  document.tasks[0].title = "A";
  document.tasks[1].title = "B";
  home.import(document);
  std::string lowerCase = id(1);
  std::ranges::transform(lowerCase, lowerCase.begin(),
                         [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
  home.context.insertLogEntry(
      {.entryDate = 20240520, .entryType = 1, .uniqueId = lowerCase, .task = home.task("A").objectID});
  home.save();
  document.tasks[1].log = {entry({2024, 5, 21}, uniqueId(id(1)))};
  home.import(document);
  EXPECT_NE(home.context.fetchLogEntries(home.task("B").objectID).at(0).uniqueId, id(1));
}

TEST(DocumentImportTests, ANewTaskHasEverythingThatTheDocumentSays) {
  Home home;
  const HabitraJSONBackup whole = document();
  const auto report = home.import(whole);
  EXPECT_EQ(report.tasks.at(0).outcome, Outcome::added);
  EXPECT_EQ(report.entries(), ImportReport::Entries{.added = 2});
  EXPECT_EQ(report.notes(), Rows{.added = 1});
  EXPECT_EQ(report.parts(), Rows{.added = 6});
  EXPECT_EQ(report.settings, Rows{.added = 2});
  EXPECT_EQ(report.pages, Rows{.added = 1});
  EXPECT_EQ(report.categories, Rows{.added = 1});

  HabitraJSONBackupTaskRecord expected = *whole.tasks[0].record;
  expected.task = swimRow();  // nothing that is derived from its log
  EXPECT_EQ(home.record("Swim"), expected);
  EXPECT_EQ(home.contents<TaskNoteEntity>("Swim"), *whole.tasks[0].notes);
  const auto first = home.log("Swim").at(0);
  EXPECT_EQ(first.progressTotal, 750);
  EXPECT_EQ(first.createdTimeZone, "Asia/Tokyo");
  EXPECT_EQ(first.cloudStatus, "TMP");
  EXPECT_EQ(first.entryPeriodFrom, 20240518) << "weeks that begin on Saturday";
  EXPECT_EQ(home.log("Swim").at(1).createdTimestamp, moment("2024-05-20T13:00:00Z")) << "one o'clock in Auckland";
  EXPECT_EQ(home.context.find<UserProfileEntity>(home.task("Swim").userProfile)->title, "Evening");
  EXPECT_EQ(home.context.find<SettingEntity>("settingKey", "of.a.newer.program")->doubleValue, 2.5);
  EXPECT_EQ(home.context.sequence(), 1) << "one transaction";

  for (const auto strategy : {ImportStrategy::merge, ImportStrategy::skip, ImportStrategy::overwrite}) {
    const auto again = home.import(whole, strategy);
    EXPECT_EQ(again.count(Outcome::left), 1U) << caseName(strategy);
    EXPECT_FALSE(again.parts().haveChanged());
    EXPECT_EQ(home.context.sequence(), 1) << "nothing was written by " << caseName(strategy);
  }
}

TEST(DocumentImportTests, WhatAStrategyTouches) {
  Home home;
  home.import(document());
  home.task("Swim").colorInfo = "red";
  home.task("Swim").lastProcessedDate = home.now;
  setPauses(home.context, home.task("Swim"), {});
  home.context.remove(*home.rows<TaskNoteEntity>("Swim").at(0));
  home.context.remove(*home.rows<TaskNotificationRemindersEntity>("Swim").at(0));
  home.rows<TaskCounterEntity>("Swim").at(0)->quantity = 9;
  const ObjectID swimId = home.task("Swim").objectID;
  home.context.insert<TaskNoteEntity>({.content = "mine", .task = swimId});
  home.context.insert<TaskTimerEntity>({.start = home.now, .task = swimId});
  home.context.insert<UserProfileEntity>({.displayOrder = 0, .title = "Mine"});
  home.context.find<UserProfileEntity>("title", "Evening")->title = "Night";
  home.context.find<TaskCategoryEntity>("title", "Health")->title = "Body";
  StoreSettings(home.context).set("startOfDay", std::int64_t{7200});
  home.save();
  const auto mine = home.record("Swim");

  home.import(document(), ImportStrategy::skip);
  EXPECT_EQ(home.record("Swim"), mine);

  const auto merged = home.import(document());
  EXPECT_EQ(merged.notes(), Rows{.added = 1});
  EXPECT_EQ(merged.parts(), (Rows{.left = 2})) << "the counter is there, whatever it counts";
  EXPECT_EQ(home.task("Swim").lastProcessedDate, std::nullopt);
  auto record = home.record("Swim");
  record.task.lastProcessedDate = mine.task.lastProcessedDate;
  EXPECT_EQ(record, mine);
  EXPECT_EQ(home.rows<TaskNoteEntity>("Swim").size(), 2U);
  EXPECT_EQ(StoreSettings(home.context).get<std::int64_t>("startOfDay"), 7200);

  const auto replaced = home.import(document(), ImportStrategy::overwrite);
  EXPECT_EQ(replaced.notes(), (Rows{.removed = 1, .left = 1}));
  EXPECT_EQ(replaced.parts(), (Rows{.added = 2, .changed = 1, .removed = 1, .left = 3}));
  HabitraJSONBackupTaskRecord expected = *swim().record;
  expected.task = swimRow();
  EXPECT_EQ(home.record("Swim"), expected);
  EXPECT_EQ(StoreSettings(home.context).get<std::int64_t>("startOfDay"), 10800);
  EXPECT_EQ(home.context.find<UserProfileEntity>("uniqueId", id(3))->title, "Evening");
  EXPECT_EQ(home.context.find<TaskCategoryEntity>("uniqueId", idOfHealth)->title, "Health");
  EXPECT_NE(home.context.find<UserProfileEntity>("title", "Mine"), nullptr) << "what the document has not stays";
}

TEST(DocumentImportTests, ACopyHasIdentifiersOfItsOwn) {
  Home home;
  home.import(document());
  home.task("Swim").title = "Original";
  home.save();
  const auto original = home.record("Original");
  const auto report = home.import(document(), ImportStrategy::importWithNewID);
  EXPECT_EQ(report.count(Outcome::added), 1U);
  EXPECT_EQ(report.categories, Rows{.left = 1});
  EXPECT_EQ(home.record("Original"), original);
  home.expectUniqueIdentifiers();
  const auto copy = home.record("Swim");
  EXPECT_EQ(copy.pauses, original.pauses);
  EXPECT_EQ(copy.categories, original.categories);
  EXPECT_EQ(copy.timers.at(0).entryId, home.log("Swim").at(0).uniqueId) << "the timer follows its entry";
}

TEST(DocumentImportTests, IdentifiersStayUniqueAndTheSecondTimeChangesNothing) {
  HabitraJSONBackup whole = document();
  HabitraJSONBackupTask first = swim();
  first.log->push_back(entry({2024, 5, 20}, uniqueId(id(1))));  // twice in one log
  first.log->push_back(entry({2024, 5, 22}, uniqueId(id(1))));
  first.notes->push_back({.content = "cold", .noteDate = 20240520, .uniqueId = id(1)});
  first.record->counters.push_back(first.record->counters[0]);
  first.record->reminders.push_back(first.record->reminders[0]);
  HabitraJSONBackupTask other = first;  // all of it under another task's name, too
  other.uniqueId = uniqueId(id(9));
  other.title = "Other";
  whole.tasks = {first, other, first};  // and the first one again
  whole.categories->push_back(whole.categories->front());
  whole.pages->push_back({.displayOrder = 4, .uniqueId = id(3)});

  for (const bool isEmpty : {true, false}) {
    Home home;
    if (!isEmpty) {
      HabitraJSONBackup taken = document();
      taken.tasks[0].uniqueId.reset();
      taken.tasks[0].title = "Has them already";
      home.import(taken);
    }
    home.import(whole);
    home.expectUniqueIdentifiers();
    EXPECT_EQ(home.log("Swim").size(), 4U);
    for (const auto* title : {"Swim", "Other"}) {
      const auto named = home.rows<TaskTimerEntity>(title).at(0)->entryId;
      EXPECT_EQ(home.context.findLogEntry(named.value())->task, home.task(title).objectID) << title;
    }
    const auto sequence = home.context.sequence();
    const auto again = home.import(whole);
    EXPECT_EQ(again.count(Outcome::left), 3U) << isEmpty;
    EXPECT_EQ(home.context.sequence(), sequence) << "nothing was written";
  }
}

TEST(DocumentImportTests, DeletedTasks) {
  Home home;
  HabitraJSONBackup deleted = document();
  deleted.tasks[0].record->task.status = task_status::deleted;
  const auto report = home.import(deleted).tasks.at(0);
  EXPECT_EQ(report.outcome, Outcome::leftOut);
  EXPECT_EQ(report.title, "Swim");
  EXPECT_EQ(report.remarks.size(), 1U);
  EXPECT_TRUE(home.context.fetchAll<TaskEntity>().empty());

  home.import(document());
  home.task("Swim").status = task_status::deleted;
  home.save();
  HabitraJSONBackup bare = document();
  bare.tasks[0].record.reset();
  bare.tasks[0].notes.reset();
  const auto back = home.import(bare).tasks.at(0);
  EXPECT_EQ(back.outcome, Outcome::added);
  EXPECT_EQ(back.uniqueId, idOfSwim);
  EXPECT_EQ(back.remarks.size(), 1U);
  EXPECT_TRUE(pausesOf(home.context, home.task("Swim")).empty()) << "pauses of the task that is gone";
  EXPECT_TRUE(home.rows<TaskNoteEntity>("Swim").empty());
  home.expectUniqueIdentifiers();
  const auto sequence = home.context.sequence();
  EXPECT_EQ(home.import(bare).count(Outcome::left), 1U);
  EXPECT_EQ(home.context.sequence(), sequence);
}

TEST(DocumentImportTests, OverwritingWithATaskWithoutRecord) {
  Home home;
  home.import(document());
  const auto before = home.record("Swim");
  HabitraJSONBackup bare;
  bare.tasks.emplace_back().title = "Swim";
  bare.tasks[0].log = {entry({2024, 5, 20})};
  const auto report = home.import(bare, ImportStrategy::overwrite).tasks.at(0);
  EXPECT_EQ(report.outcome, Outcome::changed);
  EXPECT_EQ(report.remarks.size(), 1U) << "its settings are others now";
  EXPECT_EQ(report.entries, (ImportReport::Entries{.changed = 1, .removed = 1})) << "another period";
  EXPECT_EQ(frequencyOf(home.task("Swim")), TaskFrequency::everyDay());
  auto after = home.record("Swim");
  after.task = before.task;
  EXPECT_EQ(after, before) << "of its parts the document says nothing";
  EXPECT_EQ(home.rows<TaskNoteEntity>("Swim").size(), 1U);
  const auto sequence = home.context.sequence();
  EXPECT_EQ(home.import(bare, ImportStrategy::overwrite).count(Outcome::left), 1U);
  EXPECT_EQ(home.context.sequence(), sequence);
}

TEST(DocumentImportTests, WhatStandsBesideTheTasks) {
  Home home;
  home.context.insert<TaskCategoryEntity>({.title = "Health"});
  home.save();
  HabitraJSONBackup whole = document();
  whole.settings->push_back({.settingKey = settings::pausesOf(idOfSwim), .stringValue = "not the task's own"});
  whole.tasks[0].record->pauses.clear();
  whole.tasks[0].record->categories.push_back(uniqueId(id(8)));
  HabitraJSONBackupTask& plain = whole.tasks.emplace_back();
  plain.title = "Plain";
  plain.log = {entry({2024, 5, 31})};
  const auto report = home.import(whole);
  EXPECT_EQ(report.categories, Rows{.left = 1}) << "the one with the title";
  EXPECT_EQ(categoriesOf(home.context, home.task("Swim")).size(), 1U);
  EXPECT_EQ(report.tasks[0].remarks.size(), 1U) << "a category that the document does not have";
  EXPECT_EQ(report.settings.added, 2U);
  EXPECT_EQ(home.context.find<SettingEntity>("settingKey", settings::pausesOf(idOfSwim)), nullptr);
  EXPECT_EQ(home.task("Plain").created, moment("2024-05-31T01:00:00Z")) << "days begin at three from now on";
}

TEST(DocumentImportTests, EntriesAfterTodayAndRemarks) {
  Home home;
  HabitraJSONBackup whole;
  HabitraJSONBackupTask& task = whole.tasks.emplace_back();
  task.title = "A";
  auto east = entry({2024, 6, 2});  // made in time by somebody who since flew west
  east.createdTimestamp = moment("2024-06-01T10:00:00Z");
  east.details = std::make_shared<HabitraJSONBackupTaskEntryDetails>(
      HabitraJSONBackupTaskEntryDetails{.createdTimeZone = "Pacific/Kiritimati"});
  task.log = {east, entry({2024, 6, 2}), entry({2024, 6, 3})};
  const auto report = home.import(whole, ImportStrategy::merge, {.ofAll = {"b"}, .ofTask = {{0, {"a"}}, {5, {"c"}}}});
  EXPECT_EQ(report.entries(), (ImportReport::Entries{.added = 1, .afterToday = 2}));
  EXPECT_EQ(report.tasks[0].remarks, (std::vector<std::string>{"a", "2 entries lie after today and were left out"}));
  EXPECT_EQ(report.remarks, std::vector<std::string>{"b"});
}

/// A clock that fails after it was read so many times.
class FailingClock final : public qz::Clock {
 public:
  [[nodiscard]] qz::Moment now() const override {
    if (readings == 0) throw qz::Error("the clock has stopped");
    --readings;
    return moment("2024-06-01T10:00:00Z");
  }
  mutable int readings = 1000;
};

TEST(DocumentImportTests, AFailureLeavesTheStoreAsItWas) {
  HabitraJSONBackup whole = document();
  whole.tasks.emplace_back().title = "Later";
  whole.tasks[1].log = {entry({2024, 5, 20})};
  int failures = 0;
  for (bool isDone = false; !isDone && failures < 100;) {
    const auto clock = std::make_shared<FailingClock>();
    Home home(clock);
    clock->readings = failures;
    try {
      home.import(whole);
      isDone = true;
    } catch (const qz::Error&) {
      ++failures;
    }
    clock->readings = 1000;
    home.context.refresh();
    EXPECT_EQ(home.context.sequence(), isDone ? 1 : 0);
    EXPECT_EQ(home.context.fetchAll<TaskEntity>().size(), isDone ? 2U : 0U);
    EXPECT_EQ(home.context.fetchAll<SettingEntity>().size(), isDone ? 3U : 0U) << "two and the pauses";
  }
  EXPECT_GT(failures, 1) << "nothing failed half way";
}

}  // namespace
}  // namespace habitra
