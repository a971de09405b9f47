#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <HabitraModel/Tasks/TaskProcessor.h>
#include <QZDateTime/ISO8601.h>
#include <QZLog/Log.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>

namespace habitra {

TaskProcessor::TaskProcessor(const TaskCalendars& calendars, TaskLogRecorder& recorder)
    : calendars_(calendars), recorder_(recorder) {}

auto TaskProcessor::processAllTasks(StoreContext& context, qz::Moment now) -> Report {
  Report report;
  if (!clockCanBeRight(context, now)) return report;
  qz::log::info("Processing tasks");
  // By number: each task is a transaction of its own, after which another may be gone.
  std::vector<std::pair<ObjectID, std::string>> tasks;
  for (const TaskEntity* task : activeTasks(context)) tasks.emplace_back(task->objectID, task->uniqueId.value_or(""));
  for (const auto& [objectID, uniqueId] : tasks) {
    TaskEntity* task = context.find<TaskEntity>(objectID);
    if (task == nullptr) {
      qz::log::info("Unable to find task with ID {}", uniqueId);
      continue;
    }
    if (!isActive(*task)) continue;
    const auto result = operation(context, *task, now).run();
    ++report.tasks;
    if (result.taskWasUpdated) ++report.changed;
    report.filledIn += result.filledIn;
    report.removed += result.removed;
  }
  return report;
}

void TaskProcessor::process(StoreContext& context, TaskEntity& task, qz::Moment now) {
  if (clockCanBeRight(context, now)) operation(context, task, now).runInUnit();
}

TaskProcessorSingleTaskOperation TaskProcessor::operation(StoreContext& context, TaskEntity& task, qz::Moment now) {
  return {{.calendars = calendars_, .recorder = recorder_, .health = nullptr, .sharedTasks = sharedTasks_},
          context,
          task,
          TaskModifyContext::systemInitiatedFromDeviceActivityExtension,
          LayoutDirection::leftToRight,
          true,
          now};
}

bool TaskProcessor::isDue(StoreContext& context, qz::Moment now) const {
  const auto tasks = activeTasks(context);
  return std::any_of(tasks.begin(), tasks.end(), [&](const TaskEntity* task) {
    const TaskCalendar calendar = calendars_.of(*task);
    return !task->lastProcessedDate || calendar.day(*task->lastProcessedDate) != calendar.day(now);
  });
}

std::vector<TaskEntity*> TaskProcessor::activeTasks(StoreContext& context) {
  auto tasks = context.fetchAll<TaskEntity>();
  std::erase_if(tasks, [](const TaskEntity* task) { return !isActive(*task); });
  return tasks;
}

bool TaskProcessor::clockCanBeRight(StoreContext& context, qz::Moment now) {
  const auto newest = context.newestTransactionMoment();
  if (!newest || now >= *newest - std::chrono::days(1)) return true;
  qz::log::warning("The clock says {}, but the store was last written at {}; nothing is filled in", qz::iso8601(now),
                   qz::iso8601(*newest));
  return false;
}

}  // namespace habitra
