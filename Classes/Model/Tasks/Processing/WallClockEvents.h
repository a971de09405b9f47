#pragma once

#include <QZKit/Clock.h>

#include <cstdint>
#include <filesystem>
#include <memory>

namespace habitra {

/// A wait for a moment by the system's clock, which ends before it when that clock is set or the system's zone changes.
///
/// waitUntil() belongs to one thread; end() and interrupt() may be called from any.
class WallClockEvents {
 public:
  enum class Event : std::uint8_t {
    reached,             ///< the moment is there, or was already
    clockWasSet,         ///< the system's clock was set since the wait before
    zoneMayHaveChanged,  ///< a file that names the zone was written or replaced
    interrupted,
    ended,
  };

  /// `zoneFolder` holds `localtime` and `timezone`, each a file or a link. Throws qz::Error when the system gives no
  /// timer; where it gives no notifications, a warning says so, and changes of the zone are not seen.
  explicit WallClockEvents(const std::filesystem::path& zoneFolder);
  ~WallClockEvents();
  WallClockEvents(const WallClockEvents&) = delete;
  WallClockEvents& operator=(const WallClockEvents&) = delete;

  /// What came first; several that came together are one, the latest of the order above.
  [[nodiscard]] Event waitUntil(qz::Moment moment);

  /// Ends a wait, and the next one if there is none.
  void interrupt();
  /// Ends all waits, from now on.
  void end();

 private:
  class System;
  std::unique_ptr<System> system_;
};

}  // namespace habitra
