#pragma once

#include <HabitraModel/Store/EntityDescription.h>
#include <HabitraModel/Store/StoredValues.h>

#include <optional>
#include <string>

namespace habitra {

/// The person who owns a shared task; the `cn` attributes are the matching entry in the contacts.
struct TaskShareOwnerEntity {
  static const EntityDescription& description();

  ObjectID objectID = ObjectID::none;

  std::optional<std::string> ckRecordIdRecordName;
  std::optional<std::string> ckRecordIdZoneName;
  std::optional<std::string> ckRecordIdZoneOwnerName;
  std::optional<std::string> ckUserDisplayName;
  std::optional<std::string> cloudStatus;
  std::optional<qz::Moment> cloudStatusDate;
  std::optional<std::string> cnFormattedName;
  std::optional<std::string> cnIdentifier;
  std::optional<std::string> cnPropertyIdentifier;
  std::optional<std::string> cnPropertyLabel;
  std::optional<std::string> cnPropertyType;
  std::optional<std::string> cnPropertyValue;
  std::optional<std::string> imageName;

  friend bool operator==(const TaskShareOwnerEntity&, const TaskShareOwnerEntity&) = default;
};

}  // namespace habitra
