#include <HabitraApp/Rooms.h>

#include <HabitraBackup/AutomaticBackups/AutomaticBackups.h>
#include <HabitraBackup/CSV/SampleHistory.h>
#include <HabitraBackup/Exchange/TaskDataImporter.h>
#include <HabitraBackup/Files/Leftovers.h>
#include <HabitraBackup/HistoryFile.h>
#include <HabitraModel/Store/Files/HomeFolder.h>
#include <QZKit/Error.h>
#include <QZKit/UniqueID.h>
#include <QZLog/Log.h>

#include <fmt/format.h>
#include <algorithm>
#include <string_view>
#include <system_error>

namespace habitra {
namespace {

/// A folder of its own inside the home, which goes with this object and all that lies in it.
class WorkingFolder {
 public:
  static constexpr std::string_view prefix = ".restoring-";

  /// Whether such a folder lies there.
  [[nodiscard]] static bool isOne(const std::filesystem::directory_entry& entry) {
    const std::string name = entry.path().filename().string();
    return name.starts_with(prefix) && qz::UniqueID::fromText(std::string_view(name).substr(prefix.size())) &&
           entry.symlink_status().type() == std::filesystem::file_type::directory;
  }

  WorkingFolder(const std::filesystem::path& home, qz::Moment now)
      : path_(makeHomeFolder(home) / fmt::format("{}{}", prefix, qz::UniqueID::generate(now).text())) {
    makePrivateFolder(path_);
  }
  ~WorkingFolder() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }
  WorkingFolder(const WorkingFolder&) = delete;
  WorkingFolder& operator=(const WorkingFolder&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  const std::filesystem::path path_;
};

/// Those of one habit begin with its title.
std::vector<std::string> allRemarks(const ImportReport& report) {
  std::vector<std::string> remarks = report.remarks;
  for (const ImportReport::Task& task : report.tasks)
    for (const std::string& remark : task.remarks) remarks.push_back(fmt::format("{}: {}", task.title, remark));
  return remarks;
}

}  // namespace

std::filesystem::path Application::writeSample(const std::filesystem::path& folder) {
  return writeSampleCsv(folder, today(), rooms_->calendars.ofDevice().timeZone);
}

std::vector<BackupSummary> Application::backups() {
  std::vector<BackupSummary> backups;
  for (const auto& [day, file] : rooms_->backups.all()) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    backups.push_back({.day = day, .file = file, .size = error ? 0 : size});
  }
  return backups;
}

RestoreOutcome Application::restore(qz::YYYYMMDD day) {
  const auto all = rooms_->backups.all();
  const auto found = std::ranges::find(all, day, &AutomaticBackups::Backup::day);
  if (found == all.end()) throw qz::Error(fmt::format("there is no backup of {}", day.debugDescription()));
  return restore(found->file);
}

RestoreOutcome Application::restore(const std::filesystem::path& file) {
  const LoadedHistory loaded = loadHistory(file,
                                           {.now = rooms_->now(),
                                            .timeZone = rooms_->calendars.ofDevice().timeZone,
                                            .firstDayOfWeek = qz::DayOfWeek::monday},
                                           progress_);
  if (loaded.form != LoadedHistory::Form::document)
    throw TaskDataExchangeError(TaskDataExchangeError::invalidFormat,
                                fmt::format("{} is no backup document; 'habitra import' brings it in", file.string()));
  RestoreOutcome outcome{.file = file, .processed = {}};
  removeLeftovers(rooms_->manager.home(), WorkingFolder::isOne);
  const WorkingFolder folder(rooms_->manager.home(), rooms_->now());
  const DataManager::ContainerLocation location = DataManager::storeLocation(folder.path());
  {
    DataManager manager(location, rooms_->clock);
    const auto context = manager.context();
    TaskDataImporter importer(*context, {.calendars = rooms_->calendars,
                                         .firstDayOfWeek = rooms_->settings(nullptr).get(settings::firstDayOfWeek),
                                         .now = rooms_->now(),
                                         .progress = progress_,
                                         .entriesAfterToday = EntriesAfterToday::taken});
    const ImportReport report = importer.importBackup(loaded.document, ImportStrategy::overwrite,
                                                      {.author = Author::app, .command = {}}, loaded.remarks);
    outcome.tasks = report.count(ImportReport::Outcome::added);
    outcome.entries = report.entries().added;
    outcome.remarks = allRemarks(report);
  }
  rooms_->closeReadingContext();
  outcome.kept = rooms_->manager.restoreStore(*location.file());
  rooms_->widgets.reloadAllTimelines();
  outcome.processed = processAfter("what was restored");
  return outcome;
}

}  // namespace habitra
