#pragma once

#include <HabitraModel/Store/Entities/SettingEntity.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Store/StoredValues.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace habitra {

/// The settings that a store keeps: per key one SettingEntity, with the value in the column of its kind, which is one
/// of bool, std::int64_t, double, std::string, Bytes and qz::Moment.
///
/// When a key has more than one row, which mirroring can bring about, the one that was created last counts (by
/// `dateCreated`, where none is earliest, then by number), for reading and for writing; a change of its value removes
/// the others.
///
/// Changes begin a unit of the context and are left to its owner to save. Belongs to the context's queue.
class StoreSettings {
 public:
  explicit StoreSettings(StoreContext& context) : context_(context) {}

  /// The value of `key`; none when there is none or it is of another kind.
  template <typename Kind>
  [[nodiscard]] std::optional<Kind> get(std::string_view key) {
    const SettingEntity* row = find(key);
    return row == nullptr ? std::nullopt : row->*column<Kind>();
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

  /// Gives `to` the value of `from`, if that has one.
  void copy(std::string_view from, std::string_view to);

 private:
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

  /// The row that counts, or null.
  [[nodiscard]] SettingEntity* find(std::string_view key);
  /// Takes over the value columns.
  void put(std::string_view key, const SettingEntity& values);

  StoreContext& context_;
};

}  // namespace habitra
