#pragma once

#include <filesystem>
#include <string>

namespace habitra {

/// How the file of a store is opened.
struct StoreFile {
  bool isReadOnly = false;  ///< it or its folder may not be written
  std::string address;      ///< what the engine is asked to open

  /// Looks at the file, which is there. One that may not be written and has no write-ahead log is addressed as one that
  /// nobody can be changing: the engine then needs no files of its own beside it.
  [[nodiscard]] static StoreFile at(const std::filesystem::path& file);

  /// The address of a file that nobody is changing.
  [[nodiscard]] static std::string immutableAddress(const std::filesystem::path& file);
};

}  // namespace habitra
