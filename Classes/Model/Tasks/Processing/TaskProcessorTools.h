#pragma once

#include <HabitraModel/Tasks/Processing/TaskProcessor.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorSingleTaskOperation.h>

namespace habitra {

/// What the processor works on tasks with in one context: the calendars as that sees them, and a recorder that goes by
/// them. For the length of a pass or a change.
class TaskProcessor::Tools {
 public:
  Tools(const Environment& environment, StoreContext& context)
      : calendars(environment.calendars(context)),
        recorder(calendars, environment.mainQueue, environment.receivers),
        operations{.calendars = calendars,
                   .recorder = recorder,
                   .health = environment.health,
                   .sharedTasks = environment.receivers.sharedTasks,
                   .standardDefaults = &environment.dataManager.standardDefaults()},
        context_(context) {}
  Tools(const Tools&) = delete;
  Tools& operator=(const Tools&) = delete;

  /// One without entries yet, that its caller saves.
  [[nodiscard]] TaskLogRecorder::Request request(TaskModifyContext by, const TaskCalendar& calendar,
                                                 qz::Moment now) const {
    return {.managedObjectContext = context_,
            .context = by,
            .saveContext = false,
            .logEntries = {},
            .createdTimestamp = now,
            .createdTimeZone = calendar.timeZone};
  }

  const TaskCalendars calendars;
  TaskLogRecorder recorder;
  const TaskProcessorSingleTaskOperation::Environment operations;

 private:
  StoreContext& context_;
};

}  // namespace habitra
