#pragma once

#include <atomic>
#include <csignal>
#include <functional>
#include <thread>

namespace habitra {

/// Lets a program that stays be ended in good order: the signals by which a person or the system asks it to end, SIGINT
/// and SIGTERM, call a function instead, on a thread of its own. The end may have to wait for somebody: a second signal
/// ends the program at once.
///
/// Made on the main thread before any other is, since threads inherit what is held back.
class StopSignals {
 public:
  explicit StopSignals(std::function<void()> onSignal);
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

 private:
  void endAtOnce(int signal) const;

  ::sigset_t signals_;
  ::sigset_t before_;
  std::atomic<bool> hasEnded_ = false;
  std::thread thread_;
};

}  // namespace habitra
