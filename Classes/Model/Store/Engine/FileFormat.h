#pragma once

#include <cstdint>

namespace habitra {

class Connection;

/// What a file of one kind of store says of itself.
struct FileFormat {
  std::int32_t applicationID = 0;  ///< kept in the file as SQLite's application_id
  int version = 0;                 ///< of the layout, kept as SQLite's user_version

  enum class Found {
    nothing,  ///< an empty file
    older,    ///< a store of an earlier version
    current,
  };

  /// Looks at the file of a connection. Throws StoreError when it was made by a newer version, or is something else.
  [[nodiscard]] Found find(Connection& connection) const;
};

}  // namespace habitra
