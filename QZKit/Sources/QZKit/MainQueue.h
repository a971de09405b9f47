#pragma once

#include <deque>
#include <functional>
#include <mutex>

namespace qz {

/// The queue that belongs to the executable: what is handed to it runs when the executable drains it, in order, on the
/// thread that drains. Completions of recorded changes arrive here.
///
/// async() may be called from any thread; drain() from one thread, which is the main one by definition.
class MainQueue {
 public:
  using Task = std::function<void()>;

  MainQueue() = default;
  MainQueue(const MainQueue&) = delete;
  MainQueue& operator=(const MainQueue&) = delete;

  /// Appends a task and returns at once.
  void async(Task task);

  /// Runs what is queued, and what that queues in turn, until nothing is left. An exception of a task reaches the
  /// caller; the tasks behind it stay queued.
  void drain();

 private:
  [[nodiscard]] Task takeFirst();

  std::mutex mutex_;
  std::deque<Task> tasks_;
};

}  // namespace qz
