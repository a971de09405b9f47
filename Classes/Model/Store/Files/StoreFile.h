#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace habitra {

/// How the file of a store is opened.
struct StoreFile {
  bool isReadOnly = false;  ///< it or its folder may not be written
  std::string address;      ///< what the engine is asked to open

  /// Ends the address of a store with a write-ahead log that nobody has open: a connection then takes no locks on it
  /// and keeps the index of the log to itself, in memory.
  static constexpr std::string_view withoutLocks = "?vfs=unix-none";

  [[nodiscard]] static bool mayWrite(const std::filesystem::path& path);

  /// Looks at the file, which is there. One that may not be written and that nobody has open is addressed as one that
  /// nobody can be changing: the engine then needs no files of its own beside it.
  [[nodiscard]] static StoreFile at(const std::filesystem::path& file);

  /// The address for reading of a file that nobody has open; the engine makes none beside it.
  [[nodiscard]] static std::string addressAtRest(const std::filesystem::path& file);
  /// The address of a file that is all there is, and that nobody is changing.
  [[nodiscard]] static std::string immutableAddress(const std::filesystem::path& file);
  /// A memory of its own that all connections of this process can share.
  [[nodiscard]] static std::string newMemoryAddress();
};

}  // namespace habitra
