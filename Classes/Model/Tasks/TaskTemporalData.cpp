#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <HabitraModel/Tasks/TaskTemporalData.h>
#include <QZKit/Checked.h>

namespace habitra {

TaskTemporalDataEntity* findTemporalData(StoreContext& context, const TaskEntity& task) {
  const auto found = context.fetchRelated<TaskTemporalDataEntity>("task", task.objectID);
  return found.empty() ? nullptr : found.front();
}

TaskTemporalDataEntity& findOrInsertTemporalData(StoreContext& context, const TaskEntity& task) {
  if (auto* found = findTemporalData(context, task)) return *found;
  TaskTemporalDataEntity data;
  data.task = task.objectID;
  data.lastChangedDifficulty = task.lastChangedDifficulty;
  data.lastChangedDifficultyStatus = task.lastChangedDifficultyStatus;
  data.lastChangedDifficultyTimeZone = task.lastChangedDifficultyTimeZone;
  return context.insert(data);
}

void putFigures(TaskTemporalDataEntity& data, const TaskFigures& figures) {
  data.activeStreak = figures.streak.current;
  data.bestStreak = figures.streak.best;
  data.lastCompleted = storedDay(figures.lastCompleted);
  data.lastMissed = storedDay(figures.lastMissed);
  data.lastSkipped = storedDay(figures.lastSkipped);
  data.recentShortTermPct = figures.shortTerm.successPct;
  data.recentShortTermNumSamples = qz::checkedNarrow<std::int16_t>(figures.shortTerm.numSamples);
  data.recentLongTermPct = figures.longTerm.successPct;
  data.recentLongTermNumSamples = qz::checkedNarrow<std::int16_t>(figures.longTerm.numSamples);
  if (figures.isProgressTracked) {
    data.progress = figures.progress;
    data.progressDate = storedDay(figures.progressDate);
  }
}

}  // namespace habitra
