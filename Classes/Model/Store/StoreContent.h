#pragma once

#include <HabitraModel/Store/Engine/Connection.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace habitra {

/// What a table holds, in brief.
struct TableContent {
  std::string name;
  std::int64_t rows = 0;
  std::array<std::uint64_t, 2> hash{};  ///< XXH3, 128 bits, over all columns of all rows in order of the key

  friend bool operator==(const TableContent&, const TableContent&) = default;
};

/// The content of every table, and before them the definitions of all tables and indexes as a table of their own.
/// Reads the whole store through the connection, in its present view.
[[nodiscard]] std::vector<TableContent> storeContent(Connection& connection);

}  // namespace habitra
