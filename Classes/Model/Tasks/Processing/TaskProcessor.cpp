#include <HabitraModel/Tasks/Processing/Attempt.h>
#include <HabitraModel/Tasks/Processing/LastProcessedDates.h>
#include <HabitraModel/Tasks/Processing/TaskProcessor.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorClock.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorPass.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorTools.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <QZLog/Log.h>

#include <algorithm>
#include <string>
#include <utility>

namespace habitra {
TaskProcessor::TaskProcessor(Environment environment)
    : environment_(std::move(environment)), scheduler_(environment_.dataManager.standardDefaults()) {
  if (environment_.health != nullptr)
    pendingHealthRequests_.emplace(*environment_.health, environment_.dataManager.standardDefaults());
  // What passes save in contexts of their own reaches the one that is shown.
  contextMergeObserver_ = environment_.dataManager.notifications().addObserver(contextDidSave, [this] {
    onMainQueue([this] {
      attempt("What passes have changed is not seen yet", [&] {
        if (StoreContext* view = environment_.viewContext()) view->refresh();
      });
    });
  });
  maintenanceObserver_ =
      environment_.dataManager.notifications().addObserver(DataManager::maintenanceDidFinish, [this] {
        const std::lock_guard lock(mutex_);
        if (std::exchange(isWaitingForMaintenance_, false)) requestPass();
      });
}

TaskProcessor::~TaskProcessor() { stopObserving(); }

// Triggers

void TaskProcessor::applicationDidFinishLaunching(Lifetime lifetime, Completion completion) {
  qz::log::info("Did finish launching, processing");
  {
    const std::lock_guard lock(mutex_);
    isResident_ = lifetime == Lifetime::resident;
  }
  if (lifetime == Lifetime::resident) (void)observeAutomaticTasks();
  processAllTasks(std::move(completion));
}

void TaskProcessor::applicationDidBecomeActive(qz::Moment now) {
  {
    const std::lock_guard lock(mutex_);
    const auto& last = lastProcessedOnDidBecomeActive_;
    if (hasBecomeActive_ && last && now >= *last && now - *last <= activationInterval) return;
    hasBecomeActive_ = true;
    lastProcessedOnDidBecomeActive_ = now;
  }
  qz::log::info("Has become active, processing");
  processAllTasks();
}

void TaskProcessor::calendarDayChanged(Completion completion) {
  qz::log::info("Calendar day changed");
  processAllTasks(std::move(completion));
}

// Passes

void TaskProcessor::processAllTasks(Completion completion) {
  if (isHeldByMaintenance()) return complete(std::move(completion), {});
  {
    const std::lock_guard lock(mutex_);
    if (hasDoneInitialSetup_ || performingBulkDataUpdate_ > 0) {
      completions_.push_back(std::move(completion));
      return requestPass();
    }
    hasDoneInitialSetup_ = true;
  }
  complete(std::move(completion), pass(environment_.viewContext, std::nullopt, LayoutDirection::leftToRight));
}

TaskProcessorReport TaskProcessor::processTasks(const std::set<qz::UniqueID>& tasks, LayoutDirection layoutDirection) {
  return isHeld() ? TaskProcessorReport{} : passInOwnContext(tasks, layoutDirection);
}

TaskProcessorReport TaskProcessor::processAllTasks(StoreContext& context, qz::Moment now) {
  return passIn(context, now, std::nullopt, LayoutDirection::leftToRight);
}

bool TaskProcessor::isHeld() {
  if (isHeldByMaintenance()) return true;
  const std::lock_guard lock(mutex_);
  if (performingBulkDataUpdate_ == 0) return false;
  requestPass();
  return true;
}

bool TaskProcessor::isHeldByMaintenance() {
  const DataManager& manager = environment_.dataManager;
  if (!manager.isInMaintenanceMode()) return false;
  {
    const std::lock_guard lock(mutex_);
    isWaitingForMaintenance_ = true;
  }
  if (manager.isInMaintenanceMode()) return true;
  // It has ended before it could be waited for, or else the pass that waited is requested already.
  const std::lock_guard lock(mutex_);
  return !std::exchange(isWaitingForMaintenance_, false);
}

void TaskProcessor::requestPass() {
  passIsRequested_ = true;
  if (performingBulkDataUpdate_ > 0 || passIsDispatched_) return;
  passIsDispatched_ = true;
  processorQueue_.async([this] { runRequestedPass(); });
}

void TaskProcessor::runRequestedPass() {
  std::vector<Completion> completions;
  bool isResident = false;
  {
    const std::lock_guard lock(mutex_);
    passIsDispatched_ = false;
    if (performingBulkDataUpdate_ > 0) return;  // it is requested still
    passIsRequested_ = false;
    hasDoneInitialSetup_ = true;
    completions = std::exchange(completions_, {});
    isResident = isResident_;
  }
  const TaskProcessorReport report =
      isHeldByMaintenance() ? TaskProcessorReport{} : passInOwnContext(std::nullopt, LayoutDirection::leftToRight);
  for (Completion& completion : completions) complete(std::move(completion), report);
  if (!isResident) return;
  onMainQueue([this] {
    if (observeAutomaticTasks()) processAllTasks();  // which sees what came before they were observed
  });
}

void TaskProcessor::onMainQueue(std::function<void()> work) {
  environment_.mainQueue.async([lifetime = std::weak_ptr(lifetime_), work = std::move(work)] {
    if (!lifetime.expired()) work();
  });
}

TaskProcessorReport TaskProcessor::passInOwnContext(const std::optional<std::set<qz::UniqueID>>& only,
                                                    LayoutDirection layoutDirection) noexcept {
  std::unique_ptr<StoreContext> context;
  const auto makeContext = [&] {
    context = environment_.dataManager.contextForReading();
    return context.get();
  };
  const TaskProcessorReport report = pass(makeContext, only, layoutDirection);
  if (report.changed > 0) announce(environment_.dataManager.notifications(), contextDidSave);
  return report;
}

TaskProcessorReport TaskProcessor::pass(const std::function<StoreContext*()>& contextOf,
                                        const std::optional<std::set<qz::UniqueID>>& only,
                                        LayoutDirection layoutDirection) noexcept {
  try {
    StoreContext* context = contextOf();
    if (context == nullptr) return {};
    return passIn(*context, environment_.dataManager.clock().now(), only, layoutDirection);
  } catch (const std::exception& error) {
    qz::log::error("The pass could not be made: {}", error.what());
    return {.failure = std::current_exception()};
  }
}

TaskProcessorReport TaskProcessor::passIn(StoreContext& context, qz::Moment now,
                                          const std::optional<std::set<qz::UniqueID>>& only,
                                          LayoutDirection layoutDirection) {
  qz::log::info("Processing tasks");
  TaskProcessorReport report = passOver(context, now, only, layoutDirection);
  if (!only) {
    removeStaleTaskProcessorLastProcessedDateEntries(context);
    scheduleRefresh(Tools(environment_, context), context, now);
  }
  report.follow(followHealthRequests(context, now, writeHealthRequests(context, now), layoutDirection));
  if (report.changed > 0) environment_.receivers.widgets.reloadAllTimelines();
  return report;
}

TaskProcessorReport TaskProcessor::passOver(StoreContext& context, qz::Moment now,
                                            const std::optional<std::set<qz::UniqueID>>& only,
                                            LayoutDirection layoutDirection) {
  const Tools tools(environment_, context);
  TaskProcessorPass pass(context,
                         {.tasks = tools.operations,
                          .operationQueue = operationQueue_,
                          .standardDefaults = environment_.dataManager.standardDefaults(),
                          .layoutDirection = layoutDirection},
                         now);
  return pass.run(only);
}

void TaskProcessor::removeStaleTaskProcessorLastProcessedDateEntries(StoreContext& context) {
  attempt("Dates of tasks that are gone are kept", [&] {
    std::set<std::string> tasks;
    for (const TaskEntity* task : context.fetchAll<TaskEntity>())
      if (task->uniqueId) tasks.insert(*task->uniqueId);
    LastProcessedDates(environment_.dataManager.standardDefaults()).removeStale(tasks);
  });
}

void TaskProcessor::complete(Completion completion, TaskProcessorReport report) {
  if (!completion) return;
  environment_.mainQueue.async(
      [completion = std::move(completion), report = std::move(report)] { completion(report); });
}

// One task

void TaskProcessor::process(StoreContext& context, TaskEntity& task, qz::Moment now) {
  Tools tools(environment_, context);
  processIn(tools, context, task, TaskModifyContext::systemInitiatedFromDeviceActivityExtension, now);
}

void TaskProcessor::processIn(const Tools& tools, StoreContext& context, TaskEntity& task, TaskModifyContext by,
                              qz::Moment now) {
  if (!clockCanBeRight(context, now)) return;
  const bool mayReachTheCloud = by != TaskModifyContext::userInitiatedPopulateInitialStreak;
  try {
    TaskProcessorSingleTaskOperation(tools.operations, context, task, by, LayoutDirection::leftToRight,
                                     mayReachTheCloud, now, std::nullopt,
                                     TaskProcessorSingleTaskOperation::LateData::wait)
        .runInUnit();
  } catch (const TaskProcessorSingleTaskOperation::ProcessorError& error) {
    qz::log::info("Task {} is left to the pass under way: {}", task.uniqueId.value_or(""), error.what());
  } catch (const qz::QZHealthStoreError& error) {
    qz::log::error("Task {} is left to the next pass: {}", task.uniqueId.value_or(""), error.what());
  }
}

bool TaskProcessor::isDue(StoreContext& context, qz::Moment now) const {
  const TaskCalendars calendars = environment_.calendars(context);
  const auto tasks = activeTasks(context);
  return std::any_of(tasks.begin(), tasks.end(), [&](const TaskEntity* task) {
    const TaskCalendar calendar = calendars.of(*task);
    const bool isNewDay = !task->lastProcessedDate || calendar.day(*task->lastProcessedDate) != calendar.day(now);
    return isNewDay && canBeJudged(*task);
  });
}

std::vector<TaskEntity*> TaskProcessor::activeTasks(StoreContext& context) {
  auto tasks = context.fetchAll<TaskEntity>();
  std::erase_if(tasks, [](const TaskEntity* task) { return !isActive(*task); });
  return tasks;
}

// Bulk data updates

TaskProcessor::BulkDataUpdate::BulkDataUpdate(TaskProcessor& processor) : processor_(processor) {
  const std::lock_guard lock(processor_.mutex_);
  ++processor_.performingBulkDataUpdate_;
}

TaskProcessor::BulkDataUpdate::~BulkDataUpdate() {
  const std::lock_guard lock(processor_.mutex_);
  if (--processor_.performingBulkDataUpdate_ == 0 && processor_.passIsRequested_) processor_.requestPass();
}

// Background tasks

void TaskProcessor::scheduleTimerFinished(const qz::UniqueID& taskID, qz::Moment due) {
  schedule({.identifier = timerFinishedIdentifier, .taskID = taskID, .earliestBeginDate = due});
}

void TaskProcessor::schedule(const BackgroundTaskRequest& request) {
  qz::log::info("Scheduling task: {}", request.identifier);
  scheduler_.submit(request);
}

std::optional<qz::Moment> TaskProcessor::nextBackgroundTask() const noexcept {
  std::optional<qz::Moment> next;
  attempt("What is to be done later is unknown", [&] { next = scheduler_.nextDue(); });
  const std::lock_guard lock(mutex_);
  return next && nextAttempt_ ? std::max(*next, *nextAttempt_) : next;
}

void TaskProcessor::runDueBackgroundTasks(qz::Moment now) {
  std::vector<BackgroundTaskRequest> due;
  std::optional<qz::Moment> nextAttempt = now + timeBetweenAttempts;
  attempt("What is due is not done", [&] {
    due = scheduler_.takeDue(now);
    nextAttempt.reset();
  });
  {
    const std::lock_guard lock(mutex_);
    nextAttempt_ = nextAttempt;
  }
  std::set<qz::UniqueID> tasks;
  bool refreshes = false;
  for (const BackgroundTaskRequest& request : due) {
    if (request.identifier == refreshIdentifier) refreshes = true;
    if (request.identifier == timerFinishedIdentifier && request.taskID) tasks.insert(*request.taskID);
  }
  if (!tasks.empty()) (void)processTasks(tasks, LayoutDirection::leftToRight);
  if (refreshes) processAllTasks();
}

}  // namespace habitra
