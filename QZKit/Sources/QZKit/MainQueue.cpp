#include <QZKit/MainQueue.h>

#include <utility>

namespace qz {

void MainQueue::async(Task task) {
  const std::lock_guard lock(mutex_);
  tasks_.push_back(std::move(task));
}

void MainQueue::drain() {
  while (const Task task = takeFirst()) task();
}

MainQueue::Task MainQueue::takeFirst() {
  const std::lock_guard lock(mutex_);
  if (tasks_.empty()) return nullptr;
  Task first = std::move(tasks_.front());
  tasks_.pop_front();
  return first;
}

}  // namespace qz
