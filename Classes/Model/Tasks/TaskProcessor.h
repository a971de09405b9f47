#pragma once

#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <HabitraModel/Tasks/TaskLogRecorder.h>
#include <HabitraModel/Tasks/TaskProcessorReport.h>
#include <HabitraModel/Tasks/TaskProcessorSingleTaskOperation.h>
#include <QZKit/Clock.h>

#include <cstddef>
#include <vector>

namespace habitra {

/// Keeps the derived state of every task current as days pass: fills in skips and misses and stores streaks, last days
/// and recent success. The rules themselves belong to HabitraCore.
///
/// Works on the queue of the context that it is given.
class TaskProcessor {
 public:
  using Report = TaskProcessorReport;

  /// Both must live longer than the processor.
  TaskProcessor(const TaskCalendars& calendars, TaskLogRecorder& recorder);

  /// A full pass: every active task in a transaction of its own. With a clock that cannot be right nothing is filled in
  /// or deleted; a warning says so.
  Report processAllTasks(StoreContext& context, qz::Moment now);

  /// Brings one task up to date inside the caller's unit, which the caller saves. With a clock that cannot be right
  /// nothing is done.
  void process(StoreContext& context, TaskEntity& task, qz::Moment now);

  /// Whether a pass would look at a new day: some active task was last processed on another day than its today.
  [[nodiscard]] bool isDue(StoreContext& context, qz::Moment now) const;

  /// Gives tasks that bear the identifier of an older one (by `created`, where none is earliest, then by row) a new one
  /// of their own, and their settings along with it. The moment of creation decides first so that all devices rename
  /// the same task. Gives how many there were. REQUIRES: a unit, which the caller saves.
  static std::size_t cleanUpDuplicatedTaskIDs(StoreContext& context);

  /// The active tasks, in order of creation.
  [[nodiscard]] static std::vector<TaskEntity*> activeTasks(StoreContext& context);

 private:
  /// A clock that is more than a day behind the newest transaction is wrong: filling in or deleting by it could cost
  /// what a person recorded.
  [[nodiscard]] static bool clockCanBeRight(StoreContext& context, qz::Moment now);
  [[nodiscard]] TaskProcessorSingleTaskOperation operation(StoreContext& context, TaskEntity& task, qz::Moment now);

  const TaskCalendars& calendars_;
  TaskLogRecorder& recorder_;
  OutboxTaskLink sharedTasks_{OutboxLink::sharedTask};
};

}  // namespace habitra
