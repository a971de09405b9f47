#include <HabitraModel/Health/SampleObservers.h>
#include <QZHealthKit/QZHKActivitySummary.h>
#include <QZLog/Log.h>

#include <algorithm>
#include <exception>
#include <utility>

namespace habitra {

namespace {

using Type = qz::QZHKObjectType;

/// While the samples cannot be read.
constexpr std::chrono::seconds timeBetweenAttempts{1};

bool hasChanged(Type type, const SampleTable::Changes& changes, std::int64_t seen) {
  if (type == Type::activitySummary) {
    const auto has = [&](Type ring) { return hasChanged(ring, changes, seen); };
    return std::ranges::any_of(qz::ringValueTypes, has) || std::ranges::any_of(qz::ringGoalTypes, has);
  }
  const auto found = changes.types.find(type);
  return found != changes.types.end() && found->second > seen;
}

std::set<Type> changedTypes(const std::set<Type>& observed, const SampleTable::Changes& changes, std::int64_t seen) {
  if (changes.newest < seen) return observed;  // another file lies in the place of the one that was seen
  std::set<Type> changed;
  std::ranges::copy_if(observed, std::inserter(changed, changed.end()),
                       [&](Type type) { return hasChanged(type, changes, seen); });
  return changed;
}

void call(const qz::QZHKObserverQuery& query, const SampleObservers::Handler& handler, const std::set<Type>& types) {
  try {
    handler(query, types);
  } catch (const std::exception& error) {
    qz::log::error("An observer of health data failed ({}): {}", query.debugDescription(), error.what());
  } catch (...) {
    qz::log::error("An observer of health data failed ({})", query.debugDescription());
  }
}

}  // namespace

SampleObservers::~SampleObservers() {
  {
    const std::scoped_lock lock(mutex_);
    isEnding_ = true;
    observers_.clear();
  }
  changed_.notify_all();
  if (thread_.joinable()) thread_.join();
}

void SampleObservers::start(const qz::QZHKObserverQuery& query, Handler handler) {
  {
    const std::scoped_lock lock(mutex_);
    if (watcher_ == nullptr) watcher_ = file_.watch([this] { wake(); });
    if (!thread_.joinable()) thread_ = std::thread([this] { run(); });
  }
  const auto observer = std::make_shared<Observer>(
      Observer{query, std::move(handler), readChanges().newest, ChangeSchedule(query.updateFrequency)});
  for (;;) {
    stop(query.identifier);
    const std::scoped_lock lock(mutex_);
    if (!observers_.try_emplace(query.identifier, observer).second) continue;
    // What came since the reading above may have been noted without this observer.
    readAt_ = Time::min();
    changed_.notify_all();
    return;
  }
}

void SampleObservers::stop(const qz::UniqueID& identifier) noexcept {
  std::unique_lock lock(mutex_);
  const auto found = observers_.find(identifier);
  // One that a handler has stopped may still be running.
  const std::shared_ptr<Observer> observer = found != observers_.end()                              ? found->second
                                             : running_ && running_->query.identifier == identifier ? running_
                                                                                                    : nullptr;
  if (observer == nullptr) return;
  if (found != observers_.end()) observers_.erase(found);
  if (std::this_thread::get_id() != thread_.get_id()) changed_.wait(lock, [&] { return running_ != observer; });
}

void SampleObservers::wake() {
  {
    const std::scoped_lock lock(mutex_);
    readAt_ = Time::min();
  }
  changed_.notify_all();
}

SampleTable::Changes SampleObservers::readChanges() {
  const SampleFile::Use use = file_.beginReading();
  return use ? use->table.changes() : SampleTable::Changes{};
}

void SampleObservers::run() {
  std::unique_lock lock(mutex_);
  while (!isEnding_) {
    const Time now = std::chrono::steady_clock::now();
    if (readAt_ && *readAt_ <= now) {
      note(lock);
    } else if (const auto observer = firstDue(now)) {
      tell(lock, observer, now);
    } else if (const auto next = nextDue()) {
      changed_.wait_until(lock, *next);
    } else {
      changed_.wait(lock);
    }
  }
}

void SampleObservers::note(std::unique_lock<std::mutex>& lock) {
  readAt_.reset();
  const auto observers = observers_;
  lock.unlock();
  std::optional<SampleTable::Changes> changes;
  std::string failure;
  try {
    changes = readChanges();
  } catch (const std::exception& error) {
    failure = error.what();
  }
  lock.lock();
  if (!changes) {
    if (!std::exchange(hasFailed_, true)) qz::log::error("Changes of health data cannot be seen: {}", failure);
    if (!readAt_) readAt_ = std::chrono::steady_clock::now() + timeBetweenAttempts;
    return;
  }
  hasFailed_ = false;
  for (const auto& [identifier, observer] : observers) {
    observer->schedule.add(changedTypes(observer->query.objectTypes, *changes, observer->seen));
    observer->seen = changes->newest;
  }
}

void SampleObservers::tell(std::unique_lock<std::mutex>& lock, const std::shared_ptr<Observer>& observer, Time now) {
  const std::set<Type> types = observer->schedule.take(now);
  running_ = observer;
  lock.unlock();
  call(observer->query, observer->handler, types);
  lock.lock();
  running_.reset();
  changed_.notify_all();
}

std::shared_ptr<SampleObservers::Observer> SampleObservers::firstDue(Time now) const {
  for (const auto& [identifier, observer] : observers_) {
    const auto due = observer->schedule.due();
    if (due && *due <= now) return observer;
  }
  return nullptr;
}

std::optional<SampleObservers::Time> SampleObservers::nextDue() const {
  std::optional<Time> next = readAt_;
  for (const auto& [identifier, observer] : observers_) {
    const auto due = observer->schedule.due();
    if (due && (!next || *due < *next)) next = due;
  }
  return next;
}

}  // namespace habitra
