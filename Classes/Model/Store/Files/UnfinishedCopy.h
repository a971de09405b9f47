#pragma once

#include <HabitraModel/Store/Engine/Connection.h>

#include <filesystem>

namespace habitra {

/// A copy of a store on its way to a name: it lies in the same folder under a temporary one, 0600, and goes with this
/// object unless it gets there. When a program dies, the next copy into the folder removes what it left.
class UnfinishedCopy {
 public:
  /// An empty file for the copy that is to be `target`, whose folder is there.
  explicit UnfinishedCopy(std::filesystem::path target);
  ~UnfinishedCopy();
  UnfinishedCopy(const UnfinishedCopy&) = delete;
  UnfinishedCopy& operator=(const UnfinishedCopy&) = delete;

  [[nodiscard]] const std::filesystem::path& file() const { return file_; }

  /// Takes over the bytes of a file, whatever they are. REQUIRES: nobody has the file open.
  void fillWithBytesOf(const std::filesystem::path& file);

  /// Takes over what `source` sees, without a write-ahead log, and makes sure that it has: integrity check, and the
  /// same content row for row. REQUIRES: `source` has a view.
  void fillFrom(Connection& source);

  // Both flush the copy, give it its name and flush the folder. REQUIRES: no connection is open on the copy.
  /// Throws StoreError when the name is taken.
  void finish();
  /// Takes the place of what bears the name.
  void replace();
  /// Whether it has its name, be it that flushing the folder failed after that.
  [[nodiscard]] bool isFinished() const { return descriptor_ < 0; }

 private:
  [[nodiscard]] bool open();
  void rename(unsigned flags);
  void discard() noexcept;

  std::filesystem::path target_;
  std::filesystem::path file_;
  int descriptor_ = -1;  ///< open, and locked, as long as the copy is unfinished
};

/// Flushes what happened to the names in a folder.
void flushFolder(const std::filesystem::path& folder);

}  // namespace habitra
