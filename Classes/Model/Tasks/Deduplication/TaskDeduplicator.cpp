#include <HabitraModel/Store/Engine/RowCoding.h>
#include <HabitraModel/Tasks/Deduplication/DoubleRows.h>
#include <HabitraModel/Tasks/Deduplication/LogUnion.h>
#include <HabitraModel/Tasks/Deduplication/TaskDeduplicator.h>
#include <HabitraModel/Tasks/Processing/TaskProcessor.h>
#include <QZLog/Log.h>

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace habitra {
namespace {

/// A task with nothing but what makes it the same as another.
TaskEntity identityOf(const TaskEntity& task) {
  TaskEntity identity;
  identity.uniqueId = task.uniqueId;
  identity.title = task.title;
  identity.daysMode = task.daysMode;
  identity.daysOfWeek = task.daysOfWeek;
  identity.daysPerWeek = task.daysPerWeek;
  identity.daysTimesPerDay = task.daysTimesPerDay;
  identity.daysOfMonth = task.daysOfMonth;
  // A count of seconds in place of microseconds: the last moments of time have no whole second of their own.
  if (task.created)
    identity.created = qz::Moment(
        std::chrono::microseconds(std::chrono::floor<std::chrono::seconds>(*task.created).time_since_epoch().count()));
  return identity;
}

/// Takes over what of a task bears the moment of its change, where it was changed later.
void takeLaterChanges(TaskEntity& survivor, const TaskEntity& other) {
  if (other.statusDate > survivor.statusDate) {
    survivor.status = other.status;
    survivor.statusDate = other.statusDate;
  }
  if (other.lastChangedDifficulty > survivor.lastChangedDifficulty) {
    survivor.lastChangedDifficulty = other.lastChangedDifficulty;
    survivor.lastChangedDifficultyStatus = other.lastChangedDifficultyStatus;
    survivor.lastChangedDifficultyTimeZone = other.lastChangedDifficultyTimeZone;
  }
}

/// Makes one task of several; the rows of the others go, with all that is kept already.
void unite(StoreContext& context, TaskEntity& survivor, const std::vector<TaskEntity*>& others,
           TaskDeduplicator::Report& report) {
  report.unitedRows += uniteLogs(context, survivor, others);
  for (TaskEntity* other : others) {
    uniteRelatedRows(context, survivor, *other);
    takeLaterChanges(survivor, *other);
    if (survivor.userProfile == ObjectID::none) survivor.userProfile = other->userProfile;
    context.remove(*other);
    ++report.unitedTasks;
  }
}

/// Unites those of a group that are the same, which equal hashes do not prove.
void uniteGroup(StoreContext& context, const TaskDeduplicator::DuplicateGroup& group,
                TaskDeduplicator::Report& report) {
  std::vector<std::vector<TaskEntity*>> tasks;  // that are one; the oldest row first
  for (const ObjectID id : group.objectIDs) {
    TaskEntity* task = context.find<TaskEntity>(id);
    const auto same = std::ranges::find(tasks, identityOf(*task),
                                        [](const std::vector<TaskEntity*>& one) { return identityOf(*one.front()); });
    if (same == tasks.end())
      tasks.push_back({task});
    else
      same->push_back(task);
  }
  for (const std::vector<TaskEntity*>& one : tasks)
    if (one.size() > 1) unite(context, *one.front(), {one.begin() + 1, one.end()}, report);
}

}  // namespace

TaskDeduplicator::TaskDeduplicator(std::optional<qz::UniqueID> deduplicationId)
    : deduplicationId_(std::move(deduplicationId)) {}

auto TaskDeduplicator::duplicateGroups(StoreContext& context) -> std::vector<DuplicateGroup> {
  std::vector<DuplicateGroup> groups;
  for (const std::string& uniqueId : context.repeatedTexts<TaskEntity>("uniqueId")) {
    std::map<std::int64_t, std::set<ObjectID>> byHash;
    for (const TaskEntity* task : context.fetch<TaskEntity>("uniqueId", uniqueId)) {
      const TaskEntity identity = identityOf(*task);
      byHash[rowChecksum(TaskEntity::description(), &identity)].insert(task->objectID);
    }
    for (auto& [hash, objectIDs] : byHash)
      if (objectIDs.size() > 1) groups.push_back({hash, std::move(objectIDs)});
  }
  std::ranges::sort(groups, {}, [](const DuplicateGroup& group) { return *group.objectIDs.begin(); });
  return groups;
}

auto TaskDeduplicator::deduplicate(StoreContext& context) const -> Report {
  context.beginUnit();
  Report report;
  for (const DuplicateGroup& group : duplicateGroups(context)) uniteGroup(context, group, report);
  report.renamedTasks = TaskProcessor::cleanUpDuplicatedTaskIDs(context);
  const DoubleRows rows = resolveDoubleRows(context);
  report.unitedRows += rows.united;
  report.renamedRows += rows.renamed;
  if (report != Report{})
    qz::log::info("Deduplication {}: {} tasks united, {} renamed, {} other rows united, {} renamed",
                  deduplicationId_ ? deduplicationId_->text() : "", report.unitedTasks, report.renamedTasks,
                  report.unitedRows, report.renamedRows);
  return report;
}

}  // namespace habitra
