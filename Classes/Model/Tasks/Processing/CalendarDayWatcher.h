#pragma once

#include <HabitraModel/Store/Entities/TaskEntity.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <QZKit/Clock.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace habitra {

/// The first moment after `now` at which the day by this calendar is another than before: the beginning of the next
/// day. Where the start of day falls into an hour that is lived twice, and its first time is over, that is its second.
[[nodiscard]] qz::Moment nextStartOfDay(const TaskCalendar& calendar, qz::Moment now);

/// The earliest such moment of the tasks' calendars and the device's.
[[nodiscard]] qz::Moment nextStartOfDay(const TaskCalendars& calendars, const std::vector<TaskEntity*>& tasks,
                                        qz::Moment now);

/// Waits for the days to begin, as long as the machine runs: calls a handler when the next start of day is there, and
/// when the day may be another one because the system's clock was set or its zone has changed. A machine that slept
/// through a start of day is told of it when it wakes.
///
/// The handler runs on the watcher's own thread; what it throws is logged. Nothing is started before start().
///
/// May be used from any thread, but for stop() and destruction, which wait for a handler that is running.
class CalendarDayWatcher {
 public:
  /// Gives the moment after `now` to wait for. Called on the watcher's thread, before each wait; when it throws, that
  /// is logged, and it is asked again after a minute.
  using NextStartOfDay = std::function<qz::Moment(qz::Moment now)>;
  using Handler = std::function<void(qz::Moment now)>;

  /// The folder of the files `localtime` and `timezone` that name the system's zone.
  static constexpr const char* systemZoneFolder = "/etc";

  /// `clock` says what now is; it goes as the system's clock does, which is what is waited by.
  CalendarDayWatcher(std::shared_ptr<const qz::Clock> clock, NextStartOfDay nextStartOfDay, Handler handler,
                     std::filesystem::path zoneFolder = systemZoneFolder);
  /// As stop().
  ~CalendarDayWatcher();
  CalendarDayWatcher(const CalendarDayWatcher&) = delete;
  CalendarDayWatcher& operator=(const CalendarDayWatcher&) = delete;

  /// Starts to wait; does nothing when it waits already. Throws qz::Error when the system gives no timer. Where it
  /// gives no notifications, a warning says that a change of the zone will not be seen.
  void start();
  /// Ends the waiting and, unless start() is called again, the handler is neither running nor called any more.
  void stop() noexcept;

  /// A task, or the start of day of all, was changed: asks anew what to wait for.
  void startOfDayMayHaveChanged();

 private:
  class Waiting;

  std::shared_ptr<const qz::Clock> clock_;
  NextStartOfDay nextStartOfDay_;
  Handler handler_;
  std::filesystem::path zoneFolder_;
  std::mutex mutex_;  // over waiting_
  std::unique_ptr<Waiting> waiting_;
};

}  // namespace habitra
