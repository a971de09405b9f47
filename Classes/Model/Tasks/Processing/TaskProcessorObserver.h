#pragma once

#include <HabitraCore/AutomaticTaskType/AutomaticTaskType.h>
#include <HabitraModel/Tasks/Processing/LayoutDirection.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorReport.h>
#include <QZKit/UniqueID.h>

#include <cstddef>
#include <functional>
#include <set>
#include <vector>

namespace habitra {

/// An active task that something else than a person completes.
struct ObservedTask {
  qz::UniqueID taskID;
  AutomaticTaskType type;
};

/// What became of queries that were not observed before.
struct StartedObservation {
  std::size_t started = 0;
  std::size_t refused = 0;  ///< by the health store; they are not observed

  StartedObservation& operator+=(const StartedObservation& other) {
    started += other.started;
    refused += other.refused;
    return *this;
  }
  friend bool operator==(const StartedObservation&, const StartedObservation&) = default;
};

/// A pass over these tasks only. Called on the processor's queue.
using ProcessTasks = std::function<TaskProcessorReport(const std::set<qz::UniqueID>& tasks, LayoutDirection)>;

/// Wakes the processor when data arrive that tasks are completed by.
///
/// May be used from any thread.
class TaskProcessorObserver {
 public:
  TaskProcessorObserver() = default;
  TaskProcessorObserver(const TaskProcessorObserver&) = delete;
  TaskProcessorObserver& operator=(const TaskProcessorObserver&) = delete;
  virtual ~TaskProcessorObserver() = default;

  /// From now on data for these tasks wake the processor, in place of those observed before. Tasks that it has nothing
  /// to observe for are passed over; without any other, nothing is started. What came before is not told of: a full
  /// pass after this sees it, and nothing falls between.
  /// REQUIRES: as stop().
  virtual StartedObservation observe(const std::vector<ObservedTask>& tasks) = 0;

  /// Once it has returned nothing is observed, no pass that data set off is running and none will; from within such a
  /// pass it returns at once. observe() starts again.
  /// REQUIRES: the caller holds no lock, and is nothing else, that such a pass may wait for.
  virtual void stop() noexcept = 0;
};

}  // namespace habitra
