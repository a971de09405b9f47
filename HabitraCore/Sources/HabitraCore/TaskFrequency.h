#pragma once

#include <HabitraCore/DaysOfMonth.h>
#include <HabitraCore/RawValue.h>
#include <HabitraCore/TaskFrequencyPeriod.h>
#include <HabitraCore/TaskFrequencyPeriodType.h>
#include <QZDateTime/DayOfWeek.h>
#include <QZDateTime/DaysOfWeek.h>
#include <QZDateTime/HHMMSS.h>
#include <QZDateTime/TimeZone.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Clock.h>

#include <array>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string_view>

namespace habitra {

/// The rule that says on which days a task is due and how many completions a period of it needs. A plain value; coded
/// with the keys "dayMode", "days" (weekday numbers, sorted), "daysOfMonth", "numPartialCompletions", "numCompletions"
/// and "dayInterval".
struct TaskFrequency {
  /// The kind of rule. In the counted-days modes each day is judged by itself while the completed days are counted over
  /// the longer period; the aggregate modes make the whole longer period one. The raw value is stored.
  enum class DayMode : std::int16_t {
    specificDaysOfWeek = 0,
    numberOfDaysInWeek = 1,
    dayInterval = 2,
    numberOfDaysInMonth = 3,
    numberOfDaysInYear = 4,
    numberOfDaysInFortnight = 5,
    aggregateOverWeek = 6,
    aggregateOverMonth = 7,
    aggregateOverFortnight = 8,
    aggregateOverYear = 9,
    specificDaysOfMonth = 10,
  };

  /// How a day that is not done shows while its period is open. *With indicator* where the answer depends on the log,
  /// *without* where the calendar alone gives it.
  enum class SkipMode : std::uint8_t {
    willMissWithIndicator,
    willMissWithoutIndicator,
    willSkipWithIndicator,
    willSkipWithoutIndicator,
  };

  /// What somebody who counts the due days in a span of days is told.
  struct DaysInPeriodCallbackResponse {
    qz::DayOfWeek firstDayOfWeek = qz::DayOfWeek::sunday;
    std::int64_t numUniqueCompletions = 0;  ///< distinct completed days so far
    qz::YYYYMMDD taskCreatedDate;
    bool isNegative = false;  ///< a task to avoid
    qz::YYYYMMDD fromDate;    ///< the span, both ends included
    qz::YYYYMMDD toDate;

    friend bool operator==(const DaysInPeriodCallbackResponse&, const DaysInPeriodCallbackResponse&) = default;
  };

  /// From where the next due day of an interval task is counted.
  struct DayIntervalResponse {
    /// None while nothing was completed before today.
    std::optional<TaskFrequencyPeriod> periodOfLastCompletionBeforeToday;

    friend bool operator==(const DayIntervalResponse&, const DayIntervalResponse&) = default;
  };

  /// An interval runs from every 2 days to every 30 days.
  static constexpr std::int64_t dailyCompletionMinIntervalDays = 2;
  static constexpr std::int64_t dailyCompletionMaxIntervalDays = 30;

  DayMode dayMode = DayMode::specificDaysOfWeek;
  /// The weekdays on which the task is due, for specificDaysOfWeek.
  qz::DaysOfWeek days;
  /// The days of the month on which the task is due, for specificDaysOfMonth.
  DaysOfMonth daysOfMonth;
  /// How many partial completions make one completion. Below 1 counts as 1.
  std::int64_t numPartialCompletions = 1;
  /// How many completed days, or completions, the period needs, in the counted-days and aggregate modes; 1 in the
  /// others. Below 1 counts as 1.
  std::int64_t numCompletions = 1;
  /// Due every so many days, in dayInterval mode; 1 in the others.
  std::int64_t dayInterval = 1;

  /// Due on all seven weekdays, one completion a day: what a newly made task has.
  [[nodiscard]] static TaskFrequency everyDay();

  /// The kind of period that has a status of its own.
  [[nodiscard]] TaskFrequencyPeriodType measurementDuration() const;
  /// The kind of period over which completions are counted.
  [[nodiscard]] TaskFrequencyPeriodType periodTypeForCompletionCountCalculation() const;
  /// Whether each day is judged by itself while the completed days of a longer period are counted.
  [[nodiscard]] bool isCountedDays() const;
  /// Whether a whole longer period is judged as one, by the completions in it.
  [[nodiscard]] bool isAggregate() const;
  /// How many partial entries a measured period needs: those of one completion, in the aggregate modes those of all.
  /// Stops the program on overflow.
  [[nodiscard]] std::int64_t numPartialCompletionsPerPeriod() const;

  /// The measured period that holds a day. See firstDate() for `referenceDate`.
  [[nodiscard]] DatedPeriod period(const qz::YYYYMMDD& date, qz::DayOfWeek firstDayOfWeek,
                                   const std::optional<qz::YYYYMMDD>& referenceDate = std::nullopt) const;
  /// The same for the day of a moment.
  [[nodiscard]] DatedPeriod period(qz::HHMMSS startOfDay, qz::Moment date, qz::DayOfWeek firstDayOfWeek,
                                   const qz::TimeZone& timeZone,
                                   const std::optional<qz::YYYYMMDD>& referenceDate = std::nullopt) const;
  /// The measured period that holds the day of `now`.
  [[nodiscard]] DatedPeriod currentPeriod(qz::HHMMSS startOfDay, qz::DayOfWeek firstDayOfWeek,
                                          const qz::TimeZone& timeZone, qz::Moment now,
                                          const std::optional<qz::YYYYMMDD>& referenceDate = std::nullopt) const;
  /// The first day of the measured period that holds a day.
  [[nodiscard]] qz::YYYYMMDD startOfPeriod(const qz::YYYYMMDD& date, qz::DayOfWeek firstDayOfWeek,
                                           const std::optional<qz::YYYYMMDD>& referenceDate = std::nullopt) const;

  /// In dayInterval mode the first due day that is not before `today`: `dayInterval` days, or a multiple of them, after
  /// the last day of the period of the last completion before today. While there is none: the anchor (the reference
  /// date, or without one the first day of the history), or a multiple of them after it. So a missed occasion does not
  /// move the next one. REQUIRES: dayInterval >= 1.
  [[nodiscard]] qz::YYYYMMDD nextDueDay(const DayIntervalResponse& response, const qz::YYYYMMDD& anchor,
                                        const qz::YYYYMMDD& today) const;

  friend bool operator==(const TaskFrequency&, const TaskFrequency&) = default;
};

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::TaskFrequency::DayMode> {
  using T = habitra::TaskFrequency::DayMode;
  static constexpr std::array<RawValueRow<T, std::int16_t>, 11> rows{{
      {T::specificDaysOfWeek, 0, "specificDaysOfWeek"},
      {T::numberOfDaysInWeek, 1, "numberOfDaysInWeek"},
      {T::dayInterval, 2, "dayInterval"},
      {T::numberOfDaysInMonth, 3, "numberOfDaysInMonth"},
      {T::numberOfDaysInYear, 4, "numberOfDaysInYear"},
      {T::numberOfDaysInFortnight, 5, "numberOfDaysInFortnight"},
      {T::aggregateOverWeek, 6, "aggregateOverWeek"},
      {T::aggregateOverMonth, 7, "aggregateOverMonth"},
      {T::aggregateOverFortnight, 8, "aggregateOverFortnight"},
      {T::aggregateOverYear, 9, "aggregateOverYear"},
      {T::specificDaysOfMonth, 10, "specificDaysOfMonth"},
  }};
};

template <>
struct qz::RawValueTable<habitra::TaskFrequency::SkipMode> {
  using T = habitra::TaskFrequency::SkipMode;
  static constexpr std::array<RawValueRow<T, std::string_view>, 4> rows{{
      {T::willMissWithIndicator, "mwi", "willMissWithIndicator"},
      {T::willMissWithoutIndicator, "mwoi", "willMissWithoutIndicator"},
      {T::willSkipWithIndicator, "swi", "willSkipWithIndicator"},
      {T::willSkipWithoutIndicator, "swoi", "willSkipWithoutIndicator"},
  }};
};

namespace habitra {

void to_json(nlohmann::json& json, const TaskFrequency& frequency);
/// Throws qz::DecodingError for an unknown raw value, a missing key or a value of the wrong kind, naming the key: 1.9
/// and true are no counts, nor is what does not fit the 16 bits in which counts are stored. Whether the rule makes
/// sense is for problems() and canBe() to say.
void from_json(const nlohmann::json& json, TaskFrequency& frequency);

}  // namespace habitra
