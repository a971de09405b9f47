#pragma once

#include <QZKit/RawValue.h>

#include <array>
#include <cstdint>
#include <string_view>

namespace qz {

/// What a sample of `sleepAnalysis` says of the person while it lasted. The raw value is the name of the case.
enum class QZHKSleepValue : std::uint8_t {
  inBed,   ///< lying down to sleep, asleep or not
  asleep,  ///< asleep, in no stage that was told apart
  awake,   ///< awake between two stretches of sleep
  core,    ///< asleep, light
  deep,    ///< asleep, deep
  rem,     ///< asleep, dreaming
};

template <>
struct RawValueTable<QZHKSleepValue> {
  using S = QZHKSleepValue;
  static constexpr std::array<RawValueRow<S, std::string_view>, 6> rows{{
      {S::inBed, "inBed", "inBed"},
      {S::asleep, "asleep", "asleep"},
      {S::awake, "awake", "awake"},
      {S::core, "core", "core"},
      {S::deep, "deep", "deep"},
      {S::rem, "rem", "rem"},
  }};
};

}  // namespace qz
