#pragma once

#include <HabitraModel/Store/EntityDescription.h>
#include <HabitraModel/Store/StoredValues.h>

#include <cstdint>
#include <optional>
#include <string>

namespace habitra {

/// A running or finished timing of a timed task. Days are integers, 0 for no day.
struct TaskTimerEntity {
  static const EntityDescription& description();

  ObjectID objectID = ObjectID::none;

  std::int32_t entryDate = 0;
  std::optional<std::string> entryId;  ///< the `uniqueId` of the log entry that it produced
  std::int32_t entryPeriodFrom = 0;
  std::int32_t entryPeriodTo = 0;
  std::optional<std::string> entryPeriodType;
  std::optional<qz::Moment> finish;  ///< none while it runs
  std::optional<qz::Moment> start;
  ObjectID task = ObjectID::none;

  friend bool operator==(const TaskTimerEntity&, const TaskTimerEntity&) = default;
};

}  // namespace habitra
