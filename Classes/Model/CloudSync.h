#pragma once

#include <HabitraModel/CloudContainer.h>
#include <HabitraModel/HabitraNSPersistentCloudKitContainer.h>
#include <HabitraModel/SyncEvent.h>
#include <QZKit/Clock.h>
#include <QZKit/NotificationCenter.h>
#include <QZKit/SerialQueue.h>
#include <QZKit/UniqueID.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>

namespace habitra {

/// What is known of the mirroring of a store to a cloud: the events under way, the last failure, the person's account.
///
/// May be called from any thread. Events and the account are worked on in the cloud queue; what is asked for is told at
/// once, as it stands.
class CloudSync : public std::enable_shared_from_this<CloudSync> {
 public:
  static constexpr const char* syncEventsUpdated = "dm.syncEventsUpdated";

  enum class ActiveSyncEvent {
    importing,      ///< changes come in
    exporting,      ///< changes go out
    deduplicating,  ///< what came in is searched for doubles
  };

  explicit CloudSync(std::shared_ptr<qz::NotificationCenter> notifications);

  /// Begins to observe the events of `container`. Each is logged and kept while it is under way; syncEventsUpdated is
  /// posted on the cloud queue whenever that changes. After an import that has ended well `deduplicate` is called
  /// there.
  void setupImportObserver(HabitraNSPersistentCloudKitContainer& container, std::function<void()> deduplicate);
  /// Ends it, and returns when nothing of it runs any more. REQUIRES: not called on the cloud queue.
  void stop();

  [[nodiscard]] std::map<qz::UniqueID, SyncEvent> currentSyncEvents() const;
  [[nodiscard]] std::set<qz::UniqueID> currentImportDeduplicationEvents() const;
  [[nodiscard]] std::set<ActiveSyncEvent> activeSyncEvents() const;
  /// The last failure and its moment, until an import or export succeeds.
  [[nodiscard]] std::optional<std::string> currentSyncError() const;
  [[nodiscard]] std::optional<qz::Moment> currentSyncErrorDate() const;
  /// Whether mirroring has failed since this object was made.
  [[nodiscard]] bool hasCapturedCKError() const;

  /// Follows the account of a cloud database from now on, or of none.
  void setCloudContainer(std::shared_ptr<CloudContainer> container);
  /// As last heard of; could not be determined while there is no cloud database.
  [[nodiscard]] CloudAccountStatus ckStatus() const;

  /// Returns when all that has been posted so far is worked on. REQUIRES: not called on the cloud queue.
  void drain() { ckQueue_.drain(); }

 private:
  // On the cloud queue.
  void handle(const SyncEvent& event);
  void keep(const SyncEvent& event);
  void deduplicateAfter(const SyncEvent& import);
  void readAccountStatus();

  const std::shared_ptr<qz::NotificationCenter> notifications_;

  mutable std::mutex mutex_;
  // Under the mutex.
  std::map<qz::UniqueID, SyncEvent> currentSyncEvents_;
  std::set<qz::UniqueID> currentImportDeduplicationEvents_;
  std::optional<qz::Moment> currentSyncErrorDate_;
  std::optional<std::string> currentSyncError_;
  bool hasCapturedCKError_ = false;
  std::shared_ptr<void> eventChangedObserver_;
  std::shared_ptr<CloudContainer> ckContainer_;
  std::shared_ptr<void> ckObserver_;
  CloudAccountStatus ckStatus_ = CloudAccountStatus::couldNotDetermine;

  std::function<void()> deduplicate_;  // on the cloud queue
  qz::SerialQueue ckQueue_;            // last: joined before what its tasks use goes
};

}  // namespace habitra
