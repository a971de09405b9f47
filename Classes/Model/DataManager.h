#pragma once

#include <HabitraModel/CloudSync.h>
#include <HabitraModel/ContainerLocation.h>
#include <HabitraModel/HabitraNSPersistentCloudKitContainer.h>
#include <HabitraModel/PersistentHistoryObserver.h>
#include <HabitraModel/Settings/KeyValueDefaults.h>
#include <HabitraModel/Store/Author.h>
#include <HabitraModel/Store/Files/MaintenanceLock.h>
#include <HabitraModel/Store/Store.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/StoreMaintenance.h>
#include <QZKit/Clock.h>
#include <QZKit/NotificationCenter.h>
#include <QZKit/SerialQueue.h>
#include <QZKit/UniqueID.h>

#include <chrono>
#include <exception>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace habitra {

/// Owns the persistent store: the two containers that it can live in, the maintenance mode in which nobody works on it,
/// what is known of its mirroring to a cloud, and the observation of what other programs change.
///
/// Nothing is opened, read or started before it is asked for. May be called from any thread, but for what is said of
/// handlers.
class DataManager {
 public:
  using Author = habitra::Author;
  using ActiveSyncEvent = CloudSync::ActiveSyncEvent;
  using ContainerLocation = habitra::ContainerLocation;

  /// The files that a store can be kept in, inside the home.
  enum class StoreFile {
    cloudKit,    ///< "Habitra-CloudKit.sqlite", while cloud sync is on
    local,       ///< "Habitra-Local.sqlite", while it is off
    production,  ///< "Habitra-Production.sqlite", the single store of early versions; taken over once
  };
  [[nodiscard]] static std::string_view fileName(StoreFile file);

  // What notifications() tells of.
  static constexpr const char* maintenanceDidFinish = StoreMaintenance::maintenanceDidFinish;
  static constexpr const char* syncEventsUpdated = CloudSync::syncEventsUpdated;
  /// The active store has moved between cloud and local: contexts on the old one are to be let go of.
  static constexpr const char* databaseStorageLocationChanged = "dm.databaseStorageLocationChanged";

  /// The key of the shared defaults that says, as a text, which cloud database the store is mirrored to.
  static constexpr const char* cloudContainerKey = "dm.cloudContainer";
  /// The key that says, while the storage is switched, to which file. It is written before anything is moved, to see
  /// whether the defaults can be, and is for people: one that a crash has left means nothing to a program.
  static constexpr const char* switchingKey = "dm.switchingTo";

  /// Looks up an environment variable; none when it is not set.
  using Environment = std::function<std::optional<std::string>(const std::string& name)>;
  [[nodiscard]] static Environment processEnvironment();

  /// The home folder: $HABITRA_HOME, else $XDG_DATA_HOME/habitra, else ~/.local/share/habitra. An empty variable counts
  /// as not set, and so does an XDG_DATA_HOME that is not absolute. Throws qz::Error when no variable says it.
  [[nodiscard]] static std::filesystem::path homeDirectory(const Environment& environment);

  /// The local store in the home folder `home`.
  [[nodiscard]] static ContainerLocation storeLocation(const std::filesystem::path& home);

  /// `local` is where the local store lies. What belongs to it, the store of the cloud and the defaults, lies beside
  /// it; with a store in memory all of it is in memory.
  /// `patience` is how long maintenance waits for others to close the store.
  DataManager(const ContainerLocation& local, std::shared_ptr<const qz::Clock> clock,
              std::chrono::milliseconds patience = MaintenanceLock::defaultPatience);
  /// Waits for what its queues still have to do.
  ~DataManager();
  DataManager(const DataManager&) = delete;
  DataManager& operator=(const DataManager&) = delete;

  /// The folder that holds the store and what lies beside it; empty for a store in memory.
  [[nodiscard]] const std::filesystem::path& home() const { return home_; }
  [[nodiscard]] const qz::Clock& clock() const { return *clock_; }
  [[nodiscard]] KeyValueDefaults& standardDefaults() { return *standardDefaults_; }
  [[nodiscard]] KeyValueDefaults& sharedDefaults() { return *sharedDefaults_; }
  /// Handlers run on the thread that does what they are told of.
  [[nodiscard]] qz::NotificationCenter& notifications() { return *notifications_; }

  // Containers

  using Container = HabitraNSPersistentCloudKitContainer;
  [[nodiscard]] const std::shared_ptr<Container>& cloudPersistentContainer() const { return cloudPersistentContainer_; }
  [[nodiscard]] const std::shared_ptr<Container>& localPersistentContainer() const { return localPersistentContainer_; }

  /// Whether the cloud's store is the active one; off until somebody switches it on. Throws StoreError when the
  /// defaults cannot be read.
  [[nodiscard]] bool isCloudSyncOn() const;
  /// The container of the active store.
  [[nodiscard]] const std::shared_ptr<Container>& activeContainer() const;

  /// Sets a container up for a location, opens its store and tells `completion`, on the calling thread, what it failed
  /// with, or null. Closes what the container held before.
  void configureStoreDescription(Container& container, const ContainerLocation& location,
                                 const std::function<void(std::exception_ptr)>& completion);

  /// A context on the active store, which is made when there is none. Throws StoreError.
  [[nodiscard]] std::unique_ptr<StoreContext> context();

  /// A context to read from, or null when there is no store yet; makes nothing. Throws StoreError.
  [[nodiscard]] std::unique_ptr<StoreContext> contextForReading();

  /// `requestedId` when no task has it; otherwise logs "Received duplicate ID, generating" and gives a new one.
  [[nodiscard]] qz::UniqueID generateUniqueTaskId(StoreContext& context, const qz::UniqueID& requestedId) const;

  // Maintenance: the times in which nobody works on the store because it is moved, migrated or repaired. Observation of
  // changes pauses meanwhile. Contexts that somebody holds keep their store open, and what needs it alone then fails
  // with a StoreError that says so. A handler of observed changes must neither call this nor
  // open a store.

  [[nodiscard]] bool isInMaintenanceMode() const { return maintenance_->isInMaintenanceMode(); }
  /// Whether a store is being brought up to date or put in another's place.
  [[nodiscard]] bool isMigrating() const { return maintenance_->isMigrating(); }

  /// Closes both stores, runs `work` while no other thread can open them, and posts maintenanceDidFinish; see
  /// StoreMaintenance::perform().
  void performMaintenance(const std::function<void()>& work) { maintenance_->perform(work); }

  /// Makes the cloud's store the active one (`cloudContainer` names the database it is mirrored to), or the local one
  /// (none). What is stored goes along; the store that was active stays in its file as it was, and one that lay at the
  /// new place before is kept among the backups. Does nothing when it is so already. Posts
  /// databaseStorageLocationChanged. Throws StoreError when another program has the store open and does not close it in
  /// time, the store cannot be copied, or it is in memory. Then the active store and the choice are as before; where
  /// the very last step fails, to write the choice down, the other place has the copy already, and the next switch
  /// keeps that among the backups.
  void switchStorage(const std::optional<std::string>& cloudContainer);

  /// Puts the store of another file in the place of the active one, which is kept among the backups; gives the file
  /// there, none where there was no store. The same errors, and one when `file` is not a store that can be used.
  std::optional<std::filesystem::path> restoreStore(const std::filesystem::path& file);

  /// Joins tasks that mirroring has doubled and gives new identifiers to those that only bear the same one. Gives the
  /// number of rows that it changed. No person's command: nothing that undo would take back. Throws StoreError.
  std::int64_t deduplicate();

  // Mirroring

  [[nodiscard]] CloudSync& cloudSync() { return *cloudSync_; }
  /// Begins to observe the events of the cloud's container; what an import has brought is searched for doubles.
  void setupImportObserver();

  // Changes by others

  /// Begins to keep the view of `target` current: what other programs, or other stores of this one, have saved in the
  /// active store since the last time is handed to `handler`, and then to `merge` in one; see
  /// PersistentHistoryObserver. Replaces an earlier observation. Throws StoreError.
  void observeChanges(Author target, PersistentHistoryObserver::Handler handler,
                      PersistentHistoryObserver::Merge merge);
  void stopObservingChanges();

 private:
  [[nodiscard]] std::shared_ptr<Store> activeStore(bool mayMake);
  void adoptEarlyStore();
  void describe(Container& container, const ContainerLocation& location);
  void requireFiles() const;
  [[nodiscard]] std::optional<std::string> cloudContainer() const;
  void beginInterruption();
  void endInterruption() noexcept;
  void startObserving();
  /// Gives false when the store was in its place already. REQUIRES: maintenance.
  bool moveStore(CoreDataMigrator& migrator, bool toCloud,
                 const std::function<void(KeyValueDefaults::Values&)>& choose);
  void forgetSwitching() noexcept;

  const std::filesystem::path home_;
  const std::shared_ptr<const qz::Clock> clock_;
  const std::shared_ptr<KeyValueDefaults> standardDefaults_;
  const std::shared_ptr<KeyValueDefaults> sharedDefaults_;
  const std::shared_ptr<qz::NotificationCenter> notifications_;
  const std::shared_ptr<StoreMaintenance> maintenance_;
  const std::shared_ptr<Container> cloudPersistentContainer_;
  const std::shared_ptr<Container> localPersistentContainer_;
  const std::shared_ptr<CloudSync> cloudSync_;

  /// What to observe, whether or not it is under way.
  struct Observation {
    Author target;
    PersistentHistoryObserver::Handler handler;
    PersistentHistoryObserver::Merge merge;
  };
  // Under the turn of maintenance.
  std::optional<Observation> observation_;
  std::unique_ptr<PersistentHistoryObserver> observer_;
};

}  // namespace habitra
