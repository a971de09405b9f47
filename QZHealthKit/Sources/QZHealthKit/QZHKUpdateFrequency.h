#pragma once

#include <QZKit/RawValue.h>

#include <array>
#include <cstdint>
#include <string_view>

namespace qz {

/// How often, at most, an observer is told of changes. The first change is told at once; what follows within an hour,
/// day or week of it is told together when that time is over. The time runs within one process and is not kept: a
/// process that ends before it is over finds the rest by asking when it starts again. The raw value is the name of the
/// case.
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
