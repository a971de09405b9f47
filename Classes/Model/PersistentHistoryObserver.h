#pragma once

#include <HabitraModel/HabitraNSPersistentCloudKitContainer.h>
#include <HabitraModel/PersistentHistoryFetcher.h>
#include <HabitraModel/Settings/KeyValueDefaults.h>
#include <HabitraModel/Store/Author.h>
#include <HabitraModel/Store/Files/StoreChangeWatcher.h>
#include <QZKit/SerialQueue.h>

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>

namespace habitra {

/// Keeps the view of one author current: reads what other writers have saved, in this process or another, as soon as it
/// is committed, and hands it on in order. What the container's own stores wrote is skipped, whichever author it bears.
///
/// How far it has read is kept in key-value defaults under "pho.token." and the target's raw value, and moved after
/// what was read has been handed on. So after a crash something may come a second time, but nothing is lost; while the
/// process lives each change comes once. A target that has never read here, or not for so long that the history no
/// longer reaches back, is told that everything has changed.
///
/// start(), stop() and destruction belong to one thread; processNow() to any that the functions below do not
/// wait for. Nothing runs before start() or processNow().
class PersistentHistoryObserver {
 public:
  static constexpr const char* queueLabel = "org.habitra.datamanager.history";

  /// What others have changed since the last time.
  struct Changes {
    bool everythingChanged = false;  ///< then nothing is named
    std::map<EntityNumber, std::set<ObjectID>> objects;

    /// Lets `context` see them: its objects take over what others have stored at the next read. REQUIRES: called on the
    /// queue of `context`.
    void merge(StoreContext& context) const { context.refresh(); }
  };

  /// Called with each transaction of another writer, oldest first. What it throws is logged; the transaction counts as
  /// handled.
  using Handler = std::function<void(const PersistentHistoryTransaction&)>;
  /// Called after the transactions of a batch were handled, to bring what they say into a context: it goes to the
  /// context's own queue and calls merge() there. The same goes for what it throws.
  using Merge = std::function<void(const Changes&)>;

  /// The functions are called on the history queue. They must not call the observer.
  PersistentHistoryObserver(Author target, std::shared_ptr<KeyValueDefaults> userDefaults,
                            std::shared_ptr<HabitraNSPersistentCloudKitContainer> persistentContainer, Handler handler,
                            Merge merge);
  /// Stops.
  ~PersistentHistoryObserver();
  PersistentHistoryObserver(const PersistentHistoryObserver&) = delete;
  PersistentHistoryObserver& operator=(const PersistentHistoryObserver&) = delete;

  [[nodiscard]] Author target() const { return target_; }
  [[nodiscard]] const std::shared_ptr<KeyValueDefaults>& userDefaults() const { return userDefaults_; }
  [[nodiscard]] const std::shared_ptr<HabitraNSPersistentCloudKitContainer>& persistentContainer() const {
    return persistentContainer_;
  }
  /// Where history is read; made when it is first asked for.
  [[nodiscard]] qz::SerialQueue& historyQueue();

  /// Reads what was missed, and from now on at every change of the store. Throws StoreError when there is no store, or
  /// the system gives no notifications.
  void start();
  /// Lets go of the store, and returns when nothing is under way any more. The next start() or processNow() goes on
  /// from here, in the store that the container then has.
  void stop();
  [[nodiscard]] bool isRunning() const { return watcher_ != nullptr; }

  /// Reads now what others have saved, and returns when it is handled. Failures are logged.
  void processNow();

 private:
  void wake();
  void process() noexcept;
  /// Gives false when there is nothing more to read.
  bool processBatch();
  void openContext();
  void handle(const PersistentHistory& history);
  void keepPosition();
  void trim();

  const Author target_;
  const std::shared_ptr<KeyValueDefaults> userDefaults_;
  const std::shared_ptr<HabitraNSPersistentCloudKitContainer> persistentContainer_;
  const Handler handler_;
  const Merge merge_;

  std::once_flag queueIsMade_;
  std::unique_ptr<qz::SerialQueue> historyQueue_;
  std::unique_ptr<StoreChangeWatcher> watcher_;
  std::atomic<bool> isWoken_{false};  ///< a task that has not begun to read is queued

  // The history queue's.
  std::unique_ptr<StoreContext> context_;  ///< none after stop()
  std::optional<HistoryToken> position_;   ///< up to where this process has handled
  bool positionIsKept_ = true;             ///< when it last was to be
  std::optional<qz::Moment> trimmed_;      ///< when this process last looked for history to let go of
};

}  // namespace habitra
