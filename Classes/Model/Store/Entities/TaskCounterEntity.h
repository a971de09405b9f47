#pragma once

#include <HabitraModel/Store/EntityDescription.h>
#include <HabitraModel/Store/StoredValues.h>

#include <cstdint>
#include <optional>
#include <string>

namespace habitra {

/// One count towards a task that is done several times a day. Its day is an integer, 0 for no day.
struct TaskCounterEntity {
  static const EntityDescription& description();

  ObjectID objectID = ObjectID::none;

  std::optional<qz::Moment> createdTimestamp;
  std::int32_t entryDate = 0;
  std::int16_t quantity = 0;
  std::optional<std::string> status;
  std::optional<std::string> uniqueId;
  ObjectID task = ObjectID::none;

  friend bool operator==(const TaskCounterEntity&, const TaskCounterEntity&) = default;
};

}  // namespace habitra
