#include <HabitraBackup/Exchange/TaskMatching.h>
#include <HabitraBackup/Exchange/TaskValues.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <HabitraModel/Tasks/TaskTitle.h>

#include <utility>

namespace habitra {

TaskMatching::TaskMatching(StoreContext& context, const HabitraJSONBackup& document) {
  for (const TaskEntity* task : context.fetchAll<TaskEntity>()) {
    const auto id = task->uniqueId ? qz::UniqueID::fromText(*task->uniqueId) : std::nullopt;
    if (task->status == task_status::deleted) {
      if (id) deletedIds_.insert(*id);
      continue;
    }
    if (id) byId_.try_emplace(*id, task->objectID);
    if (task->title) byTitle_[*task->title].push_back(task->objectID);
    // Rows say a title as it is shown.
    if (std::string shown = shownTitle(*task); task->title && shown != *task->title)
      byTitle_[std::move(shown)].push_back(task->objectID);
  }
  for (const HabitraJSONBackupTask& task : document.tasks) {
    if (task.uniqueId && byId_.contains(*task.uniqueId)) claimed_.insert(byId_.at(*task.uniqueId));
  }
}

std::optional<ObjectID> TaskMatching::find(const HabitraJSONBackupTask& task) {
  if (task.uniqueId) {
    const auto found = byId_.find(*task.uniqueId);
    return found == byId_.end() ? std::nullopt : std::optional(found->second);
  }
  const auto candidates = byTitle_.find(titleOf(task));
  if (candidates == byTitle_.end()) return std::nullopt;
  for (const ObjectID candidate : candidates->second) {
    if (claimed_.insert(candidate).second) return candidate;
  }
  return std::nullopt;
}

void TaskMatching::noteBroughtIn(const TaskEntity& task) {
  broughtIn_.insert(task.objectID);
  if (const auto id = task.uniqueId ? qz::UniqueID::fromText(*task.uniqueId) : std::nullopt)
    byId_.insert_or_assign(*id, task.objectID);
}

}  // namespace habitra
