#pragma once

#include <Support/RatioReport.h>

#include <vector>

namespace habitra::benchmarks {

/// What recording and processing may cost beside the bare interface of the engine.
[[nodiscard]] std::vector<Ratio> passRatios();

/// Prints what a pass over a habit of a year and of ten years holds; whether the longer one holds no more for a day.
[[nodiscard]] bool passMemoryIsBounded();

}  // namespace habitra::benchmarks
