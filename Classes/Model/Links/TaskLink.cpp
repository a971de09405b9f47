#include <HabitraModel/Links/TaskLink.h>

namespace habitra {

void OutboxTaskLink::put(StoreContext& context, const TaskEntity& task, qz::Moment due) {
  // A row that came without an identifier gets one at the next pass, which changes it.
  if (task.uniqueId) context.putInOutbox(link_, *task.uniqueId, due);
}

}  // namespace habitra
