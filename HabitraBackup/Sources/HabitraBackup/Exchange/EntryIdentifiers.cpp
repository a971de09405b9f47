#include <HabitraBackup/Document/HabitraJSONBackup.h>
#include <HabitraBackup/Exchange/EntryIdentifiers.h>
#include <HabitraModel/Mapping/StoredIdentifier.h>
#include <HabitraModel/Store/StoreContext.h>

#include <algorithm>
#include <string>

namespace habitra {
namespace {

bool hasEntries(StoreContext& context) {
  if (!context.fetchAll<TaskEntity>().empty()) return true;
  bool isFound = false;
  context.readLog(ObjectID::none, StoreContext::firstDay, StoreContext::lastDay,
                  [&isFound](const LogRow&) { isFound = true; });
  return isFound;
}

std::vector<qz::UniqueID> repeatedIdentifiers(const HabitraJSONBackup& document) {
  std::vector<qz::UniqueID> all;
  for (const HabitraJSONBackupTask& task : document.tasks) {
    if (!task.log) continue;
    for (const HabitraJSONBackupTaskEntry& entry : *task.log)
      if (entry.uniqueId) all.push_back(*entry.uniqueId);
  }
  std::ranges::sort(all);
  std::vector<qz::UniqueID> repeated;
  for (auto found = std::ranges::adjacent_find(all); found != all.end();) {
    repeated.push_back(*found);
    found = std::ranges::adjacent_find(std::ranges::upper_bound(found, all.end(), *found), all.end());
  }
  return repeated;
}

}  // namespace

EntryIdentifiers::EntryIdentifiers(StoreContext& context, const HabitraJSONBackup& document, IdentifierPolicy policy)
    : context_(context), policy_(policy) {
  if (policy == IdentifierPolicy::giveNewOnes) return;
  storeHasEntries_ = hasEntries(context);
  if (!storeHasEntries_) repeated_ = repeatedIdentifiers(document);
}

bool EntryIdentifiers::isFree(const qz::UniqueID& id) const {
  if (policy_ == IdentifierPolicy::giveNewOnes) return false;
  if (!storeHasEntries_ && !std::ranges::binary_search(repeated_, id)) return true;
  return std::ranges::none_of(storedForms(id),
                              [&](const std::string& form) { return context_.findLogEntry(form).has_value(); });
}

}  // namespace habitra
