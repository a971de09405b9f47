#pragma once

#include <QZKit/Clock.h>

namespace habitra {

/// A run of a timer, summed up.
struct TimedTaskEntry {
  qz::Moment start;
  qz::Moment finish;
  double duration = 0.0;  ///< seconds that were timed; less than the time between where the run was interrupted

  friend bool operator==(const TimedTaskEntry&, const TimedTaskEntry&) = default;
};

}  // namespace habitra
