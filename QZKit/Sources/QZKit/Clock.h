#pragma once

#include <chrono>

namespace qz {

/// A point on the time line: microseconds since 1970-01-01T00:00:00Z, leap seconds not counted. The range of 64 bits
/// reaches some 292,000 years to either side.
using Moment = std::chrono::sys_time<std::chrono::microseconds>;

/// Where "now" comes from. Rules never ask: they are given a Moment. Processors and executables are handed a clock, so
/// that a test, or a person who asks about another day, can set it. `now()` may be called from any thread.
class Clock {
 public:
  virtual ~Clock() = default;
  [[nodiscard]] virtual Moment now() const = 0;
};

/// The system's clock.
class SystemClock final : public Clock {
 public:
  [[nodiscard]] Moment now() const override {
    return std::chrono::time_point_cast<std::chrono::microseconds>(std::chrono::system_clock::now());
  }
};

/// A clock that stands still at the moment it was given.
class FixedClock final : public Clock {
 public:
  explicit FixedClock(Moment now) : now_(now) {}
  [[nodiscard]] Moment now() const override { return now_; }

 private:
  Moment now_;
};

}  // namespace qz
