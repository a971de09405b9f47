#pragma once

#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Checked.h>

#include <cstdint>

/// The three forms in which a day is handled here: as itself, as the integer under which entries keep it (20240131),
/// and as its number (days since 1970-01-01). For sources of this module.
namespace habitra {

/// Stops the program when the integer form does not fit 32 bits.
[[nodiscard]] inline std::int32_t intForm(const qz::YYYYMMDD& day) {
  return qz::checkedNarrow<std::int32_t>(day.intValue());
}

/// The day of an integer form; none, and nothing that is stored below 1, is emptyValue.
[[nodiscard]] inline qz::YYYYMMDD dayOf(std::int32_t intForm) {
  return qz::YYYYMMDD::fromRawValue(intForm).value_or(qz::YYYYMMDD::emptyValue);
}

/// Stops the program when the number does not fit 32 bits, which those of days in integer form do.
[[nodiscard]] inline std::int32_t numberOf(const qz::YYYYMMDD& day) {
  return qz::checkedNarrow<std::int32_t>(day.dayNumber());
}
[[nodiscard]] inline std::int32_t numberOf(std::int32_t intForm) { return numberOf(dayOf(intForm)); }

[[nodiscard]] inline qz::YYYYMMDD dayOfNumber(std::int32_t number) { return qz::YYYYMMDD::fromDayNumber(number); }

}  // namespace habitra
