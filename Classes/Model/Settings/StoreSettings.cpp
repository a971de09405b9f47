#include <HabitraModel/Settings/StoreSettings.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace habitra {

SettingEntity* StoreSettings::find(std::string_view key) {
  const std::vector<SettingEntity*> rows = context_.fetch<SettingEntity>("settingKey", key);
  const auto newest = std::max_element(rows.begin(), rows.end(), [](const SettingEntity* a, const SettingEntity* b) {
    return std::pair(a->dateCreated, a->objectID) < std::pair(b->dateCreated, b->objectID);
  });
  return newest == rows.end() ? nullptr : *newest;
}

void StoreSettings::put(std::string_view key, const SettingEntity& values) {
  context_.beginUnit();
  SettingEntity* row = find(key);
  SettingEntity wanted = values;
  wanted.settingKey = key;
  if (row == nullptr) {
    wanted.dateCreated = context_.store().clock().now();
    context_.insert(wanted);
    return;
  }
  wanted.objectID = row->objectID;
  wanted.dateCreated = row->dateCreated;
  if (*row == wanted) return;
  *row = wanted;
  for (SettingEntity* other : context_.fetch<SettingEntity>("settingKey", key))
    if (other != row) context_.remove(*other);
}

void StoreSettings::remove(std::string_view key) {
  context_.beginUnit();
  for (SettingEntity* row : context_.fetch<SettingEntity>("settingKey", key)) context_.remove(*row);
}

void StoreSettings::copy(std::string_view from, std::string_view to) {
  context_.beginUnit();
  if (const SettingEntity* row = find(from)) put(to, SettingEntity(*row));
}

}  // namespace habitra
