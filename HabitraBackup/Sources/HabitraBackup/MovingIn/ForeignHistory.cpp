#include <HabitraBackup/MovingIn/ForeignFiles.h>
#include <HabitraBackup/MovingIn/ForeignFormats.h>
#include <HabitraBackup/MovingIn/ForeignHistory.h>
#include <HabitraBackup/MovingIn/ForeignText.h>
#include <QZKit/Error.h>
#include <QZKit/UTF8.h>

#include <string_view>
#include <utility>

namespace habitra {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view wanted =
    "the export of Loop Habit Tracker (zip, folder or database), the database of Tickmate, the folder of harsh, or the "
    "JSON file of beaverhabits was expected";

[[noreturn]] void refuse(const fs::path& path, std::string_view what) {
  throw qz::Error(shownPath(path) + ": " + std::string(what) + "; " + std::string(wanted));
}

ForeignHistory readFolder(const fs::path& folder, const ForeignHistorySettings& settings) {
  if (fs::is_regular_file(folder / "Habits.csv")) return readLoopCSV(ForeignFiles::ofFolder(folder), settings);
  if (fs::is_regular_file(folder / "habits")) return readHarsh(ForeignFiles::ofFolder(folder), settings);
  refuse(folder, "the folder holds neither Habits.csv nor habits");
}

ForeignHistory readFile(const fs::path& file, const ForeignHistorySettings& settings) {
  const std::string start = beginningOfFile(file);
  if (start.empty()) refuse(file, "the file is empty");
  if (start.starts_with(std::string_view("SQLite format 3\0", 16))) return readForeignDatabase(file, settings);
  if (start.starts_with("PK\x03\x04") || start.starts_with("PK\x05\x06")) {
    return readLoopCSV(ForeignFiles::ofArchive(file), settings);
  }
  const std::size_t first =
      start.find_first_not_of(start.starts_with("\xEF\xBB\xBF") ? "\xEF\xBB\xBF \t\r\n" : " \t\r\n");
  if (first != std::string::npos && start[first] == '{') return readBeaver(file, settings);
  refuse(file, "the file begins with " + qz::utf8::quoted(start, 20) + ", which is of no known format");
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

ForeignHistory readForeignHistory(const fs::path& path, const ForeignHistorySettings& settings) try {
  const fs::file_status status = fs::status(path);
  if (status.type() == fs::file_type::not_found) throw qz::Error(shownPath(path) + ": there is no such file or folder");
  if (!fs::is_directory(status) && !fs::is_regular_file(status)) refuse(path, "this is neither a file nor a folder");
  ForeignHistory history = fs::is_directory(status) ? readFolder(path, settings) : readFile(path, settings);
  history.document.timestamp = settings.now;
  history.document.backupType = HabitraJSONBackupType::automated;
  history.document.backupDescription = "Converted from " + history.format;
  return history;
} catch (const fs::filesystem_error& error) {
  throw qz::Error(shownPath(error.path1()) + ": " + error.code().message());
}

}  // namespace habitra
