#include <HabitraModel/Tasks/Processing/WallClockEvents.h>
#include <QZKit/Error.h>
#include <QZKit/FileDescriptor.h>
#include <QZLog/Log.h>

#include <fmt/format.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <system_error>

namespace habitra {

namespace {

[[noreturn]] void fail(std::string_view what) {
  throw qz::Error(fmt::format("cannot {}: {}", what, std::generic_category().message(errno)));
}

/// The moment as the system's timers want it: after 1970, since zero would mean never.
itimerspec timerAt(qz::Moment moment) {
  using namespace std::chrono;
  const auto since1970 = std::max<microseconds>(moment.time_since_epoch(), microseconds(1));
  const auto whole = floor<seconds>(since1970);
  itimerspec timer{};
  timer.it_value.tv_sec = whole.count();
  timer.it_value.tv_nsec = nanoseconds(since1970 - whole).count();
  return timer;
}

bool namesZone(std::string_view file) { return file == "localtime" || file == "timezone"; }

}  // namespace

class WallClockEvents::System {
 public:
  explicit System(const std::filesystem::path& zoneFolder)
      : timer_(::timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC)),
        wakeUp_(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)),
        zoneFiles_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (!timer_.isOpen() || !wakeUp_.isOpen()) fail("wait for the next day");
    watchZone(zoneFolder);
    // From here on the timer notices that the clock is set, even between two waits.
    (void)setTimer(qz::Moment::max());
  }

  Event waitUntil(qz::Moment moment);
  void wake() { ::eventfd_write(wakeUp_.get(), 1); }
  void end() {
    isEnding_ = true;
    wake();
  }

 private:
  void watchZone(const std::filesystem::path& folder);
  [[nodiscard]] bool setTimer(qz::Moment moment);
  [[nodiscard]] Event takeTimer();
  [[nodiscard]] bool takeZoneChange();

  qz::FileDescriptor timer_;
  qz::FileDescriptor wakeUp_;
  qz::FileDescriptor zoneFiles_;
  std::atomic<bool> isEnding_ = false;
};

void WallClockEvents::System::watchZone(const std::filesystem::path& folder) {
  constexpr auto changes = IN_CREATE | IN_MOVED_TO | IN_CLOSE_WRITE | IN_ONLYDIR;
  if (!zoneFiles_.isOpen() || ::inotify_add_watch(zoneFiles_.get(), folder.c_str(), changes) < 0)
    qz::log::warning("A change of the time zone will not be seen: {}", std::generic_category().message(errno));
}

/// Gives false when the clock was set since the last time; the timer is set all the same.
bool WallClockEvents::System::setTimer(qz::Moment moment) {
  const itimerspec timer = timerAt(moment);
  if (::timerfd_settime(timer_.get(), TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &timer, nullptr) == 0) return true;
  if (errno != ECANCELED) fail("wait for the next day");
  return false;
}

WallClockEvents::Event WallClockEvents::System::waitUntil(qz::Moment moment) {
  if (!setTimer(moment)) return isEnding_ ? Event::ended : Event::clockWasSet;
  std::array<pollfd, 3> waited{pollfd{wakeUp_.get(), POLLIN, 0}, pollfd{zoneFiles_.get(), POLLIN, 0},
                               pollfd{timer_.get(), POLLIN, 0}};
  for (;;) {
    if (::poll(waited.data(), waited.size(), -1) < 0) {
      if (errno == EINTR) continue;
      fail("wait for the next day");
    }
    eventfd_t count = 0;
    const bool isWoken = ::eventfd_read(wakeUp_.get(), &count) == 0;
    if (isEnding_) return Event::ended;
    if (isWoken) return Event::interrupted;
    if ((waited[1].revents & POLLIN) != 0 && takeZoneChange()) return Event::zoneMayHaveChanged;
    if ((waited[2].revents & POLLIN) != 0) return takeTimer();
  }
}

WallClockEvents::Event WallClockEvents::System::takeTimer() {
  std::uint64_t count = 0;
  const bool wasCancelled = ::read(timer_.get(), &count, sizeof count) < 0 && errno == ECANCELED;
  return wasCancelled ? Event::clockWasSet : Event::reached;
}

bool WallClockEvents::System::takeZoneChange() {
  alignas(inotify_event) std::array<char, 4096> buffer{};
  bool hasChanged = false;
  for (ssize_t size = 0; (size = ::read(zoneFiles_.get(), buffer.data(), buffer.size())) > 0;) {
    for (std::size_t at = 0; at < static_cast<std::size_t>(size);) {
      inotify_event event{};
      std::memcpy(&event, buffer.data() + at, sizeof event);
      const char* const name = buffer.data() + at + sizeof event;
      if ((event.mask & IN_Q_OVERFLOW) != 0 || (event.len > 0 && namesZone(name))) hasChanged = true;
      at += sizeof event + event.len;
    }
  }
  return hasChanged;
}

WallClockEvents::WallClockEvents(const std::filesystem::path& zoneFolder)
    : system_(std::make_unique<System>(zoneFolder)) {}

WallClockEvents::~WallClockEvents() = default;

WallClockEvents::Event WallClockEvents::waitUntil(qz::Moment moment) { return system_->waitUntil(moment); }

void WallClockEvents::interrupt() { system_->wake(); }

void WallClockEvents::end() { system_->end(); }

}  // namespace habitra
