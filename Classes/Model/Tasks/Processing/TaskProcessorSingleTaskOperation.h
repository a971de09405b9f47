#pragma once

#include <HabitraModel/Links/TaskLink.h>
#include <HabitraModel/Settings/KeyValueDefaults.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/Processing/AutomaticEntries.h>
#include <HabitraModel/Tasks/Processing/HealthMeasuring.h>
#include <HabitraModel/Tasks/Processing/HealthNews.h>
#include <HabitraModel/Tasks/Processing/LayoutDirection.h>
#include <HabitraModel/Tasks/Processing/TaskAssessment.h>
#include <HabitraModel/Tasks/Processing/TaskClaim.h>
#include <HabitraModel/Tasks/Recording/TaskLogRecorder.h>
#include <HabitraModel/Tasks/Recording/TaskModifyContext.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <QZHealthKit/QZHealthStore.h>
#include <QZKit/Clock.h>
#include <QZKit/Error.h>
#include <QZKit/UniqueID.h>

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace habitra {

/// Brings one task up to date: records what health data say of it (AutomaticEntries), fills in the days that are over,
/// deletes entries of the future, repairs what is absent, stores the derived figures where they differ from what is
/// stored, and tells those who share it.
///
/// Health data are looked at from the last processed day on, two days before it included; before that only where they
/// have changed since the task last took them into account (HealthNews), which is kept in the same transaction. A task
/// that is completed by hand asks no health store for anything. All that a pass adds is one request to the recorder. A
/// task that somebody else shares is only assessed.
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
    /// What is known of samples that were written for entries; null: none were.
    const KeyValueDefaults* standardDefaults = nullptr;
  };

  /// What becomes of health data that came late, for days that are over.
  enum class LateData {
    reopen,  ///< those days
    wait,    ///< for the next pass
  };

  struct Result {
    bool taskWasUpdated = false;  ///< anything of the task changed
    std::size_t filledIn = 0;     ///< automatic entries added
    std::size_t removed = 0;      ///< entries of the future deleted
    bool decidedPeriod = false;   ///< health data completed or failed a period
  };

  /// The entries that a pass would add, by their period.
  struct SkipAndMissReport {
    struct Entry {
      TaskFrequencyPeriod period;
      TaskLogEntryType entryType{};

      friend bool operator==(const Entry&, const Entry&) = default;
    };
    std::vector<Entry> entries;
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
  /// earlier than what the task says.
  TaskProcessorSingleTaskOperation(const Environment& environment, StoreContext& managedObjectContext, TaskEntity& task,
                                   TaskModifyContext context, LayoutDirection layoutDirection,
                                   bool canUpdateSharedTasksOnCloud, qz::Moment now,
                                   std::optional<qz::Moment> lastProcessedHere = std::nullopt,
                                   LateData lateData = LateData::reopen);

  /// The pass over one task as a transaction of its own. Reads and walks without the writers' turn; takes it only when
  /// there is something to write, and walks again if anything was saved in between. Throws ProcessorError, and
  /// qz::QZHealthStoreError where the task asks for health data that cannot be read; nothing is written then, so that
  /// no day is taken for one without data.
  Result run();

  /// The same inside the caller's unit, which the caller saves; nothing is changed where it throws these errors.
  /// REQUIRES: the context is in a unit.
  Result runInUnit();

  /// What a pass would add. Writes nothing, takes no turn, and may be asked while the task is being processed. Throws
  /// qz::QZHealthStoreError.
  [[nodiscard]] SkipAndMissReport dryRun() const;

 private:
  /// What a pass has found and is about to do.
  struct Pass {
    TaskAssessment assessment;
    AutomaticPlan automatic;
    std::optional<std::string> healthAnchor;  ///< to be kept with what is written; none: as it is
    bool anchorMustBeKept = false;            ///< also where nothing else is written
    bool isMeasured = true;                   ///< by health data or screen time; else no anchor is kept
  };

  [[nodiscard]] TaskClaim claim() const;
  [[nodiscard]] Pass prepare() const;
  [[nodiscard]] bool belongsToSomebodyElse() const;
  [[nodiscard]] bool changesTask(const Pass& pass);
  [[nodiscard]] bool hasSomethingToWrite(const Pass& pass) { return pass.anchorMustBeKept || changesTask(pass); }
  Result write(const Pass& pass);
  Result _main(const Pass& pass);
  void processAutomaticTaskUntilToday(Pass& pass) const;
  [[nodiscard]] AutomaticPlan automaticEntries(const TaskAssessment& assessment, const AutomaticTaskType& type,
                                               const HealthMeasuring& measuring, const HealthNews& news) const;
  [[nodiscard]] std::set<qz::UniqueID> samplesToLeaveOut() const;
  void judgeAnew(const LogRevision& revision, TaskAssessment& assessment) const;
  SkipAndMissReport processSkipAndMiss(const Pass& pass, bool dryRun) const;
  [[nodiscard]] TaskLogRecorder::Request request(const Pass& pass) const;
  void removeFutureEntries(const TaskAssessment& assessment);
  void storeFigures(const TaskAssessment& assessment);
  /// Tells those who share the task how it stands, where that is new to them.
  void updateSharedTask(const TaskAssessment& assessment);

  const Environment environment_;
  StoreContext& managedObjectContext_;
  TaskEntity& task_;
  const TaskModifyContext context_;
  const LayoutDirection layoutDirection_;
  const bool canUpdateSharedTasksOnCloud_;
  const qz::Moment now_;
  const std::optional<qz::Moment> lastProcessedHere_;
  const LateData lateData_;
};

}  // namespace habitra
