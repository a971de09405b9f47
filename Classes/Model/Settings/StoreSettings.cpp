#include <HabitraModel/Settings/StoreSettings.h>
#include <HabitraModel/Store/Engine/RowCoding.h>

#include <algorithm>
#include <functional>
#include <utility>

namespace habitra {

std::vector<SettingEntity*> StoreSettings::newestFirst(std::string_view key) {
  std::vector<SettingEntity*> rows = context_.fetch<SettingEntity>("settingKey", key);
  std::ranges::sort(rows, std::greater(),
                    [](const SettingEntity* row) { return std::pair(row->dateCreated, row->objectID); });
  return rows;
}

void StoreSettings::put(std::string_view key, const SettingEntity& values) {
  context_.beginUnit();
  const std::vector<SettingEntity*> rows = newestFirst(key);
  const std::optional<qz::Moment> now = context_.store().clock().now();
  SettingEntity wanted = values;
  wanted.settingKey = key;
  if (rows.empty()) {
    wanted.dateCreated = now;
    context_.insert(wanted);
    return;
  }
  SettingEntity& newest = *rows.front();
  wanted.objectID = newest.objectID;
  wanted.dateCreated = newest.dateCreated;
  if (newest == wanted) return;
  // A clock that goes back must not let an older row count again that another device still has.
  wanted.dateCreated = std::max(now, newest.dateCreated);
  newest = wanted;
  for (SettingEntity* other : rows)
    if (other != &newest) context_.remove(*other);
}

std::size_t StoreSettings::removeRowsThatDoNotCount(std::string_view key,
                                                    const std::function<bool(const SettingEntity&)>& isReadable) {
  std::size_t removed = 0;
  std::vector<SettingEntity> newer;  // values of the rows that stay
  AttributeSet readableKinds;        // of which one of them has a value that can be read
  for (SettingEntity* row : newestFirst(key)) {
    SettingEntity values = *row;
    values.objectID = ObjectID::none;
    values.dateCreated.reset();
    const bool canBeRead = isReadable(values);
    values.settingKey.reset();
    const AttributeSet kinds = attributesWithValues(SettingEntity::description(), &values);
    if ((readableKinds | kinds) == readableKinds || std::ranges::find(newer, values) != newer.end()) {
      context_.remove(*row);
      ++removed;
      continue;
    }
    if (canBeRead) readableKinds = readableKinds | kinds;
    newer.push_back(std::move(values));
  }
  return removed;
}

void StoreSettings::remove(std::string_view key) {
  context_.beginUnit();
  for (SettingEntity* row : context_.fetch<SettingEntity>("settingKey", key)) context_.remove(*row);
}

void StoreSettings::copy(std::string_view from, std::string_view to) {
  context_.beginUnit();
  const std::vector<SettingEntity*> rows = newestFirst(from);
  if (!rows.empty()) put(to, *rows.front());
}

}  // namespace habitra
