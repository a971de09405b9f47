#pragma once

#include <HabitraCore/RawValue.h>
#include <HabitraCore/TaskCalendarPeriodInfo.h>
#include <HabitraCore/TaskFrequency.h>
#include <QZDateTime/DayOfWeek.h>
#include <QZDateTime/YYYYMMDD.h>

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

namespace habitra {

/// What the recent past of a task looks like: the status of every period of a span of days, and two shares of success.
struct TaskRecentHistory {
  enum class PreviousSuccessType : std::uint8_t { last7, last30, pastMonth, pastYear, allTime };

  /// How many of the judged periods of a span succeeded. A period is judged by its final status, as success or failure;
  /// skips, allowed misses and undecided periods are not judged. It lies in the span in which its last day lies; the
  /// current one ends today, and counts once it is decided.
  struct PreviousDaysSuccess {
    PreviousSuccessType type = PreviousSuccessType::last7;
    std::int64_t numSamples = 0;  ///< periods judged
    double successPct = 0.0;      ///< share of them that succeeded, 0 to 1; 0 without a sample

    friend bool operator==(const PreviousDaysSuccess&, const PreviousDaysSuccess&) = default;
  };

  qz::DayOfWeek firstDayOfWeek = qz::DayOfWeek::sunday;
  std::map<qz::YYYYMMDD, TaskCalendarPeriodInfo::TaskCalendarPeriodStatus> single;  ///< periods of a day
  std::vector<TaskCalendarPeriodInfo> multi;                                        ///< longer ones, in order
  PreviousDaysSuccess shortTerm;
  PreviousDaysSuccess longTerm;

  friend bool operator==(const TaskRecentHistory&, const TaskRecentHistory&) = default;
};

/// The two spans over which the success of a task is measured. Judged by the day: the last 7 days and the last 30,
/// today included; by the week or fortnight: the past month and the past year; by the month: the past year and all
/// time; by the year: all time, twice.
struct SuccessSpans {
  TaskRecentHistory::PreviousSuccessType shortTerm = TaskRecentHistory::PreviousSuccessType::last7;
  TaskRecentHistory::PreviousSuccessType longTerm = TaskRecentHistory::PreviousSuccessType::last30;
};
[[nodiscard]] SuccessSpans successSpans(const TaskFrequency& frequency);

/// The first day of a span that ends today; none for all time. A past month, or year, begins on the day after the same
/// day one month, or year, earlier, which is cut to that month's end: on 31 March 2024 the past month begins on 1
/// March, since one month earlier there was 29 February.
[[nodiscard]] std::optional<qz::YYYYMMDD> firstDay(TaskRecentHistory::PreviousSuccessType span,
                                                   const qz::YYYYMMDD& today);

/// The first day that either span of success of a task looks at, but for all time; none where both are of all time.
/// What ended before it can be counted once and for all.
[[nodiscard]] std::optional<qz::YYYYMMDD> firstSampledDay(const TaskFrequency& frequency, const qz::YYYYMMDD& today);

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::TaskRecentHistory::PreviousSuccessType> {
  using T = habitra::TaskRecentHistory::PreviousSuccessType;
  static constexpr std::array<RawValueRow<T, std::string_view>, 5> rows{{
      {T::last7, "last7", "last7"},
      {T::last30, "last30", "last30"},
      {T::pastMonth, "pastMonth", "pastMonth"},
      {T::pastYear, "pastYear", "pastYear"},
      {T::allTime, "allTime", "allTime"},
  }};
};
