#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace qz {

/// One row of an enumeration's table: the case, the value under which it is stored and exchanged, and the name under
/// which it is spoken of in coded forms and messages.
template <typename E, typename Raw>
struct RawValueRow {
  E value;
  Raw raw;
  std::string_view name;
};

/// The table of an enumeration, specialised beside it (`struct qz::RawValueTable<E>`) with `static constexpr
/// std::array<RawValueRow<E, Raw>, N> rows` in the order of declaration. There is no other place where a raw value or a
/// name is written down.
template <typename E>
struct RawValueTable;

template <typename E>
concept RawValued = requires {
  RawValueTable<E>::rows.size();
};

/// The case with this raw value; none when there is no such case, so that what an unknown version stored reads as "no
/// value" and never as a default.
template <RawValued E, typename Raw>
[[nodiscard]] constexpr std::optional<E> fromRawValue(const Raw& raw) {
  for (const auto& row : RawValueTable<E>::rows) {
    if (row.raw == raw) return row.value;
  }
  return std::nullopt;
}

/// The case with this name.
template <RawValued E>
[[nodiscard]] constexpr std::optional<E> fromCaseName(std::string_view name) {
  for (const auto& row : RawValueTable<E>::rows) {
    if (row.name == name) return row.value;
  }
  return std::nullopt;
}

template <RawValued E>
[[nodiscard]] constexpr const auto& rawValueRow(E value) {
  const auto& rows = RawValueTable<E>::rows;
  std::size_t index = 0;
  while (index + 1 < rows.size() && rows[index].value != value) ++index;
  return rows[index];
}

template <RawValued E>
[[nodiscard]] constexpr auto rawValue(E value) {
  return rawValueRow(value).raw;
}

template <RawValued E>
[[nodiscard]] constexpr std::string_view caseName(E value) {
  return rawValueRow(value).name;
}

}  // namespace qz
