#pragma once

#include <cstdint>

/// What a benchmark program asks for through `new` of any kind. A program that calls none of these is not watched.
namespace habitra::benchmarks {

/// How often it has asked so far.
[[nodiscard]] std::int64_t numAllocations();

/// The bytes it holds now.
[[nodiscard]] std::int64_t bytesHeld();

/// The most that it has held at once since the last call of this function.
[[nodiscard]] std::int64_t takePeakOfBytesHeld();

}  // namespace habitra::benchmarks
