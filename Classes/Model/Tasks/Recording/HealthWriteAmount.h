#pragma once

#include <HabitraCore/AutomaticTaskType/AutomaticTaskType.h>
#include <HabitraCore/TaskRules.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/Recording/TaskLogRecorder.h>

#include <optional>

namespace habitra {

/// How much a sample has to say of an entry.
struct HealthWriteAmount {
  double amount = 0.0;    ///< in the unit of the type
  double duration = 0.0;  ///< in seconds, where it took time

  friend bool operator==(const HealthWriteAmount&, const HealthWriteAmount&) = default;
};

/// What is new in `entry` to the health store. An entry reports the amount that its period has reached, and samples add
/// up: so it is the difference to what the other entries of the period had come to; what was written for those that go,
/// since it takes their place, goes with them. A run of a timer says what the run was. None where there is nothing new.
///
/// `own`: the row that bears the entry's identifier already, if any. To be asked before the entry is written.
[[nodiscard]] std::optional<HealthWriteAmount> healthWriteAmount(StoreContext& context, const TaskEntity& task,
                                                                 const std::optional<TaskRules>& rules,
                                                                 const AutomaticTaskType& type,
                                                                 const TaskLogRecorder::LogEntryData& entry,
                                                                 ObjectID own);

}  // namespace habitra
