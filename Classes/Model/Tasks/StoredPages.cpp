#include <fmt/core.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/StoredPages.h>
#include <algorithm>
#include <limits>

namespace habitra {

TaskPageNumber pageOf(const TaskEntity& task, StoreContext& context) {
  const auto* profile =
      task.userProfile == ObjectID::none ? nullptr : context.find<UserProfileEntity>(task.userProfile);
  const auto page = profile == nullptr ? std::nullopt : TaskPageNumber::ofDisplayOrder(profile->displayOrder);
  return page.value_or(TaskPageNumber::first());
}

StoredPages::StoredPages(StoreContext& context) : context_(context) {
  for (const UserProfileEntity* profile : context.fetchAll<UserProfileEntity>()) {
    const auto page = TaskPageNumber::ofDisplayOrder(profile->displayOrder);
    if (page) profiles_.try_emplace(*page, profile->objectID);
  }
  for (const TaskEntity* task : context.fetchAll<TaskEntity>()) {
    const auto [last, isFirst] = lastDisplayOrder_.try_emplace(pageOf(*task, context), task->displayOrder);
    if (!isFirst) last->second = std::max(last->second, task->displayOrder);
  }
}

ObjectID StoredPages::find(TaskPageNumber page) const {
  const auto found = profiles_.find(page);
  return found == profiles_.end() ? ObjectID::none : found->second;
}

ObjectID StoredPages::profile(TaskPageNumber page) {
  const auto [place, isMissing] = profiles_.try_emplace(page, ObjectID::none);
  if (isMissing) {
    UserProfileEntity values;
    values.displayOrder = page.displayOrder();
    values.title = fmt::format("Page {}", page.rawValue());
    place->second = context_.insert(values).objectID;
  }
  return place->second;
}

std::int16_t StoredPages::nextDisplayOrder(TaskPageNumber page) {
  const auto [last, isFirst] = lastDisplayOrder_.try_emplace(page, std::int16_t{0});
  // A page with 32,768 places taken goes on with equal ones; order of creation then decides.
  if (!isFirst && last->second < std::numeric_limits<std::int16_t>::max()) ++last->second;
  return last->second;
}

}  // namespace habitra
