#include <HabitraModel/Tasks/Processing/CalendarDayWatcher.h>
#include <HabitraModel/Tasks/Processing/WallClockEvents.h>
#include <QZLog/Log.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>

namespace habitra {

namespace {

/// While it cannot be told what to wait for.
constexpr std::chrono::minutes timeBetweenAttempts{1};

}  // namespace

qz::Moment nextStartOfDay(const TaskCalendar& calendar, qz::Moment now) {
  const qz::YYYYMMDD next = calendar.day(now).nextDay();
  const qz::Moment first = calendar.beginning(next);
  if (first > now) return first;
  // Clocks went back over the start of day, and it is yesterday again until they show it a second time.
  const qz::Moment second = first + (calendar.timeZone.offset(first) - calendar.timeZone.offset(now));
  return second > now ? second : calendar.beginning(next.nextDay());
}

qz::Moment nextStartOfDay(const TaskCalendars& calendars, const std::vector<TaskEntity*>& tasks, qz::Moment now) {
  qz::Moment earliest = nextStartOfDay(calendars.ofDevice(), now);
  for (const TaskEntity* task : tasks) earliest = std::min(earliest, nextStartOfDay(calendars.of(*task), now));
  return earliest;
}

/// The thread that waits.
class CalendarDayWatcher::Waiting {
 public:
  explicit Waiting(const CalendarDayWatcher& watcher)
      : watcher_(watcher), events_(watcher.zoneFolder_), thread_([this] { run(); }) {}
  ~Waiting() {
    events_.end();
    thread_.join();
  }
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;

  void askAnew() { events_.interrupt(); }

 private:
  void run() noexcept {
    try {
      wait();
    } catch (const std::exception& error) {
      qz::log::error("New days are not seen any more: {}", error.what());
    }
  }

  void wait() {
    for (;;) {
      switch (events_.waitUntil(due())) {
        case WallClockEvents::Event::ended: return;
        case WallClockEvents::Event::interrupted: break;
        case WallClockEvents::Event::reached:
        case WallClockEvents::Event::clockWasSet:
        case WallClockEvents::Event::zoneMayHaveChanged: handle(); break;
      }
    }
  }

  [[nodiscard]] qz::Moment due() const {
    const qz::Moment now = watcher_.clock_->now();
    try {
      return watcher_.nextStartOfDay_(now);
    } catch (const std::exception& error) {
      qz::log::error("The next start of day cannot be told: {}", error.what());
    }
    return now + timeBetweenAttempts;
  }

  void handle() const {
    try {
      watcher_.handler_(watcher_.clock_->now());
    } catch (const std::exception& error) {
      qz::log::error("A new day could not be handled: {}", error.what());
    }
  }

  const CalendarDayWatcher& watcher_;
  WallClockEvents events_;
  std::thread thread_;
};

CalendarDayWatcher::CalendarDayWatcher(std::shared_ptr<const qz::Clock> clock, NextStartOfDay nextStartOfDay,
                                       Handler handler, std::filesystem::path zoneFolder)
    : clock_(std::move(clock)),
      nextStartOfDay_(std::move(nextStartOfDay)),
      handler_(std::move(handler)),
      zoneFolder_(std::move(zoneFolder)) {}

CalendarDayWatcher::~CalendarDayWatcher() = default;

void CalendarDayWatcher::start() {
  const std::scoped_lock lock(mutex_);
  if (waiting_ == nullptr) waiting_ = std::make_unique<Waiting>(*this);
}

void CalendarDayWatcher::stop() noexcept {
  std::unique_ptr<Waiting> ended;
  {
    const std::scoped_lock lock(mutex_);
    ended.swap(waiting_);
  }
}

void CalendarDayWatcher::startOfDayMayHaveChanged() {
  const std::scoped_lock lock(mutex_);
  if (waiting_ != nullptr) waiting_->askAnew();
}

}  // namespace habitra
