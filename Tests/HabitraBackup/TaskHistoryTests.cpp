#include <gtest/gtest.h>
#include <HabitraBackup/CSV/CSVError.h>
#include <HabitraBackup/CSV/HabitraCSVImport.h>
#include <HabitraBackup/HabitraBackup.h>
#include <QZDateTime/ISO8601.h>
#include <rapidcheck.h>
#include <cmath>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

namespace habitra {
namespace {

using Representation = HabitraJSONBackupVisualRepresentation;

const std::string header = "task_id,title,icon,entry_type,entry_date,entry_timestamp,quantity,page,notes\n";
const std::string id = "0A1B2C3D-0000-7000-8000-00000000ABCD";

qz::Moment moment(std::string_view text) { return qz::momentFromISO8601(text).value(); }
const qz::Moment now = moment("2024-06-01T12:00:00Z");

HabitraJSONBackup load(const std::string& text) {
  std::istringstream stream(text);
  return HabitraBackup::loadCsv(stream, "walk.csv", now);
}

std::string refusal(const std::string& text) {
  try {
    load(text);
  } catch (const CSVError& error) {
    return error.what();
  }
  return "accepted";
}

HabitraJSONBackupTaskNote note(std::int32_t day, std::optional<std::string> status, std::string content) {
  HabitraJSONBackupTaskNote note;
  note.noteDate = day;
  note.status = std::move(status);
  note.content = std::move(content);
  return note;
}

HabitraJSONBackupTaskEntry entry(TaskLogEntryType type, qz::YYYYMMDD day, std::optional<double> progress = {}) {
  HabitraJSONBackupTaskEntry entry;
  entry.entryType = type;
  entry.entryDate = day;
  entry.progress = progress;
  return entry;
}

HabitraJSONBackup document(HabitraJSONBackupTask task) {
  HabitraJSONBackup document;
  document.tasks.push_back(std::move(task));
  return document;
}

TEST(HabitraBackupFormatTests, ExtensionsAndTypes) {
  EXPECT_EQ(fileExtension(HabitraBackupFormat::json), "habitra");
  EXPECT_EQ(formatOfFileExtension("csv"), HabitraBackupFormat::csv);
  EXPECT_EQ(formatOfFileExtension("CSV"), std::nullopt);
  EXPECT_EQ(formatOfFileExtension("json"), std::nullopt);
  EXPECT_EQ(typeIdentifier(HabitraBackupFormat::csv), "public.comma-separated-values-text");
  EXPECT_EQ(typeIdentifier(HabitraBackupFormat::json), "org.habitra.streak.data");
}

TEST(HabitraCSVBackupEntryTypeTests, EachTextMeansItsCaseAndGoesBack) {
  const std::vector<std::pair<std::string, TaskLogEntryType>> table{
      {"unknown", TaskLogEntryType::unknown},
      {"completed_manually", TaskLogEntryType::completedManuallyFull},
      {"completed_auto", TaskLogEntryType::completedAutomaticallyFull},
      {"completed_manually_partial", TaskLogEntryType::completedManuallyPartial},
      {"skipped_manually", TaskLogEntryType::skippedManuallyFull},
      {"skipped_auto", TaskLogEntryType::skippedAutomaticallyFull},
      {"allowed_miss_manually", TaskLogEntryType::allowableMissManuallyFull},
      {"allowed_miss_auto", TaskLogEntryType::allowableMissAutomaticallyFull},
      {"missed_auto", TaskLogEntryType::missedAutomaticallyFull},
      {"missed_manually", TaskLogEntryType::missedManuallyFull},
      {"missed_manually_partial", TaskLogEntryType::missedManuallyPartial},
      {"missed_auto_partial", TaskLogEntryType::missedAutomaticallyPartial},
      {"completed_auto_partial", TaskLogEntryType::completedAutomaticallyPartial},
      {"timer_manually", TaskLogEntryType::timerManual},
      {"timer_auto", TaskLogEntryType::timerAutomatic},
      {"external_health_data", TaskLogEntryType::externalHealthData}};
  std::string text = header;
  for (const auto& [name, type] : table) text += ",A,," + name + ",20240131,,,,\n";
  const auto loaded = load(text);
  const auto& log = loaded.tasks.at(0).log.value();
  ASSERT_EQ(log.size(), table.size());
  for (std::size_t i = 0; i < table.size(); ++i) EXPECT_EQ(log[i].entryType, table[i].second) << table[i].first;
  EXPECT_EQ(loaded.csvString(), text);
}

TEST(TaskHistoryTests, WritesExactForms) {
  HabitraJSONBackupTask task;
  task.uniqueId = qz::UniqueID::fromText(id);
  task.title = "Run \"5, or 6\" km";
  task.visualRepresentation = Representation::sfSymbol("figure.run");
  task.pageNumber = TaskPageNumber::fromRawValue(2);
  auto& log = task.log.emplace();
  log.push_back(entry(TaskLogEntryType::completedManuallyFull, qz::YYYYMMDD(987, 1, 2), 3.0));
  log.back().createdTimestamp = moment("2024-01-31T10:15:00.999+02:00");
  for (const double value : {0.1, 1e-7, 1e21, -0.0, 1.0 / 3, std::numeric_limits<double>::infinity(), std::nan("")}) {
    log.push_back(entry(TaskLogEntryType::timerManual, qz::YYYYMMDD(2024, 1, 31), value));
  }
  // What a damaged store may hold, and no reader would take.
  log.push_back(entry(TaskLogEntryType::unknown, qz::YYYYMMDD(2023, 2, 30)));
  log.back().createdTimestamp = qz::Moment(std::chrono::hours(24 * 366 * 9000));
  const std::string task1 = id + ",\"Run \"\"5, or 6\"\" km\",sf_figure.run,";
  EXPECT_EQ(document(task).csvString(),
            header + task1 + "completed_manually,09870102,2024-01-31T08:15:00Z,3.0,2,\n" +             //
                task1 + "timer_manually,20240131,,0.1,2,\n" +                                          //
                task1 + "timer_manually,20240131,,0.0000001,2,\n" +                                    //
                task1 + "timer_manually,20240131,,1000000000000000000000.0,2,\n" +                     //
                task1 + "timer_manually,20240131,,-0.0,2,\n" +                                         //
                task1 + "timer_manually,20240131,,0.3333333333333333,2,\n" +                           //
                task1 + "timer_manually,20240131,,,2,\n" + task1 + "timer_manually,20240131,,,2,\n" +  //
                task1 + "unknown,,,,2,\n");
}

TEST(TaskHistoryTests, WhatATaskLooksLikeInRows) {
  HabitraJSONBackupTask task;
  task.title = "{placeholder} pages";
  EXPECT_EQ(document(task).csvString(), header + ",{placeholder} pages,,,,,,,\n") << "no log: one row";
  task.titleFormatted = "20 pages";
  task.log.emplace();
  EXPECT_EQ(document(task).csvString(), header + ",20 pages,,,,,,,\n") << "empty log, formatted title";

  task.log->push_back(entry(TaskLogEntryType::skippedManuallyFull, qz::YYYYMMDD(2024, 1, 30)));
  task.log->push_back(entry(TaskLogEntryType::completedManuallyFull, qz::YYYYMMDD(2024, 1, 31)));
  task.log->push_back(entry(TaskLogEntryType::completedManuallyPartial, qz::YYYYMMDD(2024, 1, 31)));
  task.notes = {note(20240131, "deleted", "rain"), note(0, std::nullopt, "no day"),
                note(20240131, std::nullopt, "sun")};
  EXPECT_EQ(document(task).csvString(), header + ",20 pages,,skipped_manually,20240130,,,,\n" +
                                            ",20 pages,,completed_manually,20240131,,,,\"rain\nsun\"\n" +
                                            ",20 pages,,completed_manually_partial,20240131,,,,\"rain\nsun\"\n");

  task.title.reset();
  task.titleFormatted = "";
  EXPECT_EQ(document(task).csvString(), header) << "no title, no row";
}

TEST(TaskHistoryTests, ColumnsInAnyOrderAndSomeMissing) {
  const auto loaded = load(
      "page,title,quantity,entry_date,entry_type,entry_timestamp,date\r\n"
      "32768,A,12,20240229,completed_manually,2024-02-29T23:59:59.25+01:30,red\r\n"
      "1,A,-0.50,00010101,completed_manually,2024-01-31t08:15:00z,\r\n");
  ASSERT_EQ(loaded.tasks.size(), 1U);
  EXPECT_EQ(loaded.tasks[0].pageNumber->rawValue(), 32768);
  EXPECT_EQ(loaded.tasks[0].visualRepresentation, std::nullopt);
  const auto& log = loaded.tasks[0].log.value();
  EXPECT_EQ(log.at(0).progress, 12.0);
  EXPECT_EQ(log.at(0).createdTimestamp, moment("2024-02-29T22:29:59.25Z"));
  EXPECT_EQ(log.at(1).progress, -0.5);
  EXPECT_EQ(log.at(1).entryDate, qz::YYYYMMDD(1, 1, 1));
}

TEST(TaskHistoryTests, Icons) {
  const auto iconOf = [](const std::string& text) {
    return load("title,icon\nA," + text + "\n").tasks.at(0).visualRepresentation;
  };
  EXPECT_EQ(iconOf("ic_walk"), Representation::icon("walk"));
  EXPECT_EQ(iconOf("sf_a_b"), Representation::sfSymbol("a_b"));
  for (const char* other : {"", "ic_", "em_X", "mg_1", "walk", "IC_walk"}) EXPECT_EQ(iconOf(other), std::nullopt);
}

TEST(TaskHistoryTests, RefusedHeaders) {
  const std::vector<std::pair<std::string, std::string>> cases{
      {"a,b\n",
       "walk.csv: line 1: no column \"title\" in the header \"a\", \"b\"; expected "
       "task_id,title,icon,entry_type,entry_date,entry_timestamp,quantity,page,notes"},
      {"title,page,title\n", "walk.csv: line 1, title: the header names this column twice"},
      {"titel,page\n", "walk.csv: line 1: unknown column \"titel\", did you mean \"title\"?"},
      {"title,entry date\n", "walk.csv: line 1: unknown column \"entry date\", did you mean \"entry_date\"?"},
      {"title, page\n", "walk.csv: line 1: unknown column \" page\", did you mean \"page\"?"},
      {"title,page,pages,remarks\n", "accepted"},
  };
  for (const auto& [text, message] : cases) EXPECT_EQ(refusal(text), message);
}

TEST(TaskHistoryTests, RefusedValues) {
  struct Case {
    const char* column;
    std::string value;
    std::string problem;
  };
  const std::string noType = " is not an entry type such as completed_manually or skipped_manually";
  const std::string noDigits = " is not a day in eight digits such as 20240131";
  const std::string noDay = " is not a day of the calendar";
  const std::string noMoment = " is not a moment such as 2024-01-31T08:15:00Z";
  const std::string noNumber = " is not a decimal number such as 1.5";
  const std::string noPage = " is not a page number from 1 to 32768";
  const std::vector<Case> cases{
      {"entry_type", "done", noType},
      {"entry_type", "Unknown", noType},
      {"entry_date", "20230230", noDay},
      {"entry_date", "20230229", noDay},
      {"entry_date", "00000101", noDay},
      {"entry_date", "20231301", noDay},
      {"entry_date", "2023-02-28", noDigits},
      {"entry_date", "2023022", noDigits},
      {"entry_date", "+2023022", noDigits},
      {"entry_date", "120230228", noDigits},
      {"entry_timestamp", "2024-01-31", noMoment},
      {"entry_timestamp", "2024-02-30T08:15:00Z", noMoment},
      {"entry_timestamp", "2024-01-31T08:15:00", noMoment},
      {"entry_timestamp", "9999-12-31T23:59:59-12:00", " lies outside the years 0 to 9999 of UTC"},
      {"quantity", "many", noNumber},
      {"quantity", "1e3", noNumber},
      {"quantity", "nan", noNumber},
      {"quantity", "-inf", noNumber},
      {"quantity", ".5", noNumber},
      {"quantity", "5.", noNumber},
      {"quantity", "-", noNumber},
      {"quantity", "+1", noNumber},
      {"quantity", "0x10", noNumber},
      {"quantity", "1 000", noNumber},
      {"quantity", std::string(400, '9'), noNumber},
      {"page", "0", noPage},
      {"page", "-1", noPage},
      {"page", "32769", noPage},
      {"page", "1.0", noPage},
      {"page", "99999999999999999999", noPage},
  };
  for (const Case& wrong : cases) {
    const std::string shown = wrong.value.size() > 40 ? wrong.value.substr(0, 40) + "..." : wrong.value;
    EXPECT_EQ(refusal(std::string("title,") + wrong.column + "\nA,\n\"B\nC\",\nD," + wrong.value + "\n"),
              std::string("walk.csv: line 5, ") + wrong.column + ": \"" + shown + "\"" + wrong.problem);
  }
}

TEST(HabitraCSVImportTests, GroupsRowsIntoTasks) {
  const auto loaded = load(header +                                                                           //
                           id + ",A,ic_walk,completed_manually,20240101,2024-01-01T08:00:00Z,1.5,2,lost\n" +  //
                           ",A,,,,,,,\n" +                                      // no identifier
                           "not an id,B,,missed_auto,20240102,,,3,\n" +         //
                           id + ",renamed,sf_x,skipped_auto,20240102,,,9,\n" +  // the first row counts
                           id + ",,,missed_auto,20240103,,,,\n" +               // no title
                           ",A,ic_late,completed_auto,,,,,\n" +                 // no day
                           ",A,,,20240104,,,,\n" +                              // no type
                           "other,B,,,,,,,\n");
  EXPECT_EQ(loaded.version, 1);
  EXPECT_EQ(loaded.timestamp, now);
  EXPECT_EQ(loaded.backupType, HabitraJSONBackupType::automated);
  EXPECT_EQ(loaded.backupDescription, "Converted from CSV");
  EXPECT_EQ(loaded.appVersion, std::nullopt);

  ASSERT_EQ(loaded.tasks.size(), 4U);
  HabitraJSONBackupTask byTitle;
  byTitle.title = "A";
  byTitle.log.emplace();
  EXPECT_EQ(loaded.tasks[0], byTitle);

  HabitraJSONBackupTask byId;
  byId.uniqueId = qz::UniqueID::fromText(id);
  byId.title = "A";
  byId.visualRepresentation = Representation::icon("walk");
  byId.pageNumber = TaskPageNumber::fromRawValue(2);
  byId.log = {entry(TaskLogEntryType::completedManuallyFull, qz::YYYYMMDD(2024, 1, 1), 1.5),
              entry(TaskLogEntryType::skippedAutomaticallyFull, qz::YYYYMMDD(2024, 1, 2))};
  byId.log->front().createdTimestamp = moment("2024-01-01T08:00:00Z");
  EXPECT_EQ(loaded.tasks[1], byId);

  EXPECT_EQ(loaded.tasks[2].uniqueId, std::nullopt) << "a text that is no identifier still tells tasks apart";
  EXPECT_EQ(loaded.tasks[2].log->size(), 1U);
  EXPECT_EQ(loaded.tasks[3].title, "B");
  EXPECT_TRUE(loaded.tasks[3].log->empty());
}

TEST(HabitraCSVImportTests, DescribesItself) {
  HabitraCSVBackupRow row;
  row.title = "A";
  HabitraCSVBackupRow identified = row;
  identified.taskId = "x";
  identified.entryType = HabitraCSVBackupEntryType::unknown;
  identified.entryDate = qz::YYYYMMDD(2024, 1, 1);
  const HabitraCSVImport import(std::vector{identified, row, identified});
  EXPECT_EQ(import.tasksById().at("x")->entries.size(), 2U);
  EXPECT_EQ(import.debugDescription(), "tasksByTitle: [\"A\": 0 entries] tasksById: [\"x\": 2 entries]");
}

// A document as a store gives it: titles, whole seconds and days that the format can carry.
rc::Gen<HabitraJSONBackupTask> anyTask() {
  const auto title =
      rc::gen::element<std::string>("a", " ", "\"", ",", "\n", "\r\n", "\r", "🏃", "é", " b ", "=1+1", "-");
  return rc::gen::exec([=] {
    HabitraJSONBackupTask task;
    task.uniqueId = qz::UniqueID(*rc::gen::container<qz::UniqueID::Bytes>(rc::gen::arbitrary<std::uint8_t>()));
    task.title = *title + *title + *title;
    task.pageNumber = TaskPageNumber::fromRawValue(*rc::gen::inRange<std::int64_t>(1, 32769));
    if (*rc::gen::arbitrary<bool>()) task.visualRepresentation = Representation::icon(*title);
    auto& log = task.log.emplace();
    const auto count = *rc::gen::inRange<std::size_t>(0, 6);
    for (std::size_t i = 0; i < count; ++i) {
      const auto& types = RawValueTable<TaskLogEntryType>::rows;
      log.push_back(entry(types.at(*rc::gen::inRange<std::size_t>(0, types.size())).value,
                          qz::YYYYMMDD::fromDayNumber(*rc::gen::inRange<std::int64_t>(-719162, 2932897))));
      if (*rc::gen::arbitrary<bool>()) log.back().progress = *rc::gen::arbitrary<double>();
      if (*rc::gen::arbitrary<bool>()) {
        const auto second = *rc::gen::inRange<std::int64_t>(-62135596800, 253402300800);
        log.back().createdTimestamp = qz::Moment(std::chrono::seconds(second));
      }
    }
    return task;
  });
}

TEST(TaskHistoryTests, WrittenHistoriesReadBack) {
  const bool agrees = rc::check("write, read, write", [] {
    HabitraJSONBackup written;
    written.tasks = *rc::gen::uniqueBy<std::vector<HabitraJSONBackupTask>>(
        anyTask(), [](const HabitraJSONBackupTask& task) { return task.uniqueId; });
    const std::string text = written.csvString();
    const HabitraJSONBackup read = HabitraBackup::loadCsv(std::as_bytes(std::span(text)), now);
    RC_ASSERT(read.tasks == written.tasks);
    RC_ASSERT(read.csvString() == text);
  });
  EXPECT_TRUE(agrees);
}

}  // namespace
}  // namespace habitra
