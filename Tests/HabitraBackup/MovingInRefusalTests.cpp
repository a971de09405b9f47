#include <HabitraBackup/Files/FileWriting.h>
#include <HabitraBackup/HistoryFile.h>
#include <QZKit/Error.h>

#include "ForeignFilesMade.h"

using namespace habitra;

namespace {

namespace fs = std::filesystem;

const ForeignHistorySettings settings{qz::Moment(), qz::TimeZone::utc(), qz::DayOfWeek::monday};

/// What the reading of a path is refused with, without the folder that the test made.
std::string refusal(const fs::path& path, const fs::path& folder) {
  try {
    (void)loadHistory(path, settings);
  } catch (const qz::Error& error) {
    std::string text = error.what();
    for (std::size_t at = text.find(folder.string()); at != std::string::npos; at = text.find(folder.string())) {
      text.erase(at, folder.string().size() + 1);
    }
    return text;
  }
  return "nothing was refused";
}

/// Makes the one member of an archive say, in both places, that it has a byte more than 256 MiB.
void sayLarger(const fs::path& archive) {
  constexpr std::string_view size("\x01\x00\x00\x10", 4);
  std::ifstream stream(archive, std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
  bytes.replace(22, size.size(), size);
  bytes.replace(bytes.find("PK\x01\x02") + 24, size.size(), size);
  writeText(archive, bytes);
}

const std::string habitsCSV = "Name,Type,FrequencyNumerator,FrequencyDenominator\nRead,YES_NO,1,1\n";
const std::string loopTables =
    "PRAGMA user_version = 24; CREATE TABLE Habits (id INTEGER PRIMARY KEY, name TEXT, freq_num INTEGER);"
    "CREATE TABLE Repetitions (id INTEGER PRIMARY KEY, habit INTEGER, timestamp INTEGER, value INTEGER);"
    "INSERT INTO Habits VALUES (1, 'Read', 1);";
const std::string tickmateTables =
    "PRAGMA user_version = 14; CREATE TABLE tracks (_id INTEGER PRIMARY KEY, name TEXT);"
    "CREATE TABLE ticks (_id INTEGER PRIMARY KEY, _track_id INTEGER, year INTEGER, month INTEGER, day INTEGER);"
    "INSERT INTO tracks VALUES (1, 'Tea');";

}  // namespace

class MovingInRefusal : public testing::Test {
 protected:
  std::string ofTexts(const Texts& texts) {
    const fs::path path = makeFolder(next(), texts);
    return refusal(path, path);
  }
  std::string ofText(const std::string& text) {
    const fs::path path = next();
    writeText(path, text);
    return refusal(path, folder.path());
  }
  std::string ofZip(const Texts& texts) { return refusal(makeZip(next(), texts), folder.path()); }
  std::string ofDatabase(const std::string& script) { return refusal(makeDatabase(next(), script), folder.path()); }

  /// A new name in the folder: "1", "2".
  fs::path next() { return folder / std::to_string(++count); }

  TemporaryFolder folder;
  int count = 0;
};

TEST_F(MovingInRefusal, saysWhatIsWrongWithATextAndWhere) {
  const auto marks = [this](const std::string& text) {
    return ofTexts({{"Habits.csv", habitsCSV}, {"001 Read/Checkmarks.csv", text}});
  };
  const std::string file = "001 Read/Checkmarks.csv: ";
  const std::string wantedDay = "a day of the calendar as 2024-01-31 expected";
  EXPECT_EQ(marks("Date,Value\n2023-02-29,NO\n"), file + "line 2, Date: \"2023-02-29\" found, " + wantedDay);
  EXPECT_EQ(marks("2024-01-01,7x\n").find(file + "line 1, Value: \"7x\" found, one of -1, 0"), 0U);
  EXPECT_EQ(marks("Date,Value\n2024-01-01,4\n").find(file + "line 2, Value: \"4\" found"), 0U);
  EXPECT_EQ(marks("Date,Value\n2024-01-01,2\n2024-01-01,2\n"),
            file + "line 3, Date: \"2024-01-01\" found, each day once expected");
  EXPECT_EQ(marks("Date,Value,Notes\n2024-01-01,2,\xFF\n"),
            file + "line 2, Notes: byte 0xFF is not text (UTF-8 expected)");
  EXPECT_EQ(ofTexts({{"Habits.csv", "Name,Interval\nRead,0\n"}}),
            "Habits.csv: line 2, Interval: \"0\" found, a whole number from 1 on expected");
  EXPECT_EQ(ofTexts({{"Habits.csv", "Position,Name\n1,Read\n001,Run\n"}}),
            "Habits.csv: line 3, Position: \"001\" found, each habit once expected");

  EXPECT_EQ(ofTexts({{"habits", "Gym 3/7"}, {"log", ""}}),
            "habits: line 1: \"Gym 3/7\" found, a name, \": \" and a frequency expected");
  EXPECT_EQ(ofTexts({{"habits", "Gym: 8/7"}, {"log", ""}}),
            "habits: line 1: \"8/7\" found, a frequency as 1, 7, 3/7 or 0 expected");
  EXPECT_EQ(ofTexts({{"habits", "Gym: 1"}}), "log: there is no such file, the log of harsh was expected");
  EXPECT_EQ(ofTexts({{"habits", "Gym: 1"}, {"log", "\n2024-13-01 : Gym : y"}}),
            "log: line 2: \"2024-13-01\" found, " + wantedDay);
  EXPECT_EQ(ofTexts({{"habits", "Gym: 1"}, {"log", "2024-12-01 : Gym : maybe"}}),
            "log: line 1: \"maybe\" found, y, n or s expected");
  EXPECT_EQ(ofTexts({{"habits", "\xC3("}}), "habits: line 1: byte 0xC3 is not text (UTF-8 expected)");
  EXPECT_EQ(ofTexts({{"habits", std::string(2'000'001, '\n')}}),
            "habits: more than 2000000 lines found, fewer were expected");

  EXPECT_EQ(ofText("{\"habits\": [{\"name\": \"A\", \"records\": [{\"day\": \"2024-02-30\"}]}]}").substr(2),
            ": habits, 1, records, 1, day: \"2024-02-30\" found, " + wantedDay);
}

TEST_F(MovingInRefusal, saysWhatIsWrongWithADatabaseAndWhere) {
  EXPECT_EQ(ofDatabase("CREATE TABLE a (b);").find("1: neither the tables Habits and Repetitions"), 0U);
  EXPECT_EQ(ofDatabase(loopTables + "PRAGMA user_version = 26;"),
            "2: layout 26 of the database found, 12 to 25 expected");
  EXPECT_EQ(ofDatabase(loopTables + "INSERT INTO Repetitions VALUES (8, 1, 1704067200001, 2);"),
            "3: Repetitions, row 8, timestamp: \"1704067200001\" found, midnight of a day in milliseconds since 1970 "
            "expected");
  EXPECT_EQ(ofDatabase(loopTables + "INSERT INTO Repetitions VALUES (8, 1, 'soon', 2);"),
            "4: Repetitions, row 8, timestamp: \"soon\" found, a whole number expected");
  EXPECT_EQ(ofDatabase(loopTables + "UPDATE Habits SET name = CAST(x'FF' AS TEXT);"),
            "5: Habits, row 1, name: \"\\xFF\" found, a text in UTF-8 expected");
  EXPECT_EQ(ofDatabase(tickmateTables + "INSERT INTO ticks VALUES (3, 1, 2023, 1, 29);"),
            "6: ticks, row 3, day: \"29\" found, a day of the month expected");
  // Nothing of a foreign schema is run.
  EXPECT_EQ(
      ofDatabase(loopTables + "DROP TABLE Repetitions; CREATE VIEW Repetitions AS WITH RECURSIVE a(b) AS (SELECT 1 "
                              "UNION ALL SELECT 1 FROM a) SELECT 1 AS id, 1 AS habit, 0 AS timestamp FROM a;")
          .find("7: neither the tables"),
      0U);

  const fs::path cut = makeDatabase(next(), loopTables);
  fs::resize_file(cut, 5000);
  EXPECT_EQ(refusal(cut, folder.path()).find("8: the database is damaged ("), 0U);
  const fs::path busy = makeDatabase(next(), loopTables);
  writeText(busy.string() + "-wal", "x");
  EXPECT_EQ(refusal(busy, folder.path()).find("9: changes stand in 9-wal"), 0U);
}

TEST_F(MovingInRefusal, refusesArchivesThatAreDamagedOrWouldOverflow) {
  EXPECT_EQ(ofZip({{"a.txt", "x"}}), "1: no Habits.csv found, the CSV export of Loop Habit Tracker was expected");
  EXPECT_EQ(ofZip({{"../Habits.csv", habitsCSV}}), "2: member 1 has a name that leads out of the archive");
  EXPECT_EQ(ofZip({{"Habits.csv", habitsCSV}, {"x/../../log", ""}}),
            "3: member 2 has a name that leads out of the archive");
  const fs::path bomb = makeZip(next(), {{"Habits.csv", habitsCSV}});
  sayLarger(bomb);
  EXPECT_EQ(refusal(bomb, folder.path()), "4: unpacked, more than 256 MiB found, less was expected");
  Texts many;
  for (int at = 0; at <= 10'000; ++at) many.emplace_back(std::to_string(at), "");
  EXPECT_EQ(ofZip(many), "5: 10001 members found, at most 10000 expected");

  const fs::path cut = makeZip(next(), {{"Habits.csv", habitsCSV}});
  fs::resize_file(cut, fs::file_size(cut) - 10);
  EXPECT_EQ(refusal(cut, folder.path()).find("6: the archive is damaged ("), 0U);
  const fs::path changed = makeZip(next(), {{"Habits.csv", habitsCSV}});
  std::fstream(changed, std::ios::in | std::ios::out | std::ios::binary).seekp(45) << "Q";
  EXPECT_EQ(refusal(changed, folder.path()).find("7: Habits.csv is damaged ("), 0U);
}

TEST_F(MovingInRefusal, saysWhatWasExpectedOfAPathThatLeadsElsewhere) {
  EXPECT_EQ(refusal(makeFolder(next(), {{"a", ""}}), folder.path())
                .find("1: the folder holds neither Habits.csv nor habits; the CSV export of Loop"),
            0U);
  EXPECT_EQ(ofText("{\"habits\": [").find("2: byte 13: no JSON of beaverhabits ("), 0U);
  EXPECT_EQ(ofText("{\"habits\": [{\"name\": 1}]}"), "3: habits, 1, name: 1 found, a text expected");
  EXPECT_EQ(ofText("{}"), "4: version: missing; every backup document has it");
}

TEST_F(MovingInRefusal, saysHowToGiveWhatWasGivenInPartOrAsAStream) {
  const std::string advice =
      ": this is one of the tables that the CSV export of Loop Habit Tracker consists of; give the folder or the "
      "archive that it lies in";
  EXPECT_EQ(ofText(habitsCSV), "1" + advice);
  EXPECT_EQ(ofText("Position,Name,Question,Description,NumRepetitions,Interval,Color\r\n"), "2" + advice);
  EXPECT_EQ(ofText("Date,Value,Notes\n2024-01-01,YES_MANUAL,\n"), "3" + advice);
  std::string ofAll = "Date,";
  while (ofAll.size() < 10'000) ofAll += "Read,";
  EXPECT_EQ(ofText(ofAll + "\n"), "4" + advice);
  // Columns of another history that only look alike.
  EXPECT_EQ(ofText("Name,title,page,FrequencyNumerator\n,A,,\n"), "nothing was refused");

  const std::string byName =
      ": an archive or a database of another tracker can only be read from a file that is named and not compressed";
  const fs::path database = makeDatabase(next(), loopTables);
  std::ifstream stream(database, std::ios::binary);
  try {
    (void)loadHistory(stream, "standard input", settings);
    ADD_FAILURE() << "nothing was refused";
  } catch (const qz::Error& error) {
    EXPECT_EQ(error.what(), "standard input" + byName);
  }
  writeFile(folder / "7.zst", [&](const ByteSink& sink) {
    std::ifstream plain(database, std::ios::binary);
    sink(std::string((std::istreambuf_iterator<char>(plain)), std::istreambuf_iterator<char>()));
  });
  EXPECT_EQ(refusal(folder / "7.zst", folder.path()), "7.zst" + byName);
}
