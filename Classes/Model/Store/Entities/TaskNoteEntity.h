#pragma once

#include <HabitraModel/Store/EntityDescription.h>
#include <HabitraModel/Store/StoredValues.h>

#include <cstdint>
#include <optional>
#include <string>

namespace habitra {

/// A note on a task. Its day is an integer, 0 for no day.
struct TaskNoteEntity {
  static const EntityDescription& description();

  ObjectID objectID = ObjectID::none;

  double associatedValue = 0;
  std::optional<std::string> content;
  std::optional<qz::Moment> createdTimestamp;
  std::optional<std::string> createdTimeZone;
  std::int16_t displayOrder = 0;
  std::optional<Bytes> jsonExtra;  ///< an encoded record of further fields
  std::int32_t noteDate = 0;       ///< the day it belongs to
  std::optional<std::string> sentiment;
  std::optional<std::string> status;
  std::optional<std::string> uniqueId;
  ObjectID task = ObjectID::none;

  friend bool operator==(const TaskNoteEntity&, const TaskNoteEntity&) = default;
};

}  // namespace habitra
