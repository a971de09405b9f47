#pragma once

#include <QZKit/MainQueue.h>

#include <functional>
#include <mutex>
#include <utility>
#include <vector>

namespace qz {

/// Counts pieces of work that are under way, wherever they are, and hands a task to a queue once none is.
///
///     const auto group = std::make_shared<DispatchGroup>();
///     group->enter();
///     upload([group] { group->leave(); });
///     group->notify(mainQueue, [] { … });
///
/// All functions may be called from any thread.
class DispatchGroup {
 public:
  using Task = std::function<void()>;

  DispatchGroup() = default;
  DispatchGroup(const DispatchGroup&) = delete;
  DispatchGroup& operator=(const DispatchGroup&) = delete;

  /// One piece more is under way.
  void enter();
  /// One has ended. REQUIRES: an enter() that none has answered yet.
  void leave();
  /// Hands `task` to `queue` when nothing is under way, at once if that is now. The queue must live until then.
  void notify(MainQueue& queue, Task task);

 private:
  std::mutex mutex_;
  int underWay_ = 0;
  std::vector<std::pair<MainQueue*, Task>> waiting_;
};

}  // namespace qz
