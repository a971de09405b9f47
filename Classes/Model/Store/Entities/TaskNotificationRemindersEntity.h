#pragma once

#include <HabitraModel/Store/EntityDescription.h>
#include <HabitraModel/Store/StoredValues.h>

#include <cstdint>
#include <optional>
#include <string>

namespace habitra {

/// One reminder of a task; the reminders of a task stand in order of creation. What the rules make of it stands in
/// Mapping/ReminderMapping.h.
struct TaskNotificationRemindersEntity {
  static const EntityDescription& description();

  ObjectID objectID = ObjectID::none;

  std::optional<std::string> daysFromFinish;  ///< ascending numbers with commas between them
  std::optional<std::string> daysFromStart;   ///< the same
  std::optional<std::int64_t> daysOfWeek;     ///< weekday bits, Sunday 1 to Saturday 64
  std::optional<double> duration;             ///< seconds
  std::optional<std::string> icon;
  std::optional<Bytes> region;              ///< the coded trigger region
  std::optional<std::string> reminderType;  ///< what sets it off
  std::optional<std::int64_t> snoozeDate;   ///< day
  std::optional<std::int64_t> snoozeTime;   ///< seconds since midnight
  std::optional<std::string> snoozeTimeZone;
  std::optional<std::string> sound;
  std::optional<std::int64_t> timeOfDay;  ///< seconds since midnight
  std::optional<std::string> timeZone;
  std::optional<std::string> uniqueId;
  std::optional<bool> timeSensitive;  ///< none: the default applies
  ObjectID task = ObjectID::none;

  friend bool operator==(const TaskNotificationRemindersEntity&, const TaskNotificationRemindersEntity&) = default;
};

}  // namespace habitra
