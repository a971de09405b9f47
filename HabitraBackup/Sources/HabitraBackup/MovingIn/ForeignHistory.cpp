#include <HabitraBackup/Files/FileReading.h>
#include <HabitraBackup/MovingIn/ForeignDatabase.h>
#include <HabitraBackup/MovingIn/ForeignFormats.h>
#include <HabitraBackup/MovingIn/ForeignHistory.h>
#include <HabitraBackup/MovingIn/ForeignLimits.h>
#include <HabitraBackup/MovingIn/ForeignText.h>
#include <QZKit/Error.h>

#include <functional>
#include <string_view>
#include <utility>

namespace habitra {

namespace {

namespace fs = std::filesystem;

/// What was read, as a document that is made now. What the file system refuses bears the name of the file.
ForeignHistory converted(const ForeignHistorySettings& settings, const std::function<ForeignHistory()>& read) try {
  ForeignHistory history = read();
  history.document.timestamp = settings.now;
  history.document.backupType = HabitraJSONBackupType::automated;
  history.document.backupDescription = "Converted from " + history.format;
  return history;
} catch (const fs::filesystem_error& error) {
  throw qz::Error(shownPath(error.path1()) + ": " + error.code().message());
}

/// "among them 2 skips, 1 miss, 3 with an amount"; empty where there are none.
std::string kinds(const ForeignHabitReport& habit) {
  std::string text;
  const auto add = [&text](std::size_t count, std::string_view one, std::string_view many) {
    if (count > 0) text += (text.empty() ? "among them " : ", ") + foreign_text::counted(count, one, many);
  };
  add(habit.skips, "skip", "skips");
  add(habit.misses, "miss", "misses");
  add(habit.amounts, "with an amount", "with an amount");
  return text;
}

}  // namespace

ImportRemarks ForeignHistory::importRemarks() const {
  ImportRemarks result{.ofAll = {"Read as " + format}, .ofTask = {}};
  result.ofAll.insert(result.ofAll.end(), remarks.begin(), remarks.end());
  for (std::size_t task = 0; task < habits.size(); ++task) {
    const ForeignHabitReport& habit = habits[task];
    std::vector<std::string> said;
    if (std::string ofEntries = kinds(habit); !ofEntries.empty()) said.push_back(std::move(ofEntries));
    if (habit.isArchived) said.emplace_back("archived");
    said.insert(said.end(), habit.remarks.begin(), habit.remarks.end());
    if (!said.empty()) result.ofTask.emplace(task, std::move(said));
  }
  return result;
}

ForeignHistory readForeignFolder(const fs::path& folder, const ForeignHistorySettings& settings,
                                 const ExchangeProgress& progress) {
  return converted(settings, [&] {
    if (fs::is_regular_file(folder / "Habits.csv"))
      return readLoopCSV(ForeignFiles::ofFolder(folder), settings, progress);
    if (fs::is_regular_file(folder / "habits")) return readHarsh(ForeignFiles::ofFolder(folder), settings, progress);
    throw qz::Error(shownPath(folder) +
                    ": the folder holds neither Habits.csv nor habits; the CSV export of Loop Habit Tracker or the "
                    "folder of harsh was expected");
  });
}

ForeignHistory readForeignArchive(const fs::path& archive, const ForeignHistorySettings& settings,
                                  const ExchangeProgress& progress) {
  return converted(settings, [&] { return readLoopCSV(ForeignFiles::ofArchive(archive), settings, progress); });
}

ForeignHistory readForeignDatabase(const fs::path& file, const ForeignHistorySettings& settings,
                                   const ExchangeProgress& progress) {
  return converted(settings, [&] {
    const ForeignDatabase database(file);
    if (database.hasTable("Habits") && database.hasTable("Repetitions"))
      return readLoopDatabase(database, settings, progress);
    if (database.hasTable("tracks") && database.hasTable("ticks")) return readTickmate(database, settings, progress);
    if (database.hasTable("TaskLogEntryEntity"))
      database.fail("this is a store of Habitra itself; export from it (--home with its folder) and import that");
    database.fail(
        "neither the tables Habits and Repetitions of Loop Habit Tracker nor tracks and ticks of Tickmate are in it");
  });
}

ForeignHistory readForeignJSON(const ByteSource& source, const std::string& name,
                               const ForeignHistorySettings& settings) {
  return converted(settings,
                   [&] { return readBeaver(contentOf(source, name, foreign_limits::largestJSON), name, settings); });
}

}  // namespace habitra
