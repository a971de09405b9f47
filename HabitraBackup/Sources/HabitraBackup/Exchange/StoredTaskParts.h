#pragma once

#include <HabitraBackup/Document/HabitraJSONBackup.h>
#include <HabitraModel/Store/StoreContext.h>

#include <set>
#include <vector>

/// What a store holds beside the logs, as a backup document carries it: rows without their numbers and references, in
/// order of creation.
namespace habitra {

/// Everything of a task but its log and notes. What is derived, or belongs to this device or to a link, is not in it:
/// when it was last processed, its state in the cloud. When its difficulty was last changed comes from its temporal
/// data, which has taken that over from the task.
[[nodiscard]] HabitraJSONBackupTaskRecord recordOf(StoreContext& context, const TaskEntity& task);

[[nodiscard]] std::vector<HabitraJSONBackupTaskNote> notesOf(StoreContext& context, ObjectID task);

/// The profiles that are pages, but for `leftOut`.
[[nodiscard]] std::vector<UserProfileEntity> pagesOf(StoreContext& context, const std::set<TaskPageNumber>& leftOut);
[[nodiscard]] std::vector<TaskCategoryEntity> storedCategories(StoreContext& context);
/// Without the pauses of tasks, which stand with their task.
[[nodiscard]] std::vector<SettingEntity> storedSettings(StoreContext& context);

}  // namespace habitra
