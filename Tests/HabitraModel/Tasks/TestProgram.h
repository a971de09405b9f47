#pragma once

#include <HabitraModel/DataManager.h>
#include <HabitraModel/Tasks/Processing/TaskProcessor.h>
#include <HabitraModel/Tasks/Recording/TaskLogRecorder.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <QZKit/MainQueue.h>
#include <Support/SettableClock.h>

#include <memory>

#include "TestReceivers.h"

namespace habitra {

/// A recorder and a processor on a store, as a front end wires them, and a clock to turn.
class TestProgram {
 protected:
  explicit TestProgram(qz::Moment now,
                       const DataManager::ContainerLocation& location = DataManager::ContainerLocation::inMemory())
      : clock_(std::make_shared<SettableClock>(now)), manager_(location, clock_) {}

  TaskProcessor::Environment environment() {
    return {.dataManager = manager_,
            .mainQueue = mainQueue_,
            .receivers = receivers_.all(),
            .calendars = [this](StoreContext&) { return calendars_; },
            .viewContext = [this] { return context_.get(); }};
  }

  std::shared_ptr<SettableClock> clock_;
  DataManager manager_;
  std::unique_ptr<StoreContext> context_ = manager_.context();
  TaskCalendars calendars_{qz::TimeZone::utc(), qz::HHMMSS::midnight};
  qz::MainQueue mainQueue_;
  TestReceivers receivers_;
  TaskLogRecorder recorder_{calendars_, mainQueue_, receivers_.all()};
  TaskProcessor processor_{environment()};
};

}  // namespace habitra
