#include <HabitraCore/Notifications/RecordFields.h>
#include <HabitraCore/Notifications/TaskReminder.h>

#include <concepts>
#include <type_traits>

namespace habitra {

template <typename Trigger, typename Visit>
requires std::same_as<std::remove_const_t<Trigger>, TaskReminder::Trigger>
static void visitFields(Trigger& trigger, Visit&& visit) {
  visit("type", trigger.type);
  visit("timeOfDay", trigger.timeOfDay);
  visit("region", trigger.region);
  visit("duration", trigger.duration);
}

template <typename Reminder, typename Visit>
requires std::same_as<std::remove_const_t<Reminder>, TaskReminder>
static void visitFields(Reminder& reminder, Visit&& visit) {
  visit("uniqueId", reminder.uniqueId);
  visit("timeZone", reminder.timeZone);
  visit("trigger", reminder.trigger);
  visit("daysOfWeek", reminder.daysOfWeek);
  visit("dayIndexesFromStart", reminder.dayIndexesFromStart);
  visit("dayIndexesFromFinish", reminder.dayIndexesFromFinish);
  visit("snoozeTime", reminder.snoozeTime);
  visit("snoozeDate", reminder.snoozeDate);
  visit("snoozeTimeZone", reminder.snoozeTimeZone);
  visit("sound", reminder.sound);
  visit("timeSensitive", reminder.timeSensitive);
}

const char* neededField(TaskReminder::TriggerType type) {
  using Type = TaskReminder::TriggerType;
  switch (type) {
    case Type::timeOfDay:
    case Type::timeOfDayMuted: break;
    case Type::location: return "region";
    case Type::durationAfterStart:
    case Type::durationBeforeFinish: return "duration";
  }
  return "timeOfDay";
}

bool TaskReminder::Trigger::isComplete() const {
  switch (type) {
    case TriggerType::timeOfDay:
    case TriggerType::timeOfDayMuted: break;
    case TriggerType::location: return region.has_value();
    case TriggerType::durationAfterStart:
    case TriggerType::durationBeforeFinish: return duration.has_value();
  }
  return timeOfDay.has_value();
}

std::string TaskReminder::Trigger::debugDescription() const { return describeFields(*this); }

std::string TaskReminder::debugDescription() const {
  FieldDescription description;
  description("uniqueId", uniqueId);
  description("trigger", trigger);
  description("daysOfWeek", daysOfWeek);
  description("sound", sound);
  description("timeSensitive", timeSensitive);
  return description.text();
}

void to_json(nlohmann::json& json, const TaskReminder::Trigger& trigger) { json = encodeFields(trigger); }

void from_json(const nlohmann::json& json, TaskReminder::Trigger& trigger) { decodeFields(json, trigger); }

}  // namespace habitra

void nlohmann::adl_serializer<habitra::TaskReminder>::to_json(json& json, const habitra::TaskReminder& reminder) {
  json = habitra::encodeFields(reminder);
}

habitra::TaskReminder nlohmann::adl_serializer<habitra::TaskReminder>::from_json(const json& json) {
  habitra::TaskReminder reminder{.uniqueId = qz::UniqueID(qz::UniqueID::Bytes{})};
  habitra::decodeFields(json, reminder);
  return reminder;
}
