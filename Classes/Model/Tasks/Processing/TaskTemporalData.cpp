#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Tasks/Processing/TaskTemporalData.h>
#include <HabitraModel/Tasks/RowOfTask.h>

#include <algorithm>
#include <cstdint>
#include <limits>

namespace habitra {

namespace {

std::int16_t storedSamples(std::int64_t numSamples) {
  return static_cast<std::int16_t>(std::min<std::int64_t>(numSamples, std::numeric_limits<std::int16_t>::max()));
}

}  // namespace

TaskTemporalDataEntity* findTemporalData(StoreContext& context, const TaskEntity& task) {
  return rowOfTask<TaskTemporalDataEntity>(context, task.objectID);
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
  data.recentShortTermNumSamples = storedSamples(figures.shortTerm.numSamples);
  data.recentLongTermPct = figures.longTerm.successPct;
  data.recentLongTermNumSamples = storedSamples(figures.longTerm.numSamples);
  if (figures.isProgressTracked) {
    data.progress = figures.progress;
    data.progressDate = storedDay(figures.progressDate);
  }
}

}  // namespace habitra
