#pragma once

#include <HabitraModel/Health/ChangeSchedule.h>
#include <HabitraModel/Health/SampleFile.h>
#include <QZHealthKit/QZHealthStore.h>

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace habitra {

/// Those who are told of changes of the samples, on one thread of its own that the first of them starts. What they are
/// promised says QZHealthStore.
///
/// May be used from any thread, and by handlers.
class SampleObservers {
 public:
  using Handler = qz::QZHealthStore::ChangeHandler;

  /// REQUIRES: `file` outlives this object.
  explicit SampleObservers(SampleFile& file) : file_(file) {}
  /// Waits for a handler that is running. REQUIRES: not called by a handler.
  ~SampleObservers();
  SampleObservers(const SampleObservers&) = delete;
  SampleObservers& operator=(const SampleObservers&) = delete;

  /// Throws StoreError when the system gives no notifications, or the samples cannot be read.
  void start(const qz::QZHKObserverQuery& query, Handler handler);
  void stop(const qz::UniqueID& identifier) noexcept;

 private:
  using Time = ChangeSchedule::Time;

  struct Observer {
    qz::QZHKObserverQuery query;
    Handler handler;
    std::int64_t seen;  ///< the newest change that it knows of
    ChangeSchedule schedule;
  };

  void wake();
  [[nodiscard]] SampleTable::Changes readChanges();
  void run();
  /// Reads what has changed and hands it to the observers there are. Unlocks meanwhile.
  void note(std::unique_lock<std::mutex>& lock);
  /// Tells the observer. Unlocks meanwhile.
  void tell(std::unique_lock<std::mutex>& lock, const std::shared_ptr<Observer>& observer, Time now);
  [[nodiscard]] std::shared_ptr<Observer> firstDue(Time now) const;
  /// When the thread has something to do next, if nothing happens; none: never.
  [[nodiscard]] std::optional<Time> nextDue() const;

  SampleFile& file_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::map<qz::UniqueID, std::shared_ptr<Observer>> observers_;
  std::shared_ptr<Observer> running_;  // whose handler is running
  std::optional<Time> readAt_;         // when to read what has changed
  bool hasFailed_ = false;             // to read, since it last could
  bool isEnding_ = false;
  std::thread thread_;
  std::unique_ptr<StoreChangeWatcher> watcher_;
};

}  // namespace habitra
