#pragma once

#include <QZKit/Clock.h>

/// A clock that shows what a test sets it to.
class SettableClock final : public qz::Clock {
 public:
  explicit SettableClock(qz::Moment now) : now_(now) {}
  [[nodiscard]] qz::Moment now() const override { return now_; }
  void set(qz::Moment now) { now_ = now; }
  void advance(std::chrono::microseconds by) { now_ += by; }

 private:
  qz::Moment now_;
};
