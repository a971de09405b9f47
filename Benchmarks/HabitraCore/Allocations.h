#pragma once

#include "MeasuredCase.h"

#include <cstdint>

namespace habitra::benchmarks {

/// How often the program has asked for memory so far, through `new` of any kind.
[[nodiscard]] std::int64_t numAllocations();

/// Counts the allocations of a walk over each length of history and prints a table; whether a longer history needs as
/// many as a short one, and so none for a day.
[[nodiscard]] bool allocationsAreFlat();

}  // namespace habitra::benchmarks
