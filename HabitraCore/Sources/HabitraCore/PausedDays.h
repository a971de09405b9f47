#pragma once

#include <HabitraCore/TaskPause.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// For sources of this module.
namespace habitra {

/// The days on which a task rests, for one pass forward through the calendar. Days are day numbers.
class PausedDays {
 public:
  /// Stops the program when a day does not fit 32 bits.
  explicit PausedDays(std::span<const TaskPause> pauses);

  /// Whether the task rests on the day. REQUIRES: days are asked for in ascending order.
  [[nodiscard]] bool contains(std::int32_t number) {
    while (number > spans_[next_].last) ++next_;
    return number >= spans_[next_].first;
  }

  /// The first paused day that is not before the day last asked for by contains(); a day beyond all when there is none.
  [[nodiscard]] std::int32_t nextFirst() const { return spans_[next_].first; }

  /// How many of the days from `first` to `last` are paused. REQUIRES: `last` is no end of time. In any order.
  [[nodiscard]] std::int32_t count(std::int32_t first, std::int32_t last) const;

 private:
  struct Span {
    std::int32_t first;
    std::int32_t last;
  };
  std::vector<Span> spans_;  ///< in order, apart from each other; one at the end of time closes the list
  std::size_t next_ = 0;
};

}  // namespace habitra
