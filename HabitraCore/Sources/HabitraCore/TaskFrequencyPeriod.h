#pragma once

#include <HabitraCore/TaskFrequencyPeriodType.h>
#include <QZDateTime/DayOfWeek.h>
#include <QZDateTime/HHMMSS.h>
#include <QZDateTime/TimeZone.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Clock.h>

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>

namespace habitra {

/// A span of days that is judged as one: both ends are days of it. Coded with the keys "periodType", "startDate",
/// "finishDate" and "firstDayOfWeek".
struct TaskFrequencyPeriod {
  TaskFrequencyPeriodType periodType{};
  qz::YYYYMMDD startDate;
  qz::YYYYMMDD finishDate;
  /// The weekday on which the weeks begin that the period was formed with.
  qz::DayOfWeek firstDayOfWeek = qz::DayOfWeek::sunday;

  /// How many days it has. REQUIRES: startDate <= finishDate.
  [[nodiscard]] std::int64_t numDays() const { return startDate.distance(finishDate, true); }
  [[nodiscard]] bool contains(const qz::YYYYMMDD& date) const { return startDate <= date && date <= finishDate; }

  /// The share of its days that are over at the end of a day: 0 before the period, 1 on its last day and after it.
  /// REQUIRES: startDate <= finishDate.
  [[nodiscard]] double progressAtEndOf(const qz::YYYYMMDD& date) const;

  friend bool operator==(const TaskFrequencyPeriod&, const TaskFrequencyPeriod&) = default;
};

/// A day together with the period that holds it. Coded with the keys "date" and "period".
struct DatedPeriod {
  qz::YYYYMMDD date;
  TaskFrequencyPeriod period;

  DatedPeriod() = default;
  DatedPeriod(const qz::YYYYMMDD& theDate, const TaskFrequencyPeriod& thePeriod) : date(theDate), period(thePeriod) {}
  /// The period of this type that holds the day; see firstDate() for `referenceDate`.
  DatedPeriod(const qz::YYYYMMDD& theDate, TaskFrequencyPeriodType periodType, qz::DayOfWeek firstDayOfWeek,
              const std::optional<qz::YYYYMMDD>& referenceDate = std::nullopt);

  /// Whether the day is the last of its period.
  [[nodiscard]] bool isLastDay() const { return date == period.finishDate; }
  /// The share of the period that is over at the end of the day of `now`, 0 to 1. It asks for the period alone, not for
  /// `date`.
  [[nodiscard]] double periodProgressAtEndOfToday(const qz::HHMMSS& startOfDay, const qz::TimeZone& timeZone,
                                                  qz::Moment now) const;

  friend bool operator==(const DatedPeriod&, const DatedPeriod&) = default;
};

/// Reading either throws qz::DecodingError for a missing key, an unknown period type, a day that the calendar does not
/// have, an end before the beginning, and a date that does not lie in its period.
void to_json(nlohmann::json& json, const TaskFrequencyPeriod& period);
void from_json(const nlohmann::json& json, TaskFrequencyPeriod& period);
void to_json(nlohmann::json& json, const DatedPeriod& period);
void from_json(const nlohmann::json& json, DatedPeriod& period);

}  // namespace habitra
