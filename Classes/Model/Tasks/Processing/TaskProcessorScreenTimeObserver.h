#pragma once

#include <HabitraModel/Tasks/Processing/TaskProcessorObserver.h>
#include <QZHealthKit/QZHealthStore.h>
#include <QZKit/NotificationCenter.h>
#include <QZKit/SerialQueue.h>

#include <memory>
#include <vector>

namespace habitra {

class ObservedHealthQueries;

/// Wakes the processor when applications, sites or categories have been used that a screen-time task watches. The use
/// comes in as samples of the health store, and so the changes are told of as those of health data are.
///
/// May be used from any thread.
class TaskProcessorScreenTimeObserver final : public TaskProcessorObserver {
 public:
  /// That the use is watched for one task.
  struct MonitorRequest {
    qz::UniqueID taskID;

    friend bool operator==(const MonitorRequest&, const MonitorRequest&) = default;
  };

  /// The references must live as long as this object, which starts nothing before it is given tasks.
  TaskProcessorScreenTimeObserver(qz::QZHealthStore& healthStore, qz::SerialQueue& processorQueue,
                                  qz::NotificationCenter& notifications, ProcessTasks processTasks);
  /// As stop().
  ~TaskProcessorScreenTimeObserver() override;

  /// Where the health store refuses to observe for a task, a line of the log says so, and the next call tries again.
  StartedObservation observe(const std::vector<ObservedTask>& tasks) override;
  void stop() noexcept override;

  /// One for each screen-time task with a selection, in order of their identifiers.
  [[nodiscard]] static std::vector<MonitorRequest> monitorRequestsForTasks(const std::vector<ObservedTask>& tasks);

 private:
  std::unique_ptr<ObservedHealthQueries> queries_;
};

}  // namespace habitra
