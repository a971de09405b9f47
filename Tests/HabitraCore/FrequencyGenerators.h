#pragma once

#include <HabitraCore/TaskFrequency.h>
#include <rapidcheck.h>

#include <cstddef>
#include <cstdint>
#include <optional>

#include "QZDateTime/Generators.h"

/// Arbitrary frequencies and periods for property tests.
namespace habitra {

template <RawValued E>
E anyCase() {
  const auto& rows = RawValueTable<E>::rows;
  return rows[static_cast<std::size_t>(qz::between(0, static_cast<std::int64_t>(rows.size()) - 1))].value;
}

/// A frequency that a person could have entered; counts that its mode does not use are 1.
inline TaskFrequency anyFrequency() {
  TaskFrequency value{.dayMode = anyCase<TaskFrequency::DayMode>()};
  value.days = qz::DaysOfWeek::fromRawValue(qz::between(1, 127)).value();
  value.daysOfMonth = DaysOfMonth(*rc::gen::arbitrary<std::int64_t>()) | DaysOfMonth::day(qz::between(1, 31));
  value.numPartialCompletions = qz::between(1, 32'767);
  if (value.isCountedDays())
    value.numCompletions = qz::between(1, nominalLength(value.periodTypeForCompletionCountCalculation()));
  if (value.isAggregate()) value.numCompletions = qz::between(1, 32'767);
  if (value.dayMode == TaskFrequency::DayMode::dayInterval) value.dayInterval = qz::between(2, 30);
  return value;
}

/// A day that people live in, from 1600 on.
inline qz::YYYYMMDD anyCommonDay() { return qz::YYYYMMDD::fromDayNumber(qz::between(-135'140, 100'000)); }

inline std::optional<qz::YYYYMMDD> anyReferenceDate() {
  return qz::between(0, 3) == 0 ? std::nullopt : std::optional(anyCommonDay());
}

inline DatedPeriod anyPeriod() {
  return DatedPeriod(anyCommonDay(), anyCase<TaskFrequencyPeriodType>(), qz::anyWeekday(), anyReferenceDate());
}

}  // namespace habitra
