#include <HabitraModel/CoreDataMigrator.h>
#include <HabitraModel/DataManager.h>
#include <HabitraModel/Settings/Settings.h>
#include <HabitraModel/Store/StoreError.h>
#include <HabitraModel/Tasks/Deduplication/TaskDeduplicator.h>
#include <QZLog/Log.h>

#include <exception>
#include <utility>

// What changes whole stores.
namespace habitra {

void DataManager::requireFiles() const {
  if (home_.empty())
    throw StoreError(StoreError::Kind::failed, "a store in memory cannot be moved; open one in a folder instead");
}

void DataManager::switchStorage(const std::optional<std::string>& cloudContainer) {
  requireFiles();
  const bool toCloud = cloudContainer.has_value();
  if (isCloudSyncOn() == toCloud && this->cloudContainer() == cloudContainer) return;
  (void)activeStore(true);  // an early store is taken over, a missing one made: there is always something to take along
  const auto choose = [&](KeyValueDefaults::Values& values) {
    values.insert_or_assign(std::string(settings::cloudSync.key), settings::cloudSync.encode(toCloud));
    values.erase(switchingKey);
    values.erase(cloudContainerKey);
    if (toCloud) values[cloudContainerKey] = *cloudContainer;
  };
  bool hasMoved = false;
  maintenance_->migrate([&](CoreDataMigrator& migrator) { hasMoved = moveStore(migrator, toCloud, choose); });
  if (hasMoved) announce(*notifications_, databaseStorageLocationChanged);
}

bool DataManager::moveStore(CoreDataMigrator& migrator, bool toCloud,
                            const std::function<void(KeyValueDefaults::Values&)>& choose) {
  const std::string_view from = fileName(toCloud ? StoreFile::local : StoreFile::cloudKit);
  const std::string_view to = fileName(toCloud ? StoreFile::cloudKit : StoreFile::local);
  const auto maintenance = migrator.beginMaintenance(home_);
  // Only now nobody else can choose, or write to what is to be copied.
  const bool mustMove = isCloudSyncOn() != toCloud;
  try {
    if (mustMove) {
      sharedDefaults_->set(switchingKey, std::string(to));
      migrator.replaceStore(home_ / to, home_ / from, *maintenance);
    }
    // Last, so that the store that is chosen is always there.
    sharedDefaults_->update(choose);
  } catch (...) {
    forgetSwitching();
    throw;
  }
  return mustMove;
}

void DataManager::forgetSwitching() noexcept {
  try {
    sharedDefaults_->remove(switchingKey);
  } catch (const std::exception& error) {
    qz::log::warning("That the storage was to be switched stays in the defaults: {}", error.what());
  }
}

std::optional<std::filesystem::path> DataManager::restoreStore(const std::filesystem::path& file) {
  requireFiles();
  if (!isCloudSyncOn()) adoptEarlyStore();
  std::optional<std::filesystem::path> kept;
  maintenance_->migrate([&](CoreDataMigrator& migrator) {
    const auto maintenance = migrator.beginMaintenance(home_);
    kept = migrator.replaceStore(*activeContainer()->location().file(), file, *maintenance);
  });
  return kept;
}

std::int64_t DataManager::deduplicate() {
  const auto unit = context();
  TaskDeduplicator(qz::UniqueID::generate(clock_->now())).deduplicate(*unit);
  const SaveResult saved = unit->save({.author = Author::app});
  return saved.inserted + saved.updated + saved.removed;
}

}  // namespace habitra
