#pragma once

#include <span>
#include <string_view>

namespace habitra {

/// One step of a store's layout to the next version: statements that stand as they were written, whatever the entities
/// have become since.
struct Migration {
  int version;  ///< that it makes, out of the one before
  std::span<const std::string_view> statements;
};

/// Every migration, in order; the first one starts from version 1, the last one makes the present version.
[[nodiscard]] std::span<const Migration> allMigrations();

}  // namespace habitra
