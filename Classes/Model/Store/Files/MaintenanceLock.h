#pragma once

#include <chrono>
#include <filesystem>
#include <functional>

namespace habitra {

/// Keeps maintenance of a home (a migration, a restore, a move) and open stores apart, across all processes. Every open
/// store holds the lock shared from its opening to its end; maintenance takes it exclusively.
///
/// It is a lock on the file "Habitra.maintenance", which ends with the process whatever happens. Maintenance that waits
/// says so with a second lock, on the first byte of that file, and who opens a store then waits for it: many that open
/// and close stores one after the other never keep maintenance out. Each object is one holder, also within a process,
/// and belongs to one queue.
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

  /// Waits for the end of maintenance, also of one that waits itself. Where the file is missing and the folder may not
  /// be written there is nothing to hold: stores open for reading alone there.
  void takeShared();
  /// Waits until no store of the home is open.
  void takeExclusive();
  /// Waits in the same way, but gives false, holding nothing, once `isNeeded` says no. It is asked again and again
  /// while stores are open, never while others do maintenance.
  [[nodiscard]] bool takeExclusiveWhile(const std::function<bool()>& isNeeded);

  /// Gives it up; does nothing when it is not held.
  void release() noexcept;

 private:
  enum class Mode { shared, exclusive };

  [[nodiscard]] bool take(Mode mode, const std::function<bool()>& isNeeded);
  [[nodiscard]] bool open(Mode mode);
  [[nodiscard]] bool tryOnce(Mode mode);
  [[nodiscard]] bool lock(Mode mode);
  void announce();
  [[nodiscard]] bool isAnnounced() const;
  [[nodiscard]] bool isStillNeeded(const std::function<bool()>& isNeeded);
  [[noreturn]] void failBusy(Mode mode);

  std::filesystem::path folder_;
  std::chrono::milliseconds patience_;
  int descriptor_ = -1;  ///< open while the lock is held
};

}  // namespace habitra
