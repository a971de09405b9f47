#include <HabitraModel/Tasks/Processing/ObservedHealthQueries.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorHealthKitObserver.h>
#include <QZLog/Log.h>

#include <condition_variable>
#include <exception>
#include <map>
#include <mutex>
#include <set>
#include <utility>

namespace habitra {

namespace {

/// What came with the data; what the health store tells of by itself comes in the background.
struct Circumstances {
  ApplicationState applicationState = ApplicationState::background;
  LayoutDirection layoutDirection = LayoutDirection::leftToRight;
};

enum class Handling {
  none,
  waiting,         ///< its pass is queued, and will see all that is there by then
  running,         ///< its pass may have looked already
  runningOutdated  ///< data have come since its pass began
};

struct Observed {
  qz::QZHKObserverQuery query;
  Handling handling = Handling::none;
  Circumstances circumstances;
  ObservedHealthQueries::Completion completion;
};

void complete(const ObservedHealthQueries::Completion& completion) noexcept {
  try {
    if (completion) completion();
  } catch (const std::exception& error) {
    qz::log::error("The end of a health query could not be told: {}", error.what());
  }
}

/// A period that was decided is news to everybody, and so is any change to somebody who is looking.
bool isUrgent(const TaskProcessorReport& report, ApplicationState state) {
  return report.decided > 0 || state == ApplicationState::active;
}

}  // namespace

class ObservedHealthQueries::State : public std::enable_shared_from_this<State> {
 public:
  State(qz::QZHealthStore& healthStore, qz::SerialQueue& queue, qz::NotificationCenter& notifications,
        ProcessTasks processTasks)
      : healthStore_(healthStore),
        queue_(queue),
        notifications_(notifications),
        processTasks_(std::move(processTasks)) {}

  StartedObservation observe(const std::vector<qz::QZHKObserverQuery>& queries);
  void stop() noexcept;
  void processBackgroundHealthKitData(const qz::QZHKObserverQuery& query, const Circumstances& circumstances,
                                      const Completion& completion);

 private:
  using ObservedQuery = std::shared_ptr<Observed>;

  [[nodiscard]] bool start(const qz::QZHKObserverQuery& query);
  void queuePass(const ObservedQuery& observed);
  void runPass(const ObservedQuery& observed);
  void finishPass(const ObservedQuery& observed);
  TaskProcessorReport _processBackgroundHealthKitData(const Observed& observed,
                                                      LayoutDirection layoutDirection) noexcept;
  void tell(const TaskProcessorReport& report, ApplicationState applicationState) noexcept;
  [[nodiscard]] ObservedQuery find(const qz::QZHKObserverQuery& query) const {
    const auto found = observed_.find(query.identifier);
    return found != observed_.end() && found->second->query == query ? found->second : nullptr;
  }

  qz::QZHealthStore& healthStore_;
  qz::SerialQueue& queue_;
  qz::NotificationCenter& notifications_;
  const ProcessTasks processTasks_;

  std::mutex changing_;  // held by observe() and stop(), which the health store's threads never wait for
  std::mutex mutex_;
  std::condition_variable passEnded_;
  std::map<qz::UniqueID, ObservedQuery> observed_;
  bool passIsRunning_ = false;
};

StartedObservation ObservedHealthQueries::State::observe(const std::vector<qz::QZHKObserverQuery>& queries) {
  const std::scoped_lock changing(changing_);
  std::vector<qz::UniqueID> ended;
  std::vector<const qz::QZHKObserverQuery*> added;
  {
    const std::scoped_lock lock(mutex_);
    std::set<qz::UniqueID> kept;
    for (const qz::QZHKObserverQuery& query : queries) {
      if (find(query))
        kept.insert(query.identifier);
      else
        added.push_back(&query);
    }
    for (const auto& [identifier, observed] : observed_)
      if (!kept.contains(identifier)) ended.push_back(identifier);
    for (const qz::UniqueID& identifier : ended) observed_.erase(identifier);
  }
  for (const qz::UniqueID& identifier : ended) healthStore_.stopObserving(identifier);
  StartedObservation observation;
  for (const qz::QZHKObserverQuery* query : added) ++(start(*query) ? observation.started : observation.refused);
  return observation;
}

bool ObservedHealthQueries::State::start(const qz::QZHKObserverQuery& query) {
  {
    // Before it is started: its first data may come at once.
    const std::scoped_lock lock(mutex_);
    observed_.insert_or_assign(query.identifier,
                               std::make_shared<Observed>(Observed{query, Handling::none, {}, nullptr}));
  }
  try {
    healthStore_.startObserving(query, [this](const qz::QZHKObserverQuery& told, const auto&) {
      qz::log::info("Health data received");
      processBackgroundHealthKitData(told, {}, nullptr);
    });
    return true;
  } catch (const std::exception& error) {
    qz::log::error("Health data cannot be observed ({}): {}", query.debugDescription(), error.what());
    const std::scoped_lock lock(mutex_);
    observed_.erase(query.identifier);
  }
  return false;
}

void ObservedHealthQueries::State::stop() noexcept {
  {
    const std::scoped_lock changing(changing_);
    std::map<qz::UniqueID, ObservedQuery> ended;
    {
      const std::scoped_lock lock(mutex_);
      ended.swap(observed_);
    }
    for (const auto& [identifier, observed] : ended) healthStore_.stopObserving(identifier);
  }
  if (queue_.isCurrent()) return;
  std::unique_lock lock(mutex_);
  passEnded_.wait(lock, [this] { return !passIsRunning_; });
}

void ObservedHealthQueries::State::processBackgroundHealthKitData(const qz::QZHKObserverQuery& query,
                                                                  const Circumstances& circumstances,
                                                                  const Completion& completion) {
  std::unique_lock lock(mutex_);
  const ObservedQuery observed = find(query);
  if (observed != nullptr && observed->handling == Handling::none) {
    observed->handling = Handling::waiting;
    observed->circumstances = circumstances;
    observed->completion = completion;
    lock.unlock();
    queuePass(observed);
    return;
  }
  if (observed != nullptr) {
    observed->circumstances = circumstances;
    if (observed->handling == Handling::running) observed->handling = Handling::runningOutdated;
    lock.unlock();
    qz::log::info("Already processing this query: {}", query.debugDescription());
  } else {
    lock.unlock();
  }
  complete(completion);
}

void ObservedHealthQueries::State::queuePass(const ObservedQuery& observed) {
  queue_.async([self = shared_from_this(), observed] { self->runPass(observed); });
}

void ObservedHealthQueries::State::runPass(const ObservedQuery& observed) {
  Circumstances circumstances;
  bool isObserved = false;
  {
    const std::scoped_lock lock(mutex_);
    isObserved = find(observed->query) == observed;
    if (isObserved) passIsRunning_ = true;
    observed->handling = Handling::running;
    circumstances = observed->circumstances;
  }
  if (isObserved) {
    tell(_processBackgroundHealthKitData(*observed, circumstances.layoutDirection), circumstances.applicationState);
    finishPass(observed);
  } else {
    complete(observed->completion);
  }
}

void ObservedHealthQueries::State::finishPass(const ObservedQuery& observed) {
  Completion completion;
  bool isOutdated = false;
  {
    const std::scoped_lock lock(mutex_);
    isOutdated = observed->handling == Handling::runningOutdated && find(observed->query) == observed;
    observed->handling = isOutdated ? Handling::waiting : Handling::none;
    completion.swap(observed->completion);
  }
  if (isOutdated) queuePass(observed);
  complete(completion);
  const std::scoped_lock lock(mutex_);
  passIsRunning_ = false;
  passEnded_.notify_all();
}

TaskProcessorReport ObservedHealthQueries::State::_processBackgroundHealthKitData(
    const Observed& observed, LayoutDirection layoutDirection) noexcept {
  try {
    return processTasks_({observed.query.identifier}, layoutDirection);
  } catch (const std::exception& error) {
    qz::log::error("Health data could not be processed ({}): {}", observed.query.debugDescription(), error.what());
  }
  return {};
}

void ObservedHealthQueries::State::tell(const TaskProcessorReport& report, ApplicationState applicationState) noexcept {
  qz::log::info("Finished process");
  if (report.changed == 0) return;
  try {
    notifications_.post(isUrgent(report, applicationState)
                            ? TaskProcessorHealthKitObserver::taskWasUpdatedInBackgroundByHealthKitHighPriority
                            : TaskProcessorHealthKitObserver::taskWasUpdatedInBackgroundByHealthKitLowPriority);
  } catch (const std::exception& error) {
    qz::log::error("A task that health data have changed could not be told of: {}", error.what());
  }
}

ObservedHealthQueries::ObservedHealthQueries(qz::QZHealthStore& healthStore, qz::SerialQueue& processorQueue,
                                             qz::NotificationCenter& notifications, ProcessTasks processTasks)
    : state_(std::make_shared<State>(healthStore, processorQueue, notifications, std::move(processTasks))) {}

ObservedHealthQueries::~ObservedHealthQueries() { stop(); }

StartedObservation ObservedHealthQueries::observe(const std::vector<qz::QZHKObserverQuery>& queries) {
  return state_->observe(queries);
}

void ObservedHealthQueries::stop() noexcept { state_->stop(); }

void ObservedHealthQueries::processBackgroundHealthKitData(const qz::QZHKObserverQuery& query,
                                                           ApplicationState applicationState,
                                                           LayoutDirection layoutDirection,
                                                           const Completion& completion) {
  state_->processBackgroundHealthKitData(query, {applicationState, layoutDirection}, completion);
}

}  // namespace habitra
