#include <HabitraCore/RawValue.h>
#include <HabitraCore/TaskLogEntryChoice.h>
#include <HabitraModel/Mapping/LogEntryMapping.h>
#include <HabitraModel/Mapping/PeriodMapping.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <HabitraModel/Tasks/TaskLogRecorder.h>
#include <HabitraModel/Tasks/TaskTemporalData.h>
#include <QZDateTime/ISO8601.h>
#include <QZLog/Log.h>

#include <fmt/format.h>
#include <utility>

namespace habitra {
namespace {

std::string message(TaskLogRecorder::Error::Reason reason) {
  switch (reason) {
    case TaskLogRecorder::Error::Reason::noLogEntryData: return "No log entry data";
    case TaskLogRecorder::Error::Reason::invalidTask: return "Invalid task";
  }
  return {};
}

std::string description(const TaskFrequencyPeriod& period) {
  return fmt::format("{} to {}", period.startDate.debugDescription(), period.finishDate.debugDescription());
}

/// Whether a row of the log counts for the period: it is the one stored with the row, or the row has none and it is
/// that of its day.
bool countsFor(const TaskLogEntryEntity& row, const TaskFrequencyPeriod& period,
               const std::optional<TaskRules>& rules) {
  auto own = periodOf(row, period.firstDayOfWeek);
  if (const auto day = dayFromStored(row.entryDate); !own && day && rules)
    own = rules->frequency.period(*day, rules->firstDayOfWeek, rules->referenceDate).period;
  return own && own->startDate == period.startDate && own->finishDate == period.finishDate;
}

/// Deletes the rows of the period that an entry of `type` takes the place of, but for `kept`.
void removeSuperseded(StoreContext& context, const TaskEntity& task, const TaskFrequencyPeriod& period,
                      TaskLogEntryType type, ObjectID kept) {
  const std::optional<TaskRules> rules = rulesOf(task);
  for (const TaskLogEntryEntity& row :
       context.fetchLogEntries(task.objectID, storedDay(period.startDate), storedDay(period.finishDate))) {
    const auto existing = fromRawValue<TaskLogEntryType>(row.entryType);
    if (existing && row.objectID != kept && countsFor(row, period, rules) && supersedes(type, *existing))
      context.removeLogEntry(row.key());
  }
}

/// The day of the start moment; that of the dated period where the zone left it out, so that no moment lies on it.
qz::YYYYMMDD dayOf(const TaskLogRecorder::LogEntryData& entry, const TaskCalendar& calendar) {
  const qz::YYYYMMDD day = calendar.day(entry.startDate);
  return entry.period.period.contains(day) ? day : entry.period.date;
}

/// The row of the task that bears the identifier. One of another task is not the caller's to change.
std::optional<TaskLogEntryEntity> findOwnEntry(StoreContext& context, const TaskEntity& task, const qz::UniqueID& id) {
  auto found = context.findLogEntry(id.text());
  if (found && found->task != task.objectID) throw TaskLogRecorder::Error(TaskLogRecorder::Error::Reason::invalidTask);
  return found;
}

/// A change by a person for a day that was processed already lets the next pass begin before that day again.
void moveLastProcessedDateBack(TaskEntity& task, TaskLogEntryType type, qz::YYYYMMDD day,
                               const TaskCalendar& calendar) {
  if (isAutomatic(type) || !task.lastProcessedDate || calendar.day(*task.lastProcessedDate) <= day) return;
  task.lastProcessedDate = calendar.beginning(day.previousDay());
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

TaskLogRecorder::TaskLogRecorder(const TaskCalendars& calendars, qz::MainQueue& mainQueue)
    : calendars_(calendars), mainQueue_(mainQueue) {}

void TaskLogRecorder::record(TaskEntity& task, const Request& request, Completion completion) {
  try {
    _record(task, request);
    complete(std::move(completion), nullptr);
  } catch (const qz::Error& error) {
    qz::log::error("Unable to record: {}", error.what());
    complete(std::move(completion), std::current_exception());
  }
}

void TaskLogRecorder::record(const qz::UniqueID& taskId, const Request& request, Completion completion) {
  try {
    auto* task = request.managedObjectContext.find<TaskEntity>("uniqueId", taskId.text());
    if (task == nullptr) throw RecordTaskError();
    record(*task, request, std::move(completion));
  } catch (const qz::Error&) {
    complete(std::move(completion), std::current_exception());
  }
}

void TaskLogRecorder::_record(TaskEntity& task, const Request& request) {
  if (request.logEntries.empty()) throw Error(Error::Reason::noLogEntryData);
  StoreContext& context = request.managedObjectContext;
  const bool isOwnUnit = !context.isInUnit();
  context.beginUnit();
  try {
    if (task.objectID == ObjectID::none || !isActive(task)) throw Error(Error::Reason::invalidTask);
    const TaskCalendar calendar = calendars_.of(task);
    TaskTemporalDataEntity& temporalData = findOrInsertTemporalData(context, task);
    for (const LogEntryData& entry : request.logEntries) {
      const TaskLogEntryEntity row = writeRow(task, request, entry, dayOf(entry, calendar));
      moveLastProcessedDateBack(task, entry.type, dayOf(entry, calendar), calendar);
      temporalData.progress = row.progress;
      temporalData.progressDate = row.entryDate;
    }
    if (request.saveContext && context.hasChanges()) context.save({.author = Author::app});
  } catch (...) {
    // What is refused leaves nothing behind; a unit of the caller's is the caller's to give up.
    if (isOwnUnit) context.rollback();
    throw;
  }
}

TaskLogEntryEntity TaskLogRecorder::writeRow(const TaskEntity& task, const Request& request, const LogEntryData& entry,
                                             qz::YYYYMMDD day) {
  StoreContext& context = request.managedObjectContext;
  const auto existing = findOwnEntry(context, task, entry.uniqueId);
  if (existing) qz::log::debug("Found existing entry with ID={}", entry.uniqueId.text());
  removeSuperseded(context, task, entry.period.period, entry.type, existing ? existing->objectID : ObjectID::none);

  TaskLogEntryEntity row = existing.value_or(TaskLogEntryEntity{});
  row.uniqueId = entry.uniqueId.text();
  if (!existing || entry.createdTimestamp)
    row.createdTimestamp = entry.createdTimestamp.value_or(request.createdTimestamp);
  if (!existing) row.createdTimeZone = request.createdTimeZone.identifier();
  row.task = task.objectID;
  setEntry(row, entry.type, DatedPeriod(day, entry.period.period), entry.progressPct.value_or(0.0),
           entry.progressValue.value_or(0.0));
  if (existing)
    context.updateLogEntry(existing->key(), row);
  else
    context.insertLogEntry(row);
  return row;
}

void TaskLogRecorder::complete(Completion completion, std::exception_ptr error) {
  mainQueue_.async([completion = std::move(completion), error = std::move(error)] { completion(error); });
}

}  // namespace habitra
