#pragma once

#include <HabitraModel/Store/Engine/Connection.h>
#include <HabitraModel/Store/StoreVerification.h>

#include <map>
#include <vector>

namespace habitra {

/// What a look at every row of every entity has found.
struct RowVerification {
  std::map<EntityNumber, std::int64_t> rows;  ///< how many there are
  std::vector<DamagedRow> damaged;

  /// Reads the whole store in the connection's present view. Tables and columns that an earlier version did not have
  /// count as empty.
  [[nodiscard]] static RowVerification of(Connection& connection);
};

}  // namespace habitra
