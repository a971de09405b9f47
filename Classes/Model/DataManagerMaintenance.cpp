#include <HabitraModel/DataManager.h>
#include <HabitraModel/Settings/Settings.h>
#include <HabitraModel/Store/StoreError.h>
#include <HabitraModel/Tasks/TaskDeduplicator.h>
#include <QZLog/Log.h>

#include <utility>

// Maintenance: the times in which nobody works on the store because it is moved, migrated or repaired.
namespace habitra {

bool DataManager::isInMaintenanceMode() const {
  return maintenanceQueue_.sync([this] { return inMaintenanceMode_ > 0; });
}

bool DataManager::isMigrating() const {
  return maintenanceQueue_.sync([this] { return migrator_ != nullptr; });
}

void DataManager::performMaintenance(const std::function<void()>& work) {
  maintenanceQueue_.sync([this] { ++inMaintenanceMode_; });
  std::exception_ptr failure;
  try {
    localPersistentContainer_->close();
    cloudPersistentContainer_->close();
    work();
  } catch (...) {
    failure = std::current_exception();
  }
  const bool hasEnded = maintenanceQueue_.sync([this] { return --inMaintenanceMode_ == 0; });
  if (hasEnded) notifications_.post(maintenanceDidFinish);
  if (failure) std::rethrow_exception(failure);
}

void DataManager::bringUpToDate(const std::filesystem::path& file) {
  performMaintenance([&] {
    const auto migrator = std::make_shared<CoreDataMigrator>(clock_, CoreDataMigrator::Options{.patience = patience_});
    maintenanceQueue_.sync([&] { migrator_ = migrator; });
    std::exception_ptr failure;
    try {
      migrator->migrate(file);
    } catch (...) {
      failure = std::current_exception();
    }
    maintenanceQueue_.sync([this] { migrator_.reset(); });
    if (failure) std::rethrow_exception(failure);
  });
}

void DataManager::requireFiles() const {
  if (home_.empty())
    throw StoreError(StoreError::Kind::failed, "a store in memory cannot be moved; open one in a folder instead");
}

void DataManager::switchStorage(const std::optional<std::string>& cloudContainer) {
  requireFiles();
  const bool toCloud = cloudContainer.has_value();
  bool hasMoved = false;
  performMaintenance([&] {
    CoreDataMigrator migrator(clock_, {.patience = patience_});
    const auto maintenance = migrator.beginMaintenance(home_);
    // Only now nobody else can choose, or write to what is to be copied.
    if (isCloudSyncOn() != toCloud) {
      const auto from = *activeContainer()->location().file();
      const auto to = home_ / fileName(toCloud ? StoreFile::cloudKit : StoreFile::local);
      if (std::filesystem::exists(from)) migrator.replaceStore(to, from, *maintenance);
      hasMoved = true;
    }
    sharedDefaults_->update([&](KeyValueDefaults::Values& values) {
      values.insert_or_assign(std::string(settings::cloudSync.key), settings::cloudSync.encode(toCloud));
      if (toCloud)
        values[cloudContainerKey] = *cloudContainer;
      else
        values.erase(cloudContainerKey);
    });
  });
  if (hasMoved) notifications_.post(databaseStorageLocationChanged);
}

void DataManager::restoreStore(const std::filesystem::path& file) {
  requireFiles();
  performMaintenance([&] {
    CoreDataMigrator(clock_, {.patience = patience_}).replaceStore(*activeContainer()->location().file(), file);
  });
}

std::int64_t DataManager::deduplicate() {
  const auto unit = context();
  TaskDeduplicator(qz::UniqueID::generate(clock_->now())).deduplicate(*unit);
  const SaveResult saved = unit->save({.author = Author::app});
  return saved.inserted + saved.updated + saved.removed;
}

}  // namespace habitra
