#pragma once

#include <HabitraBackup/Exchange/ImportReport.h>
#include <HabitraModel/Store/Entities/SettingEntity.h>
#include <HabitraModel/Store/Entities/TaskCategoryEntity.h>
#include <HabitraModel/Store/Entities/UserProfileEntity.h>
#include <QZKit/UniqueID.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

/// What a document has beside its tasks, on its way into a store. Everything here works in the context's open unit.
namespace habitra {

class StoreContext;

/// What happens to what the store has already.
enum class SharedRowsPolicy : std::uint8_t { keepStored, replaceStored };

/// Pages are told apart by their numbers. Those that are missing are made; stored ones take title and icon where the
/// document says some and they are to be replaced.
ImportReport::Rows importPages(StoreContext& context, std::span<const UserProfileEntity> pages,
                               SharedRowsPolicy policy);

/// Settings are told apart by their keys, whatever their kinds; what they mean is not asked, so that those of a newer
/// program come along as they are. The pauses of tasks are left to the tasks. Rows come in the order of the document.
ImportReport::Rows importSettings(StoreContext& context, std::span<const SettingEntity> settings,
                                  SharedRowsPolicy policy);

/// What of the settings is in the store already, where none is to come in.
struct SettingsThere {
  std::size_t stored = 0;
  std::vector<std::string> missing;  ///< the keys of the others, in order
};
[[nodiscard]] SettingsThere settingsThere(StoreContext& context, std::span<const SettingEntity> settings);

/// Brings in the categories of a document: one is the stored one with its identifier, else one with its title. Those
/// that are missing are made.
class CategoriesImport {
 public:
  /// REQUIRES: `context` outlives this object.
  CategoriesImport(StoreContext& context, std::span<const TaskCategoryEntity> categories, SharedRowsPolicy policy);

  [[nodiscard]] const ImportReport::Rows& counts() const { return counts_; }
  /// The stored category that the document calls so, or null.
  [[nodiscard]] TaskCategoryEntity* find(const qz::UniqueID& id) const;

 private:
  ImportReport::Rows counts_;
  std::map<qz::UniqueID, TaskCategoryEntity*> byId_;
};

}  // namespace habitra
