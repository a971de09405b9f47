#include <HabitraModel/Mapping/AutomaticTypeMapping.h>
#include <HabitraModel/Mapping/FrequencyMapping.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <HabitraModel/Tasks/TaskPauses.h>
#include <QZKit/Checked.h>

#include <utility>

namespace habitra {

bool isActive(const TaskEntity& task) { return task.status == task_status::active; }

std::optional<TaskRules> rulesOf(StoreContext& context, const TaskEntity& task) {
  auto rules = rulesWithoutPauses(task);
  if (rules) rules->pauses = pausesOf(context, task);
  return rules;
}

std::optional<TaskRules> rulesWithoutPauses(const TaskEntity& task) {
  const auto frequency = frequencyOf(task);
  if (!frequency) return std::nullopt;
  const auto type = automaticTypeOf(task);
  return TaskRules{
      .frequency = *frequency,
      .isNegative = task.isNegative,
      .firstDayOfWeek = qz::DayOfWeek::fromRawValue(task.firstDayOfWeekValue).value_or(qz::DayOfWeek::sunday),
      .referenceDate = existingDayFromStored(task.referenceDateValue),
      .measure = type ? type->measure() : TaskMeasure{}};
}

DatedPeriod periodHolding(const std::optional<TaskRules>& rules, qz::YYYYMMDD day) {
  if (rules) return rules->frequency.period(day, rules->firstDayOfWeek, rules->referenceDate);
  return DatedPeriod(day, TaskFrequencyPeriodType::day, qz::DayOfWeek::sunday);
}

DatedPeriod periodHolding(const TaskEntity& task, qz::YYYYMMDD day) {
  return periodHolding(rulesWithoutPauses(task), day);
}

TaskEntity newlyMadeTask(std::string title, qz::DayOfWeek firstDayOfWeek, qz::Moment now, std::string timeZone) {
  TaskEntity task;
  task.title = std::move(title);
  task.created = now;
  task.createdTimeZone = std::move(timeZone);
  task.status = task_status::active;
  task.statusDate = now;
  task.firstDayOfWeekValue = qz::checkedNarrow<std::int16_t>(firstDayOfWeek.rawValue());
  setFrequency(task, TaskFrequency::everyDay());
  return task;
}

}  // namespace habitra
