#include <HabitraModel/Settings/Settings.h>
#include <HabitraModel/Tasks/Processing/TaskProcessor.h>
#include <QZKit/Trap.h>
#include <QZKit/UniqueID.h>
#include <QZLog/Log.h>

#include <algorithm>
#include <string>
#include <utility>

namespace habitra {

std::size_t TaskProcessor::cleanUpDuplicatedTaskIDs(StoreContext& context) {
  qz::require(context.isInUnit(), "identifiers are changed outside a unit");
  std::vector<TaskEntity*> duplicates;
  for (const std::string& uniqueId : context.repeatedTexts<TaskEntity>("uniqueId")) {
    auto bearers = context.fetch<TaskEntity>("uniqueId", uniqueId);
    std::ranges::stable_sort(bearers, {}, &TaskEntity::created);
    duplicates.insert(duplicates.end(), bearers.begin() + 1, bearers.end());
  }
  if (duplicates.empty()) return 0;

  qz::log::info("Updating task IDs for duplicate entries ({})", duplicates.size());
  for (TaskEntity* task : duplicates) {
    const std::string old = *task->uniqueId;
    qz::log::info("Updating duplicate task ID ({})", old);
    task->uniqueId = qz::UniqueID::generate(context.store().clock().now()).text();
    StoreSettings(context).copy(settings::pausesOf(old), settings::pausesOf(*task->uniqueId));
  }
  return duplicates.size();
}

}  // namespace habitra
