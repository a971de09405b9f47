#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace qz {

/// The queue that belongs to the executable: what is handed to it runs when the executable drains it, in order, on the
/// thread that drains. Completions of recorded changes arrive here.
///
/// async() and stop() may be called from any thread; drain() and run() from one thread, which is the main one by
/// definition.
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

  /// The same, and waits for more, until stop() is called: the life of a program that stays. What is queued when it is
  /// stopped stays queued.
  void run();
  /// Lets run() end after the task that is running, or at once when it is called next.
  void stop();

 private:
  [[nodiscard]] Task takeFirst();

  std::mutex mutex_;
  std::condition_variable isWoken_;
  std::deque<Task> tasks_;
  bool isStopped_ = false;
};

}  // namespace qz
