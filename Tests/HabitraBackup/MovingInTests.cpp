#include <HabitraBackup/Files/FileWriting.h>
#include <HabitraBackup/HistoryFile.h>
#include <HabitraModel/Mapping/FrequencyMapping.h>
#include <QZDateTime/ISO8601.h>

#include "ForeignFilesMade.h"

#include <fmt/core.h>
#include <algorithm>

using namespace habitra;
using Type = TaskLogEntryType;
using Mode = TaskFrequency::DayMode;

namespace {

ForeignHistorySettings settings() {
  return {.now = *qz::momentFromISO8601("2024-06-01T12:00:00Z"),
          .timeZone = *qz::TimeZone::fromIdentifier("Europe/Berlin"),
          .firstDayOfWeek = qz::DayOfWeek::monday};
}

LoadedHistory read(const std::filesystem::path& path) { return loadHistory(path, settings()); }

/// The log of a task, an entry a word: "20240101 completedManuallyFull 2.5".
std::vector<std::string> logOf(const HabitraJSONBackupTask& task) {
  std::vector<std::string> log;
  for (const HabitraJSONBackupTaskEntry& entry : task.log.value()) {
    EXPECT_FALSE(entry.uniqueId);
    log.push_back(fmt::format("{} {}", entry.entryDate.intValue(), caseName(entry.entryType)));
    if (entry.progressTotal) log.back() += fmt::format(" {}", *entry.progressTotal);
    if (entry.entryType == Type::completedManuallyFull) {
      EXPECT_EQ(entry.progress, 1.0) << "a day that is done is done whole";
    } else if (entry.progress) {
      log.back() += fmt::format(" ({})", *entry.progress);
    }
    if (entry.createdTimestamp) log.back() += " " + qz::iso8601(*entry.createdTimestamp);
  }
  return log;
}

std::vector<std::string> notesOf(const HabitraJSONBackupTask& task) {
  std::vector<std::string> notes;
  for (const auto& note : task.notes.value_or(std::vector<HabitraJSONBackupTaskNote>())) {
    notes.push_back(fmt::format("{} {}", note.noteDate, note.content.value()));
  }
  return notes;
}

TaskFrequency frequencyOfTask(const HabitraJSONBackupTask& task) {
  return frequencyOf(task.record.value().task).value();
}

TaskFrequency counted(Mode mode, std::int64_t times) {
  TaskFrequency frequency;
  frequency.dayMode = mode;
  frequency.numCompletions = times;
  return frequency;
}

using Words = std::vector<std::string>;

bool contains(const Words& lines, const std::string& line) {
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

}  // namespace

class MovingIn : public testing::Test {
 protected:
  TemporaryFolder folder;
};

TEST_F(MovingIn, takesTheExportOfLoopFromAFolderAnArchiveAndAFolderWithinIt) {
  const Texts texts{
      {"Habits.csv",
       "Position,Name,Type,Question,Description,FrequencyNumerator,FrequencyDenominator,Color,Unit,Target Type,Target "
       "Value,Archived?\n"
       "001,Lesen/Über,YES_NO,Did you read?,,3,7,#FF8F00,,,,false\n"
       "002,Water,NUMERICAL,,In glasses,1,1,#00897B,glasses,AT_LEAST,8.0,false\n"
       "003,Coffee,NUMERICAL,,,1,1,#00897B,cups,AT_MOST,2.0,true\n"},
      {"001 Lesenber/Checkmarks.csv",
       "Date,Value,Notes\n2024-01-05,UNKNOWN,\"only, a "
       "note\"\n2024-01-04,SKIP,ill\n2024-01-03,NO,\n2024-01-02,YES_AUTO,\n"
       "2024-01-01,YES_MANUAL,\n"},
      {"002 Water/Checkmarks.csv",
       "Date,Value,Notes\n2024-01-04,-1,\n2024-01-03,0,\n2024-01-02,5500,\n2024-01-01,8000,much\n"},
      {"003 Coffee/Checkmarks.csv", "Date,Value,Notes\n2024-01-02,3000,\n2024-01-01,YES_MANUAL,\n"},
      {"Checkmarks.csv", "Date,Lesen/Über,\nnot read at all"}};
  Texts nested;
  for (const auto& [name, text] : texts) nested.emplace_back("Loop Habits/" + name, text);

  const LoadedHistory history = read(makeFolder(folder / "export", texts));
  const auto& tasks = history.document.tasks;
  ASSERT_EQ(tasks.size(), 3U);
  EXPECT_EQ(tasks[0].title, "Lesen/Über");
  EXPECT_EQ(logOf(tasks[0]),
            (Words{"20240101 completedManuallyFull", "20240103 missedManuallyFull", "20240104 skippedManuallyFull"}));
  EXPECT_EQ(notesOf(tasks[0]), (Words{"20240104 ill", "20240105 only, a note"}));
  EXPECT_EQ(frequencyOfTask(tasks[0]), counted(Mode::numberOfDaysInWeek, 3));
  EXPECT_EQ(history.remarks.ofTask.at(0),
            (Words{"among them 1 skip, 1 miss", "the question \"Did you read?\" has no place here"}));

  EXPECT_EQ(logOf(tasks[1]),
            (Words{"20240101 completedManuallyFull 8", "20240102 completedManuallyPartial 5.5 (0.6875)",
                   "20240103 missedManuallyFull 0"}));
  EXPECT_EQ(frequencyOfTask(tasks[1]).numPartialCompletions, 8);
  EXPECT_EQ(history.remarks.ofTask.at(1).at(0), "among them 1 miss, 3 with an amount");

  // Of a measured habit the mark of a tick is two thousandths.
  EXPECT_EQ(logOf(tasks[2]), (Words{"20240101 completedManuallyFull 0.002", "20240102 missedManuallyFull 3"}));
  EXPECT_TRUE(tasks[2].record->task.isNegative);
  EXPECT_EQ(tasks[2].record->task.status, "archived");
  EXPECT_TRUE(contains(history.remarks.ofTask.at(2), "archived"));

  EXPECT_EQ(read(makeZip(folder / "a.zip", texts)).document, history.document);
  EXPECT_EQ(read(makeZip(folder / "b", nested)).document, history.document);
}

TEST_F(MovingIn, readsTheFormerExportOfLoopWhichHasNoHeadersAndNoTypes) {
  const LoadedHistory history = read(makeFolder(
      folder / "old",
      {{"Habits.csv",
        "Position,Name,Question,Description,NumRepetitions,Interval,Color,Mood\n001,Wake,,,2,3,#1,\n002,Run,,,1,1,#1,\n"
        "003,New,,,1,5,#1,\n"},
       {"001 Wake/Checkmarks.csv", "2018-01-04,3\n2018-01-03,2\n2018-01-02,1\n2018-01-01,0\n"},
       {"002 Run/Checkmarks.csv", "2018-01-02,0\n2018-01-01,2500\n"},
       {"003 New/Checkmarks.csv", ""}}));
  const auto& tasks = history.document.tasks;
  EXPECT_EQ(logOf(tasks.at(0)), (Words{"20180103 completedManuallyFull", "20180104 skippedManuallyFull"}));
  EXPECT_EQ(frequencyOfTask(tasks[0]), counted(Mode::numberOfDaysInWeek, 5));
  EXPECT_TRUE(contains(history.remarks.ofTask.at(0), "2 times in 3 days became 5 days a week"));
  EXPECT_EQ(logOf(tasks.at(1)), Words{"20180101 completedManuallyFull 2.5"});
  EXPECT_EQ(frequencyOfTask(tasks.at(2)).dayInterval, 5);
  EXPECT_TRUE(contains(history.remarks.ofAll, "the column \"Mood\" of Habits.csv has no place here"));
}

TEST_F(MovingIn, readsADatabaseOfLoopOfTheFirstAndOfTheLastLayout) {
  const std::string first =
      "PRAGMA user_version = 12; CREATE TABLE Habits (Id INTEGER PRIMARY KEY, archived INTEGER, color INTEGER, "
      "description"
      " TEXT, freq_den INTEGER, freq_num INTEGER, name TEXT, position INTEGER, reminder_days INTEGER, reminder_hour"
      " INTEGER, reminder_min INTEGER); CREATE TABLE Repetitions (Id INTEGER PRIMARY KEY, habit INTEGER, timestamp"
      " INTEGER); INSERT INTO Habits VALUES (5, 1, 0, 'Did you?', 7, 1, 'B', 1, 127, NULL, NULL), (9, 0, 0, '', 1, 1, "
      "'A',"
      " 0, 3, 21, 30); INSERT INTO Repetitions VALUES (1, 5, 1704067200000), (2, 5, 1704067200000), (3, 77, 0);";
  const LoadedHistory old = read(makeDatabase(folder / "old.db", first));
  ASSERT_EQ(old.document.tasks.size(), 2U);
  EXPECT_EQ(old.document.tasks[0].title, "A");
  const auto& reminder = old.document.tasks[0].record->reminders.at(0);
  EXPECT_EQ(reminder.timeOfDay, 21 * 3600 + 30 * 60);
  EXPECT_EQ(reminder.daysOfWeek, 64 + 1);  // its first two days are Saturday and Sunday
  EXPECT_EQ(logOf(old.document.tasks[1]), Words{"20240101 completedManuallyFull"});
  EXPECT_EQ(frequencyOfTask(old.document.tasks[1]), counted(Mode::numberOfDaysInWeek, 1));
  EXPECT_EQ(old.remarks.ofTask.at(1), (Words{"archived", "the question \"Did you?\" has no place here"}));
  EXPECT_TRUE(contains(old.remarks.ofAll, "1 entry belongs to no habit or no day; left out"));

  const std::string last =
      "PRAGMA user_version = 25; CREATE TABLE Habits (id INTEGER PRIMARY KEY, name TEXT, position INTEGER, archived"
      " INTEGER, type INTEGER, freq_num INTEGER, freq_den INTEGER, target_type INTEGER, target_value REAL, unit TEXT,"
      " question TEXT, description TEXT, uuid TEXT); CREATE TABLE Repetitions (id INTEGER PRIMARY KEY, habit INTEGER "
      "NOT"
      " NULL, timestamp INTEGER NOT NULL, value INTEGER NOT NULL, notes TEXT); INSERT INTO Habits VALUES (1, 'Run', 0, "
      "0,"
      " 1, 1, 7, 0, 10.0, 'km', '', 'x', '0123456789abcdef0123456789abcdef'); INSERT INTO Repetitions VALUES"
      " (1, 1, 1704067200000, 6000, 'slow'), (2, 1, 1704153600000, 4000, ''), (3, 1, 1704240000000, 1000, NULL),"
      " (4, 1, 1704672000000, 9000, ''), (5, 1, 1704758400000, 3, ''), (6, 1, 1704844800000, -1, 'away');";
  const LoadedHistory history = read(makeDatabase(folder / "new 50%.db", last));
  const HabitraJSONBackupTask& run = history.document.tasks.at(0);
  EXPECT_EQ(run.uniqueId.value().text(), "01234567-89AB-CDEF-0123-456789ABCDEF");
  EXPECT_EQ(logOf(run), (Words{"20240101 completedManuallyPartial 6 (0.6)", "20240102 completedManuallyFull 4",
                               "20240103 completedManuallyPartial 1 (0.1)", "20240108 completedManuallyPartial 9 (0.9)",
                               "20240109 skippedManuallyFull"}));
  EXPECT_EQ(notesOf(run), (Words{"20240101 slow", "20240110 away"}));
  EXPECT_EQ(frequencyOfTask(run).dayMode, Mode::aggregateOverWeek);
  EXPECT_EQ(frequencyOfTask(run).numPartialCompletions, 10);
  const auto files =
      std::distance(std::filesystem::directory_iterator(folder.path()), std::filesystem::directory_iterator());
  EXPECT_EQ(files, 2) << "a file was left beside the databases";
}

TEST_F(MovingIn, judgesAmountsByTheirDecimalsWhateverTheirSumIsInBinary) {
  const std::string tables =
      "PRAGMA user_version = 25; CREATE TABLE Habits (id INTEGER PRIMARY KEY, name TEXT, type INTEGER, freq_num "
      "INTEGER,"
      " freq_den INTEGER, target_type INTEGER, target_value REAL); CREATE TABLE Repetitions (id INTEGER PRIMARY KEY,"
      " habit INTEGER, timestamp INTEGER, value INTEGER);";
  const std::string habits =
      "INSERT INTO Habits VALUES (1, 'A', 1, 1, 7, 0, 0.8), (2, 'B', 1, 1, 7, 0, 0.8), (3, 'C', 1, 1, 1, 1, 0.3),"
      " (4, 'D', 1, 1, 7, 0, 1.0);";
  // 2024-01-01 is a Monday.
  const std::string days =
      "INSERT INTO Repetitions VALUES (1, 1, 1704067200000, 100), (2, 1, 1704153600000, 700),"
      " (3, 2, 1704067200000, 100), (4, 2, 1704153600000, 699), (5, 3, 1704067200000, 300), (6, 3, 1704153600000, 301),"
      " (7, 4, 1704067200000, 9223372036854775807), (8, 4, 1704153600000, 9223372036854775807);";
  const LoadedHistory history = read(makeDatabase(folder / "a.db", tables + habits + days));
  const auto& tasks = history.document.tasks;
  EXPECT_EQ(logOf(tasks.at(0)),
            (Words{"20240101 completedManuallyPartial 0.1 (0.125)", "20240102 completedManuallyFull 0.7"}));
  EXPECT_EQ(logOf(tasks.at(1)).at(1).find("20240102 completedManuallyPartial 0.699"), 0U);
  EXPECT_EQ(logOf(tasks.at(2)), (Words{"20240101 completedManuallyFull 0.3", "20240102 missedManuallyFull 0.301"}));
  EXPECT_EQ(logOf(tasks.at(3)).at(1).find("20240102 completedManuallyPartial"), 0U);
}

TEST_F(MovingIn, saysWhichRecordOfADayCountsWhereTwoAreNotAlike) {
  writeText(folder / "b.json", R"({"habits": [{"name": "Walk", "records": [
    {"day": "2024-01-03", "done": true}, {"day": "2024-01-03", "done": true, "text": "far"},
    {"day": "2024-01-02", "done": true, "text": "near"}, {"day": "2024-01-02", "done": false, "text": "no"}]}]})");
  const LoadedHistory beaver = read(folder / "b.json");
  EXPECT_EQ(logOf(beaver.document.tasks.at(0)), Words{"20240103 completedManuallyFull"});
  EXPECT_EQ(notesOf(beaver.document.tasks.at(0)), (Words{"20240102 near", "20240102 no", "20240103 far"}));
  EXPECT_EQ(beaver.remarks.ofTask.at(0).at(0),
            "recorded more than once and not alike, the last record counts: 2024-01-02");

  const LoadedHistory loop = read(makeDatabase(
      folder / "a.db",
      "PRAGMA user_version = 25; CREATE TABLE Habits (id INTEGER PRIMARY KEY, name TEXT); CREATE TABLE Repetitions (id"
      " INTEGER PRIMARY KEY, habit INTEGER, timestamp INTEGER, value INTEGER, notes TEXT); INSERT INTO Habits VALUES"
      " (1, 'A'); INSERT INTO Repetitions VALUES (1, 1, 1704067200000, 2, 'a'), (2, 1, 1704067200000, 0, 'b'),"
      " (3, 1, 1704153600000, 3, 'c'), (4, 1, 1704153600000, 3, 'c');"));
  EXPECT_EQ(logOf(loop.document.tasks.at(0)),
            (Words{"20240101 completedManuallyFull", "20240102 skippedManuallyFull"}));
  EXPECT_EQ(notesOf(loop.document.tasks.at(0)), (Words{"20240101 a", "20240101 b", "20240102 c"}));
  EXPECT_TRUE(contains(loop.remarks.ofTask.at(0),
                       "recorded more than once and not alike, the first record counts: 2024-01-01"));
}

TEST_F(MovingIn, readsTickmateWithTicksOfADayAndGroups) {
  const std::string script =
      "PRAGMA user_version = 13; CREATE TABLE tracks (_id INTEGER PRIMARY KEY, name TEXT, description TEXT, icon TEXT,"
      " enabled INTEGER, multiple_entries_per_day INTEGER, \"order\" INTEGER); CREATE TABLE ticks (_id INTEGER PRIMARY "
      "KEY,"
      " _track_id INTEGER, year INTEGER, month INTEGER, day INTEGER, hour INTEGER, minute INTEGER, second INTEGER,"
      " has_time_info INTEGER); CREATE TABLE groups (_id INTEGER PRIMARY KEY, name TEXT, description TEXT, \"order\""
      " INTEGER); CREATE TABLE track2groups (_id INTEGER PRIMARY KEY, _track_id INTEGER, _group_id INTEGER);"
      "INSERT INTO tracks VALUES (1, 'Tea', 'Had tea', 'i', 1, 1, 2), (2, 'Old', '', 'i', 0, 0, 1);"
      "INSERT INTO groups VALUES (6, 'Drinks', '', 0); INSERT INTO track2groups VALUES (1, 1, 6);"
      "INSERT INTO ticks VALUES (1, 1, 2024, 6, 31, 8, 5, 9, 1), (2, 1, 2024, 6, 31, 16, 0, 0, 0), (3, 2, 2024, 1, 29, "
      "0,"
      " 0, 0, 0);";
  const LoadedHistory history = read(makeDatabase(folder / "t.db", script));
  const auto& tasks = history.document.tasks;
  EXPECT_EQ(logOf(tasks.at(0)), Words{"20240229 completedManuallyFull"});
  EXPECT_EQ(tasks[0].record->task.status, "archived");
  EXPECT_EQ(logOf(tasks.at(1)),
            (Words{"20240731 completedManuallyFull 2024-07-31T06:05:09Z", "20240731 completedManuallyFull"}));
  const TaskCategoryEntity& group = history.document.categories.value().at(0);
  EXPECT_EQ(group.title, "Drinks");
  EXPECT_EQ(tasks[1].record->categories.at(0).text(), group.uniqueId);
  EXPECT_TRUE(contains(history.remarks.ofTask.at(1), "the description \"Had tea\" has no place here"));
}

TEST_F(MovingIn, readsHarshWhereTheLastLineOfADayCounts) {
  const LoadedHistory history = read(makeFolder(
      folder / "harsh",
      {{"habits", "# mine\r\n! Sport\r\nGym: 3/7  \r\nRun: 90\r\n\r\n! Rest\r\nSleep: 0\r\nRead: 1"},
       {"log",
        "# log\n2024-01-01 : Gym : n : tired : 0\n2024-01-01 : Gym : y : legs : arms : 1.5\n2024-01-02 : Gym : s\n\n"
        "2024-01-02 : Read : n :  : \n2024-01-03 : Read : y : a : b\n2023-05-05 : Gone : y : : 0"}}));
  const auto& tasks = history.document.tasks;
  ASSERT_EQ(tasks.size(), 5U);
  EXPECT_EQ(logOf(tasks[0]), (Words{"20240101 completedManuallyFull 1.5", "20240102 skippedManuallyFull"}));
  EXPECT_EQ(notesOf(tasks[0]), Words{"20240101 legs : arms"});
  EXPECT_EQ(frequencyOfTask(tasks[0]), counted(Mode::numberOfDaysInWeek, 3));
  EXPECT_EQ(frequencyOfTask(tasks[1]), counted(Mode::numberOfDaysInYear, 4));
  EXPECT_EQ(history.remarks.ofTask.at(1), Words{"once in 90 days became 4 days a year"});
  EXPECT_EQ(frequencyOfTask(tasks[2]), counted(Mode::numberOfDaysInYear, 1));
  EXPECT_EQ(logOf(tasks[3]), (Words{"20240102 missedManuallyFull", "20240103 completedManuallyFull"}));
  EXPECT_EQ(tasks[4].title, "Gone");
  EXPECT_TRUE(contains(history.remarks.ofTask.at(4), "archived"));
  EXPECT_TRUE(notesOf(tasks[4]).empty());
  EXPECT_EQ(history.document.categories.value().size(), 2U);
}

TEST_F(MovingIn, readsALogOfHarshOfWhichAnEditorCutTheBlanksAtTheEnds) {
  const LoadedHistory history =
      read(makeFolder(folder / "harsh", {{"habits", "Gym: 1"},
                                         {"log",
                                          "2024-01-01 : Gym : y :\n2024-01-02 : Gym : n :  :\r\n2024-01-03 : Gym : s : "
                                          "ill :\n2024-01-04 : Gym : y : at 5 :30 :b : 2"}}));
  const HabitraJSONBackupTask& gym = history.document.tasks.at(0);
  EXPECT_EQ(logOf(gym), (Words{"20240101 completedManuallyFull", "20240102 missedManuallyFull",
                               "20240103 skippedManuallyFull", "20240104 completedManuallyFull 2"}));
  EXPECT_EQ(notesOf(gym), (Words{"20240103 ill", "20240104 at 5 :30 :b"}));
}

TEST_F(MovingIn, readsBeaverhabitsWhereADayThatIsNotDoneSaysNothing) {
  writeText(folder / "b.json", R"({"habits": [
    {"name": "Walk", "id": "d1a9a7", "star": true, "tags": ["Out"], "status": "normal",
     "period": {"period_type": "M", "period_count": 1, "target_count": 8},
     "records": [{"day": "2024-02-29", "done": true, "text": "far"}, {"day": "2024-02-27", "done": false, "text": "rain"},
                 {"day": "2024-02-28", "done": true}]},
    {"name": "Old", "records": [], "status": "archive"}, {"name": "Never", "records": [], "status": "soft_delete"}]})");
  const LoadedHistory history = read(folder / "b.json");
  const auto& tasks = history.document.tasks;
  ASSERT_EQ(tasks.size(), 2U);
  EXPECT_FALSE(tasks[0].uniqueId);
  EXPECT_EQ(logOf(tasks[0]), (Words{"20240228 completedManuallyFull", "20240229 completedManuallyFull"}));
  EXPECT_EQ(notesOf(tasks[0]), (Words{"20240227 rain", "20240229 far"}));
  EXPECT_EQ(frequencyOfTask(tasks[0]), counted(Mode::numberOfDaysInMonth, 8));
  EXPECT_EQ(history.remarks.ofTask.at(0).at(0), "the star has no place here");
  EXPECT_EQ(tasks[1].record->task.status, "archived");
  EXPECT_EQ(history.remarks.ofAll, (Words{"Read as beaverhabits", "Never was deleted there; left out"}));

  std::ifstream plain(folder / "b.json", std::ios::binary);
  EXPECT_EQ(loadHistory(plain, "standard input", settings()).document, history.document);
  writeFile(folder / "b.json.zst", [](const ByteSink& sink) {
    // Another key comes first, with more in it than is looked at in one go.
    sink(R"({"order": [")" + std::string(10'000, 'x') + R"("], "habits": [{"name": "Walk", "records": []}]})");
  });
  std::ifstream compressed(folder / "b.json.zst", std::ios::binary);
  EXPECT_EQ(loadHistory(compressed, "standard input", settings()).document.tasks.at(0).title, "Walk");
  EXPECT_EQ(read(folder / "b.json.zst").form, LoadedHistory::Form::foreign);
}

TEST_F(MovingIn, tellsHowFarTheReadingHasCome) {
  const std::string loopTables =
      "PRAGMA user_version = 24; CREATE TABLE Habits (id INTEGER PRIMARY KEY, name TEXT); CREATE TABLE Repetitions (id"
      " INTEGER PRIMARY KEY, habit INTEGER, timestamp INTEGER); INSERT INTO Habits VALUES (1, 'A'); INSERT INTO"
      " Repetitions VALUES (1, 1, 0), (2, 1, 86400000);";
  const Texts loop{{"Habits.csv", "Name\nA\nB\n"}};
  writeText(folder / "b.json", R"({"habits": []})");
  const std::vector<std::filesystem::path> paths{
      makeDatabase(folder / "loop.db", loopTables), makeFolder(folder / "loop", loop), makeZip(folder / "l.zip", loop),
      makeFolder(folder / "harsh", {{"habits", "Gym: 1"}, {"log", "2024-01-01 : Gym : y\n2024-01-02 : Gym : y"}}),
      folder / "b.json"};
  for (const std::filesystem::path& path : paths) {
    std::vector<double> shares;
    (void)loadHistory(path, settings(), [&shares](std::string_view step, double share) {
      EXPECT_EQ(step, "reading");
      shares.push_back(share);
    });
    ASSERT_FALSE(shares.empty()) << path;
    EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end())) << path;
    EXPECT_EQ(shares.back(), 1.0) << path;
  }
}
