#pragma once

#include <QZKit/Trap.h>

#include <concepts>
#include <cstdint>
#include <utility>

/// Arithmetic on days, times and counts that stops the program instead of wrapping. Each function takes two operands
/// of one integer type and gives their exact result in that type, or traps with one line that names the operation,
/// the left operand and the caller's place. All are pure and safe from any thread.
namespace qz {

template <std::integral T>
[[nodiscard]] constexpr T checkedAdd(T a, T b, Place place = Place::current()) {
  T result;
  if (__builtin_add_overflow(a, b, &result)) [[unlikely]]
    trap("overflow in an addition", static_cast<std::int64_t>(a), place);
  return result;
}

template <std::integral T>
[[nodiscard]] constexpr T checkedSubtract(T a, T b, Place place = Place::current()) {
  T result;
  if (__builtin_sub_overflow(a, b, &result)) [[unlikely]]
    trap("overflow in a subtraction", static_cast<std::int64_t>(a), place);
  return result;
}

template <std::integral T>
[[nodiscard]] constexpr T checkedMultiply(T a, T b, Place place = Place::current()) {
  T result;
  if (__builtin_mul_overflow(a, b, &result)) [[unlikely]]
    trap("overflow in a multiplication", static_cast<std::int64_t>(a), place);
  return result;
}

/// `value` in the narrower (or differently signed) integer type `To`; traps when it does not fit.
template <std::integral To, std::integral From>
[[nodiscard]] constexpr To checkedNarrow(From value, Place place = Place::current()) {
  if (!std::in_range<To>(value)) [[unlikely]]
    trap("value does not fit its width", static_cast<std::int64_t>(value), place);
  return static_cast<To>(value);
}

/// `value` without its fraction (towards zero) as a count; traps when it is not finite or outside 64 bits.
[[nodiscard]] constexpr std::int64_t checkedCount(double value, Place place = Place::current()) {
  // -2^63 is a double, 2^63 - 1 is not; a NaN fails both comparisons.
  if (!(value >= -0x1p63 && value < 0x1p63)) [[unlikely]]
    trap("not a count", std::string_view("a number that is not finite or too large"), place);
  return static_cast<std::int64_t>(value);
}

}  // namespace qz
