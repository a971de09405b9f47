#include <HabitraModel/Store/RowCoding.h>
#include <HabitraModel/Tasks/DoubleRows.h>
#include <HabitraModel/Tasks/LogUnion.h>
#include <HabitraModel/Tasks/TaskDeduplicator.h>
#include <HabitraModel/Tasks/TaskProcessor.h>
#include <QZLog/Log.h>

#include <algorithm>
#include <map>
#include <string>
#include <utility>

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

/// Makes one task of two; the row of `other` goes, with all that is kept already.
void unite(StoreContext& context, TaskEntity& survivor, TaskEntity& other, TaskDeduplicator::Report& report) {
  const DoubleRows entries = uniteLogs(context, survivor, other);
  report.unitedRows += entries.united;
  report.renamedRows += entries.renamed;
  uniteRelatedRows(context, survivor, other);
  if (survivor.userProfile == ObjectID::none) survivor.userProfile = other.userProfile;
  // None is earlier than any moment: then all of it is looked at again.
  survivor.lastProcessedDate = std::min(survivor.lastProcessedDate, other.lastProcessedDate);
  context.remove(other);
  ++report.unitedTasks;
}

/// Unites those of a group that are the same, which equal hashes do not prove.
void uniteGroup(StoreContext& context, const TaskDeduplicator::DuplicateGroup& group,
                TaskDeduplicator::Report& report) {
  std::vector<TaskEntity*> survivors;
  for (const ObjectID id : group.objectIDs) {
    TaskEntity* task = context.find<TaskEntity>(id);
    const auto same = std::ranges::find(survivors, identityOf(*task),
                                        [](const TaskEntity* survivor) { return identityOf(*survivor); });
    if (same == survivors.end())
      survivors.push_back(task);
    else
      unite(context, **same, *task, report);
  }
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
