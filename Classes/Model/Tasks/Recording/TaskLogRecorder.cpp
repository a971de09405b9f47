#include <HabitraCore/RawValue.h>
#include <HabitraModel/Mapping/StoredIdentifier.h>
#include <HabitraModel/Store/Entities/TaskShareEntity.h>
#include <HabitraModel/Tasks/Processing/TaskTemporalData.h>
#include <HabitraModel/Tasks/Recording/FailureRetyping.h>
#include <HabitraModel/Tasks/Recording/LogEntryWriter.h>
#include <HabitraModel/Tasks/Recording/TaskLogRecorder.h>
#include <HabitraModel/Tasks/RowOfTask.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <QZDateTime/ISO8601.h>
#include <QZKit/DispatchGroup.h>
#include <QZLog/Log.h>

#include <fmt/format.h>
#include <algorithm>
#include <memory>
#include <set>
#include <utility>

namespace habitra {
namespace {

std::string message(TaskLogRecorder::Error::Reason reason) {
  switch (reason) {
    case TaskLogRecorder::Error::Reason::noLogEntryData: return "No log entry data";
    case TaskLogRecorder::Error::Reason::invalidTask: return "Invalid task";
    case TaskLogRecorder::Error::Reason::unableToRecordToSharedTask: return "Unable to record to task shared with me";
  }
  return {};
}

std::string description(const TaskFrequencyPeriod& period) {
  return fmt::format("{} to {}", period.startDate.debugDescription(), period.finishDate.debugDescription());
}

/// The task with this identifier, in whichever case it is written there, or null.
TaskEntity* findTask(StoreContext& context, const qz::UniqueID& taskId) {
  for (const std::string& uniqueId : storedForms(taskId))
    if (TaskEntity* task = context.find<TaskEntity>("uniqueId", uniqueId)) return task;
  return nullptr;
}

/// A change for a day that was processed already lets the next pass begin before that day again.
void moveLastProcessedDateBack(TaskEntity& task, qz::YYYYMMDD day, const TaskCalendar& calendar) {
  if (!task.lastProcessedDate || calendar.day(*task.lastProcessedDate) <= day) return;
  task.lastProcessedDate = calendar.beginning(day.previousDay());
}

/// How a task is shared; null when it is not.
const TaskShareEntity* shareOf(StoreContext& context, const TaskEntity& task) {
  return rowOfTask<TaskShareEntity>(context, task.objectID);
}

/// Throws where an entry bears the identifier of another task's.
void checkIdentifiers(const TaskEntity& task, const TaskLogRecorder::Request& request) {
  for (const TaskLogRecorder::LogEntryData& entry : request.logEntries) {
    const auto existing = LogEntryWriter::existing(request.managedObjectContext, entry);
    if (existing && existing->task != task.objectID)
      throw TaskLogRecorder::Error(TaskLogRecorder::Error::Reason::invalidTask);
  }
}

/// Whether somebody waits for the answer of the cloud. A deep link opens the application, which goes on by itself.
bool waitsForCloud(TaskModifyContext context) {
  switch (context) {
    case TaskModifyContext::userInitiatedFromMainApp:
    case TaskModifyContext::userInitiatedFromAppleWatchApp:
    case TaskModifyContext::userInitiatedFromNotification:
    case TaskModifyContext::userInitiatedFromShortcut:
    case TaskModifyContext::systemInitiatedFromDeviceActivityExtension: return true;
    case TaskModifyContext::userInitiatedFromDeepLink:
    case TaskModifyContext::userInitiatedPopulateInitialStreak: return false;
  }
  return false;
}

void deliverToCloud(TaskLink& sharedTasks, TaskModifyContext context) {
  if (context == TaskModifyContext::userInitiatedPopulateInitialStreak)
    qz::log::info("Wrong context to write to iCloud");
  else
    sharedTasks.deliver([] {});
}

}  // namespace

std::string TaskLogRecorder::LogEntryData::debugDescription() const {
  return fmt::format("<LogEntryData unique={}, period={}, startDate={}, endDate={}>", uniqueId.text(),
                     description(period.period), qz::iso8601(startDate), qz::iso8601(endDate));
}

std::string TaskLogRecorder::Request::debugDescription() const {
  std::string entries;
  for (const LogEntryData& entry : logEntries) entries += (entries.empty() ? "" : ", ") + entry.debugDescription();
  return fmt::format("<Request context={}, logEntries=[{}]>", caseName(context), entries);
}

TaskLogRecorder::Error::Error(Reason reason) : qz::Error(message(reason)), reason_(reason) {}

TaskLogRecorder::RecordTaskError::RecordTaskError() : qz::Error("Task not found") {}

TaskLogRecorder::TaskLogRecorder(const TaskCalendars& calendars, qz::MainQueue& mainQueue, Receivers receivers)
    : calendars_(calendars), mainQueue_(mainQueue), receivers_(receivers) {}

void TaskLogRecorder::record(TaskEntity& task, const Request& request, Completion completion,
                             bool canWaitForCloudToFinish) {
  _record(task, request, canWaitForCloudToFinish, std::move(completion));
}

void TaskLogRecorder::record(const qz::UniqueID& taskId, const Request& request, Completion completion,
                             bool canWaitForCloudToFinish) {
  TaskEntity* task = nullptr;
  try {
    task = findTask(request.managedObjectContext, taskId);
    if (task == nullptr) throw RecordTaskError();
  } catch (const std::exception&) {
    complete(std::move(completion), std::current_exception());
    return;
  }
  record(*task, request, std::move(completion), canWaitForCloudToFinish);
}

void TaskLogRecorder::_record(TaskEntity& task, const Request& request, bool canWaitForCloudToFinish,
                              Completion completion) {
  try {
    write(task, request);
  } catch (const std::exception& error) {
    qz::log::error("Unable to record: {}", error.what());
    complete(std::move(completion), std::current_exception());
    return;
  }
  const auto group = std::make_shared<qz::DispatchGroup>();
  if (request.saveContext) {
    if (request.notifyPairedDevice != NotifyPairedDeviceType::none) receivers_.watch.deliver([] {});
    if (canWaitForCloudToFinish && waitsForCloud(request.context)) {
      group->enter();
      receivers_.sharedTasks.deliver([group] { group->leave(); });
    } else {
      deliverToCloud(receivers_.sharedTasks, request.context);
    }
  }
  receivers_.widgets.reloadAllTimelines();
  group->notify(mainQueue_, [completion = std::move(completion)] { completion(nullptr); });
}

void TaskLogRecorder::deliverSaved(const Receivers& receivers, TaskModifyContext context) {
  receivers.watch.deliver([] {});
  receivers.widgets.reloadAllTimelines();
  deliverToCloud(receivers.sharedTasks, context);
}

void TaskLogRecorder::write(TaskEntity& task, const Request& request) {
  if (request.logEntries.empty()) throw Error(Error::Reason::noLogEntryData);
  StoreContext& context = request.managedObjectContext;
  const bool isOwnUnit = !context.isInUnit();
  context.beginUnit();
  try {
    if (task.objectID == ObjectID::none || !isActive(task)) throw Error(Error::Reason::invalidTask);
    if (const TaskShareEntity* share = shareOf(context, task); share != nullptr && share->owner != ObjectID::none)
      throw Error(Error::Reason::unableToRecordToSharedTask);
    checkIdentifiers(task, request);
    writeEntries(task, request);
    queueForReceivers(task, request);
    // Without a change the save gives up the turn; a unit of the caller's may hold it for what it writes later.
    if (request.saveContext && (isOwnUnit || context.hasChanges()))
      context.save({.author = Author::app, .command = request.command});
  } catch (...) {
    // What is refused leaves nothing behind; a unit of the caller's is the caller's to give up.
    if (isOwnUnit) context.rollback();
    throw;
  }
}

void TaskLogRecorder::writeEntries(TaskEntity& task, const Request& request) const {
  const TaskCalendar calendar = calendars_.of(task);
  const auto rules = rulesOf(request.managedObjectContext, task);
  TaskTemporalDataEntity& temporalData = findOrInsertTemporalData(request.managedObjectContext, task);
  LogEntryWriter writer(task, rules, request, calendar);
  std::set<qz::YYYYMMDD> changed;
  for (const LogEntryData& entry : request.logEntries) {
    const LogEntryWriter::Written written = writer.write(entry);
    temporalData.progress = written.row.progress;
    temporalData.progressDate = written.row.entryDate;
    // A skip that is filled in leaves everything else as it was judged.
    if (task.isNegative && entry.type != TaskLogEntryType::skippedAutomaticallyFull) changed.insert(written.day);
    if (written.earlierDay) changed.insert(*written.earlierDay);
    // What a pass fills in is what it would fill in again.
    if (!isFilledIn(written.row) || written.earlierDay)
      moveLastProcessedDateBack(task, std::min(entry.period.period.finishDate, written.earliestDay()), calendar);
  }
  if (rules) retypeFailures(request.managedObjectContext, task, *rules, changed);
}

void TaskLogRecorder::queueForReceivers(const TaskEntity& task, const Request& request) const {
  StoreContext& context = request.managedObjectContext;
  const qz::Moment now = context.store().clock().now();
  if (request.notifyPairedDevice != NotifyPairedDeviceType::none) {
    const bool isDelayed = request.notifyPairedDevice == NotifyPairedDeviceType::delayed;
    receivers_.watch.put(context, task, isDelayed ? now + batchingInterval : now);
  }
  if (request.context != TaskModifyContext::userInitiatedPopulateInitialStreak && shareOf(context, task) != nullptr)
    receivers_.sharedTasks.put(context, task, now);
}

void TaskLogRecorder::complete(Completion completion, std::exception_ptr error) {
  mainQueue_.async([completion = std::move(completion), error = std::move(error)] { completion(error); });
}

}  // namespace habitra
