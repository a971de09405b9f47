#pragma once

#include <HabitraModel/Links/TaskLink.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/LayoutDirection.h>
#include <HabitraModel/Tasks/TaskAssessment.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <HabitraModel/Tasks/TaskClaim.h>
#include <HabitraModel/Tasks/TaskLogRecorder.h>
#include <HabitraModel/Tasks/TaskModifyContext.h>
#include <QZHealthKit/QZHealthStore.h>
#include <QZHealthKit/QZHKChanges.h>
#include <QZKit/Clock.h>
#include <QZKit/Error.h>

#include <cstddef>
#include <optional>

namespace habitra {

/// Brings one task up to date: fills in the days that are over, deletes entries of the future, repairs what is absent,
/// and stores the derived figures where they differ from what is stored.
///
/// Works on the queue of its context.
class TaskProcessorSingleTaskOperation {
 public:
  /// What operations work with. All must live longer than they.
  struct Environment {
    const TaskCalendars& calendars;
    TaskLogRecorder& recorder;
    const qz::QZHealthStore* health;  ///< null: none
    TaskLink& sharedTasks;
  };

  struct Result {
    bool taskWasUpdated = false;  ///< anything of the task changed
    std::size_t filledIn = 0;     ///< automatic entries added
    std::size_t removed = 0;      ///< entries of the future deleted
    bool decidedPeriod = false;   ///< health data completed or failed a period
  };

  /// Another operation for the same task is under way in this process.
  class ProcessorError : public qz::Error {
   public:
    enum class Reason { taskAlreadyBeingProcessed };
    explicit ProcessorError(Reason reason);
    [[nodiscard]] Reason reason() const { return reason_; }

   private:
    Reason reason_;
  };

  /// `task` is an object of `managedObjectContext`; both must live longer than the operation. `context` is who caused
  /// the pass. `lastProcessedHere`: when this device processed the task last, where it knows; it counts when it is
  /// earlier than what the task says. `healthChanges`: what has changed in the health store since then.
  TaskProcessorSingleTaskOperation(const Environment& environment, StoreContext& managedObjectContext, TaskEntity& task,
                                   TaskModifyContext context, LayoutDirection layoutDirection,
                                   bool canUpdateSharedTasksOnCloud, qz::Moment now,
                                   std::optional<qz::Moment> lastProcessedHere = std::nullopt,
                                   qz::QZHKChanges healthChanges = {});

  /// The pass over one task as a transaction of its own. Reads and walks without the writers' turn; takes it only when
  /// there is something to write, and walks again if anything was saved in between. Throws ProcessorError.
  Result run();

  /// The same inside the caller's unit, which the caller saves. Throws ProcessorError. REQUIRES: the context is in a
  /// unit.
  Result runInUnit();

 private:
  [[nodiscard]] TaskClaim claim() const;
  [[nodiscard]] bool hasSomethingToWrite(const TaskAssessment& assessment);
  Result apply(const TaskAssessment& assessment);
  void processSkipAndMiss(const TaskAssessment& assessment);
  void removeFutureEntries(const TaskAssessment& assessment);
  void storeFigures(const TaskAssessment& assessment);

  const Environment environment_;
  StoreContext& managedObjectContext_;
  TaskEntity& task_;
  const TaskModifyContext context_;
  const LayoutDirection layoutDirection_;
  const bool canUpdateSharedTasksOnCloud_;
  const qz::Moment now_;
  const std::optional<qz::Moment> lastProcessedHere_;
  const qz::QZHKChanges healthChanges_;
};

}  // namespace habitra
