#include <HabitraCore/HistoryWalk.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Tasks/Processing/TaskProcessor.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorInitialStreak.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorTools.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <QZKit/Error.h>
#include <QZLog/Log.h>

#include <fmt/format.h>
#include <algorithm>
#include <utility>

/// The changes of many days at once: what is set in bulk, and the history that a new task begins with.
namespace habitra {
namespace {

using LogEntryData = TaskLogRecorder::LogEntryData;

bool canBeSet(TaskLogEntryType type) {
  switch (type) {
    case TaskLogEntryType::unknown:
    case TaskLogEntryType::completedManuallyFull:
    case TaskLogEntryType::skippedManuallyFull:
    case TaskLogEntryType::missedManuallyFull:
    case TaskLogEntryType::allowableMissManuallyFull: return true;
    default: return false;
  }
}

/// Throws qz::Error for what cannot be set.
void check(const TaskEntity& task, const TaskProcessor::DayStatuses& statuses, qz::YYYYMMDD today) {
  for (const auto& [day, type] : statuses) {
    if (day > today)
      throw qz::Error(fmt::format("{} has not come yet for '{}'", day.debugDescription(), task.title.value_or("")));
    if (!canBeSet(type)) throw qz::Error(fmt::format("a day cannot be set to {}", caseName(type)));
  }
}

void setCreated(TaskEntity& task, const TaskCalendar& calendar, qz::YYYYMMDD day) {
  task.created = calendar.beginning(day);
  task.createdTimeZone = calendar.timeZone.identifier();
}

/// Lets the task have been made on the earliest of the days at the latest. To be called once they are recorded: what
/// an earlier beginning refutes, the recorder sees by the day that the task was made on until now.
void coverDays(TaskEntity& task, const TaskCalendar& calendar, const TaskProcessor::DayStatuses& statuses) {
  const auto earliest =
      std::ranges::find_if(statuses, [](const auto& status) { return status.second != TaskLogEntryType::unknown; });
  const auto created = calendar.creationDay(task);
  if (earliest == statuses.end() || !created || earliest->first >= *created) return;
  qz::log::info("Modifying task created date from {} to {}", created->debugDescription(),
                earliest->first.debugDescription());
  setCreated(task, calendar, earliest->first);
}

LogEntryData entryFor(const DatedPeriod& period, TaskLogEntryType type, const TaskCalendar& calendar, qz::Moment now) {
  const qz::Moment start = calendar.beginning(period.date);
  return {.uniqueId = qz::UniqueID::generate(now),
          .type = type,
          .period = period,
          .startDate = start,
          .endDate = start,
          .progressPct = isCompletedFull(type) ? 1.0 : 0.0,
          .hasNewIdentifier = true};
}

/// The periods that give a new task its streak; none without one. Throws qz::Error where there is no such history.
std::vector<TaskFrequencyPeriod> streakPeriods(const TaskProcessor::NewTask& newTask, qz::YYYYMMDD today) {
  const std::int64_t streak = newTask.initialStreak;
  if (streak < 0 || streak > TaskProcessor::longestInitialStreak)
    throw qz::Error(
        fmt::format("a habit begins with a streak of 0 to {}, not {}", TaskProcessor::longestInitialStreak, streak));
  const auto rules = rulesWithoutPauses(newTask.values);
  if (streak == 0) return {};
  if (!rules || !HistoryWalk::supports(rules->frequency))
    throw qz::Error(fmt::format("'{}' is never due, so it has no streak", newTask.values.title.value_or("")));
  return lastDuePeriods(*rules, today, streak);
}

std::string commandText(const std::vector<TaskProcessor::NewTask>& tasks) {
  std::string text = "add";
  for (const auto& task : tasks) text += fmt::format(" '{}'", task.values.title.value_or(""));
  return text;
}

}  // namespace

void TaskProcessor::setBulkDayStatuses(StoreContext& context, TaskEntity& task, const DayStatuses& statuses,
                                       ChangeCompletion completion) {
  const auto change = [&] {
    const qz::Moment now = environment_.dataManager.clock().now();
    Tools tools(environment_, context);
    const TaskCalendar calendar = tools.calendars.of(task);
    check(task, statuses, calendar.day(now));
    const auto rules = rulesWithoutPauses(task);
    TaskLogRecorder::Request request = tools.request(TaskModifyContext::userInitiatedFromMainApp, calendar, now);
    request.notifyPairedDevice = TaskLogRecorder::NotifyPairedDeviceType::delayed;
    for (const auto& [day, type] : statuses) {
      request.logEntries.push_back(entryFor(periodHolding(rules, day), type, calendar, now));
    }
    tools.recorder.recordNow(task, request);
    coverDays(task, calendar, statuses);
    process(context, task, now);
    context.save({.author = Author::app,
                  .command = fmt::format("set {} days of '{}'", statuses.size(), task.title.value_or(""))});
  };
  inBulk(context, TaskModifyContext::userInitiatedFromMainApp, change, std::move(completion));
}

void TaskProcessor::createTasksPopulateInitialStreak(StoreContext& context, const std::vector<NewTask>& tasks,
                                                     ChangeCompletion completion) {
  const auto change = [&] {
    const qz::Moment now = environment_.dataManager.clock().now();
    Tools tools(environment_, context);
    for (const NewTask& newTask : tasks) {
      TaskEntity& task = context.insert(newTask.values);
      const TaskCalendar calendar = tools.calendars.of(task);
      const auto periods = streakPeriods(newTask, calendar.day(now));
      if (!periods.empty()) {
        setCreated(task, calendar, periods.front().startDate);
        TaskLogRecorder::Request request =
            tools.request(TaskModifyContext::userInitiatedPopulateInitialStreak, calendar, now);
        for (const TaskFrequencyPeriod& period : periods)
          request.logEntries.push_back(
              entryFor(DatedPeriod(period.finishDate, period), TaskLogEntryType::completedManuallyFull, calendar, now));
        tools.recorder.recordNow(task, request);
      }
      processIn(tools, context, task, TaskModifyContext::userInitiatedPopulateInitialStreak, now);
    }
    context.save({.author = Author::app, .command = commandText(tasks)});
  };
  inBulk(context, TaskModifyContext::userInitiatedPopulateInitialStreak, change, std::move(completion));
}

void TaskProcessor::inBulk(StoreContext& context, TaskModifyContext by, const std::function<void()>& change,
                           ChangeCompletion completion) {
  const BulkDataUpdate bulk(*this);
  std::exception_ptr failure;
  try {
    context.beginUnit();
    change();
  } catch (const std::exception& error) {
    qz::log::error("Nothing was changed: {}", error.what());
    failure = std::current_exception();
    context.rollback();
  }
  if (!failure) TaskLogRecorder::deliverSaved(environment_.receivers, by);
  if (completion) environment_.mainQueue.async([completion = std::move(completion), failure] { completion(failure); });
}

}  // namespace habitra
