#pragma once

#include <QZKit/RawValue.h>

#include <array>
#include <cstdint>
#include <string_view>

namespace qz {

/// How often, at most, an observer is told of new samples. What comes in between is told together when the hour, day or
/// week is over. The raw value is the name of the case.
enum class QZHKUpdateFrequency : std::uint8_t {
  immediate,  ///< with every change
  hourly,     ///< once an hour
  daily,      ///< once a day
  weekly,     ///< once a week
};

template <>
struct RawValueTable<QZHKUpdateFrequency> {
  using F = QZHKUpdateFrequency;
  static constexpr std::array<RawValueRow<F, std::string_view>, 4> rows{{
      {F::immediate, "immediate", "immediate"},
      {F::hourly, "hourly", "hourly"},
      {F::daily, "daily", "daily"},
      {F::weekly, "weekly", "weekly"},
  }};
};

}  // namespace qz
