#include <QZKit/NotificationCenter.h>

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace qz {

struct NotificationCenter::Observer {
  std::string name;
  Handler handler;  // set once, cleared once: when the observation has ended and no call is under way
  bool ended = false;
  std::vector<std::thread::id> calls;  // one for each call under way; several of one thread when a handler posts
};

class NotificationCenter::State {
 public:
  void add(std::shared_ptr<Observer> observer) {
    const std::lock_guard lock(mutex_);
    observers_.push_back(std::move(observer));
  }

  std::vector<std::shared_ptr<Observer>> observersOf(std::string_view name) {
    const std::lock_guard lock(mutex_);
    std::vector<std::shared_ptr<Observer>> found;
    for (const auto& observer : observers_)
      if (observer->name == name) found.push_back(observer);
    return found;
  }

  void call(Observer& observer) {
    if (!enter(observer)) return;
    std::exception_ptr failure;
    try {
      observer.handler();
    } catch (...) {
      failure = std::current_exception();
    }
    leave(observer);
    if (failure) std::rethrow_exception(failure);
  }

  void end(const std::shared_ptr<Observer>& observer) {
    Handler dropped;  // goes after the lock: what it holds may end observations in turn
    std::unique_lock lock(mutex_);
    observer->ended = true;
    std::erase(observers_, observer);
    const auto isOwn = [self = std::this_thread::get_id()](std::thread::id id) { return id == self; };
    called_.wait(lock, [&] { return std::ranges::all_of(observer->calls, isOwn); });
    if (observer->calls.empty()) dropped = std::exchange(observer->handler, nullptr);
    lock.unlock();
  }

 private:
  bool enter(Observer& observer) {
    const std::lock_guard lock(mutex_);
    if (observer.ended) return false;
    observer.calls.push_back(std::this_thread::get_id());
    return true;
  }

  void leave(Observer& observer) {
    Handler dropped;
    const std::lock_guard lock(mutex_);
    observer.calls.erase(std::ranges::find(observer.calls, std::this_thread::get_id()));
    if (observer.ended && observer.calls.empty()) dropped = std::exchange(observer.handler, nullptr);
    called_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable called_;
  std::vector<std::shared_ptr<Observer>> observers_;  // in the order in which they were added
};

NotificationCenter::NotificationCenter() : state_(std::make_shared<State>()) {}

NotificationCenter::~NotificationCenter() = default;

NotificationCenter::Observation NotificationCenter::addObserver(std::string name, Handler handler) {
  auto observer = std::make_shared<Observer>();
  observer->name = std::move(name);
  observer->handler = std::move(handler);
  state_->add(observer);
  return Observation(state_, std::move(observer));
}

void NotificationCenter::post(std::string_view name) {
  const std::shared_ptr<State> state = state_;  // a handler may let go of the center
  std::exception_ptr failure;
  for (const auto& observer : state->observersOf(name)) {
    try {
      state->call(*observer);
    } catch (...) {
      if (!failure) failure = std::current_exception();
    }
  }
  if (failure) std::rethrow_exception(failure);
}

NotificationCenter::Observation::Observation(std::shared_ptr<State> state, std::shared_ptr<Observer> observer)
    : state_(std::move(state)), observer_(std::move(observer)) {}

NotificationCenter::Observation& NotificationCenter::Observation::operator=(Observation&& other) noexcept {
  if (this != &other) {
    end();
    state_ = std::move(other.state_);
    observer_ = std::move(other.observer_);
  }
  return *this;
}

void NotificationCenter::Observation::end() noexcept {
  // Let go first: the handler may hold this very observation.
  const std::shared_ptr<State> state = std::move(state_);
  const std::shared_ptr<Observer> observer = std::move(observer_);
  if (observer) state->end(observer);
}

}  // namespace qz
