#pragma once

#include <QZDateTime/HHMMSS.h>
#include <QZDateTime/TimeZone.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Clock.h>

#include <optional>

namespace habitra {

struct TaskEntity;

/// When the days of one task begin: its zone and its start of day.
struct TaskCalendar {
  qz::HHMMSS startOfDay;
  qz::TimeZone timeZone;

  /// The day that a moment belongs to.
  [[nodiscard]] qz::YYYYMMDD day(qz::Moment moment) const { return {startOfDay, moment, timeZone}; }
  /// The first moment of a day.
  [[nodiscard]] qz::Moment beginning(qz::YYYYMMDD day) const { return day.beginning(startOfDay, timeZone); }
  /// The day that the task was made on, by the clock of the zone it was made in: elsewhere the same moment can be the
  /// day before, which was no day of its history. None where that is not known, or is no day that a person kept.
  [[nodiscard]] std::optional<qz::YYYYMMDD> creationDay(const TaskEntity& task) const;
};

/// Tells the calendar of each task. A value; safe from any thread.
class TaskCalendars {
 public:
  /// `deviceTimeZone` and `startOfDay` (the app-wide one) count where a task says nothing of its own.
  TaskCalendars(qz::TimeZone deviceTimeZone, qz::HHMMSS startOfDay);

  /// A task's `startOfDayValue` above zero counts modulo a day; its `currentTimeZoneOverride` counts when it names a
  /// zone (an unknown one is logged once).
  [[nodiscard]] TaskCalendar of(const TaskEntity& task) const;

  [[nodiscard]] const TaskCalendar& ofDevice() const { return device_; }

 private:
  TaskCalendar device_;
};

}  // namespace habitra
