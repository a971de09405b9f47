#include <HabitraModel/Mapping/AutomaticTypeMapping.h>
#include <HabitraModel/Tasks/Processing/Attempt.h>
#include <HabitraModel/Tasks/Processing/CalendarDayWatcher.h>
#include <HabitraModel/Tasks/Processing/HealthMeasuring.h>
#include <HabitraModel/Tasks/Processing/TaskProcessor.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorHealthKitObserver.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorPass.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorScreenTimeObserver.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorTools.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <QZLog/Log.h>

#include <algorithm>
#include <set>

/// What wakes the processor later: health data, screen time, and what is scheduled.
namespace habitra {
namespace {

std::vector<ObservedTask> observedTasks(StoreContext& context) {
  std::vector<ObservedTask> tasks;
  for (const TaskEntity* task : TaskProcessor::activeTasks(context)) {
    const auto id = task->uniqueId ? qz::UniqueID::fromText(*task->uniqueId) : std::nullopt;
    if (auto type = id ? automaticTypeOf(*task) : std::nullopt) tasks.push_back({*id, std::move(*type)});
  }
  return tasks;
}

bool isSame(const ObservedTask& a, const ObservedTask& b) { return a.taskID == b.taskID && a.type == b.type; }

/// The tasks that data of these kinds complete.
std::set<qz::UniqueID> tasksMeasuredBy(const std::set<qz::QZHKObjectType>& kinds, StoreContext& context) {
  std::set<qz::UniqueID> tasks;
  for (const ObservedTask& task : observedTasks(context)) {
    const auto types = HealthMeasuring::readTypes(task.type);
    if (std::ranges::any_of(types, [&](qz::QZHKObjectType type) { return kinds.contains(type); }))
      tasks.insert(task.taskID);
  }
  return tasks;
}

}  // namespace

bool TaskProcessor::observeAutomaticTasks() {
  {
    const std::lock_guard lock(mutex_);
    if (!isResident_) return false;
  }
  bool hasNew = false;
  attempt("Health data are not observed", [&] {
    StoreContext* view = environment_.viewContext();
    if (view == nullptr || environment_.health == nullptr) return;
    std::vector<ObservedTask> tasks = observedTasks(*view);
    if (observedTasks_ && std::ranges::equal(tasks, *observedTasks_, isSame)) return;
    observedTasks_.reset();
    makeObservers();
    const bool hasHealthData = environment_.health->isHealthDataAvailable();
    StartedObservation observation = screenTimeObserver_->observe(tasks);
    if (hasHealthData) observation += healthKitObserver_->observe(tasks);
    hasNew = observation.started > 0;
    if (hasHealthData && observation.refused == 0) observedTasks_ = std::move(tasks);
  });
  return hasNew;
}

void TaskProcessor::makeObservers() {
  if (healthKitObserver_) return;
  const auto process = [this](const std::set<qz::UniqueID>& ids, LayoutDirection layoutDirection) {
    return processTasks(ids, layoutDirection);
  };
  qz::NotificationCenter& notifications = environment_.dataManager.notifications();
  healthKitObserver_ =
      std::make_unique<TaskProcessorHealthKitObserver>(*environment_.health, processorQueue_, notifications, process);
  screenTimeObserver_ =
      std::make_unique<TaskProcessorScreenTimeObserver>(*environment_.health, processorQueue_, notifications, process);
}

void TaskProcessor::stopObserving() noexcept {
  {
    const std::lock_guard lock(mutex_);
    isResident_ = false;
  }
  healthKitObserver_.reset();
  screenTimeObserver_.reset();
  observedTasks_.emplace();
}

void TaskProcessor::processPendingHealthKitRequests(StoreContext& context) {
  const qz::Moment now = environment_.dataManager.clock().now();
  const std::set<qz::QZHKObjectType> changed = writeHealthRequests(context, now);
  if (changed.empty() || isHeld()) return;
  if (followHealthRequests(context, now, changed, LayoutDirection::leftToRight).changed > 0)
    environment_.receivers.widgets.reloadAllTimelines();
}

std::set<qz::QZHKObjectType> TaskProcessor::writeHealthRequests(StoreContext& context, qz::Moment now) {
  if (!pendingHealthRequests_) return {};
  return pendingHealthRequests_->processPendingHealthKitRequests(context, now).changed;
}

TaskProcessorReport TaskProcessor::followHealthRequests(StoreContext& context, qz::Moment now,
                                                        const std::set<qz::QZHKObjectType>& changed,
                                                        LayoutDirection layoutDirection) {
  TaskProcessorReport report;
  if (changed.empty()) return report;
  attempt("What requests have changed in the health store is left to the next pass", [&] {
    const auto concerned = tasksMeasuredBy(changed, context);
    if (!concerned.empty()) report = passOver(context, now, concerned, layoutDirection);
  });
  return report;
}

void TaskProcessor::scheduleRefresh(const Tools& tools, StoreContext& context, qz::Moment now) {
  attempt("The next refresh is not scheduled", [&] {
    const qz::Moment next = nextStartOfDay(tools.calendars, activeTasks(context), now);
    {
      const std::lock_guard lock(mutex_);
      // In a process that ends, the next command sees by itself that the day has changed.
      if (!isResident_ || scheduledRefresh_ == next) return;
      scheduledRefresh_ = next;
    }
    schedule({.identifier = refreshIdentifier, .taskID = {}, .earliestBeginDate = next});
  });
}

}  // namespace habitra
