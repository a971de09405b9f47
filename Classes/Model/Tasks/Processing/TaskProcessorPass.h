#pragma once

#include <HabitraModel/Links/TaskLink.h>
#include <HabitraModel/Settings/KeyValueDefaults.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/Processing/LastProcessedDates.h>
#include <HabitraModel/Tasks/Processing/LayoutDirection.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorReport.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorSingleTaskOperation.h>
#include <HabitraModel/Tasks/Recording/TaskLogRecorder.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <QZKit/Clock.h>
#include <QZKit/SerialQueue.h>
#include <QZKit/UniqueID.h>

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace habitra {

/// One pass over the active tasks of a store, each in a transaction of its own, and the dates up to which this device
/// has processed them.
///
/// A task that fails is logged and the others go on, but for what no other task could do any better: a full disk, a
/// store that may not be written, a writer that does not end. A pass that finds nothing to change writes
/// nothing, but for how far health data have been taken into account.
///
/// Works on the queue of its context.
class TaskProcessorPass {
 public:
  struct Surroundings {
    const TaskProcessorSingleTaskOperation::Environment& tasks;
    /// Held by one operation at a time, in whatever thread.
    qz::SerialQueue& operationQueue;
    KeyValueDefaults& standardDefaults;
    LayoutDirection layoutDirection = LayoutDirection::leftToRight;
  };

  /// `context` has no open unit. Everything handed in must live longer than the pass.
  TaskProcessorPass(StoreContext& context, const Surroundings& surroundings, qz::Moment now)
      : context_(context), surroundings_(surroundings), dates_(surroundings.standardDefaults), now_(now) {}

  /// Processes the active tasks, or those of them that bear one of these identifiers. With a clock that cannot be right
  /// nothing is done; a warning says so. Throws StoreError where the store or the defaults cannot be read.
  TaskProcessorReport run(const std::optional<std::set<qz::UniqueID>>& only = std::nullopt);

 private:
  struct Place {
    ObjectID object;
    std::string uniqueId;
  };

  [[nodiscard]] std::vector<Place> placesOf(const std::optional<std::set<qz::UniqueID>>& only);
  /// Gives false where the pass cannot go on.
  bool process(const Place& place);
  void operate(TaskEntity& task);
  /// Lets the dates follow what was processed; writes where one has moved.
  void keepDates();

  StoreContext& context_;
  const Surroundings surroundings_;
  LastProcessedDates dates_;
  const qz::Moment now_;
  LastProcessedDates::Dates known_;      ///< as the pass began
  LastProcessedDates::Dates processed_;  ///< of the tasks of this pass
  TaskProcessorReport report_;
};

}  // namespace habitra
