#pragma once

#include <HabitraModel/ContainerLocation.h>
#include <HabitraModel/Store/Store.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/StoreMaintenance.h>
#include <HabitraModel/SyncEvent.h>
#include <QZKit/Clock.h>

#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace habitra {

/// A container holds one store, opens it when it is first asked for, and tells its observers of the events of its
/// mirroring to a cloud.
///
/// May be called from any thread. Only what opens the store waits: for maintenance, and for another thread that opens.
class HabitraNSPersistentCloudKitContainer {
 public:
  /// `maintenance` is the gate that all containers of a home share.
  HabitraNSPersistentCloudKitContainer(ContainerLocation location, std::shared_ptr<StoreMaintenance> maintenance);
  /// A container by itself.
  HabitraNSPersistentCloudKitContainer(ContainerLocation location, std::shared_ptr<const qz::Clock> clock);
  ~HabitraNSPersistentCloudKitContainer();
  HabitraNSPersistentCloudKitContainer(const HabitraNSPersistentCloudKitContainer&) = delete;
  HabitraNSPersistentCloudKitContainer& operator=(const HabitraNSPersistentCloudKitContainer&) = delete;

  [[nodiscard]] ContainerLocation location() const;
  /// Closes the store as close() does; the next one is that of `location`.
  void setLocation(ContainerLocation location);

  /// The store, opened and made when there is none; see StoreMaintenance::open(). Throws StoreError.
  [[nodiscard]] std::shared_ptr<Store> store();
  /// The same, but null when there is no store yet: makes nothing.
  [[nodiscard]] std::shared_ptr<Store> storeForReading();
  [[nodiscard]] bool isOpen() const;
  /// Whether a store that this container holds, or has held, writes under this name; see Store::writer().
  [[nodiscard]] bool isOwnWriter(const std::string& writer) const;
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
  [[nodiscard]] std::shared_ptr<Store> present() const;
  [[nodiscard]] std::shared_ptr<Store> open(bool mayMake);
  void install(std::shared_ptr<Store> store);  // under the mutex

  const std::shared_ptr<StoreMaintenance> maintenance_;
  mutable std::mutex mutex_;  // never held while something is waited for
  ContainerLocation location_;
  std::shared_ptr<Store> store_;
  std::set<std::string> writers_;  ///< of every store there was
  std::vector<std::weak_ptr<const EventObserver>> observers_;
};

}  // namespace habitra
