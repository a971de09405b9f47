#pragma once

#include <HabitraModel/Store/Entities/SettingEntity.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Store/StoredValues.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace habitra {

/// The settings that a store keeps: per key one SettingEntity, with the value in the column of its kind, which is one
/// of bool, std::int64_t, double, std::string, Bytes and qz::Moment.
///
/// When a key has more than one row, which mirroring can bring about, the one that was changed last counts (by
/// `dateCreated`, which is set anew with each change of the value; none is earliest; then by number), among those with
/// a value of the kind that is asked for. A change of the value removes the others.
///
/// Changes begin a unit of the context and are left to its owner to save. Belongs to the context's queue.
class StoreSettings {
 public:
  explicit StoreSettings(StoreContext& context) : context_(context) {}

  /// The column of a kind.
  template <typename Kind>
  static constexpr auto column() {
    if constexpr (std::is_same_v<Kind, bool>)
      return &SettingEntity::booleanValue;
    else if constexpr (std::is_same_v<Kind, std::int64_t>)
      return &SettingEntity::intValue;
    else if constexpr (std::is_same_v<Kind, double>)
      return &SettingEntity::doubleValue;
    else if constexpr (std::is_same_v<Kind, std::string>)
      return &SettingEntity::stringValue;
    else if constexpr (std::is_same_v<Kind, Bytes>)
      return &SettingEntity::dataValue;
    else {
      static_assert(std::is_same_v<Kind, qz::Moment>, "not a kind of stored value");
      return &SettingEntity::dateValue;
    }
  }

  /// The value of `key`; none when there is none of this kind.
  template <typename Kind>
  [[nodiscard]] std::optional<Kind> get(std::string_view key) {
    for (const SettingEntity* row : newestFirst(key))
      if (row->*column<Kind>()) return row->*column<Kind>();
    return std::nullopt;
  }

  /// All values of `key` of this kind, the one that counts first.
  template <typename Kind>
  [[nodiscard]] std::vector<Kind> all(std::string_view key) {
    std::vector<Kind> values;
    for (const SettingEntity* row : newestFirst(key))
      if (const auto& value = row->*column<Kind>()) values.push_back(*value);
    return values;
  }

  /// Writes nothing when the value is stored already.
  template <typename Kind>
  void set(std::string_view key, const Kind& value) {
    SettingEntity values;
    values.*column<Kind>() = value;
    put(key, values);
  }

  /// Removes all rows of `key`.
  void remove(std::string_view key);

  /// Removes the rows of `key` that count for nobody, and gives how many there were: those with the values of a newer
  /// row, and those of whose kinds of value newer rows have one that `isReadable`. What is newer but cannot be read by
  /// this version takes no row's place. REQUIRES: a unit.
  std::size_t removeRowsThatDoNotCount(std::string_view key,
                                       const std::function<bool(const SettingEntity&)>& isReadable);

  /// Gives `to` the value of `from`, if that has one.
  void copy(std::string_view from, std::string_view to);

 private:
  [[nodiscard]] std::vector<SettingEntity*> newestFirst(std::string_view key);
  /// Takes over the value columns.
  void put(std::string_view key, const SettingEntity& values);

  StoreContext& context_;
};

}  // namespace habitra
