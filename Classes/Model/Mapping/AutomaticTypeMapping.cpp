#include <HabitraCore/AutomaticTaskType/StoredAutomaticType.h>
#include <HabitraModel/Mapping/AutomaticTypeMapping.h>

#include <utility>

namespace habitra {

std::optional<AutomaticTaskType> automaticTypeOf(const TaskEntity& task) {
  return automaticType({.typeName = task.typeName,
                        .typeUnit = task.typeUnit,
                        .typeSpeed = task.typeSpeed,
                        .typeTarget = task.typeTarget,
                        .typeExtra = task.typeExtra});
}

void setAutomaticType(TaskEntity& task, const std::optional<AutomaticTaskType>& type) {
  if (automaticTypeOf(task) == type) return;
  StoredAutomaticType columns = type ? stored(*type) : StoredAutomaticType{};
  task.typeName = std::move(columns.typeName);
  task.typeUnit = std::move(columns.typeUnit);
  task.typeSpeed = std::move(columns.typeSpeed);
  task.typeTarget = columns.typeTarget;
  task.typeExtra = std::move(columns.typeExtra);
}

}  // namespace habitra
