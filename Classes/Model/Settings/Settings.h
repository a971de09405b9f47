#pragma once

#include <HabitraCore/TaskFrequency.h>
#include <HabitraModel/Settings/KeyValueDefaults.h>
#include <HabitraModel/Settings/StoreSettings.h>
#include <HabitraModel/Store/StoredValues.h>
#include <QZDateTime/DayOfWeek.h>
#include <QZDateTime/HHMMSS.h>
#include <QZKit/Trap.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace habitra {

/// Where a setting is kept.
enum class SettingPlace : std::uint8_t {
  store,             ///< with the habits; changes are part of a save, with history and undo
  sharedDefaults,    ///< the file that all programs of the home share
  standardDefaults,  ///< the file of this device
};

/// A setting: the values it has in the program, and the form in which they are kept, which is its kind.
template <typename T, typename Kind>
struct Setting {
  std::string_view key;
  SettingPlace place;
  T (*defaultValue)();
  Kind (*encode)(const T& value);
  std::optional<T> (*decode)(const Kind& kept);  ///< none for what is unknown or damaged; it then has its default
};

/// All settings there are.
namespace settings {

/// On which day weeks begin, for tasks made from then on. By default that of the user's locale. Kept as an integer,
/// Sunday 0 to Saturday 6.
extern const Setting<qz::DayOfWeek, std::int64_t> firstDayOfWeek;

/// When the days begin of all tasks that do not say it themselves. By default at midnight. Kept as an integer, seconds
/// since midnight.
extern const Setting<qz::HHMMSS, std::int64_t> startOfDay;

/// What a newly made task has. By default every day. Kept as data: the coded form in JSON. One that is not fit
/// to be entered counts as damaged.
extern const Setting<TaskFrequency, Bytes> defaultFrequency;

/// Whether the store is mirrored to a cloud. By default not. Kept as a truth value.
extern const Setting<bool, bool> cloudSync;

/// The key under which the store keeps the pauses of the task with this identifier.
[[nodiscard]] std::string pausesOf(std::string_view taskId);

/// Whether a row of the store holds a value of a setting above that can be read. Of other keys this version knows
/// nothing.
[[nodiscard]] bool isReadable(const SettingEntity& row);

}  // namespace settings

/// Reads and changes settings, wherever each is kept. Belongs to the queue of its context.
class Settings {
 public:
  /// `context` is null while there is no store: what is kept there then has its default. The defaults may be null where
  /// no setting of theirs is used.
  Settings(StoreContext* context, std::shared_ptr<KeyValueDefaults> shared, std::shared_ptr<KeyValueDefaults> standard)
      : context_(context), shared_(std::move(shared)), standard_(std::move(standard)) {}

  /// What a person has chosen; none when nobody has, or what is kept cannot be read. Throws StoreError.
  template <typename T, typename Kind>
  [[nodiscard]] std::optional<T> chosen(const Setting<T, Kind>& setting) const {
    if (setting.place != SettingPlace::store) {
      const auto kept = defaults(setting.place).template get<Kind>(setting.key);
      return kept ? setting.decode(*kept) : std::nullopt;
    }
    if (context_ == nullptr) return std::nullopt;
    for (const Kind& kept : StoreSettings(*context_).all<Kind>(setting.key))
      if (auto value = setting.decode(kept)) return value;
    return std::nullopt;
  }

  /// What has been chosen, else the default.
  template <typename T, typename Kind>
  [[nodiscard]] T get(const Setting<T, Kind>& setting) const {
    const auto value = chosen(setting);
    return value ? *value : setting.defaultValue();
  }

  /// In the store, begins a unit, which its owner saves; elsewhere it is done when this returns. REQUIRES: a context,
  /// if the store keeps it.
  template <typename T, typename Kind>
  void set(const Setting<T, Kind>& setting, const T& value) {
    if (setting.place == SettingPlace::store)
      StoreSettings(context()).set(setting.key, setting.encode(value));
    else
      defaults(setting.place).set(setting.key, setting.encode(value));
  }

  /// Lets it have its default again; otherwise the same.
  template <typename T, typename Kind>
  void reset(const Setting<T, Kind>& setting) {
    if (setting.place == SettingPlace::store)
      StoreSettings(context()).remove(setting.key);
    else
      defaults(setting.place).remove(setting.key);
  }

 private:
  [[nodiscard]] StoreContext& context() const {
    qz::require(context_ != nullptr, "a setting is changed without a store");
    return *context_;
  }
  [[nodiscard]] KeyValueDefaults& defaults(SettingPlace place) const {
    const auto& suite = place == SettingPlace::sharedDefaults ? shared_ : standard_;
    qz::require(suite != nullptr, "a default is used without its file");
    return *suite;
  }

  StoreContext* context_;
  std::shared_ptr<KeyValueDefaults> shared_;
  std::shared_ptr<KeyValueDefaults> standard_;
};

}  // namespace habitra
