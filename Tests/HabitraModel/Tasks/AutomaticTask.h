#pragma once

#include <HabitraModel/Health/SampleStore.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorSingleTaskOperation.h>

#include <chrono>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "TaskWorld.h"

namespace habitra {

/// Tasks that samples of health data complete.
class AutomaticTask : public TaskWorld {
 protected:
  using Operation = TaskProcessorSingleTaskOperation;

  TaskEntity& addTask(HealthType::Case health, double quantity, std::optional<TypeUnit> unit, TypeSpeeds speeds = {},
                      bool isNegative = false) {
    TaskEntity& task = TaskWorld::addTask();
    setAutomaticType(task, AutomaticTaskType{.type = AutomaticTaskType::TaskType::healthKit(health),
                                             .quantity = quantity,
                                             .unit = unit,
                                             .speeds = speeds});
    task.isNegative = isNegative;
    context_->save({});
    return task;
  }
  TaskEntity& addSteps(double target = 10'000, bool isNegative = false) {
    return addTask(HealthType::runOrWalk, target, TypeUnit::steps, {}, isNegative);
  }

  qz::UniqueID measure(qz::QZHKObjectType type, std::string_view start, int minutes, qz::QZHKSampleValue value = {},
                       const std::string& source = "Watch", std::optional<qz::UniqueID> task = std::nullopt) {
    const qz::QZHKSample sample{.identifier = qz::UniqueID::generate(clock_->now()),
                                .objectType = type,
                                .start = at(start),
                                .end = at(start) + std::chrono::minutes(minutes),
                                .value = std::move(value),
                                .source = source,
                                .device = std::nullopt,
                                .task = task};
    health_->save(std::span(&sample, 1));
    return sample.identifier;
  }
  qz::UniqueID walk(std::string_view day, double steps) {
    return measure(qz::QZHKObjectType::stepCount, std::string(day) + "T10:00:00Z", 10,
                   qz::QZHKQuantity{steps, qz::QZHKUnit::count});
  }

  Operation operation(TaskEntity& task, Operation::LateData lateData = Operation::LateData::reopen) {
    return {{.calendars = calendars_,
             .recorder = recorder_,
             .health = health_.get(),
             .sharedTasks = receivers_.sharedTasks,
             .standardDefaults = &manager_.standardDefaults()},
            *context_,
            task,
            TaskModifyContext::userInitiatedFromMainApp,
            LayoutDirection::rightToLeft,
            true,
            clock_->now(),
            std::nullopt,
            lateData};
  }
  Operation::Result pass(TaskEntity& task) { return operation(task).run(); }
  void liveUntil(std::string_view moment) { clock_->set(at(moment)); }
  /// The amounts of the entries that have one.
  std::vector<double> amounts(const TaskEntity& task) {
    std::vector<double> all;
    for (const auto& row : context_->fetchLogEntries(task.objectID))
      if (row.progressTotal != 0) all.push_back(row.progressTotal);
    return all;
  }

  std::unique_ptr<SampleStore> health_ = SampleStore::inMemory();
};

}  // namespace habitra
