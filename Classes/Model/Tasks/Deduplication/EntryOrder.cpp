#include <HabitraModel/Store/Entities/HealthKitRequestEntity.h>
#include <HabitraModel/Tasks/Deduplication/EntryOrder.h>

#include <algorithm>
#include <cstddef>

namespace habitra {

void putRowsInOrder(StoreContext& context, const std::vector<TaskLogEntryEntity>& inOrder) {
  if (std::ranges::is_sorted(inOrder, {}, &TaskLogEntryEntity::objectID)) return;
  std::vector<TaskLogEntryEntity> rows = inOrder;
  std::ranges::sort(rows, {}, &TaskLogEntryEntity::objectID);
  std::vector<std::vector<HealthKitRequestEntity*>> requests;
  for (const TaskLogEntryEntity& entry : inOrder)
    requests.push_back(context.fetchRelated<HealthKitRequestEntity>("taskLogEntry", entry.objectID));
  for (std::size_t i = 0; i < rows.size(); ++i) {
    TaskLogEntryEntity entry = inOrder[i];
    entry.objectID = rows[i].objectID;
    context.updateLogEntry(rows[i].key(), entry);
    for (HealthKitRequestEntity* request : requests[i]) request->taskLogEntry = entry.objectID;
  }
}

}  // namespace habitra
