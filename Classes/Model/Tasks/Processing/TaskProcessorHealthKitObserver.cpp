#include <HabitraModel/Tasks/Processing/ObservedHealthQueries.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorHealthKitObserver.h>

#include <algorithm>
#include <map>
#include <utility>

namespace habitra {

TaskProcessorHealthKitObserver::TaskProcessorHealthKitObserver(qz::QZHealthStore& healthStore,
                                                               qz::SerialQueue& processorQueue,
                                                               qz::NotificationCenter& notifications,
                                                               ProcessTasks processTasks)
    : queries_(std::make_unique<ObservedHealthQueries>(healthStore, processorQueue, notifications,
                                                       std::move(processTasks))) {}

TaskProcessorHealthKitObserver::~TaskProcessorHealthKitObserver() = default;

StartedObservation TaskProcessorHealthKitObserver::observe(const std::vector<ObservedTask>& tasks) {
  return queries_->observe(observerQueriesForTasks(tasks));
}

void TaskProcessorHealthKitObserver::stop() noexcept { queries_->stop(); }

std::vector<qz::QZHKObserverQuery> TaskProcessorHealthKitObserver::observerQueriesForTasks(
    const std::vector<ObservedTask>& tasks) {
  std::map<qz::UniqueID, qz::QZHKObserverQuery> queries;
  for (const auto& [taskID, type] : tasks) {
    const auto health = type.type.healthType();
    if (!health) continue;
    const auto types = health->healthKitReadTypes(type.unit, type.speeds);
    if (types.empty()) continue;
    const auto frequency = health->healthKitBackgroundUpdateFrequency();
    const auto [found, isNew] = queries.try_emplace(taskID, qz::QZHKObserverQuery{taskID, {}, frequency});
    qz::QZHKObserverQuery& query = found->second;
    query.objectTypes.insert(types.begin(), types.end());
    query.updateFrequency = std::min(query.updateFrequency, frequency);  // declared from the most often on
  }
  std::vector<qz::QZHKObserverQuery> result;
  for (auto& [taskID, query] : queries) result.push_back(std::move(query));
  return result;
}

void TaskProcessorHealthKitObserver::processBackgroundHealthKitData(const qz::QZHKObserverQuery& query,
                                                                    ApplicationState applicationState,
                                                                    LayoutDirection layoutDirection,
                                                                    const Completion& completion) {
  queries_->processBackgroundHealthKitData(query, applicationState, layoutDirection, completion);
}

}  // namespace habitra
