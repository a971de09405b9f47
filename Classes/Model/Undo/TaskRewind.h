#pragma once

#include <HabitraCore/TaskRules.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <HabitraModel/Undo/DaySpans.h>
#include <HabitraModel/Undo/LaterChanges.h>
#include <HabitraModel/Undo/LoggedPeriod.h>
#include <HabitraModel/UndoStack.h>

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace habitra {

/// What follows for the tasks whose entries or rules an undo puts back: which filled-in entries go, which come back,
/// and from which day on a pass has to work.
class TaskRewind {
 public:
  /// `later` is what came after the command, which was given at `commandMoment`.
  TaskRewind(StoreContext& context, const TaskCalendars& calendars, const LaterChanges& later, qz::Moment commandMoment)
      : context_(context), calendars_(calendars), later_(later), commandMoment_(commandMoment) {}

  /// The entry is put back, taken out or changed; of a changed one both forms are noted.
  void noteEntry(const TaskLogEntryEntity& entry);
  /// A filled-in entry that the command brought, and that is to go.
  void noteFilledIn(const TaskLogEntryEntity& entry);
  /// A filled-in entry that the command took out.
  void noteFilledInBefore(const TaskLogEntryEntity& entry);
  /// What the task is judged by is put back.
  void noteRules(ObjectID task);
  /// The task itself is put back.
  void noteTask(ObjectID task);

  /// Call when all else is put back.
  [[nodiscard]] std::vector<UndoStack::TouchedTask> apply();

 private:
  struct Touched {
    std::vector<TaskLogEntryEntity> entries;
    std::vector<TaskLogEntryEntity> filledIn;
    std::vector<TaskLogEntryEntity> filledInBefore;
    bool hasNewRules = false;
    std::int32_t beginning = 0;       ///< the day of the first entry before anything was put back
    std::optional<qz::YYYYMMDD> day;  ///< the first one to work out anew

    void takeIn(std::int32_t entryDate);
  };

  /// What is noted of a task; made before its log is changed.
  Touched& touched(ObjectID task);
  void rewind(TaskEntity& task, Touched& touched);
  /// Of a task that no pass will look at: what was filled in before comes back, and no more is changed.
  void putBackFilledIn(Touched& touched);
  /// Whether what the period holds now has taken the place of what was once filled in.
  [[nodiscard]] bool isReplaced(const TaskLogEntryEntity& filledIn);
  void removeOutdated(const TaskEntity& task, const DaySpans& affected, std::int32_t disturbed, Touched& touched);
  /// The days whose filled-in entries are no longer what they were.
  [[nodiscard]] DaySpans affectedDays(const TaskEntity& task, const Touched& touched);
  static void addPeriod(const TaskLogEntryEntity& entry, const std::optional<TaskRules>& rules, DaySpans& affected);
  void addFollowingDays(ObjectID task, const Touched& touched, const TaskRules& rules, DaySpans& affected);
  /// The entry with which the history begins.
  [[nodiscard]] std::optional<TaskLogEntryEntity> firstEntry(ObjectID task, bool orFilledIn);
  /// The days that follow from the day of an entry by what the log says now.
  [[nodiscard]] std::optional<LoggedPeriod> daysFrom(ObjectID task, const TaskRules& rules, std::int32_t entryDate);
  /// The first of these days on which a later command changed entries of the task, or which follows from one that it
  /// changed: from there on, what was filled in before the command no longer holds either.
  [[nodiscard]] std::int32_t firstDisturbedDay(const TaskEntity& task, const DaySpans& affected);
  /// Whether a later command changed what the task is judged by: what was filled in before that stays as it was judged.
  [[nodiscard]] bool haveRulesChangedSince(const TaskEntity& task);
  /// Fills in the days from `from` on and before the first entry that there is now, if that came later than the
  /// command: passes had filled in these days before it was made, and would not look at them again.
  void fillInBeginning(qz::YYYYMMDD from, const TaskEntity& task);
  void removeEntry(const TaskLogEntryEntity& entry, Touched& touched);

  StoreContext& context_;
  const TaskCalendars& calendars_;
  const LaterChanges& later_;
  qz::Moment commandMoment_;
  std::map<ObjectID, Touched> tasks_;
};

}  // namespace habitra
