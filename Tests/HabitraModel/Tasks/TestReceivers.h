#pragma once

#include <HabitraModel/Links/TaskLink.h>
#include <HabitraModel/Links/WidgetCenter.h>
#include <HabitraModel/Tasks/Recording/TaskLogRecorder.h>

#include <atomic>

namespace habitra {

/// Counts what it was asked for.
class CountingWidgetCenter : public WidgetCenter {
 public:
  void reloadAllTimelines() noexcept override { ++reloads; }
  std::atomic<int> reloads = 0;  // passes run on a queue of their own
};

/// Whom a recorder tells: outboxes, and widgets that are counted.
struct TestReceivers {
  OutboxTaskLink watch{OutboxLink::watch};
  OutboxTaskLink sharedTasks{OutboxLink::sharedTask};
  CountingWidgetCenter widgets;

  TaskLogRecorder::Receivers all() { return {watch, sharedTasks, widgets}; }
};

}  // namespace habitra
