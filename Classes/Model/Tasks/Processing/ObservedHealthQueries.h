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

/// Queries that are observed for tasks, one for each under the task's own identifier, and the passes that their data
/// set off on the processor's queue. What observers of the processor have in common.
///
/// A query has one pass at a time, waiting or running. Data that come while it waits are seen by it; those that come
/// while it runs are not lost, as it runs once more after that.
///
/// May be used from any thread.
class ObservedHealthQueries {
 public:
  /// Called once, when the query has been dealt with or refused.
  using Completion = std::function<void()>;

  /// The references must live as long as this object.
  ObservedHealthQueries(qz::QZHealthStore& healthStore, qz::SerialQueue& processorQueue,
                        qz::NotificationCenter& notifications, ProcessTasks processTasks);
  ~ObservedHealthQueries();
  ObservedHealthQueries(const ObservedHealthQueries&) = delete;
  ObservedHealthQueries& operator=(const ObservedHealthQueries&) = delete;

  /// Observes these, and no others any more; one that is observed as it is goes on undisturbed, with what it has still
  /// to tell. Where the health store refuses, a line of the log says so and the query is tried again with the next
  /// call.
  StartedObservation observe(const std::vector<qz::QZHKObserverQuery>& queries);
  /// See TaskProcessorObserver.
  void stop() noexcept;

  /// Data have come for a query: refuses one that is being handled, and does nothing for one that is not observed.
  void processBackgroundHealthKitData(const qz::QZHKObserverQuery& query, ApplicationState applicationState,
                                      LayoutDirection layoutDirection, const Completion& completion);

 private:
  class State;
  std::shared_ptr<State> state_;  // shared with what is queued
};

}  // namespace habitra
