#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <semaphore>
#include <string>

namespace habitra {

/// The turn that all writers of a home take, one after the other: every transaction that writes and every checkpoint,
/// of every process, happens under it. The engine's own locks do not suffice: SQLite before 3.51.3 can lose committed
/// writes when two connections write or checkpoint a write-ahead log at the same moment.
///
/// In a folder it is an exclusive lock on a file, "Habitra.lock", which ends with the process whatever happens and is
/// made anew when somebody has removed it; in memory a semaphore. Each object is one contender and belongs to one
/// queue.
class WritersTurn {
 public:
  static constexpr const char* fileName = "Habitra.lock";
  static constexpr std::chrono::milliseconds defaultPatience = std::chrono::seconds(10);

  /// The turn of the home at `folder`; `name` is that of the lock file, where a store has a turn of its own.
  explicit WritersTurn(std::filesystem::path folder, std::chrono::milliseconds patience = defaultPatience,
                       std::string name = fileName);
  /// The turn of a store in memory; `semaphore` is shared by its contexts.
  explicit WritersTurn(std::shared_ptr<std::binary_semaphore> semaphore,
                       std::chrono::milliseconds patience = defaultPatience);
  ~WritersTurn();
  WritersTurn(const WritersTurn&) = delete;
  WritersTurn& operator=(const WritersTurn&) = delete;

  /// Waits for the turn, trying again after 50 µs at first and 2 ms at last. Throws StoreError of kind `busy` when
  /// patience ends. REQUIRES: not held.
  void take();
  /// Gives it up; does nothing when it is not held.
  void release() noexcept;

  [[nodiscard]] bool isHeld() const { return isHeld_; }

 private:
  bool tryOnce();
  void open();

  std::filesystem::path folder_;
  std::string name_;
  std::shared_ptr<std::binary_semaphore> semaphore_;
  std::chrono::milliseconds patience_;
  int descriptor_ = -1;
  bool isHeld_ = false;
};

}  // namespace habitra
