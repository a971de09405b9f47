#pragma once

#include <chrono>
#include <filesystem>

namespace habitra {

/// Keeps maintenance of a home (a migration, a restore, a move) and open stores apart, across all processes. Every open
/// store holds the lock shared from its opening to its end; maintenance takes it exclusively.
///
/// It is a lock on the file "Habitra.maintenance", which ends with the process whatever happens. Each object is one
/// holder, also within a process, and belongs to one queue.
class MaintenanceLock {
 public:
  static constexpr const char* fileName = "Habitra.maintenance";
  static constexpr std::chrono::milliseconds defaultPatience = std::chrono::seconds(10);

  /// The lock of the home at `folder`.
  explicit MaintenanceLock(std::filesystem::path folder, std::chrono::milliseconds patience = defaultPatience);
  ~MaintenanceLock();
  MaintenanceLock(const MaintenanceLock&) = delete;
  MaintenanceLock& operator=(const MaintenanceLock&) = delete;

  // Both try again after 1 ms at first and 20 ms at last; when patience ends, they throw a StoreError of kind `busy`
  // that names who is in the way. REQUIRES: not held.

  /// Waits for the end of maintenance. Where the file is missing and may not be made, there is nothing to hold.
  void takeShared();
  /// Waits until no store of the home is open.
  void takeExclusive();

  /// Gives it up; does nothing when it is not held.
  void release() noexcept;

 private:
  enum class Mode { shared, exclusive };

  void take(Mode mode);
  [[nodiscard]] bool open(Mode mode);
  [[nodiscard]] bool tryOnce(Mode mode);
  [[noreturn]] void failBusy(Mode mode) const;

  std::filesystem::path folder_;
  std::chrono::milliseconds patience_;
  int descriptor_ = -1;  ///< open while the lock is held
};

}  // namespace habitra
