#include <HabitraBackup/Exchange/RowPartners.h>
#include <HabitraBackup/Exchange/SharedRowsImport.h>
#include <HabitraModel/Settings/Settings.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/TaskPageNumber.h>

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace habitra {
namespace {

/// The row as it may be inserted: with its identifier where that is free.
template <typename Row>
Row newRow(StoreContext& context, Row row) {
  if (row.uniqueId) row.uniqueId = usualForm(*row.uniqueId);
  if (row.uniqueId && isIdentifierTaken<Row>(context, *row.uniqueId)) row.uniqueId.reset();
  return row;
}

/// Gives whether anything was changed.
bool replacePage(UserProfileEntity& stored, const UserProfileEntity& page) {
  UserProfileEntity values = stored;
  if (page.title) values.title = page.title;
  if (page.iconName) values.iconName = page.iconName;
  return std::exchange(stored, values) != values;
}

bool replaceCategory(TaskCategoryEntity& stored, TaskCategoryEntity values) {
  values.objectID = stored.objectID;
  values.uniqueId = stored.uniqueId;
  if (values == stored) return false;
  stored = std::move(values);
  return true;
}

using SettingRows = std::vector<SettingEntity>;

bool haveSameValues(SettingRows a, SettingRows b) {
  for (SettingRows* rows : {&a, &b}) {
    for (SettingEntity& row : *rows) {
      row.objectID = ObjectID::none;
      row.dateCreated.reset();
    }
  }
  return a == b;
}

/// The places of the rows of each key.
std::map<std::string, std::vector<std::size_t>> byKey(std::span<const SettingEntity> settings) {
  const std::string pauses = settings::pausesOf("");
  std::map<std::string, std::vector<std::size_t>> result;
  for (std::size_t index = 0; index < settings.size(); ++index) {
    const auto& key = settings[index].settingKey;
    if (key && !key->starts_with(pauses)) result[*key].push_back(index);
  }
  return result;
}

/// The stored rows give way. Their place is taken now, so that no other device has a newer value: gives when the one
/// that counts was changed.
std::optional<qz::Moment> removeSettings(StoreContext& context, const std::vector<SettingEntity*>& stored) {
  std::optional<qz::Moment> changed = context.store().clock().now();
  for (SettingEntity* row : stored) {
    changed = std::max(changed, row->dateCreated);
    context.remove(*row);
  }
  return changed;
}

}  // namespace

ImportReport::Rows importPages(StoreContext& context, std::span<const UserProfileEntity> pages,
                               SharedRowsPolicy policy) {
  std::map<TaskPageNumber, UserProfileEntity*> stored;
  for (UserProfileEntity* profile : context.fetchAll<UserProfileEntity>())
    if (const auto number = TaskPageNumber::ofDisplayOrder(profile->displayOrder)) stored.try_emplace(*number, profile);
  ImportReport::Rows counts;
  std::set<TaskPageNumber> seen;
  for (const UserProfileEntity& page : pages) {
    const auto number = TaskPageNumber::ofDisplayOrder(page.displayOrder);
    if (!number || !seen.insert(*number).second) continue;  // of two for one number the first is the page
    const auto found = stored.find(*number);
    if (found == stored.end()) {
      UserProfileEntity values = newRow(context, page);
      if (!values.title) values.title = fmt::format("Page {}", number->rawValue());
      context.insert(values);
      ++counts.added;
    } else {
      const bool isChanged = policy == SharedRowsPolicy::replaceStored && replacePage(*found->second, page);
      ++(isChanged ? counts.changed : counts.left);
    }
  }
  return counts;
}

ImportReport::Rows importSettings(StoreContext& context, std::span<const SettingEntity> settings,
                                  SharedRowsPolicy policy) {
  ImportReport::Rows counts;
  std::map<std::size_t, SettingEntity> wanted;  // by place in the document
  for (auto& [key, places] : byKey(settings)) {
    const std::vector<SettingEntity*> stored = context.fetch<SettingEntity>("settingKey", key);
    SettingRows storedRows;
    for (const SettingEntity* row : stored) storedRows.push_back(*row);
    // The one that counts first.
    std::ranges::stable_sort(places, std::greater(), [&](std::size_t index) { return settings[index].dateCreated; });
    std::ranges::stable_sort(storedRows, std::greater(), &SettingEntity::dateCreated);
    SettingRows rows;
    for (const std::size_t index : places) rows.push_back(settings[index]);
    if (!stored.empty() && (policy == SharedRowsPolicy::keepStored || haveSameValues(rows, storedRows))) {
      ++counts.left;
      continue;
    }
    if (!stored.empty()) rows.front().dateCreated = std::max(removeSettings(context, stored), rows.front().dateCreated);
    for (std::size_t i = 0; i < rows.size(); ++i) wanted.emplace(places[i], std::move(rows[i]));
    ++(stored.empty() ? counts.added : counts.changed);
  }
  for (const auto& [index, row] : wanted) context.insert(row);
  return counts;
}

SettingsThere settingsThere(StoreContext& context, std::span<const SettingEntity> settings) {
  SettingsThere there;
  for (const auto& [key, places] : byKey(settings)) {
    if (context.fetch<SettingEntity>("settingKey", key).empty()) {
      there.missing.push_back(key);
    } else {
      ++there.stored;
    }
  }
  return there;
}

CategoriesImport::CategoriesImport(StoreContext& context, std::span<const TaskCategoryEntity> categories,
                                   SharedRowsPolicy policy) {
  if (categories.empty()) return;
  const RowPartners<TaskCategoryEntity> partners(categories, context.fetchAll<TaskCategoryEntity>(),
                                                 [](const TaskCategoryEntity& category) { return category.title; });
  for (std::size_t index = 0; index < categories.size(); ++index) {
    TaskCategoryEntity* stored = partners.ofWanted(index);
    if (stored == nullptr) {
      stored = &context.insert(newRow(context, categories[index]));
      ++counts_.added;
    } else {
      const bool isChanged = policy == SharedRowsPolicy::replaceStored && replaceCategory(*stored, categories[index]);
      ++(isChanged ? counts_.changed : counts_.left);
    }
    const auto& text = categories[index].uniqueId;
    if (const auto id = text ? qz::UniqueID::fromText(*text) : std::nullopt) byId_.try_emplace(*id, stored);
  }
}

TaskCategoryEntity* CategoriesImport::find(const qz::UniqueID& id) const {
  const auto found = byId_.find(id);
  return found == byId_.end() ? nullptr : found->second;
}

}  // namespace habitra
