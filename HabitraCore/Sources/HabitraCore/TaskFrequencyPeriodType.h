#pragma once

#include <HabitraCore/RawValue.h>
#include <QZDateTime/DayOfWeek.h>
#include <QZDateTime/YYYYMMDD.h>

#include <array>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string_view>

namespace habitra {

/// The kind of calendar span in which a task is measured. Stored as one letter.
enum class TaskFrequencyPeriodType : std::uint8_t { day, week, fortnight, month, year };

template <>
struct RawValueTable<TaskFrequencyPeriodType> {
  using T = TaskFrequencyPeriodType;
  static constexpr std::array<RawValueRow<T, std::string_view>, 5> rows{{
      {T::day, "d", "day"},
      {T::week, "w", "week"},
      {T::fortnight, "f", "fortnight"},
      {T::month, "m", "month"},
      {T::year, "y", "year"},
  }};
};

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

/// Coded as the letter. Decoding another text throws qz::DecodingError.
void to_json(nlohmann::json& json, TaskFrequencyPeriodType type);
void from_json(const nlohmann::json& json, TaskFrequencyPeriodType& type);

}  // namespace habitra
