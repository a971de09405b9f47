#pragma once

#include <HabitraCore/RawValue.h>
#include <QZDateTime/DayOfWeek.h>
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

/// The kind of calendar span in which a task is measured. Stored as one letter.
enum class TaskFrequencyPeriodType : std::uint8_t { day, week, fortnight, month, year };

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::TaskFrequencyPeriodType> {
  using T = habitra::TaskFrequencyPeriodType;
  static constexpr std::array<RawValueRow<T, std::string_view>, 5> rows{{
      {T::day, "d", "day"},
      {T::week, "w", "week"},
      {T::fortnight, "f", "fortnight"},
      {T::month, "m", "month"},
      {T::year, "y", "year"},
  }};
};

namespace habitra {

/// How many days a period of this type has at most: 1, 7, 14, 31, 366.
[[nodiscard]] std::int64_t nominalLength(TaskFrequencyPeriodType type);

/// The first day of the period of this type that holds `date`. Fortnights are blocks of two whole weeks; one block
/// begins at the start of the week that holds `referenceDate` (without one: that of 1 January 2000), and they extend
/// backwards from it in the same way.
[[nodiscard]] qz::YYYYMMDD firstDate(TaskFrequencyPeriodType type, const qz::YYYYMMDD& date,
                                     qz::DayOfWeek firstDayOfWeek,
                                     const std::optional<qz::YYYYMMDD>& referenceDate = std::nullopt);
/// The last day of the same period, inclusive.
[[nodiscard]] qz::YYYYMMDD lastDate(TaskFrequencyPeriodType type, const qz::YYYYMMDD& date,
                                    qz::DayOfWeek firstDayOfWeek,
                                    const std::optional<qz::YYYYMMDD>& referenceDate = std::nullopt);

/// The possible lengths of a period in days. The raw value is "d" and the number of days.
enum class MultiDayCount : std::uint8_t {
  duration1,
  duration7,
  duration14,
  duration28,
  duration29,
  duration30,
  duration31,
  duration365,
  duration366,
};

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::MultiDayCount> {
  using T = habitra::MultiDayCount;
  static constexpr std::array<RawValueRow<T, std::string_view>, 9> rows{{
      {T::duration1, "d1", "duration1"},
      {T::duration7, "d7", "duration7"},
      {T::duration14, "d14", "duration14"},
      {T::duration28, "d28", "duration28"},
      {T::duration29, "d29", "duration29"},
      {T::duration30, "d30", "duration30"},
      {T::duration31, "d31", "duration31"},
      {T::duration365, "d365", "duration365"},
      {T::duration366, "d366", "duration366"},
  }};
};

namespace habitra {

[[nodiscard]] std::int64_t numDays(MultiDayCount count);
/// The name of the picture that stands for it: "calendar.7". Fronts bring the pictures.
[[nodiscard]] std::string_view icon(MultiDayCount count);

/// The length of the period of this type that holds a day, and of the one that holds the day of `now`. On which weekday
/// weeks begin makes no difference to it.
[[nodiscard]] MultiDayCount multiDayCount(TaskFrequencyPeriodType type, const qz::YYYYMMDD& date);
[[nodiscard]] MultiDayCount multiDayCount(TaskFrequencyPeriodType type, const qz::HHMMSS& startOfDay,
                                          const qz::TimeZone& timeZone, qz::Moment now);

/// Coded as the letter. Decoding another text throws qz::DecodingError.
void to_json(nlohmann::json& json, TaskFrequencyPeriodType type);
void from_json(const nlohmann::json& json, TaskFrequencyPeriodType& type);

}  // namespace habitra
