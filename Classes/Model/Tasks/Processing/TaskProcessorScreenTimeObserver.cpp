#include <HabitraModel/Tasks/Processing/ObservedHealthQueries.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorScreenTimeObserver.h>

#include <set>
#include <utility>

namespace habitra {

namespace {

using MonitorRequest = TaskProcessorScreenTimeObserver::MonitorRequest;

bool isMonitored(const AutomaticTaskType& type) {
  return type.type.kind() == AutomaticTaskType::TaskType::Kind::screenTime && type.extra &&
         type.extra->screenTimeSettings && type.extra->screenTimeSettings->isConfigured();
}

/// All kinds of use, and each change of it: a limit that is reached is to be seen at once, and what does not concern
/// the selection costs a look.
qz::QZHKObserverQuery queryFor(const MonitorRequest& request) {
  using Type = qz::QZHKObjectType;
  return {.identifier = request.taskID,
          .objectTypes = {Type::applicationUsage, Type::websiteUsage, Type::categoryUsage},
          .updateFrequency = qz::QZHKUpdateFrequency::immediate};
}

}  // namespace

TaskProcessorScreenTimeObserver::TaskProcessorScreenTimeObserver(qz::QZHealthStore& healthStore,
                                                                 qz::SerialQueue& processorQueue,
                                                                 qz::NotificationCenter& notifications,
                                                                 ProcessTasks processTasks)
    : queries_(std::make_unique<ObservedHealthQueries>(healthStore, processorQueue, notifications,
                                                       std::move(processTasks))) {}

TaskProcessorScreenTimeObserver::~TaskProcessorScreenTimeObserver() = default;

StartedObservation TaskProcessorScreenTimeObserver::observe(const std::vector<ObservedTask>& tasks) {
  std::vector<qz::QZHKObserverQuery> queries;
  for (const MonitorRequest& request : monitorRequestsForTasks(tasks)) queries.push_back(queryFor(request));
  return queries_->observe(queries);
}

void TaskProcessorScreenTimeObserver::stop() noexcept { queries_->stop(); }

std::vector<MonitorRequest> TaskProcessorScreenTimeObserver::monitorRequestsForTasks(
    const std::vector<ObservedTask>& tasks) {
  std::set<qz::UniqueID> monitored;
  for (const auto& [taskID, type] : tasks)
    if (isMonitored(type)) monitored.insert(taskID);
  std::vector<MonitorRequest> requests;
  for (const qz::UniqueID& taskID : monitored) requests.push_back({taskID});
  return requests;
}

}  // namespace habitra
