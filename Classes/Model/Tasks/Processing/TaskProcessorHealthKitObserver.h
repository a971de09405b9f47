#pragma once

#include <HabitraModel/Tasks/Processing/ApplicationState.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorObserver.h>
#include <QZHealthKit/QZHealthStore.h>
#include <QZKit/NotificationCenter.h>
#include <QZKit/SerialQueue.h>

#include <functional>
#include <memory>
#include <vector>

namespace habitra {

class ObservedHealthQueries;

/// Wakes the processor when health data arrive that tasks are completed by: the tasks are brought up to date on the
/// processor's queue, and when one has changed, one of two notifications is posted from there.
///
/// May be used from any thread.
class TaskProcessorHealthKitObserver final : public TaskProcessorObserver {
 public:
  /// A period of the task was completed or failed, or the application is active, so that somebody sees what is shown:
  /// whoever shows the task does so at once.
  static constexpr const char* taskWasUpdatedInBackgroundByHealthKitHighPriority =
      "tp.taskWasUpdatedInBackgroundByHealthKitHighPriority";
  /// Only an amount has moved, and nobody is looking: that can be shown with what comes next.
  static constexpr const char* taskWasUpdatedInBackgroundByHealthKitLowPriority =
      "tp.taskWasUpdatedInBackgroundByHealthKitLowPriority";

  /// Called once, when a query has been dealt with or refused.
  using Completion = std::function<void()>;

  /// The references must live as long as this object, which starts nothing before it is given tasks.
  TaskProcessorHealthKitObserver(qz::QZHealthStore& healthStore, qz::SerialQueue& processorQueue,
                                 qz::NotificationCenter& notifications, ProcessTasks processTasks);
  /// As stop().
  ~TaskProcessorHealthKitObserver() override;

  /// Where the health store refuses to observe for a task, a line of the log says so, and the next call tries again.
  StartedObservation observe(const std::vector<ObservedTask>& tasks) override;
  void stop() noexcept override;

  /// One query for each task that health data complete, under the task's identifier; for tasks of the same identifier
  /// one that has the types of all, as often as the one that is told most often.
  [[nodiscard]] static std::vector<qz::QZHKObserverQuery> observerQueriesForTasks(
      const std::vector<ObservedTask>& tasks);

  /// Data have come for a query: its task is brought up to date on the processor's queue. A query that is being handled
  /// is refused, with a line of the log; when its pass may not have seen these data, it is followed by another. Nothing
  /// is done for a query that is not observed.
  void processBackgroundHealthKitData(const qz::QZHKObserverQuery& query, ApplicationState applicationState,
                                      LayoutDirection layoutDirection, const Completion& completion);

 private:
  std::unique_ptr<ObservedHealthQueries> queries_;
};

}  // namespace habitra
