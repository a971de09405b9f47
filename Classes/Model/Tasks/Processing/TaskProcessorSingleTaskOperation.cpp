#include <HabitraModel/Mapping/AutomaticTypeMapping.h>
#include <HabitraModel/Mapping/StoredIdentifier.h>
#include <HabitraModel/Store/Entities/TaskShareEntity.h>
#include <HabitraModel/Tasks/Processing/SharedTaskSummary.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorSingleTaskOperation.h>
#include <HabitraModel/Tasks/Processing/TaskTemporalData.h>
#include <HabitraModel/Tasks/Processing/WithdrawnHealthRequests.h>
#include <HabitraModel/Tasks/Recording/FailureRetyping.h>
#include <HabitraModel/Tasks/RepeatedWarnings.h>
#include <HabitraModel/Tasks/RowOfTask.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <QZKit/Trap.h>
#include <QZLog/Log.h>

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

namespace habitra {
namespace {

/// What a row cannot do without is filled in.
void repair(TaskEntity& task, qz::Moment now) {
  if (!task.created) task.created = now;
  task.uniqueId = task.uniqueId ? usualForm(*task.uniqueId) : qz::UniqueID::generate(now).text();
  if (!task.statusDate) task.statusDate = now;
}

bool needsRepair(const TaskEntity& task) {
  return !task.created || !task.uniqueId || *task.uniqueId != usualForm(*task.uniqueId) || !task.statusDate;
}

/// The moment of the last pass is kept by the day: a pass that finds nothing new on the same day writes nothing.
bool wasProcessedToday(const TaskEntity& task, const TaskAssessment& assessment) {
  return task.lastProcessedDate && assessment.calendar.day(*task.lastProcessedDate) == assessment.today;
}

/// From the days that are looked at in any case it is no further, in days, to those that passes look at again and
/// again.
constexpr std::int64_t longestWay = 31;

/// The first day that is looked at in any case.
qz::YYYYMMDD recentFrom(const TaskAssessment& assessment) {
  return assessment.processedThrough ? assessment.processedThrough->add(-passOverlap) : assessment.created;
}

bool hasFullEntry(const PeriodOfLog& period) {
  return std::ranges::any_of(period.entries, [](const LoggedEntry& entry) { return isFull(entry.entryType); });
}

/// Says of which days of the last pass and after there is nothing to fill in.
void logFullEntries(StoreContext& context, const TaskEntity& task, const TaskAssessment& assessment) {
  std::optional<TaskFrequencyPeriod> first;  // of those in a row that have full entries
  qz::YYYYMMDD last;
  const auto say = [&] {
    if (!first) return;
    const std::string start = first->startDate.debugDescription();
    if (first->finishDate == last)
      qz::log::debug("Already has full entry for this period, skipping. date={}", start);
    else
      qz::log::debug("Already has full entries for period {} to {}", start, last.debugDescription());
    first.reset();
  };
  visitPeriods(context, task, assessment, assessment.processedThrough.value_or(assessment.created), {},
               [&](const PeriodOfLog& period) {
                 if (period.isOpen || !hasFullEntry(period)) return say();
                 if (!first) first = period.period;
                 last = period.period.finishDate;
               });
  say();
}

}  // namespace

TaskProcessorSingleTaskOperation::ProcessorError::ProcessorError(Reason reason)
    : qz::Error("Task is already being processed"), reason_(reason) {}

TaskProcessorSingleTaskOperation::TaskProcessorSingleTaskOperation(
    const Environment& environment, StoreContext& managedObjectContext, TaskEntity& task, TaskModifyContext context,
    LayoutDirection layoutDirection, bool canUpdateSharedTasksOnCloud, qz::Moment now,
    std::optional<qz::Moment> lastProcessedHere, LateData lateData)
    : environment_(environment),
      managedObjectContext_(managedObjectContext),
      task_(task),
      context_(context),
      layoutDirection_(layoutDirection),
      canUpdateSharedTasksOnCloud_(canUpdateSharedTasksOnCloud),
      now_(now),
      lastProcessedHere_(lastProcessedHere),
      lateData_(lateData) {}

TaskClaim TaskProcessorSingleTaskOperation::claim() const {
  auto claim = TaskClaim::make(managedObjectContext_.storeIdentifier(), task_.objectID);
  if (!claim) throw ProcessorError(ProcessorError::Reason::taskAlreadyBeingProcessed);
  return *std::move(claim);
}

auto TaskProcessorSingleTaskOperation::run() -> Result {
  const TaskClaim claimed = claim();
  const std::int64_t readAt = managedObjectContext_.sequence();
  Pass pass = prepare();
  if (!hasSomethingToWrite(pass)) return {};

  const ObjectID objectID = task_.objectID;
  managedObjectContext_.beginUnit();
  if (managedObjectContext_.sequence() != readAt) {
    const bool isThere = managedObjectContext_.find<TaskEntity>(objectID) != nullptr && isActive(task_);
    if (isThere) pass = prepare();
    if (!isThere || !hasSomethingToWrite(pass)) {
      managedObjectContext_.rollback();
      return {};
    }
  }
  const Result result = write(pass);
  managedObjectContext_.save({.author = Author::app});
  if (canUpdateSharedTasksOnCloud_) environment_.sharedTasks.deliver([] {});
  return result;
}

auto TaskProcessorSingleTaskOperation::runInUnit() -> Result {
  qz::require(managedObjectContext_.isInUnit(), "a task is processed inside a unit");
  const TaskClaim claimed = claim();
  const Pass pass = prepare();
  return write(pass);
}

auto TaskProcessorSingleTaskOperation::dryRun() const -> SkipAndMissReport {
  return processSkipAndMiss(prepare(), true);
}

auto TaskProcessorSingleTaskOperation::prepare() const -> Pass {
  Pass pass{.assessment = assess(managedObjectContext_, task_, environment_.calendars, now_, lastProcessedHere_)};
  TaskAssessment& assessment = pass.assessment;
  if (!assessment.history) {
    warnOnce(task_,
             fmt::format("The frequency of task {} cannot be read; it is left alone", task_.uniqueId.value_or("")));
    return pass;
  }
  processAutomaticTaskUntilToday(pass);
  const bool wantsToChangeLog =
      pass.automatic.revision.from || !assessment.history->fillIns.empty() || !assessment.futureEntries.empty();
  if (wantsToChangeLog && belongsToSomebodyElse()) {
    pass.automatic = {};
    pass.healthAnchor.reset();
    pass.anchorMustBeKept = false;
    assessment.history->fillIns.clear();
    assessment.futureEntries.clear();
  }
  if (pass.automatic.revision.from || !pass.automatic.revision.isEmpty())
    judgeAnew(pass.automatic.revision, assessment);
  if (qz::log::isKept(qz::log::Level::debug)) logFullEntries(managedObjectContext_, task_, assessment);
  return pass;
}

bool TaskProcessorSingleTaskOperation::belongsToSomebodyElse() const {
  const auto* share = rowOfTask<TaskShareEntity>(managedObjectContext_, task_.objectID);
  return share != nullptr && share->owner != ObjectID::none;
}

void TaskProcessorSingleTaskOperation::judgeAnew(const LogRevision& revision, TaskAssessment& assessment) const {
  TaskAssessment anew = assessment;
  revise(managedObjectContext_, task_, revision, anew);
  // Days that are only looked at again, and stay as they are, are worth no write.
  if (!revision.isEmpty() || anew.history->fillIns.size() != assessment.history->fillIns.size())
    assessment = std::move(anew);
}

bool TaskProcessorSingleTaskOperation::changesTask(const Pass& pass) {
  const TaskAssessment& assessment = pass.assessment;
  if (!assessment.futureEntries.empty() || needsRepair(task_)) return true;
  const TaskTemporalDataEntity* data = findTemporalData(managedObjectContext_, task_);
  if (data == nullptr || !pass.automatic.revision.isEmpty()) return true;
  if (!assessment.history) return false;
  if (!assessment.history->fillIns.empty() || !wasProcessedToday(task_, assessment)) return true;
  if (assessment.checkpointIsStale && assessment.history->checkpoint) return true;
  TaskTemporalDataEntity wanted = *data;
  putFigures(wanted, assessment.history->figures);
  return wanted != *data;
}

auto TaskProcessorSingleTaskOperation::write(const Pass& pass) -> Result {
  if (!hasSomethingToWrite(pass)) return {};
  const Result result = changesTask(pass) ? _main(pass) : Result{};
  if (pass.healthAnchor) managedObjectContext_.setHealthAnchor(task_.objectID, *pass.healthAnchor);
  // What changes until it is measured again is not late.
  if (!pass.isMeasured) managedObjectContext_.removeHealthAnchor(task_.objectID);
  return result;
}

auto TaskProcessorSingleTaskOperation::_main(const Pass& pass) -> Result {
  TaskAssessment assessment = pass.assessment;
  for (const LogKey& key : pass.automatic.revision.removed) managedObjectContext_.removeLogEntry(key);
  const std::size_t filledIn = processSkipAndMiss(pass, false).entries.size();
  if (!pass.automatic.failures.empty()) {
    retypeFailures(managedObjectContext_, task_, *assessment.rules, pass.automatic.failures);
    revise(managedObjectContext_, task_, {}, assessment);
  }
  removeFutureEntries(assessment);
  storeFigures(assessment);
  if (canUpdateSharedTasksOnCloud_) updateSharedTask(assessment);
  return {.taskWasUpdated = true,
          .filledIn = filledIn,
          .removed = assessment.futureEntries.size(),
          .decidedPeriod = pass.automatic.decidesPeriod};
}

void TaskProcessorSingleTaskOperation::processAutomaticTaskUntilToday(Pass& pass) const {
  const auto type = automaticTypeOf(task_);
  pass.isMeasured = type && measurementFamily(*type);
  if (!pass.isMeasured || environment_.health == nullptr) return;
  const auto taskId = task_.uniqueId ? qz::UniqueID::fromText(*task_.uniqueId) : std::nullopt;
  const HealthMeasuring measuring(*environment_.health, *type, taskId, pass.assessment.calendar, samplesToLeaveOut());
  HealthNews news(*environment_.health, measuring, managedObjectContext_.healthAnchor(task_.objectID),
                  pass.assessment.today);
  if (!news.hasData() || lateData_ == LateData::wait) news.leave();
  if (news.hasData()) pass.automatic = automaticEntries(pass.assessment, *type, measuring, news);
  pass.healthAnchor = news.anchor();
  const bool wasFar = news.earliestDay() && *news.earliestDay() < recentFrom(pass.assessment).add(-longestWay);
  pass.anchorMustBeKept = news.mustBeKept() || (pass.healthAnchor && wasFar);
}

std::set<qz::UniqueID> TaskProcessorSingleTaskOperation::samplesToLeaveOut() const {
  if (environment_.standardDefaults == nullptr) return {};
  try {
    return withdrawnSamples(managedObjectContext_, *environment_.standardDefaults);
  } catch (const StoreError& error) {
    warnOnce(task_, fmt::format("Samples of entries that are gone are measured: {}", error.what()));
    return {};
  }
}

AutomaticPlan TaskProcessorSingleTaskOperation::automaticEntries(const TaskAssessment& assessment,
                                                                 const AutomaticTaskType& type,
                                                                 const HealthMeasuring& measuring,
                                                                 const HealthNews& news) const {
  const qz::YYYYMMDD recent = recentFrom(assessment);
  const qz::YYYYMMDD from = std::min(recent, news.earliestDay().value_or(recent));
  const qz::YYYYMMDD current = assessment.history->figures.period.startDate;

  AutomaticEntries entries(managedObjectContext_, task_, assessment, type, measuring, now_);
  const auto add = [&](const PeriodOfLog& walked) {
    const TaskFrequencyPeriod& period = walked.period;
    const PeriodNews isNew = news.of(period);
    if (!isNew.mayHaveChanged && period.finishDate < recent) return;
    const bool isPrevious =
        period.finishDate.nextDay() == current && period.finishDate >= assessment.today.add(-passOverlap);
    if (isPrevious) qz::log::debug("Can reprocess previous period");
    const bool isLookedAtAgain = isNew.mayHaveChanged || (isPrevious && !isNew.isOfOtherMeasure);
    if (!walked.isOpen && !isLookedAtAgain && hasFullEntry(walked)) return;
    entries.add(walked, isNew);
  };
  visitPeriods(managedObjectContext_, task_, assessment, from, {}, add);
  return entries.finish();
}

auto TaskProcessorSingleTaskOperation::processSkipAndMiss(const Pass& pass, bool dryRun) const -> SkipAndMissReport {
  SkipAndMissReport report;
  if (!pass.assessment.history) return report;
  const TaskLogRecorder::Request request = this->request(pass);
  for (const TaskLogRecorder::LogEntryData& entry : request.logEntries)
    report.entries.push_back({.period = entry.period.period, .entryType = entry.type});
  std::ranges::stable_sort(report.entries, {}, [](const auto& entry) { return entry.period.startDate; });
  if (!dryRun && !request.logEntries.empty()) environment_.recorder.recordNow(task_, request);
  return report;
}

TaskLogRecorder::Request TaskProcessorSingleTaskOperation::request(const Pass& pass) const {
  const TaskAssessment& assessment = pass.assessment;
  TaskLogRecorder::Request request{.managedObjectContext = managedObjectContext_,
                                   .context = TaskModifyContext::systemInitiatedFromDeviceActivityExtension,
                                   .saveContext = false,
                                   .logEntries = pass.automatic.entries,
                                   .createdTimestamp = now_,
                                   .createdTimeZone = assessment.calendar.timeZone};
  request.logEntries.reserve(request.logEntries.size() + assessment.history->fillIns.size());
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
  return request;
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

void TaskProcessorSingleTaskOperation::updateSharedTask(const TaskAssessment& assessment) {
  // Habits that are being made up with a streak are told of when they are done.
  if (context_ == TaskModifyContext::userInitiatedPopulateInitialStreak || !assessment.history) return;
  auto* share = rowOfTask<TaskShareEntity>(managedObjectContext_, task_.objectID);
  if (share == nullptr || share->owner != ObjectID::none) return;
  const auto summary = cloudSummary(task_, assessment.history->figures, layoutDirection_, now_);
  if (summary && setSummary(*share, *summary)) environment_.sharedTasks.put(managedObjectContext_, task_, now_);
}

}  // namespace habitra
