#pragma once

#include <HabitraCore/TaskLogEntryType.h>
#include <HabitraModel/DataManager.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/Processing/BackgroundTaskScheduler.h>
#include <HabitraModel/Tasks/Processing/LayoutDirection.h>
#include <HabitraModel/Tasks/Processing/PendingHealthRequests.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorObserver.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorReport.h>
#include <HabitraModel/Tasks/Recording/TaskLogRecorder.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZHealthKit/QZHealthStore.h>
#include <QZKit/Clock.h>
#include <QZKit/MainQueue.h>
#include <QZKit/NotificationCenter.h>
#include <QZKit/SerialQueue.h>
#include <QZKit/UniqueID.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace habitra {

/// Keeps the derived state of every task current as days pass: fills in skips and misses, lets health data complete
/// tasks, and stores streaks, last days and recent success. One per process. The rules themselves belong to
/// HabitraCore, the work on one task to TaskProcessorSingleTaskOperation.
///
/// A *full pass* goes over all active tasks. The first one of a process runs at once, in the context that the front end
/// reads from and on the caller's thread, so that what is shown next is right; later ones run on a queue of their own
/// in a context of their own, and those that are asked for while one waits are one. No pass runs while the store is in
/// maintenance or while bulk data updates are under way; one that was asked for meanwhile runs afterwards. What goes
/// wrong in a pass is logged and in its report.
///
/// Nothing is opened and no thread is made before a pass needs it. May be called from any thread, but for what takes a
/// context, which belongs to the context's queue, and for what is said of the first pass.
class TaskProcessor {
 public:
  using Report = TaskProcessorReport;
  /// Called on the main queue.
  using Completion = std::function<void(const TaskProcessorReport&)>;
  /// Called on the main queue, where there is one: with nothing when all is stored, else with the error; nothing was
  /// changed then.
  using ChangeCompletion = std::function<void(std::exception_ptr)>;

  static constexpr const char* queueLabel = "org.habitra.taskprocessor";
  static constexpr const char* operationQueueLabel = "org.habitra.taskprocessor.sto";
  static constexpr const char* refreshIdentifier = "org.habitra.taskprocessor.refresh";
  static constexpr const char* timerFinishedIdentifier = "org.habitra.ttm.timerFinished";

  /// Posted by the data manager's notifications, on the thread of the pass, after one has changed something in a
  /// context of its own.
  static constexpr const char* contextDidSave = "tp.contextDidSave";

  /// Activations that follow one another within this time are one: they arrive in bursts.
  static constexpr std::chrono::seconds activationInterval{1};

  /// What could not be done, but may be in a while, is tried again after this time.
  static constexpr std::chrono::minutes timeBetweenAttempts{1};

  /// What a processor works on and with. All must live longer.
  struct Environment {
    DataManager& dataManager;
    qz::MainQueue& mainQueue;
    TaskLogRecorder::Receivers receivers;
    qz::QZHealthStore* health = nullptr;  ///< null: there are no health data
    /// When the days begin, as a context sees it. Called on the queue of the context, whichever that is.
    std::function<TaskCalendars(StoreContext&)> calendars;
    /// The context that the front end reads from; null while there is no store. Called on the front end's thread.
    std::function<StoreContext*()> viewContext;
  };

  explicit TaskProcessor(Environment environment);
  /// Waits for what its queues still have to do. On the front end's thread.
  ~TaskProcessor();
  TaskProcessor(const TaskProcessor&) = delete;
  TaskProcessor& operator=(const TaskProcessor&) = delete;

  // Triggers

  /// Whether the process stays, or ends after its answer.
  enum class Lifetime : std::uint8_t {
    command,   ///< observes nothing
    resident,  ///< is woken by what it observes, and lets the next refresh be scheduled
  };

  /// At launch: a full pass.
  void applicationDidFinishLaunching(Lifetime lifetime, Completion completion = {});
  /// At each activation: a full pass, unless the last activation was no longer ago than `activationInterval`. A clock
  /// that was set back holds nothing up.
  void applicationDidBecomeActive(qz::Moment now);
  /// When the day of any task has changed: a full pass.
  void calendarDayChanged(Completion completion = {});

  /// A full pass. While the store is in maintenance `completion` is told of a pass over no tasks.
  void processAllTasks(Completion completion = {});

  /// A pass over these tasks only, now and on the calling thread, in a context of its own.
  TaskProcessorReport processTasks(const std::set<qz::UniqueID>& tasks, LayoutDirection layoutDirection);

  /// A full pass in the caller's context, now and on its thread. REQUIRES: no open unit and nothing unsaved.
  TaskProcessorReport processAllTasks(StoreContext& context, qz::Moment now);

  /// Brings one task up to date inside the caller's unit, which the caller saves. With a clock that cannot be right
  /// nothing is done, nor while another thread processes the task, which goes on after the unit, nor where health data
  /// that the task asks for cannot be read: what a person records does not depend on them.
  void process(StoreContext& context, TaskEntity& task, qz::Moment now);

  /// Whether a pass would look at a new day: some active task was last processed on another day than its today. One
  /// whose frequency cannot be read is left alone, and so never due.
  [[nodiscard]] bool isDue(StoreContext& context, qz::Moment now) const;

  /// After a process that stays has launched: observes no data any more. On the front end's thread; waits for a pass
  /// that they have set off.
  void stopObserving() noexcept;

  /// Writes to the health store what entries have asked for, and takes out of it what was asked for by entries that are
  /// gone; every full pass does. Where that has changed data, a pass over the tasks follows that are measured by them.
  /// While passes are held, that one is left to the pass that runs afterwards. Writes nothing where there is nothing of
  /// that. REQUIRES: no open unit and nothing unsaved.
  void processPendingHealthKitRequests(StoreContext& context);

  // Changes of many days at once

  /// A span of time in which many rows are changed; passes wait until the last one has ended.
  class BulkDataUpdate {
   public:
    explicit BulkDataUpdate(TaskProcessor& processor);
    ~BulkDataUpdate();
    BulkDataUpdate(const BulkDataUpdate&) = delete;
    BulkDataUpdate& operator=(const BulkDataUpdate&) = delete;

   private:
    TaskProcessor& processor_;
  };

  /// By day, what it is to stand for: a type by hand, or `unknown` to take back what stands there.
  using DayStatuses = std::map<qz::YYYYMMDD, TaskLogEntryType>;

  /// Sets many days of a task as one command, and brings the task up to date. Where a day lies before the task was
  /// made, the task's creation moves back to it. Fails with qz::Error for a day after the task's today and for a type
  /// that is not by hand, and as TaskLogRecorder. REQUIRES: no open unit and nothing unsaved.
  void setBulkDayStatuses(StoreContext& context, TaskEntity& task, const DayStatuses& statuses,
                          ChangeCompletion completion);

  /// A task to make, with the streak that its keeper says it has already.
  struct NewTask {
    TaskEntity values;  ///< with its identifier; its objectID is ignored
    std::int64_t initialStreak = 0;
  };
  /// The longest streak that a new task can begin with.
  static constexpr std::int64_t longestInitialStreak = 10'000;

  /// Makes tasks, as one command, each with a history that comes to its streak: completions of the last so many periods
  /// before today on which it is due, the first of which becomes its creation. The cloud is told nothing of them.
  /// Fails with qz::Error for a streak below 0 or too long, and for one of a task whose frequency cannot be.
  /// A unit of the caller's is saved along with it, or rolled back.
  void createTasksPopulateInitialStreak(StoreContext& context, const std::vector<NewTask>& tasks,
                                        ChangeCompletion completion);

  // Background tasks

  /// Lets a pass over the task run when its timer has run out. Throws StoreError.
  void scheduleTimerFinished(const qz::UniqueID& taskID, qz::Moment due);
  /// When the next background task is due, or to be tried again; none, with a line of the log, where that cannot be
  /// read.
  [[nodiscard]] std::optional<qz::Moment> nextBackgroundTask() const noexcept;
  /// Does what has become due: for a refresh a full pass, for a timer a pass over its task. Where what is due cannot be
  /// read or taken, a line of the log says so, and nothing is done until it is tried again.
  void runDueBackgroundTasks(qz::Moment now);

  /// Returns when the passes that were asked for have ended, but those that are held.
  void waitForPasses() { processorQueue_.drain(); }

  // Rows

  /// Gives tasks that bear the identifier of an older one (by `created`, where none is earliest, then by row) a new one
  /// of their own, and their settings along with it. The moment of creation decides first so that all devices rename
  /// the same task. Gives how many there were. REQUIRES: a unit, which the caller saves.
  static std::size_t cleanUpDuplicatedTaskIDs(StoreContext& context);

  /// The active tasks, in order of creation.
  [[nodiscard]] static std::vector<TaskEntity*> activeTasks(StoreContext& context);

 private:
  class Tools;

  /// One that waits on the queue or for bulk data updates to end will do for all. REQUIRES: the mutex is held.
  void requestPass();
  void runRequestedPass();
  [[nodiscard]] bool isHeldByMaintenance();
  TaskProcessorReport passInOwnContext(const std::optional<std::set<qz::UniqueID>>& only,
                                       LayoutDirection layoutDirection) noexcept;
  TaskProcessorReport pass(const std::function<StoreContext*()>& contextOf,
                           const std::optional<std::set<qz::UniqueID>>& only, LayoutDirection layoutDirection) noexcept;
  TaskProcessorReport passIn(StoreContext& context, qz::Moment now, const std::optional<std::set<qz::UniqueID>>& only,
                             LayoutDirection layoutDirection);
  TaskProcessorReport passOver(StoreContext& context, qz::Moment now, const std::optional<std::set<qz::UniqueID>>& only,
                               LayoutDirection layoutDirection);
  /// Whether passes wait; one is asked for then, which runs afterwards.
  [[nodiscard]] bool isHeld();
  /// Processes pending health requests. Gives the kinds of data that this has changed in the health store.
  [[nodiscard]] std::set<qz::QZHKObjectType> writeHealthRequests(StoreContext& context, qz::Moment now);
  /// A pass over the tasks that are measured by these kinds of data.
  TaskProcessorReport followHealthRequests(StoreContext& context, qz::Moment now,
                                           const std::set<qz::QZHKObjectType>& changed,
                                           LayoutDirection layoutDirection);
  /// Observes the data that the tasks of the front end's context are completed by; what could not be observed before is
  /// tried again. Gives whether any are observed that were not before. On the front end's thread.
  bool observeAutomaticTasks();
  void makeObservers();
  void scheduleRefresh(const Tools& tools, StoreContext& context, qz::Moment now);
  void removeStaleTaskProcessorLastProcessedDateEntries(StoreContext& context);
  void processIn(const Tools& tools, StoreContext& context, TaskEntity& task, TaskModifyContext by, qz::Moment now);
  void complete(Completion completion, TaskProcessorReport report);
  /// For work on the processor itself, which is left undone when that has gone before its turn comes.
  void onMainQueue(std::function<void()> work);
  /// Makes a change, which saves, in a unit of the context, and tells others of it.
  void inBulk(StoreContext& context, TaskModifyContext by, const std::function<void()>& change,
              ChangeCompletion completion);
  void schedule(const BackgroundTaskRequest& request);

  const Environment environment_;
  KeptBackgroundTasks scheduler_;
  std::optional<PendingHealthRequests> pendingHealthRequests_;  // none without a health store

  mutable std::mutex mutex_;  // never held while something is waited for
  int performingBulkDataUpdate_ = 0;
  bool hasDoneInitialSetup_ = false;
  bool hasBecomeActive_ = false;
  std::optional<qz::Moment> lastProcessedOnDidBecomeActive_;
  bool isResident_ = false;
  bool isWaitingForMaintenance_ = false;  // a pass was refused
  bool passIsRequested_ = false;          // one waits, on the queue or for bulk data updates to end
  bool passIsDispatched_ = false;         // it waits on the queue
  std::vector<Completion> completions_;   // of the pass that waits
  std::optional<qz::Moment> scheduledRefresh_;
  std::optional<qz::Moment> nextAttempt_;  // to take what is due, after one that failed

  std::shared_ptr<const bool> lifetime_ = std::make_shared<bool>(true);  // what waits on the main queue looks at it

  // The queues end before what their tasks use.
  qz::SerialQueue operationQueue_{operationQueueLabel};
  qz::SerialQueue processorQueue_{queueLabel};
  // The front end's thread's. They end before the queue that they hand data to.
  std::unique_ptr<TaskProcessorObserver> healthKitObserver_;
  std::unique_ptr<TaskProcessorObserver> screenTimeObserver_;
  std::optional<std::vector<ObservedTask>> observedTasks_{std::in_place};  // none: not all could be observed
  qz::NotificationCenter::Observation contextMergeObserver_;
  qz::NotificationCenter::Observation maintenanceObserver_;
};

}  // namespace habitra
