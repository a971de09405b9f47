#include <HabitraModel/Store/Entities/TaskCategoryLink.h>
#include <HabitraModel/Tasks/TaskCategories.h>

#include <algorithm>

namespace habitra {

namespace {

std::vector<TaskCategoryLink*> linksOf(StoreContext& context, const TaskEntity& task) {
  return context.fetchRelated<TaskCategoryLink>("task", task.objectID);
}

/// What the links lead to by `end`; each once, though mirroring can bring a link twice.
template <typename T>
std::vector<T*> ends(StoreContext& context, const std::vector<TaskCategoryLink*>& links,
                     ObjectID TaskCategoryLink::*end) {
  std::vector<T*> found;
  for (const TaskCategoryLink* link : links) {
    T* const object = context.find<T>(link->*end);
    if (object != nullptr && std::ranges::find(found, object) == found.end()) found.push_back(object);
  }
  return found;
}

}  // namespace

std::vector<TaskCategoryEntity*> categoriesOf(StoreContext& context, const TaskEntity& task) {
  return ends<TaskCategoryEntity>(context, linksOf(context, task), &TaskCategoryLink::category);
}

std::vector<TaskEntity*> tasksOf(StoreContext& context, const TaskCategoryEntity& category) {
  return ends<TaskEntity>(context, context.fetchRelated<TaskCategoryLink>("category", category.objectID),
                          &TaskCategoryLink::task);
}

bool addCategory(StoreContext& context, const TaskEntity& task, const TaskCategoryEntity& category) {
  context.beginUnit();
  if (std::ranges::count(linksOf(context, task), category.objectID, &TaskCategoryLink::category) > 0) return false;
  context.insert(TaskCategoryLink{.task = task.objectID, .category = category.objectID});
  return true;
}

bool removeCategory(StoreContext& context, const TaskEntity& task, const TaskCategoryEntity& category) {
  context.beginUnit();
  bool wasThere = false;
  for (TaskCategoryLink* link : linksOf(context, task)) {
    if (link->category != category.objectID) continue;
    context.remove(*link);
    wasThere = true;
  }
  return wasThere;
}

void setCategories(StoreContext& context, const TaskEntity& task, std::span<TaskCategoryEntity* const> categories) {
  context.beginUnit();
  for (TaskCategoryLink* link : linksOf(context, task))
    if (std::ranges::count(categories, link->category, &TaskCategoryEntity::objectID) == 0) context.remove(*link);
  for (const TaskCategoryEntity* category : categories) addCategory(context, task, *category);
}

}  // namespace habitra
