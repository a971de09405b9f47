#include <gtest/gtest.h>
#include <HabitraBackup/Exchange/TaskDataExporter.h>
#include <HabitraBackup/Exchange/TaskDataImporter.h>
#include <HabitraBackup/HabitraBackup.h>
#include <HabitraModel/Mapping/FrequencyMapping.h>
#include <HabitraModel/Store/Store.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <QZDateTime/ISO8601.h>
#include <rapidcheck.h>
#include <sstream>
#include <string>
#include <vector>

namespace habitra {
namespace {

const std::string header = "task_id,title,icon,entry_type,entry_date,entry_timestamp,quantity,page,notes\n";
const std::string idX = "0A1B2C3D-0000-7000-8000-00000000ABCD";
const std::string idY = "0A1B2C3D-0000-7000-8000-00000000EF01";

qz::Moment moment(std::string_view text) { return qz::momentFromISO8601(text).value(); }

// A store in memory on a Saturday at noon in Berlin, with days that begin at three.
class Home {
 public:
  ImportReport import(const HabitraJSONBackup& document, ImportStrategy strategy = ImportStrategy::merge) {
    const TaskCalendars calendars(qz::TimeZone::fromIdentifier("Europe/Berlin").value(), qz::HHMMSS(3, 0));
    TaskDataImporter importer(context, {calendars, qz::DayOfWeek::monday, now});
    return importer.importBackup(document, strategy, {});
  }
  ImportReport import(const std::string& rows, ImportStrategy strategy = ImportStrategy::merge) {
    std::istringstream stream(header + rows);
    return import(HabitraBackup::loadCsv(stream, "test", now), strategy);
  }

  std::string exported() {
    const TaskDataExporter exporter(context);
    std::string text;
    exporter.writeCsv(exporter.allTasks(), [&text](std::string_view bytes) { text += bytes; });
    return text;
  }

  TaskEntity& task(std::string_view title) { return *context.find<TaskEntity>("title", title); }

  // "20240531 5" for a missed_auto on that day, and so on.
  std::vector<std::string> log(std::string_view title) {
    std::vector<std::string> result;
    for (const auto& entry : context.fetchLogEntries(task(title).objectID)) {
      result.push_back(std::to_string(entry.entryDate) + " " + std::to_string(entry.entryType));
    }
    return result;
  }

  void save() { context.save({}); }

  qz::Moment now = moment("2024-06-01T10:00:00Z");
  StoreContext context{Store::inMemory(std::make_shared<qz::FixedClock>(now))};
};

using Log = std::vector<std::string>;

TEST(TaskDataImporterTests, ANewTaskIsANewlyMadeOneOnItsPage) {
  Home home;
  const auto report = home.import(idX + ",A,ic_walk,completed_auto,20240531,2024-05-31T21:30:00Z,1.5,2,\n" +  //
                                  idX + ",A,,unknown,20240101,,,,\n" +      // an undo is no history
                                  idX + ",A,,missed_auto,20240530,,,,\n" +  //
                                  ",B,,,,,,,\n" + ",C,,,,,,2,\n" + ",D,,completed_manually,20240602,,,,\n");
  EXPECT_EQ(report.count(ImportReport::Outcome::added), 4U);
  EXPECT_EQ(report.entries(), (ImportReport::Entries{.added = 3, .afterToday = 1}));
  EXPECT_EQ(home.context.sequence(), 1) << "one transaction";

  const TaskEntity& a = home.task("A");
  EXPECT_EQ(a.uniqueId, idX);
  EXPECT_EQ(a.imageName, "ic_walk");
  EXPECT_EQ(frequencyOf(a), TaskFrequency::everyDay());
  EXPECT_EQ(a.firstDayOfWeekValue, 1);
  EXPECT_FALSE(a.isNegative);
  EXPECT_EQ(a.status, task_status::active);
  EXPECT_EQ(a.statusDate, home.now);
  EXPECT_EQ(a.created, moment("2024-05-30T01:00:00Z")) << "three o'clock in Berlin on the day of the first entry";
  EXPECT_EQ(a.createdTimeZone, "Europe/Berlin");
  EXPECT_EQ(home.task("B").created, home.now);
  EXPECT_EQ(home.task("D").created, home.now) << "not before an entry to come";
  EXPECT_TRUE(home.task("B").uniqueId) << "a new identifier";

  const auto* page = home.context.find<UserProfileEntity>(a.userProfile);
  ASSERT_NE(page, nullptr);
  EXPECT_EQ(page->displayOrder, 1);
  EXPECT_EQ(page->title, "Page 2");
  EXPECT_EQ(home.task("C").userProfile, a.userProfile);
  EXPECT_EQ(a.displayOrder, home.task("C").displayOrder + 1) << "tasks with an identifier come after those without";
  EXPECT_EQ(home.task("B").userProfile, ObjectID::none);

  const auto entries = home.context.fetchLogEntries(a.objectID);
  ASSERT_EQ(entries.size(), 3U);
  EXPECT_EQ(entries[1].createdTimestamp, moment("2024-05-30T01:00:00Z")) << "made when its day began";
  EXPECT_EQ(entries[2].progress, 1.5);
  EXPECT_EQ(entries[2].entryPeriodFrom, 20240531);
  EXPECT_EQ(entries[2].entryPeriodTo, 20240531);
  EXPECT_EQ(entries[2].entryPeriodType, "d");
  EXPECT_EQ(entries[2].createdTimeZone, "Europe/Berlin");
  EXPECT_TRUE(entries[2].uniqueId);
}

TEST(TaskDataImporterTests, TheSameFileTwiceChangesNothing) {
  Home home;
  const std::string rows = idX + ",A,,completed_manually,20240530,2024-05-30T08:00:00.25Z,,,\n" +  //
                           idX + ",A,,completed_manually,20240530,2024-05-30T08:00:00.75Z,,,\n" +  // the same second
                           idX + ",A,,completed_manually,20240530,,,,\n" +                         //
                           idX + ",A,,missed_auto,20240530,,,,\n" +            // beside a full entry of its period
                           ",A,,completed_manually,20240529,,,,\n" +           // a task of its own
                           "own id,A,,,,,,,\n" +                               // and two more
                           "another id,A,,skipped_auto,20240529,,,,\n" +       //
                           idX.substr(0, 35) + "d,A,,unknown,20240528,,,,\n";  // X again, in other letters
  const auto first = home.import(rows);
  EXPECT_EQ(first.count(ImportReport::Outcome::added), 4U);
  const std::string text = home.exported();
  const auto second = home.import(rows);
  EXPECT_EQ(second.count(ImportReport::Outcome::left), 5U);
  EXPECT_EQ(second.entries(), (ImportReport::Entries{.left = 7}));
  EXPECT_EQ(home.context.sequence(), 1) << "nothing was written";
  EXPECT_EQ(home.exported(), text);
}

TEST(TaskDataImporterTests, WhichTaskIsWhich) {
  Home home;
  home.import(idX + ",A,ic_a,,,,,2,\n" + ",Gone,,,,,,,\n");
  home.task("Gone").status = task_status::deleted;
  home.save();
  const auto report = home.import(idX + ",Other title,ic_b,completed_manually,20240531,,,3,\n" +  // by identifier
                                  ",A,,,,,,,\n" +     // its title is taken by the task above
                                  ",Gone,,,,,,,\n");  // a deleted task is nobody's
  EXPECT_EQ(report.count(ImportReport::Outcome::added), 2U);
  EXPECT_EQ(report.count(ImportReport::Outcome::changed), 1U);
  EXPECT_EQ(home.context.fetch<TaskEntity>("title", "A").size(), 2U);
  EXPECT_EQ(home.task("A").imageName, "ic_a") << "settings stay";
  EXPECT_EQ(home.log("A"), Log{"20240531 1"});

  home.import(",A,,missed_manually,20240530,,,,\n");
  EXPECT_EQ(home.log("A"), (Log{"20240530 7", "20240531 1"})) << "without an identifier: the oldest with the title";
}

TEST(TaskDataImporterTests, EntriesMeetOneToOne) {
  Home home;
  home.import(idX + ",A,,completed_manually_partial,20240530,2024-05-30T08:00:00Z,,,\n");
  home.import(idX + ",A,,completed_manually_partial,20240530,2024-05-30T08:00:00Z,,,\n" +  // the one that is there
              idX + ",A,,completed_manually_partial,20240530,2024-05-30T08:00:00Z,,,\n" +  // one more like it
              idX + ",A,,completed_manually_partial,20240530,2024-05-30T08:00:01Z,,,\n" +  // another second
              idX + ",A,,completed_manually_partial,20240531,2024-05-30T08:00:00Z,,,\n" +  // another day
              idX + ",A,,skipped_manually,20240530,2024-05-30T08:00:00Z,,,\n");            // another type
  EXPECT_EQ(home.log("A"), (Log{"20240530 6", "20240530 6", "20240530 3", "20240530 6", "20240531 6"}))
      << "in order of making";
  const auto report = home.import(idX + ",A,,completed_manually_partial,20240531,,,,\n");
  EXPECT_EQ(report.entries().left, 1U) << "without a moment, day and type are enough";
}

TEST(TaskDataImporterTests, AnIdentifierOfAnEntryDecides) {
  Home home;
  const auto entryId = qz::UniqueID::fromText(idY);
  HabitraJSONBackup document;
  auto& task = document.tasks.emplace_back();
  task.title = "A";
  auto& entry = task.log.emplace().emplace_back();
  entry.uniqueId = entryId;
  entry.entryType = TaskLogEntryType::completedManuallyFull;
  entry.entryDate = qz::YYYYMMDD(2024, 5, 31);
  entry.entryPeriodFrom = qz::YYYYMMDD(2024, 5, 27);
  entry.entryPeriodTo = qz::YYYYMMDD(2024, 6, 2);
  entry.entryPeriodType = TaskFrequencyPeriodType::week;
  home.import(document);
  const auto stored = home.context.fetchLogEntries(home.task("A").objectID).at(0);
  EXPECT_EQ(stored.uniqueId, idY);
  EXPECT_EQ(stored.entryPeriodFrom, 20240527) << "a period that is given is kept";
  EXPECT_EQ(stored.entryPeriodType, "w");

  entry.entryDate = qz::YYYYMMDD(2024, 5, 30);
  EXPECT_EQ(home.import(document).entries().left, 1U) << "the same entry, whatever else it says";
  task.title = "B";
  EXPECT_EQ(home.import(document).entries().added, 1U);
  EXPECT_NE(home.context.fetchLogEntries(home.task("B").objectID).at(0).uniqueId, idY)
      << "no identifier is given twice";
}

TEST(TaskDataImporterTests, AFullEntryReplacesAutomaticOnesOfItsPeriodAndNothingElse) {
  Home home;
  home.import(",W,,,,,,,\n");
  TaskFrequency weekly;
  weekly.dayMode = TaskFrequency::DayMode::aggregateOverWeek;
  setFrequency(home.task("W"), weekly);
  home.task("W").lastProcessedDate = home.now;
  home.save();
  home.import(",W,,missed_auto,20240519,,,,\n" +               // the Sunday before
              std::string(",W,,missed_auto,20240526,,,,\n") +  // automatic, at the end of the week
              ",W,,completed_auto_partial,20240521,,,,\n" + ",W,,timer_auto,20240521,,,,\n" +
              ",W,,skipped_manually,20240521,,,,\n" + ",W,,skipped_auto,20240527,,,,\n");
  EXPECT_EQ(home.task("W").lastProcessedDate, std::nullopt) << "to be processed from its beginning";

  home.import(",W,,completed_manually_partial,20240522,,,,\n");
  EXPECT_EQ(home.log("W").size(), 7U) << "a partial entry replaces nothing";
  const auto report = home.import(",W,,completed_manually,20240523,,,,\n" +
                                  std::string(",W,,completed_auto_partial,20240521,,,,\n"));  // stays: the file has it
  EXPECT_EQ(report.entries(), (ImportReport::Entries{.added = 1, .removed = 1, .left = 1}));
  EXPECT_EQ(home.log("W"),
            (Log{"20240519 5", "20240521 10", "20240521 12", "20240521 3", "20240522 6", "20240523 1", "20240527 4"}));
  const auto week = home.context.fetchLogEntries(home.task("W").objectID, 20240523, 20240523).at(0);
  EXPECT_EQ(week.entryPeriodFrom, 20240520) << "the period of the task's frequency";
  EXPECT_EQ(week.entryPeriodTo, 20240526);
  EXPECT_EQ(week.entryPeriodType, "w");
}

TEST(TaskDataImporterTests, OtherStrategies) {
  Home home;
  const std::string before = idX + ",A,ic_a,completed_manually,20240530,2024-05-30T08:00:00Z,1.0,1,\n" + idX +
                             ",A,ic_a,skipped_manually,20240531,2024-05-31T08:00:00Z,1.0,1,\n";
  const std::string after = idX + ",B,ic_b,completed_manually,20240530,2024-05-30T08:00:00Z,2.0,2,\n" + idX +
                            ",B,ic_b,missed_manually,20240529,2024-05-29T08:00:00Z,3.0,2,\n";
  home.import(before);
  const auto entryId = home.context.fetchLogEntries(home.task("A").objectID).at(0).uniqueId;

  EXPECT_EQ(home.import(after, ImportStrategy::skip).entries(), (ImportReport::Entries{.passedOver = 2}));
  EXPECT_EQ(home.exported(), header + before);

  EXPECT_EQ(home.import(after, ImportStrategy::importWithNewID).count(ImportReport::Outcome::added), 1U);
  EXPECT_NE(home.task("B").uniqueId, idX);
  home.context.remove(home.task("B"));
  home.save();

  EXPECT_EQ(home.import(after, ImportStrategy::overwrite).entries(),
            (ImportReport::Entries{.added = 1, .changed = 1, .removed = 1}));
  const auto log = home.context.fetchLogEntries(home.task("B").objectID);
  EXPECT_EQ(home.exported(), header + idX + ",B,ic_b,missed_manually,20240529,2024-05-29T08:00:00Z,3.0,2,\n" + idX +
                                 ",B,ic_b,completed_manually,20240530,2024-05-30T08:00:00Z,2.0,2,\n");
  EXPECT_EQ(log.at(1).uniqueId, entryId) << "an entry that stays keeps its identifier";
  EXPECT_EQ(home.task("B").created, moment("2024-05-29T01:00:00Z"));
}

TEST(TaskDataExporterTests, WhatIsExported) {
  Home home;
  home.import(",First,,completed_manually,20240531,,,3,\n" + std::string(",First,,missed_auto,20240530,,,,\n") +
              ",Archived,ic_a,,,,,,\n" + ",Deleted,,,,,,,\n" + ",Emoji,,,,,,3,\n");
  home.task("Archived").status = task_status::archived;
  home.task("Deleted").status = task_status::deleted;
  home.task("Emoji").imageName = "em_X";
  for (const char* title : {"First", "Archived", "Emoji"}) home.task(title).uniqueId.reset();
  home.save();
  EXPECT_EQ(home.exported(), header + ",First,,missed_auto,20240530,2024-05-30T01:00:00Z,0.0,3,\n" +
                                 ",First,,completed_manually,20240531,2024-05-31T01:00:00Z,0.0,3,\n" +
                                 ",Archived,ic_a,,,,,1,\n" + ",Emoji,,,,,,3,\n");

  const TaskDataExporter exporter(home.context);
  EXPECT_EQ(exporter.backup(exporter.allTasks(), HabitraJSONBackupType::manual, home.now).csvString(), home.exported());
  const auto third = exporter.tasksOfPage(TaskPageNumber::fromRawValue(3).value());
  EXPECT_EQ(third, (std::vector{home.task("First").objectID, home.task("Emoji").objectID}));
  try {
    static_cast<void>(exporter.task(home.task("Deleted").objectID));
    ADD_FAILURE() << "a deleted task was exported";
  } catch (const TaskDataExporter::Error& error) {
    EXPECT_EQ(error.kind(), TaskDataExporter::Error::taskDataMissing);
  }
}

TEST(TaskDataExchangeTests, ExportImportExportGivesTheSameBytes) {
  const bool agrees = rc::check("two homes", [] {
    const auto titlePart = rc::gen::element<std::string>("a", "\"", ",", "\n", "\r\n", " ", "🏃", "");
    const auto rowCount = *rc::gen::inRange<std::size_t>(0, 30);
    HabitraJSONBackup document;
    for (std::size_t i = 0; i < rowCount; ++i) {
      if (document.tasks.empty() || *rc::gen::inRange(0, 5) == 0) {
        auto& task = document.tasks.emplace_back();
        task.title = *titlePart + "x" + *titlePart;
        if (*rc::gen::arbitrary<bool>()) task.pageNumber = TaskPageNumber::fromRawValue(*rc::gen::inRange(1, 4));
        task.log.emplace();
      }
      auto& entry = document.tasks.back().log->emplace_back();
      const auto& types = RawValueTable<TaskLogEntryType>::rows;
      entry.entryType = types.at(*rc::gen::inRange<std::size_t>(0, types.size())).value;
      entry.entryDate = qz::YYYYMMDD(2024, 5, 28).add(*rc::gen::inRange(0, 6));
      if (*rc::gen::arbitrary<bool>()) entry.progress = *rc::gen::inRange(-50, 300) / 7.0;
      if (*rc::gen::arbitrary<bool>())
        entry.createdTimestamp = qz::Moment(std::chrono::seconds(*rc::gen::inRange(0, 3)));
    }
    Home one;
    one.import(document);
    const std::string text = one.exported();
    Home two;
    const auto bytes = std::as_bytes(std::span(text));
    two.import(HabitraBackup::loadCsv(bytes, two.now));
    RC_ASSERT(two.exported() == text);
    two.import(HabitraBackup::loadCsv(bytes, two.now));
    RC_ASSERT(two.context.sequence() <= 1);
  });
  EXPECT_TRUE(agrees);
}

}  // namespace
}  // namespace habitra
