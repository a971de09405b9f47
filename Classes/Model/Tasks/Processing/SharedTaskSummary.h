#pragma once

#include <HabitraCore/HistoryWalk.h>
#include <HabitraModel/Mapping/TaskCloudSummaryCoreDataContainer.h>
#include <HabitraModel/Store/Entities/TaskEntity.h>
#include <HabitraModel/Tasks/Processing/LayoutDirection.h>

#include <optional>
#include <string>

/// What those who share a task are told of it.
namespace habitra {

/// The status of the current period in words: "Done", "40%", "Not done yet". For surroundings that run from right to
/// left it is set apart, so that numbers and signs keep their order.
[[nodiscard]] std::string todayStatus(const CompletionStatus& status, LayoutDirection layoutDirection);

/// None for a task without an identifier.
[[nodiscard]] std::optional<TaskCloudSummary> cloudSummary(const TaskEntity& task, const TaskFigures& figures,
                                                           LayoutDirection layoutDirection, qz::Moment now);

}  // namespace habitra
