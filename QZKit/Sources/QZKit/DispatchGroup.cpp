#include <QZKit/DispatchGroup.h>
#include <QZKit/Trap.h>

namespace qz {

void DispatchGroup::enter() {
  const std::lock_guard lock(mutex_);
  ++underWay_;
}

void DispatchGroup::leave() {
  const std::lock_guard lock(mutex_);
  require(underWay_ > 0, "who leaves a group has entered it");
  if (--underWay_ > 0) return;
  for (auto& [queue, task] : std::exchange(waiting_, {})) queue->async(std::move(task));
}

void DispatchGroup::notify(MainQueue& queue, Task task) {
  const std::lock_guard lock(mutex_);
  if (underWay_ == 0)
    queue.async(std::move(task));
  else
    waiting_.emplace_back(&queue, std::move(task));
}

}  // namespace qz
