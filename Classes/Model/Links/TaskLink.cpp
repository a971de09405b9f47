#include <HabitraModel/Links/TaskLink.h>

namespace habitra {

void OutboxTaskLink::put(StoreContext& context, const TaskEntity& task, qz::Moment due) {
  context.putInOutbox(link_, task.objectID, due);
}

}  // namespace habitra
