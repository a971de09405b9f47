#pragma once

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>

/// The copies of a store that are made before big commands, so that these can be undone: "before-12-90E34B5C.sqlite" in
/// the folder "Backups" of its home, 12 being the transaction of the command, and the rest how the store's identifier
/// ends.
namespace habitra {

class Store;

/// The copy of one save; unless it is kept, it goes with this object.
class UndoBackup {
 public:
  /// A command that changes more rows has a backup; in a smaller one's history are the values before.
  static constexpr std::int64_t rowsOfBigCommand = 1000;

  explicit UndoBackup(const Store& store) : store_(store) {}
  ~UndoBackup();
  UndoBackup(const UndoBackup&) = delete;
  UndoBackup& operator=(const UndoBackup&) = delete;

  /// Copies the store as last committed, and gives the name of the file. Throws StoreError. REQUIRES: the writers'
  /// turn; a store in a file; no transaction of that number.
  [[nodiscard]] std::string make(std::int64_t sequence, const std::string& storeIdentifier);
  /// The save is committed.
  void keep() noexcept { name_.clear(); }

 private:
  const Store& store_;
  std::string name_;  ///< empty: nothing to remove
};

/// The folder that the copies of the store at `store` lie in.
[[nodiscard]] std::filesystem::path undoBackupFolder(const std::filesystem::path& store);

/// The names of the copies in the folder that were made of the store with this identifier.
[[nodiscard]] std::set<std::string> undoBackups(const std::filesystem::path& store, const std::string& storeIdentifier);

/// Whether there is a file of this name among the copies; a path out of their folder is none.
[[nodiscard]] bool hasUndoBackup(const std::filesystem::path& store, const std::string& name);

/// Gives false when it is still there.
bool removeUndoBackup(const std::filesystem::path& store, const std::string& name) noexcept;

}  // namespace habitra
