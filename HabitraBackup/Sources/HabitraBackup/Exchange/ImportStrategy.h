#pragma once

#include <HabitraCore/RawValue.h>

#include <array>
#include <cstdint>
#include <string_view>

namespace habitra {

/// What happens where a task of a document is in the store already. The raw value is the word that a person writes.
enum class ImportStrategy : std::uint8_t {
  skip,            ///< the stored one stays as it is
  overwrite,       ///< its settings, its log and all its parts become those of the document
  merge,           ///< its settings stay; entries, notes, counters and timers that it does not have yet are added
  importWithNewID  ///< nothing is looked for: every task of the document becomes a new one
};

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::ImportStrategy> {
  using T = habitra::ImportStrategy;
  static constexpr std::array<RawValueRow<T, std::string_view>, 4> rows{{
      {T::skip, "skip", "skip"},
      {T::overwrite, "overwrite", "overwrite"},
      {T::merge, "merge", "merge"},
      {T::importWithNewID, "new", "importWithNewID"},
  }};
};
