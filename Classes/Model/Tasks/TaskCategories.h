#pragma once

#include <HabitraModel/Store/Entities/TaskCategoryEntity.h>
#include <HabitraModel/Store/StoreContext.h>

#include <span>
#include <vector>

/// Which tasks are in which categories. A task is in a category once, however often it is put there; when either is
/// removed, so is the link between them.
namespace habitra {

/// In the order in which the task was put into them.
[[nodiscard]] std::vector<TaskCategoryEntity*> categoriesOf(StoreContext& context, const TaskEntity& task);

/// In the order in which they were put into the category.
[[nodiscard]] std::vector<TaskEntity*> tasksOf(StoreContext& context, const TaskCategoryEntity& category);

/// Puts the task into the category. Begins a unit. Gives false when it was there.
bool addCategory(StoreContext& context, const TaskEntity& task, const TaskCategoryEntity& category);

/// Takes the task out of the category. Begins a unit. Gives false when it was not there.
bool removeCategory(StoreContext& context, const TaskEntity& task, const TaskCategoryEntity& category);

/// Puts the task into these categories, and out of all others; where it is already, it stays as it is. Begins a unit.
void setCategories(StoreContext& context, const TaskEntity& task, std::span<TaskCategoryEntity* const> categories);

}  // namespace habitra
