#pragma once

#include <cstddef>
#include <string_view>

namespace qz {

/// The least number of insertions, deletions, replacements and swaps of neighbours that turn one text into the other,
/// for telling a slip of the pen from another word. Takes time in proportion to the product of the lengths, so bound
/// what comes from outside. Pure, safe from any thread.
[[nodiscard]] std::size_t editDistance(std::u32string_view a, std::u32string_view b);

/// The same in bytes.
[[nodiscard]] std::size_t editDistance(std::string_view a, std::string_view b);

}  // namespace qz
