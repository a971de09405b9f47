#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <HabitraModel/Tasks/TaskProcessorSingleTaskOperation.h>
#include <HabitraModel/Tasks/TaskTemporalData.h>
#include <QZKit/Trap.h>
#include <QZLog/Log.h>

#include <utility>

namespace habitra {
namespace {

/// What a row cannot do without is filled in.
void repair(TaskEntity& task, qz::Moment now) {
  if (!task.created) task.created = now;
  if (!task.uniqueId) task.uniqueId = qz::UniqueID::generate(now).text();
  if (!task.statusDate) task.statusDate = now;
}

bool needsRepair(const TaskEntity& task) { return !task.created || !task.uniqueId || !task.statusDate; }

/// The moment of the last pass is kept by the day: a pass that finds nothing new on the same day writes nothing.
bool wasProcessedToday(const TaskEntity& task, const TaskAssessment& assessment) {
  return task.lastProcessedDate && assessment.calendar.day(*task.lastProcessedDate) == assessment.today;
}

}  // namespace

TaskProcessorSingleTaskOperation::ProcessorError::ProcessorError(Reason reason)
    : qz::Error("Task is already being processed"), reason_(reason) {}

TaskProcessorSingleTaskOperation::TaskProcessorSingleTaskOperation(
    const Environment& environment, StoreContext& managedObjectContext, TaskEntity& task, TaskModifyContext context,
    LayoutDirection layoutDirection, bool canUpdateSharedTasksOnCloud, qz::Moment now,
    std::optional<qz::Moment> lastProcessedHere, qz::QZHKChanges healthChanges)
    : environment_(environment),
      managedObjectContext_(managedObjectContext),
      task_(task),
      context_(context),
      layoutDirection_(layoutDirection),
      canUpdateSharedTasksOnCloud_(canUpdateSharedTasksOnCloud),
      now_(now),
      lastProcessedHere_(lastProcessedHere),
      healthChanges_(std::move(healthChanges)) {}

TaskClaim TaskProcessorSingleTaskOperation::claim() const {
  auto claim = TaskClaim::make(managedObjectContext_.storeIdentifier(), task_.objectID);
  if (!claim) throw ProcessorError(ProcessorError::Reason::taskAlreadyBeingProcessed);
  return *std::move(claim);
}

auto TaskProcessorSingleTaskOperation::run() -> Result {
  const TaskClaim claimed = claim();
  const std::int64_t readAt = managedObjectContext_.sequence();
  TaskAssessment assessment = assess(managedObjectContext_, task_, environment_.calendars, now_);
  if (!hasSomethingToWrite(assessment)) return {};

  const ObjectID objectID = task_.objectID;
  managedObjectContext_.beginUnit();
  if (managedObjectContext_.sequence() != readAt) {
    if (managedObjectContext_.find<TaskEntity>(objectID) == nullptr || !isActive(task_)) {
      managedObjectContext_.rollback();
      return {};
    }
    assessment = assess(managedObjectContext_, task_, environment_.calendars, now_);
  }
  const Result result = apply(assessment);
  managedObjectContext_.save({.author = Author::app});
  return result;
}

auto TaskProcessorSingleTaskOperation::runInUnit() -> Result {
  qz::require(managedObjectContext_.isInUnit(), "a task is processed inside a unit");
  const TaskClaim claimed = claim();
  const TaskAssessment assessment = assess(managedObjectContext_, task_, environment_.calendars, now_);
  return hasSomethingToWrite(assessment) ? apply(assessment) : Result{};
}

bool TaskProcessorSingleTaskOperation::hasSomethingToWrite(const TaskAssessment& assessment) {
  if (!assessment.futureEntries.empty() || needsRepair(task_)) return true;
  const TaskTemporalDataEntity* data = findTemporalData(managedObjectContext_, task_);
  if (data == nullptr) return true;
  if (!assessment.history) return false;
  if (!assessment.history->fillIns.empty() || !wasProcessedToday(task_, assessment)) return true;
  if (assessment.checkpointIsStale && assessment.history->checkpoint) return true;
  TaskTemporalDataEntity wanted = *data;
  putFigures(wanted, assessment.history->figures);
  return wanted != *data;
}

auto TaskProcessorSingleTaskOperation::apply(const TaskAssessment& assessment) -> Result {
  if (assessment.history) processSkipAndMiss(assessment);
  removeFutureEntries(assessment);
  storeFigures(assessment);
  return {.taskWasUpdated = true,
          .filledIn = assessment.history ? assessment.history->fillIns.size() : 0,
          .removed = assessment.futureEntries.size()};
}

void TaskProcessorSingleTaskOperation::processSkipAndMiss(const TaskAssessment& assessment) {
  if (assessment.history->fillIns.empty()) return;
  TaskLogRecorder::Request request{.managedObjectContext = managedObjectContext_,
                                   .context = TaskModifyContext::systemInitiatedFromDeviceActivityExtension,
                                   .saveContext = false,
                                   .logEntries = {},
                                   .createdTimestamp = now_,
                                   .createdTimeZone = assessment.calendar.timeZone};
  request.logEntries.reserve(assessment.history->fillIns.size());
  for (const FillIn& fillIn : assessment.history->fillIns) {
    // The entry lies on the last day of its period.
    const qz::YYYYMMDD day = fillIn.period.finishDate;
    const qz::Moment start = assessment.calendar.beginning(day);
    request.logEntries.push_back({.uniqueId = qz::UniqueID::generate(now_),
                                  .type = fillIn.entryType,
                                  .period = DatedPeriod(day, fillIn.period),
                                  .startDate = start,
                                  .endDate = start,
                                  .hasNewIdentifier = true});
  }
  environment_.recorder.recordNow(task_, request);
}

void TaskProcessorSingleTaskOperation::removeFutureEntries(const TaskAssessment& assessment) {
  if (assessment.futureEntries.empty()) return;
  qz::log::info("Delete future entries ({})", assessment.futureEntries.size());
  for (const LogKey& key : assessment.futureEntries) managedObjectContext_.removeLogEntry(key);
}

void TaskProcessorSingleTaskOperation::storeFigures(const TaskAssessment& assessment) {
  repair(task_, now_);
  TaskTemporalDataEntity& data = findOrInsertTemporalData(managedObjectContext_, task_);
  if (assessment.history) {
    putFigures(data, assessment.history->figures);
    if (assessment.history->checkpoint)
      managedObjectContext_.setCheckpoint(task_.objectID,
                                          storedCheckpoint(*assessment.history->checkpoint, assessment.calendar));
    if (!wasProcessedToday(task_, assessment)) task_.lastProcessedDate = now_;
  }
  const bool changed = managedObjectContext_.hasChanges(data);
  if (!data.lastUpdated || (changed && !managedObjectContext_.isChanged(data, &TaskTemporalDataEntity::lastUpdated)))
    data.lastUpdated = now_;
}

}  // namespace habitra
