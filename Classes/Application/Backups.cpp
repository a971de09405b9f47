#include <HabitraApp/Rooms.h>

#include <HabitraBackup/AutomaticBackups/AutomaticBackups.h>
#include <HabitraBackup/Document/SampleHistory.h>
#include <HabitraBackup/Exchange/TaskDataImporter.h>
#include <HabitraBackup/HabitraBackup.h>
#include <HabitraModel/Store/Files/HomeFolder.h>
#include <QZKit/Error.h>
#include <QZKit/UniqueID.h>
#include <QZLog/Log.h>

#include <fmt/format.h>
#include <algorithm>
#include <system_error>

namespace habitra {
namespace {

/// A folder of its own inside the home, which goes with this object and all that lies in it.
class WorkingFolder {
 public:
  WorkingFolder(const std::filesystem::path& home, qz::Moment now)
      : path_(makeHomeFolder(home) / fmt::format(".restoring-{}", qz::UniqueID::generate(now).text())) {
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
  const HabitraJSONBackup document = HabitraBackup::loadJson(file).document;
  RestoreOutcome outcome{.file = file, .tasks = document.tasks.size(), .entries = 0, .processed = {}};
  const WorkingFolder folder(rooms_->manager.home(), rooms_->now());
  const DataManager::ContainerLocation location = DataManager::storeLocation(folder.path());
  {
    DataManager manager(location, rooms_->clock);
    const auto context = manager.context();
    TaskDataImporter importer(*context, {.calendars = rooms_->calendars,
                                         .firstDayOfWeek = rooms_->settings(nullptr).get(settings::firstDayOfWeek),
                                         .now = rooms_->now()});
    const ImportReport report =
        importer.importBackup(document, ImportStrategy::overwrite, {.author = Author::app, .command = {}});
    outcome.entries = report.entries().added;
  }
  rooms_->closeReadingContext();
  rooms_->manager.restoreStore(*location.file());
  rooms_->widgets.reloadAllTimelines();
  outcome.processed = processAfter("what was restored");
  return outcome;
}

}  // namespace habitra
