#pragma once

#include <HabitraModel/Store/StoreContext.h>
#include <QZKit/Clock.h>

#include <functional>

namespace habitra {

/// The way to somebody who is told how tasks stand: the paired device, or the cloud for tasks that are shared.
///
/// What is to be told is put into the unit that changes the task, so that it is known after a crash, too, and nothing
/// is told that was not saved.
class TaskLink {
 public:
  TaskLink() = default;
  TaskLink(const TaskLink&) = delete;
  TaskLink& operator=(const TaskLink&) = delete;
  virtual ~TaskLink() = default;

  /// Lets the task be told of from `due` on. Begins a unit of the context, on whose queue it is called.
  virtual void put(StoreContext& context, const TaskEntity& task, qz::Moment due) = 0;

  /// Begins to tell what is due and saved, and calls `finished` once that has ended, well or not; on any thread.
  virtual void deliver(std::function<void()> finished) = 0;
};

/// A link that nobody has configured: tasks wait in the outbox of the store.
class OutboxTaskLink : public TaskLink {
 public:
  explicit OutboxTaskLink(OutboxLink link) : link_(link) {}

  void put(StoreContext& context, const TaskEntity& task, qz::Moment due) override;
  void deliver(std::function<void()> finished) override { finished(); }

 private:
  const OutboxLink link_;
};

}  // namespace habitra
