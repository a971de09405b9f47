#pragma once

#include <HabitraCore/TaskProgress.h>

#include <cstdint>
#include <optional>

/// How the progress of a task is measured, and which record shows it.
namespace habitra {

/// What the progress of a period counts. A target of 0 or less is never reached by parts.
struct TaskMeasure {
  enum class Kind : std::uint8_t {
    byHand,    ///< entries are counted; no target
    quantity,  ///< an amount in the task's unit
    timed,     ///< a duration in seconds
    rings,     ///< the three activity rings; no target, all of them closed is 1
  };

  Kind kind = Kind::byHand;
  double target = 0.0;                                              ///< what a whole period needs
  TaskProgressTimer::Unit unit = TaskProgressTimer::Unit::minutes;  ///< in which a duration is shown

  friend bool operator==(const TaskMeasure&, const TaskMeasure&) = default;
};

/// What the entries of a period come to, before it is put into a record.
struct ProgressMade {
  std::int64_t numUnits = 0;  ///< partial entries' worth; a full completion makes it all that are expected
  /// The amount that an entry reported last, and what was added to it since; it stands instead of the count. In the
  /// unit of the target; of rings their mean, 0 to 1. A task by hand has none.
  std::optional<double> amount;
  double secondsTimed = 0.0;  ///< timed runs towards the completion that is under way; on top of count or amount

  friend bool operator==(const ProgressMade&, const ProgressMade&) = default;
};

/// The record that a task uses: by quantity the continuous one, timed the timer, rings the activity rings; by hand the
/// discrete one where the period needs more than one partial entry, else the simple one. A number that is not finite
/// becomes the nearest one that is (0 for none at all). REQUIRES: expectedUnits >= 1.
[[nodiscard]] TaskProgressCodable progressRecord(const TaskMeasure& measure, const DatedPeriod& period,
                                                 std::int64_t expectedUnits, const ProgressMade& made = {});

}  // namespace habitra
