#include <HabitraCore/StoredFrequency.h>
#include <HabitraModel/Mapping/FrequencyMapping.h>

namespace habitra {

std::optional<TaskFrequency> frequencyOf(const TaskEntity& task) {
  return frequency(StoredFrequency{.daysMode = task.daysMode,
                                   .daysOfWeek = task.daysOfWeek,
                                   .daysPerWeek = task.daysPerWeek,
                                   .daysTimesPerDay = task.daysTimesPerDay,
                                   .daysOfMonth = task.daysOfMonth});
}

void setFrequency(TaskEntity& task, const TaskFrequency& frequency) {
  const StoredFrequency columns = stored(frequency);
  task.daysMode = columns.daysMode;
  task.daysOfWeek = columns.daysOfWeek;
  task.daysPerWeek = columns.daysPerWeek;
  task.daysTimesPerDay = columns.daysTimesPerDay;
  task.daysOfMonth = columns.daysOfMonth;
}

}  // namespace habitra
