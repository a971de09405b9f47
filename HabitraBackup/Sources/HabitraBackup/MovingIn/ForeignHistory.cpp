#include <HabitraBackup/MovingIn/ForeignFiles.h>
#include <HabitraBackup/MovingIn/ForeignFormats.h>
#include <HabitraBackup/MovingIn/ForeignHistory.h>
#include <HabitraBackup/MovingIn/ForeignText.h>
#include <QZKit/Error.h>
#include <QZKit/UTF8.h>

#include <string_view>

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

std::string summary(const ForeignHabitReport& habit) {
  std::string text = foreign_text::counted(habit.entries, "entry", "entries");
  std::string parts;
  const auto part = [&parts](std::size_t count, std::string_view one, std::string_view many) {
    if (count > 0) parts += (parts.empty() ? "" : ", ") + foreign_text::counted(count, one, many);
  };
  part(habit.skips, "skip", "skips");
  part(habit.misses, "miss", "misses");
  part(habit.amounts, "with an amount", "with an amount");
  if (!parts.empty()) text += " (" + parts + ")";
  if (habit.notes > 0) text += ", " + foreign_text::counted(habit.notes, "note", "notes");
  if (habit.isArchived) text += ", archived";
  return text;
}

}  // namespace

std::vector<std::string> ForeignHistory::lines() const {
  std::vector<std::string> lines{format + ": " + foreign_text::counted(habits.size(), "habit", "habits")};
  for (const ForeignHabitReport& habit : habits) {
    constexpr std::size_t longestTitle = 200;
    const std::string title = qz::utf8::printable(habit.title, longestTitle);
    lines.push_back(title + ": " + summary(habit));
    for (const std::string& remark : habit.remarks) lines.push_back(title + ": " + remark);
  }
  lines.insert(lines.end(), remarks.begin(), remarks.end());
  return lines;
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
