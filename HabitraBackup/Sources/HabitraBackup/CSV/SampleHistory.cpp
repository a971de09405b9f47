#include <HabitraBackup/CSV/SampleHistory.h>
#include <HabitraBackup/Files/ReplacementFile.h>
#include <QZKit/Error.h>
#include <QZLog/Log.h>

#include <array>
#include <chrono>
#include <string>
#include <system_error>

namespace habitra {

namespace {

struct SampleHabit {
  std::string_view title;
  std::string_view icon;
  std::int64_t page;
  std::chrono::minutes timeOfDay;  ///< when its entries are made
  std::string_view days;           ///< a sign a day, the oldest first; see entryOf()
};

using std::chrono::hours;
using std::chrono::minutes;

constexpr std::array<SampleHabit, 5> habits{{
    {"Read ten pages", "ic_book", 1, hours(21) + minutes(40), "xxxxxsxxxx.xxxxxxsxxxxxxx.xxxx"},
    {"Walk 8,000 steps", "sf_figure.walk", 1, hours(19) + minutes(5), "aaahaaaaahaaasaaaaaaahaaaaaaah"},
    {"Drink eight glasses", "sf_drop", 1, hours(18) + minutes(30), "xxhxxx-xxxhxxxxxhxxxx-xxxxxxhx"},
    {"Meditate", "ic_lotus", 2, hours(7) + minutes(15), "xtxxxxtxxx.xxxtxxxxxsxxxtxxxxx"},
    {"No sweets in the evening", "ic_candy", 2, hours(22), "xxxxmxxxxxxlxxxxxxxxmxxxxxlxxx"},
}};

struct SampleEntry {
  TaskLogEntryType type;
  std::optional<double> share;
};

/// What a sign says; none for a day without an entry.
std::optional<SampleEntry> entryOf(char sign) {
  using Type = TaskLogEntryType;
  switch (sign) {
    case 'x': return SampleEntry{Type::completedManuallyFull, 1.0};
    case '-': return SampleEntry{Type::completedManuallyPartial, 0.5};
    case 'a': return SampleEntry{Type::completedAutomaticallyFull, 1.0};
    case 'h': return SampleEntry{Type::completedAutomaticallyPartial, 0.75};
    case 't': return SampleEntry{Type::timerManual, 1.0};
    case 's': return SampleEntry{Type::skippedManuallyFull, std::nullopt};
    case 'm': return SampleEntry{Type::missedManuallyFull, std::nullopt};
    case 'l': return SampleEntry{Type::allowableMissManuallyFull, std::nullopt};
    default: return std::nullopt;
  }
}

std::filesystem::path storageLocation(const std::filesystem::path& folder) {
  std::error_code error;
  const auto location = folder.empty() ? std::filesystem::temp_directory_path(error) : folder;
  if (error || !std::filesystem::is_directory(location, error))
    throw qz::Error(folder.empty() ? "Unable to determine storage location" : folder.string() + " is not a folder");
  return location;
}

}  // namespace

HabitraJSONBackup sampleHistory(qz::YYYYMMDD today, const qz::TimeZone& timeZone) {
  HabitraJSONBackup document;
  document.timestamp = today.startOfDay(timeZone);
  document.backupDescription = "CSV sample";
  for (const SampleHabit& habit : habits) {
    HabitraJSONBackupTask task;
    task.title = habit.title;
    task.visualRepresentation = HabitraJSONBackupVisualRepresentation::fromText(habit.icon);
    task.pageNumber = TaskPageNumber::fromRawValue(habit.page);
    task.log.emplace();
    qz::YYYYMMDD day = today.add(-static_cast<std::int64_t>(habit.days.size()));
    for (const char sign : habit.days) {
      if (const auto said = entryOf(sign)) {
        HabitraJSONBackupTaskEntry entry;
        entry.entryType = said->type;
        entry.entryDate = day;
        entry.progress = said->share;
        entry.createdTimestamp = day.startOfDay(timeZone) + habit.timeOfDay;
        task.log->push_back(std::move(entry));
      }
      day = day.nextDay();
    }
    document.tasks.push_back(std::move(task));
  }
  return document;
}

std::filesystem::path writeSampleCsv(const std::filesystem::path& folder, qz::YYYYMMDD today,
                                     const qz::TimeZone& timeZone) {
  const std::filesystem::path file = storageLocation(folder) / sampleFileName;
  qz::log::info("Writing CSV sample to {}", file.string());
  // In a folder that all may write to, somebody may have put a link of that name there.
  ReplacementFile sample(file, ReplacementFile::Links::replaced);
  sample.write(sampleHistory(today, timeZone).csvString());
  sample.replace();
  return file;
}

}  // namespace habitra
