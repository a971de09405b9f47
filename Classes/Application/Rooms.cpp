#include <HabitraApp/Rooms.h>

#include <HabitraApp/TaskLookup.h>
#include <HabitraModel/Mapping/FrequencyMapping.h>
#include <HabitraModel/Store/History/HistoryTrimming.h>
#include <HabitraModel/Tasks/Processing/TaskAssessment.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorClock.h>
#include <HabitraModel/Tasks/StoredPages.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <HabitraModel/Tasks/TaskTitle.h>
#include <QZLog/Log.h>

#include <exception>
#include <set>
#include <utility>

namespace habitra {
namespace {

qz::UniqueID identifierOf(const TaskEntity& task) {
  // A row that came without one gets it at the next pass; until then it bears the nil identifier.
  const auto id = task.uniqueId ? qz::UniqueID::fromText(*task.uniqueId) : std::nullopt;
  return id.value_or(qz::UniqueID(qz::UniqueID::Bytes{}));
}

}  // namespace

Application::Rooms::Rooms(const ApplicationSettings& settings)
    : clock(settings.clock),
      version(settings.version),
      manager(DataManager::storeLocation(settings.home), settings.clock),
      health(settings.home),
      calendars(settings.timeZone ? *settings.timeZone : qz::TimeZone::current(), qz::HHMMSS::midnight),
      widgets(settings.home),
      backups(settings.home, manager.standardDefaults(), settings.version),
      recorder(calendars, mainQueue, {watch, sharedTasks, widgets}),
      processor({.dataManager = manager,
                 .mainQueue = mainQueue,
                 .receivers = {watch, sharedTasks, widgets},
                 .health = &health,
                 .calendars = [this](StoreContext& context) { return calendarsSeenBy(context); },
                 .viewContext = [this] { return readingContext(); }}),
      timeZone_(settings.timeZone),
      timeIsGiven_(settings.timeIsGiven) {}

StoreContext* Application::Rooms::readingContext() {
  if (!readingContext_)
    readingContext_ = manager.contextForReading();
  else
    readingContext_->refresh();
  if (readingContext_) followStartOfDay(*readingContext_);
  return readingContext_.get();
}

std::unique_ptr<StoreContext> Application::Rooms::contextToChange(std::string_view name) {
  // One that has looked already serves, so that a command opens the store once.
  auto context = readingContext_ ? std::move(readingContext_) : manager.contextForReading();
  if (!context) (void)lookUpTask({}, name);  // throws
  context->beginUnit();
  followStartOfDay(*context);
  return context;
}

std::unique_ptr<StoreContext> Application::Rooms::contextToWrite() {
  auto context = readingContext_ ? std::move(readingContext_) : manager.context();
  context->beginUnit();
  followStartOfDay(*context);
  return context;
}

Settings Application::Rooms::settings(StoreContext* context) const { return {context, nullptr, nullptr}; }

TaskCalendars Application::Rooms::calendarsSeenBy(StoreContext& context) const {
  return {timeZone(), settings(&context).get(settings::startOfDay)};
}

HabitSummary Application::Rooms::summarize(StoreContext& context, const TaskEntity& task) {
  const TaskAssessment assessment = assess(context, task, calendars, now());
  HabitSummary habit{.uniqueId = identifierOf(task),
                     .title = shownTitle(task),
                     .page = pageOf(task, context).rawValue(),
                     .isNegative = task.isNegative,
                     .frequency = frequencyOf(task)};
  if (!assessment.history) return habit;
  const TaskFigures& figures = assessment.history->figures;
  habit.period = figures.period;
  habit.status = figures.completionStatus;
  habit.due = figures.isDueToday;
  habit.streak = figures.streak;
  habit.lastCompleted = figures.lastCompleted;
  habit.lastMissed = figures.lastMissed;
  habit.lastSkipped = figures.lastSkipped;
  return habit;
}

std::optional<CompletionStatus> Application::Rooms::statusOf(StoreContext& context, const TaskEntity& task,
                                                             const TaskFrequencyPeriod& period) {
  // A period stands as it stood on its last day.
  const TaskCalendar calendar = calendars.of(task);
  const bool isOver = period.finishDate < calendar.day(now());
  const TaskAssessment assessment =
      assess(context, task, calendars, isOver ? calendar.beginning(period.finishDate) : now());
  return assessment.history ? std::optional(assessment.history->figures.completionStatus) : std::nullopt;
}

TaskEntity& Application::Rooms::lookUp(StoreContext& context, std::string_view name) {
  const std::vector<TaskEntity*> tasks = TaskProcessor::activeTasks(context);
  std::vector<TaskName> names;
  names.reserve(tasks.size());
  for (const TaskEntity* task : tasks) names.push_back({identifierOf(*task), shownTitle(*task)});
  return *tasks[lookUpTask(names, name)];
}

void Application::Rooms::record(StoreContext& context, TaskEntity& task, TaskLogEntryType type,
                                const DatedPeriod& period, qz::Moment startDate, qz::Moment endDate) {
  const qz::Moment moment = now();
  const double share = isCompletedFull(type) ? 1.0 : 0.0;
  TaskLogRecorder::Request request{.managedObjectContext = context,
                                   .context = TaskModifyContext::userInitiatedFromMainApp,
                                   .saveContext = false,
                                   .logEntries = {{.uniqueId = qz::UniqueID::generate(moment),
                                                   .type = type,
                                                   .period = period,
                                                   .startDate = startDate,
                                                   .endDate = endDate,
                                                   .progressPct = share}},
                                   .createdTimestamp = moment,
                                   .createdTimeZone = calendars.of(task).timeZone,
                                   .notifyPairedDevice = TaskLogRecorder::NotifyPairedDeviceType::immediate,
                                   .recordToHealthKitIfNecessary = true};
  waitFor([&](const TaskLogRecorder::Completion& completion) { recorder.record(task, request, completion); });
}

void Application::Rooms::saveRecorded(StoreContext& context, std::string command) {
  const SaveResult saved = context.save({.author = Author::app, .command = std::move(command)});
  if (saved.inserted + saved.updated + saved.removed == 0) return;
  TaskLogRecorder::deliverSaved({watch, sharedTasks, widgets}, TaskModifyContext::userInitiatedFromMainApp);
}

void Application::Rooms::waitFor(const std::function<void(const TaskLogRecorder::Completion&)>& begin) {
  std::exception_ptr failure;
  begin([&failure](std::exception_ptr error) { failure = std::move(error); });
  mainQueue.drain();
  if (failure) std::rethrow_exception(failure);
}

TaskProcessorReport Application::Rooms::pass() {
  TaskProcessorReport report;
  processor.applicationDidFinishLaunching(TaskProcessor::Lifetime::command,
                                          [&report](const TaskProcessorReport& made) { report = made; });
  processor.waitForPasses();
  mainQueue.drain();
  return report;
}

void Application::Rooms::processAutomaticTasks() noexcept {
  try {
    StoreContext* context = readingContext();
    if (context == nullptr) return;
    std::set<qz::UniqueID> tasks;
    for (const TaskEntity* task : TaskProcessor::activeTasks(*context))
      if (task->typeName) tasks.insert(identifierOf(*task));
    if (!tasks.empty()) (void)processor.processTasks(tasks, LayoutDirection::leftToRight);
  } catch (const std::exception& error) {
    qz::log::warning("The pass over automatic habits could not be made: {}", error.what());
  }
}

void Application::Rooms::backUp() noexcept {
  if (timeIsGiven_) return;
  try {
    StoreContext* context = readingContext();
    if (context == nullptr || context->store().isReadOnly() || !clockCanBeRight(*context, now())) return;
    const qz::YYYYMMDD today = calendars.ofDevice().day(now());
    if (!backups.isDue(*context, today)) return;
    // One of its own: what a backup reads is not kept.
    if (const auto own = manager.contextForReading()) backups.make(*own, today, now());
  } catch (const std::exception& error) {
    qz::log::warning("The backup of today could not be made: {}", error.what());
  }
}

void Application::Rooms::trimHistory(StoreContext& context) noexcept {
  if (timeIsGiven_) return;
  try {
    HistoryTrimming::trimDaily(context, manager.standardDefaults(), now());
  } catch (const std::exception& error) {
    qz::log::warning("The history could not be trimmed: {}", error.what());
  }
}

}  // namespace habitra
