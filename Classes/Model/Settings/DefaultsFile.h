#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace habitra {

/// The content of a file of defaults; none when there is no file. Follows no link in the place of the file and takes no
/// lock. Throws StoreError when something else than a plain file of our own is there, or it cannot be read.
[[nodiscard]] std::optional<std::string> readDefaultsFile(const std::filesystem::path& file);

/// The turn to write a file of defaults, or another small one of the home: an exclusive lock on "<file>.lock", which
/// ends with the process whatever happens. Makes the folder and the lock's file when they are missing. Belongs to one
/// thread.
class DefaultsFileTurn {
 public:
  static constexpr std::chrono::milliseconds defaultPatience = std::chrono::seconds(10);

  /// Waits for the turn. Throws StoreError: busy when patience ends, readOnly when nothing may be written there.
  explicit DefaultsFileTurn(const std::filesystem::path& file, std::chrono::milliseconds patience = defaultPatience);
  ~DefaultsFileTurn();
  DefaultsFileTurn(const DefaultsFileTurn&) = delete;
  DefaultsFileTurn& operator=(const DefaultsFileTurn&) = delete;

  /// The file, by a path without links.
  [[nodiscard]] const std::filesystem::path& file() const { return file_; }

  /// Puts `content` in place of the file in one step; it is on the disk when this returns. Throws StoreError and leaves
  /// the file as it was, but for a failure of the very last step: then it is replaced, and a crash may undo that.
  void replace(std::string_view content) const;

 private:
  void open();
  void close() noexcept;
  [[nodiscard]] bool tryOnce();
  void lock(std::chrono::milliseconds patience);

  std::filesystem::path file_;
  int lock_ = -1;
};

}  // namespace habitra
