#pragma once

#include <QZKit/Clock.h>

#include <chrono>
#include <map>

namespace qz {

/// The time that intervals cover together, with what several of them cover counted once: how long somebody slept when
/// the watch and the mattress both say so. Lengths only: an interval that ends where it starts covers nothing.
class QZHKCoveredTime {
 public:
  /// REQUIRES: start <= end.
  void insert(Moment start, Moment end);

  /// Whether some of the time from `start` to `end` is covered. Intervals that only touch do not overlap.
  /// REQUIRES: start <= end.
  [[nodiscard]] bool overlaps(Moment start, Moment end) const;

  [[nodiscard]] std::chrono::microseconds total() const { return total_; }

 private:
  std::map<Moment, Moment> intervals_;  ///< the end of each by its start; they neither overlap nor touch
  std::chrono::microseconds total_{0};
};

}  // namespace qz
