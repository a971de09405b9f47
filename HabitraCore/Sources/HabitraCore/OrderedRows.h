#pragma once

#include <array>
#include <cstddef>

/// For tables whose rows are found by their place. For sources of this module.
namespace habitra {

/// Whether each row stands at the place of its case's number.
template <typename Row, std::size_t count, typename Case>
[[nodiscard]] constexpr bool standInOrder(const std::array<Row, count>& rows, Case Row::*key) {
  for (std::size_t i = 0; i < count; ++i) {
    if (static_cast<std::size_t>(rows[i].*key) != i) return false;
  }
  return true;
}

}  // namespace habitra
