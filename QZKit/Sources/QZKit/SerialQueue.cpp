#include <QZKit/SerialQueue.h>
#include <QZKit/Trap.h>

#include <utility>  // before Asio, which uses std::exchange without it

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>
#include <variant>

namespace qz {

// Whoever ends a turn hands it to the first in line: to a synchronous caller by waking it, to an asynchronous task by
// way of the pool's thread. Between two turns the queue is never free while somebody waits, so nobody overtakes.
class SerialQueue::State {
 public:
  explicit State(std::string label) : label_(std::move(label)) {}

  const std::string& label() const { return label_; }
  bool isCurrent() const { return owner_.load(std::memory_order_relaxed) == std::this_thread::get_id(); }

  void append(Task task);
  void takeTurn();
  void endTurn();
  void waitUntilIdle();
  std::exception_ptr takeFailure() {
    const std::lock_guard lock(mutex_);
    return std::exchange(failure_, nullptr);
  }
  void joinThread() {
    if (pool_) pool_->join();
  }

 private:
  // A synchronous caller in line; it lives on that caller's stack.
  struct Caller {
    std::condition_variable woken;
    bool hasTurn = false;
  };
  using Waiting = std::variant<Task, Caller*>;

  void makeThread();
  void wakeThread() {
    boost::asio::post(*pool_, [this] { runTasks(); });
  }
  void runTasks();
  bool handOver();
  void note(std::exception_ptr failure);

  const std::string label_;
  std::mutex mutex_;
  std::condition_variable idle_;
  std::deque<Waiting> line_;
  bool busy_ = false;                   // somebody has the turn
  std::atomic<std::thread::id> owner_;  // who has it; read without the lock only to be compared with one's own
  std::exception_ptr failure_;          // the first since the last drain
  std::unique_ptr<boost::asio::thread_pool> pool_;
};

void SerialQueue::State::makeThread() {
  pool_ = std::make_unique<boost::asio::thread_pool>(std::size_t{1});
  constexpr std::size_t longestName = 15;  // what Linux keeps of a thread's name
  const std::string name = label_.substr(label_.rfind('.') + 1).substr(0, longestName);
  boost::asio::post(*pool_, [name] { pthread_setname_np(pthread_self(), name.c_str()); });
}

void SerialQueue::State::append(Task task) {
  const std::lock_guard lock(mutex_);
  if (!pool_) makeThread();
  line_.emplace_back(std::move(task));
  if (std::exchange(busy_, true)) return;
  wakeThread();
}

void SerialQueue::State::takeTurn() {
  std::unique_lock lock(mutex_);
  if (std::exchange(busy_, true)) {
    Caller self;
    line_.emplace_back(&self);
    self.woken.wait(lock, [&] { return self.hasTurn; });
  }
  owner_ = std::this_thread::get_id();
}

void SerialQueue::State::endTurn() {
  const std::lock_guard lock(mutex_);
  owner_ = std::thread::id();
  if (handOver()) wakeThread();
}

// Gives the turn away, with mutex_ held. True when a task for the queue's thread is the next.
bool SerialQueue::State::handOver() {
  if (line_.empty()) {
    busy_ = false;
    idle_.notify_all();
    return false;
  }
  if (std::holds_alternative<Task>(line_.front())) return true;
  Caller* const caller = std::get<Caller*>(line_.front());
  line_.pop_front();
  caller->hasTurn = true;
  caller->woken.notify_one();
  return false;
}

// On the queue's thread, which has been given the turn: tasks one after the other until a synchronous caller is next.
void SerialQueue::State::runTasks() {
  std::unique_lock lock(mutex_);
  owner_ = std::this_thread::get_id();
  do {
    Task task = std::move(std::get<Task>(line_.front()));
    line_.pop_front();
    lock.unlock();
    try {
      task();
    } catch (...) {
      note(std::current_exception());
    }
    task = nullptr;  // what it holds goes in the queue's turn as well, and may use the queue
    lock.lock();
  } while (!line_.empty() && std::holds_alternative<Task>(line_.front()));
  owner_ = std::thread::id();
  handOver();
}

void SerialQueue::State::note(std::exception_ptr failure) {
  const std::lock_guard lock(mutex_);
  if (!failure_) failure_ = std::move(failure);
}

void SerialQueue::State::waitUntilIdle() {
  require(!isCurrent(), "a task waits for the end of its own queue");
  std::unique_lock lock(mutex_);
  idle_.wait(lock, [&] { return !busy_; });
}

namespace {

void reportLostFailure(const std::string& label, const std::exception_ptr& failure) {
  std::string line = "habitra: a task of " + label + " failed: ";
  try {
    std::rethrow_exception(failure);
  } catch (const std::exception& error) {
    line += error.what();
  } catch (...) {
    line += "unknown error";
  }
  line += '\n';
  [[maybe_unused]] const auto written = ::write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace

SerialQueue::SerialQueue(std::string label) : state_(std::make_unique<State>(std::move(label))) {}

SerialQueue::~SerialQueue() {
  state_->waitUntilIdle();
  state_->joinThread();
  if (const std::exception_ptr failure = state_->takeFailure()) reportLostFailure(label(), failure);
}

const std::string& SerialQueue::label() const { return state_->label(); }

bool SerialQueue::isCurrent() const { return state_->isCurrent(); }

void SerialQueue::async(Task task) { state_->append(std::move(task)); }

void SerialQueue::drain() {
  state_->waitUntilIdle();
  if (const std::exception_ptr failure = state_->takeFailure()) std::rethrow_exception(failure);
}

SerialQueue::Turn::Turn(SerialQueue& queue) : state_(queue.state_->isCurrent() ? nullptr : queue.state_.get()) {
  if (state_ != nullptr) state_->takeTurn();
}

SerialQueue::Turn::~Turn() {
  if (state_ != nullptr) state_->endTurn();
}

}  // namespace qz
