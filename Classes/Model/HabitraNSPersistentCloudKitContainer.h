#pragma once

#include <HabitraModel/ContainerLocation.h>
#include <HabitraModel/Store/Store.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/SyncEvent.h>
#include <QZKit/Clock.h>

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace habitra {

/// A container holds one store, opens it when it is first asked for, and tells its observers of the events of its
/// mirroring to a cloud.
///
/// May be called from any thread.
class HabitraNSPersistentCloudKitContainer {
 public:
  HabitraNSPersistentCloudKitContainer(ContainerLocation location, std::shared_ptr<const qz::Clock> clock);
  ~HabitraNSPersistentCloudKitContainer();
  HabitraNSPersistentCloudKitContainer(const HabitraNSPersistentCloudKitContainer&) = delete;
  HabitraNSPersistentCloudKitContainer& operator=(const HabitraNSPersistentCloudKitContainer&) = delete;

  /// What brings the store in a file of an earlier layout up to date, when one is met. Without it such a store is
  /// refused.
  using Migration = std::function<void(const std::filesystem::path& file)>;
  void setMigration(Migration migration);

  [[nodiscard]] ContainerLocation location() const;
  /// Closes the store as close() does; the next one is that of `location`.
  void setLocation(ContainerLocation location);

  /// The store, opened and made when there is none. A store of an earlier layout is brought up to date first. Throws
  /// StoreError.
  [[nodiscard]] std::shared_ptr<Store> store();
  /// The same, but null when there is no store yet: makes nothing.
  [[nodiscard]] std::shared_ptr<Store> storeForReading();
  [[nodiscard]] bool isOpen() const;
  /// Lets go of the store; contexts that work on it keep it open.
  void close();

  /// A context for whatever queue it is handed to. Throws StoreError.
  [[nodiscard]] std::unique_ptr<StoreContext> newBackgroundContext();
  /// The same for reading, or null when there is no store yet; makes nothing.
  [[nodiscard]] std::unique_ptr<StoreContext> newReadingContext();

  using EventObserver = std::function<void(const SyncEvent&)>;
  /// Observes until the token is let go of.
  [[nodiscard]] std::shared_ptr<void> addObserver(EventObserver observer);
  /// Tells the observers, on the calling thread; for whoever mirrors the store.
  void post(const SyncEvent& event);

 private:
  [[nodiscard]] std::shared_ptr<Store> open(bool mayMake);
  /// Gives null when there is no store and none may be made. REQUIRES: the mutex is held.
  [[nodiscard]] std::shared_ptr<Store> openAt(const ContainerLocation& location, bool mayMake) const;

  std::shared_ptr<const qz::Clock> clock_;
  mutable std::mutex mutex_;
  ContainerLocation location_;
  Migration migration_;
  std::shared_ptr<Store> store_;
  std::vector<std::weak_ptr<const EventObserver>> observers_;
};

}  // namespace habitra
