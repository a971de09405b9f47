#include <HabitraCLI/StopSignals.h>

#include <pthread.h>
#include <utility>

namespace habitra {

StopSignals::StopSignals(std::function<void()> onSignal) {
  ::sigemptyset(&signals_);
  for (const int signal : {SIGINT, SIGTERM}) ::sigaddset(&signals_, signal);
  ::pthread_sigmask(SIG_BLOCK, &signals_, &before_);
  thread_ = std::thread([this, onSignal = std::move(onSignal)] {
    for (bool isAsked = false;;) {
      int signal = 0;
      if (::sigwait(&signals_, &signal) != 0) continue;
      if (hasEnded_) return;
      if (isAsked) endAtOnce(signal);
      isAsked = true;
      onSignal();
    }
  });
}

void StopSignals::endAtOnce(int signal) const {
  ::signal(signal, SIG_DFL);
  ::pthread_sigmask(SIG_UNBLOCK, &signals_, nullptr);
  ::raise(signal);
}

StopSignals::~StopSignals() {
  hasEnded_ = true;
  ::pthread_kill(thread_.native_handle(), SIGTERM);
  thread_.join();
  ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace habitra
