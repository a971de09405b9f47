#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace qz {

/// A queue whose tasks run one after the other, in the order in which they were given: never two at a time, each seeing
/// all that the ones before it did. State that only its tasks touch needs no other lock.
///
///     SerialQueue queue("org.habitra.datamanager.maintenance");
///     queue.async([&] { inMaintenance_ = true; });
///     const bool held = queue.sync([&] { return inMaintenance_; });
///
/// The queue has one thread of its own, made at the first async() and named by the last part of the label. A queue that
/// is only asked synchronously never makes one.
///
/// All functions may be called from any thread. A task that waits with sync() for a second queue, one of whose tasks
/// waits for the first, waits for ever: let queues wait in one direction only.
class SerialQueue {
 public:
  using Task = std::function<void()>;

  explicit SerialQueue(std::string label);
  /// Runs what is queued, and what that queues in turn, and joins the thread. A failure of a task that nobody has
  /// drained is written to standard error in one line. REQUIRES: not called by a task of this queue.
  ~SerialQueue();
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;

  /// The name in reverse-DNS form, as given.
  [[nodiscard]] const std::string& label() const;

  /// Appends a task and returns at once. An exception that escapes it reaches whoever drains; tasks behind it run.
  void async(Task task);

  /// Waits for the queue's turn, runs `work` in it on the calling thread, and hands over its result or its exception.
  /// Within a task of this queue the turn is held already, and `work` runs inline.
  template <typename F>
  auto sync(F&& work) {
    const Turn turn(*this);
    return std::forward<F>(work)();
  }

  /// Whether the calling thread is running a task of this queue, an asynchronous or a synchronous one.
  [[nodiscard]] bool isCurrent() const;

  /// Waits until nothing is queued or running, then throws the first exception that escaped an asynchronous task since
  /// the last drain, if there was one. REQUIRES: not called by a task of this queue.
  void drain();

 private:
  class State;

  /// The queue's turn, held on this thread from construction to destruction.
  class Turn {
   public:
    explicit Turn(SerialQueue& queue);
    ~Turn();
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

   private:
    State* state_;  // null when an outer call on this thread holds the turn
  };

  std::unique_ptr<State> state_;
};

}  // namespace qz
