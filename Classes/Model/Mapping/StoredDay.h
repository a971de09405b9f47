#pragma once

#include <QZDateTime/YYYYMMDD.h>

#include <cstdint>
#include <optional>

/// Days as attributes keep them: in their integer form, 0 for none.
namespace habitra {

/// Days before it come from no calendar that a person kept.
inline constexpr qz::YYYYMMDD earliestKeptDay(1, 1, 1);

/// Days after it come from no calendar that a person kept, and what follows from them may not fit a column.
inline constexpr qz::YYYYMMDD latestKeptDay(9999, 12, 31);

/// Stops the program when the day does not fit 32 bits.
[[nodiscard]] std::int32_t storedDay(const std::optional<qz::YYYYMMDD>& day);

/// The day that an attribute keeps, as it stands; 0 and less is no day.
[[nodiscard]] std::optional<qz::YYYYMMDD> dayFromStored(std::int64_t value);

/// The same; what the calendar does not have is no day either.
[[nodiscard]] std::optional<qz::YYYYMMDD> existingDayFromStored(std::int64_t value);

}  // namespace habitra
