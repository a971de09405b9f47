#pragma once

#include <HabitraModel/ContainerLocation.h>
#include <HabitraModel/CoreDataMigrator.h>
#include <HabitraModel/Store/Store.h>
#include <QZKit/Clock.h>
#include <QZKit/NotificationCenter.h>
#include <QZKit/SerialQueue.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string_view>
#include <thread>

namespace habitra {

/// Posts a notification for work that goes on whatever a handler throws; that is logged.
void announce(qz::NotificationCenter& notifications, std::string_view name) noexcept;

/// The gate that a process opens its stores through, and closes while one of its threads moves, migrates or repairs
/// them. Other processes are kept out by MaintenanceLock, which whoever changes whole files takes in addition.
///
/// May be called from any thread.
class StoreMaintenance {
 public:
  static constexpr const char* maintenanceDidFinish = "dm.maintenanceDidFinish";

  /// `patience` is how long stores that others hold, and maintenance by others, are waited for.
  StoreMaintenance(std::shared_ptr<const qz::Clock> clock, std::chrono::milliseconds patience,
                   std::shared_ptr<qz::NotificationCenter> notifications);

  /// Whether a store is being moved, migrated or repaired.
  [[nodiscard]] bool isInMaintenanceMode() const;
  /// Whether a migrator is at work: one is brought up to date, put in another's place, or taken over from an early
  /// version.
  [[nodiscard]] bool isMigrating() const;

  /// Keeps other threads from opening stores, has this process close those that it knows of, runs `work`, and lets
  /// everybody go on, whatever `work` throws; then posts maintenanceDidFinish, when no other thread has to wait any
  /// more. May be nested within `work`; then only the end of the outermost is posted. Throws StoreError of kind `busy`
  /// when another thread's maintenance does not end in time.
  void perform(const std::function<void()>& work);

  /// Maintenance by a migrator.
  void migrate(const std::function<void(CoreDataMigrator&)>& work);

  /// Runs `work` while no other thread opens stores or maintains them. The same error.
  void underTurn(const std::function<void()>& work);

  /// What maintenance begins and ends with: letting go of stores, and taking up again what was interrupted. Both may be
  /// empty; a change waits for maintenance that is under way on another thread.
  void setInterruption(std::function<void()> begin, std::function<void()> end);

  /// Opens the store at a place when no maintenance is under way on another thread; one of an earlier layout is brought
  /// up to date first. Gives null when there is none and none may be made. Throws StoreError.
  [[nodiscard]] std::shared_ptr<Store> open(const ContainerLocation& location, bool mayMake);

 private:
  class Turn;

  [[nodiscard]] bool mayTakeTurn() const;
  [[nodiscard]] std::shared_ptr<Store> openNow(const ContainerLocation& location, bool mayMake) const;

  const std::shared_ptr<const qz::Clock> clock_;
  const std::chrono::milliseconds patience_;
  const std::shared_ptr<qz::NotificationCenter> notifications_;
  // The turn of the thread that opens or maintains. Not a recursive_timed_mutex: the thread sanitizer does not know it.
  std::mutex turn_;  // held for a look at the next two
  std::condition_variable turnEnded_;
  std::thread::id turnOf_;
  int nestedTurns_ = 0;  // of that thread
  // Of the thread that has the turn.
  bool hasFinished_ = false;  // a maintenance has, and nobody has been told yet
  std::function<void()> begin_;
  std::function<void()> end_;
  mutable qz::SerialQueue maintenanceQueue_;
  int inMaintenanceMode_ = 0;                           // nested; on the maintenance queue
  std::shared_ptr<CoreDataMigratorProtocol> migrator_;  // while it is at work; on the maintenance queue
};

}  // namespace habitra
