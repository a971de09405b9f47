#include <HabitraBackup/Exchange/TaskValues.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>

namespace habitra {

bool isDeleted(const HabitraJSONBackupTask& task) {
  return task.record && task.record->task.status == task_status::deleted;
}

std::string titleOf(const HabitraJSONBackupTask& task) {
  return task.title.value_or(task.titleFormatted.value_or(std::string()));
}

TaskEntity newTaskValues(const HabitraJSONBackupTask& task, const NewTaskDefaults& defaults) {
  const TaskEntity newlyMade = newlyMadeTask(titleOf(task), defaults.firstDayOfWeek, defaults.now, defaults.timeZone);
  TaskEntity values = task.record ? task.record->task : newlyMade;
  if (task.record) {
    values.title = newlyMade.title;
    values.uniqueId.reset();
    values.userProfile = ObjectID::none;
    takeDerivedValues(values, TaskEntity());
    if (!values.status) values.status = newlyMade.status;
    if (!values.created) {
      values.created = newlyMade.created;
      values.createdTimeZone = newlyMade.createdTimeZone;
    }
  }
  if (!values.imageName && task.visualRepresentation) values.imageName = task.visualRepresentation->text();
  return values;
}

void takeDerivedValues(TaskEntity& task, const TaskEntity& from) {
  task.activeStreak = from.activeStreak;
  task.bestStreak = from.bestStreak;
  task.cloudStatus = from.cloudStatus;
  task.cloudStatusDate = from.cloudStatusDate;
  task.last7NumSamples = from.last7NumSamples;
  task.last7Pct = from.last7Pct;
  task.last30NumSamples = from.last30NumSamples;
  task.last30Pct = from.last30Pct;
  task.lastCompleted = from.lastCompleted;
  task.lastCompletedTime = from.lastCompletedTime;
  task.lastMissed = from.lastMissed;
  task.lastProcessedDate = from.lastProcessedDate;
  task.lastSkipped = from.lastSkipped;
}

}  // namespace habitra
