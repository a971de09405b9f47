#pragma once

#include <cstdint>
#include <source_location>
#include <string_view>

namespace qz {

/// Stops the program: writes one line, "habitra: stopped: <what> (<value>) at <file>:<line>", to standard error and
/// calls abort(). For broken preconditions of our own code only; what a file, a store or a user says is an Error.
/// Thread-safe; allocates nothing.
[[noreturn]] void trap(std::string_view what, std::string_view value = {},
                       std::source_location place = std::source_location::current()) noexcept;

/// The same with a number as the value.
[[noreturn]] void trap(std::string_view what, std::int64_t value,
                       std::source_location place = std::source_location::current()) noexcept;

/// Stops the program unless `holds`. `what` names the rule that must hold: "a period ends before it starts".
inline void require(bool holds, std::string_view what, std::source_location place = std::source_location::current()) {
  if (!holds) [[unlikely]]
    trap(what, {}, place);
}

}  // namespace qz
