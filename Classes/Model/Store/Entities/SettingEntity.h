#pragma once

#include <HabitraModel/Store/EntityDescription.h>
#include <HabitraModel/Store/StoredValues.h>

#include <optional>
#include <string>

namespace habitra {

/// One app-wide setting: its key, and the value in the column of its kind; the other columns hold none.
struct SettingEntity {
  static const EntityDescription& description();

  ObjectID objectID = ObjectID::none;

  std::optional<std::string> settingKey;
  std::optional<qz::Moment> dateCreated;
  std::optional<bool> booleanValue;
  std::optional<Bytes> dataValue;
  std::optional<qz::Moment> dateValue;
  std::optional<double> doubleValue;
  std::optional<std::int64_t> intValue;
  std::optional<std::string> stringValue;

  friend bool operator==(const SettingEntity&, const SettingEntity&) = default;
};

}  // namespace habitra
