#pragma once

#include "MeasuredCase.h"

namespace habitra::benchmarks {

/// Counts the allocations of a walk over each length of history and prints a table; whether a longer history needs as
/// many as a short one, and so none for a day.
[[nodiscard]] bool allocationsAreFlat();

}  // namespace habitra::benchmarks
