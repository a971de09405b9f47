#pragma once

#include <cstdint>
#include <string_view>

namespace qz {

/// A place in the source, the caller's when `current()` is a default argument. (The standard's own type for it is one
/// that clang 14 does not have.)
struct Place {
  const char* file;
  unsigned line;

  [[nodiscard]] static constexpr Place current(const char* file = __builtin_FILE(), unsigned line = __builtin_LINE()) {
    return {file, line};
  }
};

/// Stops the program: writes one line, "habitra: stopped: <what> (<value>) at <file>:<line>", to standard error and
/// calls abort(). For broken preconditions of our own code only; what a file, a store or a user says is an Error.
/// Thread-safe; allocates nothing.
[[noreturn]] void trap(std::string_view what, std::string_view value = {}, Place place = Place::current()) noexcept;

/// The same with a number as the value.
[[noreturn]] void trap(std::string_view what, std::int64_t value, Place place = Place::current()) noexcept;

/// Stops the program unless `holds`. `what` names the rule that must hold: "a period ends before it starts".
inline void require(bool holds, std::string_view what, Place place = Place::current()) {
  if (!holds) [[unlikely]]
    trap(what, {}, place);
}

}  // namespace qz
