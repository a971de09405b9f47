#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace qz {

/// Tells those who asked that something with a name has happened: "dm.maintenanceDidFinish".
///
/// Handlers run on the thread that posts, in the order in which they were added. A handler may post, add observers (who
/// hear of the next post, not of the one under way) and end observations, its own as well.
///
/// All functions may be called from any thread, and an observation may outlive its center.
class NotificationCenter {
 private:
  class State;
  struct Observer;

 public:
  using Handler = std::function<void()>;

  /// An interest in one name, which ends when this is destroyed. From then on the handler is neither called nor running
  /// on another thread, and what it held is gone: destruction waits for a call under way elsewhere. So two
  /// handlers that end one another's observation from two threads wait for ever.
  class Observation {
   public:
    /// Observes nothing.
    Observation() = default;
    Observation(Observation&& other) noexcept = default;
    Observation& operator=(Observation&& other) noexcept;
    ~Observation() { end(); }

    /// Ends it before its time; a second call does nothing.
    void end() noexcept;

   private:
    friend class NotificationCenter;
    Observation(std::shared_ptr<State> state, std::shared_ptr<Observer> observer);

    std::shared_ptr<State> state_;
    std::shared_ptr<Observer> observer_;
  };

  NotificationCenter();
  ~NotificationCenter();
  NotificationCenter(const NotificationCenter&) = delete;
  NotificationCenter& operator=(const NotificationCenter&) = delete;

  [[nodiscard]] Observation addObserver(std::string name, Handler handler);

  /// Calls the handlers of `name` and returns when all have run. The first exception of a handler is thrown on after
  /// the others have been called.
  void post(std::string_view name);

 private:
  std::shared_ptr<State> state_;
};

}  // namespace qz
