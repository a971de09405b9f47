#include <QZKit/MainQueue.h>

#include <utility>

namespace qz {

void MainQueue::async(Task task) {
  const std::lock_guard lock(mutex_);
  tasks_.push_back(std::move(task));
  isWoken_.notify_one();
}

void MainQueue::drain() {
  while (const Task task = takeFirst()) task();
}

void MainQueue::run() {
  for (;;) {
    {
      std::unique_lock lock(mutex_);
      isWoken_.wait(lock, [this] { return isStopped_ || !tasks_.empty(); });
      if (std::exchange(isStopped_, false)) return;
    }
    if (const Task task = takeFirst()) task();
  }
}

void MainQueue::stop() {
  const std::lock_guard lock(mutex_);
  isStopped_ = true;
  isWoken_.notify_one();
}

MainQueue::Task MainQueue::takeFirst() {
  const std::lock_guard lock(mutex_);
  if (tasks_.empty()) return nullptr;
  Task first = std::move(tasks_.front());
  tasks_.pop_front();
  return first;
}

}  // namespace qz
