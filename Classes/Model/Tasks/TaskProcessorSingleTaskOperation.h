#pragma once

#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/TaskAssessment.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <HabitraModel/Tasks/TaskLogRecorder.h>
#include <HabitraModel/Tasks/TaskModifyContext.h>
#include <QZKit/Clock.h>

#include <cstddef>

namespace habitra {

/// Brings one task up to date: fills in the days that are over, deletes entries of the future, repairs what is absent,
/// and stores the derived figures where they differ from what is stored.
///
/// Works on the queue of its context.
class TaskProcessorSingleTaskOperation {
 public:
  struct Result {
    bool taskWasUpdated = false;  ///< anything of the task changed
    std::size_t filledIn = 0;     ///< automatic entries added
    std::size_t removed = 0;      ///< entries of the future deleted
  };

  /// Everything handed in must live longer than the operation. `task` is an object of `managedObjectContext`.
  TaskProcessorSingleTaskOperation(StoreContext& managedObjectContext, TaskEntity& task, const TaskCalendars& calendars,
                                   TaskLogRecorder& recorder, qz::Moment now);

  /// The pass over one task as a transaction of its own. Reads and walks without the writers' turn; takes it only when
  /// there is something to write, and walks again if anything was saved in between.
  Result run();

  /// The same inside the caller's unit, which the caller saves. REQUIRES: the context is in a unit.
  Result runInUnit();

 private:
  [[nodiscard]] bool hasSomethingToWrite(const TaskAssessment& assessment);
  Result apply(const TaskAssessment& assessment);
  void processSkipAndMiss(const TaskAssessment& assessment);
  void removeFutureEntries(const TaskAssessment& assessment);
  void storeFigures(const TaskAssessment& assessment);

  StoreContext& managedObjectContext_;
  TaskEntity& task_;
  const TaskCalendars& calendars_;
  TaskLogRecorder& recorder_;
  qz::Moment now_;
};

}  // namespace habitra
