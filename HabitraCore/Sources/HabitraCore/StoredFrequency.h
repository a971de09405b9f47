#pragma once

#include <HabitraCore/TaskFrequency.h>

#include <cstdint>
#include <optional>

namespace habitra {

/// A frequency as the columns of a task's row keep it.
struct StoredFrequency {
  std::int16_t daysMode = 0;         ///< TaskFrequency::DayMode
  std::int16_t daysOfWeek = 0;       ///< the bits of qz::DaysOfWeek
  std::int16_t daysPerWeek = 1;      ///< numCompletions; the interval in dayInterval mode; else 1
  std::int16_t daysTimesPerDay = 1;  ///< numPartialCompletions
  std::int64_t daysOfMonth = 0;      ///< the bits of DaysOfMonth

  friend bool operator==(const StoredFrequency&, const StoredFrequency&) = default;
};

/// The columns for a frequency. A count that the mode does not use is written as 1. Stops the program when a count
/// does not fit its 16 bits.
[[nodiscard]] StoredFrequency stored(const TaskFrequency& frequency);

/// The frequency that the columns mean, with counts below 1 read as 1. None where they cannot mean one: an unknown
/// mode, no weekday in specificDaysOfWeek, no day in specificDaysOfMonth, an interval outside its bounds in
/// dayInterval. Such a task is shown and logged, and left alone by the rules.
[[nodiscard]] std::optional<TaskFrequency> frequency(const StoredFrequency& stored);

}  // namespace habitra
