#pragma once

#include <HabitraModel/Store/EntityDescription.h>
#include <HabitraModel/Store/StoredValues.h>

#include <cstdint>
#include <optional>
#include <string>

namespace habitra {

/// How one task is shared by the cloud: the task's own record there (`ckRecordId`), the record of the share
/// (`ckShareId`), who takes part, and what was last told of the task.
struct TaskShareEntity {
  static const EntityDescription& description();

  ObjectID objectID = ObjectID::none;

  std::optional<std::string> ckError;
  std::optional<qz::Moment> ckErrorUpdated;
  std::optional<std::string> ckRecordIdRecordName;
  std::optional<std::string> ckRecordIdZoneName;
  std::optional<std::string> ckRecordIdZoneOwnerName;
  std::optional<std::string> ckShareIdRecordName;
  std::optional<std::string> ckShareIdZoneName;
  std::optional<std::string> ckShareIdZoneOwnerName;
  std::optional<Bytes> participantsJson;  ///< see Mapping/ShareParticipant.h
  std::optional<std::string> status;
  std::optional<qz::Moment> statusUpdated;
  std::optional<Bytes> summaryJson;       ///< see Mapping/TaskCloudSummaryCoreDataContainer.h
  std::int64_t summaryJsonHashValue = 0;  ///< the hash of `summaryJson`
  std::optional<qz::Moment> summaryJsonUpdated;
  ObjectID owner = ObjectID::none;  ///< none: the person
  ObjectID task = ObjectID::none;

  friend bool operator==(const TaskShareEntity&, const TaskShareEntity&) = default;
};

}  // namespace habitra
