#pragma once

#include <QZDateTime/HHMMSS.h>

#include <cstdint>
#include <optional>

/// Times of day as optional attributes keep them: in seconds since midnight.
namespace habitra {

[[nodiscard]] inline std::optional<std::int64_t> storedTime(const std::optional<qz::HHMMSS>& time) {
  return time ? std::optional(time->intValue()) : std::nullopt;
}

/// A number that is no time of day is none.
[[nodiscard]] inline std::optional<qz::HHMMSS> timeFromStored(const std::optional<std::int64_t>& value) {
  return value ? qz::HHMMSS::fromRawValue(*value) : std::nullopt;
}

/// Writes where the column says something else: a number that is no time stays until one is chosen.
inline void setTime(std::optional<std::int64_t>& column, const std::optional<qz::HHMMSS>& time) {
  if (timeFromStored(column) != time) column = storedTime(time);
}

}  // namespace habitra
