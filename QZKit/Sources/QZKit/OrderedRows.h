#pragma once

#include <QZKit/RawValue.h>

#include <array>
#include <cstddef>

namespace qz {

/// Whether each row of a table stands at the place of its case's number, where it is looked for; of an enumeration with
/// a table of raw values, also whether no case is without a row.
template <typename Row, std::size_t count, typename E>
[[nodiscard]] constexpr bool standInOrder(const std::array<Row, count>& rows, E Row::*key) {
  for (std::size_t i = 0; i < count; ++i) {
    if (static_cast<std::size_t>(rows[i].*key) != i) return false;
  }
  if constexpr (RawValued<E>) {
    return count == RawValueTable<E>::rows.size();
  } else {
    return true;
  }
}

}  // namespace qz
