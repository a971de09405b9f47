#pragma once

#include <cstdint>

namespace habitra {

/// The number of a row: one counter for the whole store, given in order of insertion, never given twice. "Order of
/// creation" means the order of these numbers, not that of the clock. A relationship holds the number of the row it
/// leads to.
enum class ObjectID : std::int64_t {
  none = 0,  ///< no row; what a relationship that leads nowhere holds
};

[[nodiscard]] constexpr std::int64_t rawValue(ObjectID id) { return static_cast<std::int64_t>(id); }

}  // namespace habitra
