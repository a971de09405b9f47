#pragma once

#include <cstddef>
#include <cstdint>

/// How much a foreign history may hold. A person's life of habits is a hundredth of it; a file that holds more was not
/// written by a tracker, and is refused before it fills the memory.
namespace habitra::foreign_limits {

inline constexpr std::uint64_t largestContent = std::uint64_t{256} << 20U;  ///< bytes, of all files unpacked together
inline constexpr std::uint64_t largestJSON = std::uint64_t{64} << 20U;  ///< bytes; in memory it takes many times that
inline constexpr std::size_t mostFiles = 10'000;                        ///< members of an archive or folder
inline constexpr std::size_t mostRows = 2'000'000;                      ///< lines of a text, rows of a table

}  // namespace habitra::foreign_limits
