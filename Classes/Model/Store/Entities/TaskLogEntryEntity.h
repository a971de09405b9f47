#pragma once

#include <HabitraModel/Store/EntityDescription.h>
#include <HabitraModel/Store/StoredValues.h>

#include <optional>
#include <string>
#include <string_view>

namespace habitra {

/// Where an entry lies in the log, which is clustered by these three.
struct LogKey {
  ObjectID task = ObjectID::none;
  std::int32_t entryDate = 0;
  ObjectID objectID = ObjectID::none;

  friend auto operator<=>(const LogKey&, const LogKey&) = default;
};

/// One entry in a task's log. Days are integers, 0 for no day. A plain value: it has no identity in a context and is
/// written back with StoreContext::updateLogEntry.
struct TaskLogEntryEntity {
  static const EntityDescription& description();

  ObjectID objectID = ObjectID::none;

  std::int32_t entryDate = 0;
  std::int32_t entryPeriodFrom = 0;  ///< first day of the period it counts for
  std::int32_t entryPeriodTo = 0;    ///< last day of that period
  std::optional<std::string> entryPeriodType;
  std::int16_t entryType = 0;
  double progress = 0;       ///< as a share
  double progressTotal = 0;  ///< as a value
  std::optional<qz::Moment> createdTimestamp;
  std::optional<std::string> createdTimeZone;
  std::optional<std::string> uniqueId;
  std::optional<std::string> cloudStatus;  ///< "TMP" marks a provisional row
  std::optional<qz::Moment> cloudStatusDate;
  ObjectID task = ObjectID::none;

  [[nodiscard]] LogKey key() const { return {task, entryDate, objectID}; }

  friend bool operator==(const TaskLogEntryEntity&, const TaskLogEntryEntity&) = default;
};

/// What the rules need of an entry, straight from the row. `entryPeriodType` is empty when there is none and lives only
/// as long as the call that was given the row.
struct LogRow {
  ObjectID objectID;
  std::int32_t entryDate;
  std::int32_t entryPeriodFrom;
  std::int32_t entryPeriodTo;
  std::string_view entryPeriodType;
  std::int16_t entryType;
  double progress;
  double progressTotal;
};

}  // namespace habitra
