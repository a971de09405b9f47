#pragma once

#include <HabitraModel/Store/Entities/TaskNotificationSettingsEntity.h>
#include <HabitraModel/Store/Entities/TaskShareEntity.h>
#include <HabitraModel/Store/Entities/TaskTemporalDataEntity.h>
#include <HabitraModel/Store/StoreContext.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <vector>

/// Rows of which a task has one: notification settings, temporal data and share. Mirroring can bring more of them; then
/// the one that was changed last counts (where none is earliest), of several such the oldest.
namespace habitra {

[[nodiscard]] inline std::optional<qz::Moment> lastChange(const TaskNotificationSettingsEntity& row) {
  return row.lastUpdated;
}
[[nodiscard]] inline std::optional<qz::Moment> lastChange(const TaskTemporalDataEntity& row) { return row.lastUpdated; }
[[nodiscard]] inline std::optional<qz::Moment> lastChange(const TaskShareEntity& row) {
  return std::max(row.statusUpdated, row.summaryJsonUpdated);
}

/// The one that counts of rows in order of creation, or null.
template <typename T>
[[nodiscard]] T* rowThatCounts(const std::vector<T*>& rows) {
  const auto found = std::ranges::max_element(rows, {}, [](const T* row) { return lastChange(*row); });
  return found == rows.end() ? nullptr : *found;
}

/// The row of the task that counts, or null.
template <typename T>
[[nodiscard]] T* rowOfTask(StoreContext& context, ObjectID task) {
  return rowThatCounts(context.fetchRelated<T>("task", task));
}

/// Removes the others and gives how many there were. Begins a unit when there are some.
template <typename T>
std::size_t removeRowsThatDoNotCount(StoreContext& context, ObjectID task) {
  std::vector<T*> rows = context.fetchRelated<T>("task", task);
  std::erase(rows, rowThatCounts(rows));
  for (T* row : rows) context.remove(*row);
  return rows.size();
}

}  // namespace habitra
