#include <HabitraCore/AutomaticTaskType/StoredAutomaticType.h>
#include <HabitraCore/StoredFrequency.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <QZKit/Checked.h>

#include <utility>

namespace habitra {

namespace {

std::optional<qz::YYYYMMDD> existing(const std::optional<qz::YYYYMMDD>& day) {
  return day && day->exists() ? day : std::nullopt;
}

}  // namespace

bool isActive(const TaskEntity& task) { return task.status == task_status::active; }

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

std::optional<AutomaticTaskType> automaticTypeOf(const TaskEntity& task) {
  return automaticType({.typeName = task.typeName,
                        .typeUnit = task.typeUnit,
                        .typeSpeed = task.typeSpeed,
                        .typeTarget = task.typeTarget,
                        .typeExtra = task.typeExtra});
}

void setAutomaticType(TaskEntity& task, const std::optional<AutomaticTaskType>& type) {
  StoredAutomaticType columns = type ? stored(*type) : StoredAutomaticType{};
  task.typeName = std::move(columns.typeName);
  task.typeUnit = std::move(columns.typeUnit);
  task.typeSpeed = std::move(columns.typeSpeed);
  task.typeTarget = columns.typeTarget;
  task.typeExtra = std::move(columns.typeExtra);
}

std::optional<TaskRules> rulesOf(const TaskEntity& task) {
  const auto frequency = frequencyOf(task);
  if (!frequency) return std::nullopt;
  const auto type = automaticTypeOf(task);
  return TaskRules{
      .frequency = *frequency,
      .isNegative = task.isNegative,
      .firstDayOfWeek = qz::DayOfWeek::fromRawValue(task.firstDayOfWeekValue).value_or(qz::DayOfWeek::sunday),
      .referenceDate = existing(dayFromStored(task.referenceDateValue)),
      .measure = type ? type->measure() : TaskMeasure{}};
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

std::int32_t storedDay(const std::optional<qz::YYYYMMDD>& day) {
  return day ? qz::checkedNarrow<std::int32_t>(day->intValue()) : 0;
}

std::optional<qz::YYYYMMDD> dayFromStored(std::int32_t value) { return qz::YYYYMMDD::fromRawValue(value); }

}  // namespace habitra
