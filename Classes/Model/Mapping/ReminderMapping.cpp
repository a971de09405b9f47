#include <HabitraModel/Mapping/ReminderMapping.h>
#include <HabitraModel/Mapping/StoredChoice.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Mapping/StoredJSON.h>
#include <HabitraModel/Mapping/StoredTimeOfDay.h>

#include <fmt/ranges.h>

#include <charconv>
#include <string_view>

namespace habitra {

namespace {

using DayIndexes = std::optional<std::set<std::int64_t>>;

/// "0,2,13"; none for another text.
DayIndexes dayIndexes(const std::optional<std::string>& column) {
  if (!column) return std::nullopt;
  std::set<std::int64_t> indexes;
  const char* next = column->data();
  const char* const end = next + column->size();
  while (next != end) {
    std::int64_t index = 0;
    const auto [stop, error] = std::from_chars(next, end, index);
    const bool isLast = stop == end;
    if (error != std::errc() || (!isLast && (*stop != ',' || stop + 1 == end))) return std::nullopt;
    indexes.insert(index);
    next = isLast ? end : stop + 1;
  }
  return indexes;
}

/// Writes where the column says something else. What cannot be read stays while there is nothing in its place.
void setDayIndexes(std::optional<std::string>& column, const DayIndexes& indexes) {
  if (dayIndexes(column) == indexes) return;
  if (indexes)
    column = fmt::format("{}", fmt::join(*indexes, ","));
  else
    column.reset();
}

std::optional<qz::DaysOfWeek> weekdays(const std::optional<std::int64_t>& column) {
  return column ? qz::DaysOfWeek::fromRawValue(*column) : std::nullopt;
}

/// Bits of no weekday stay while the days are those that they read as.
void setWeekdays(std::optional<std::int64_t>& column, qz::DaysOfWeek days) {
  const bool isUnknown = column && !weekdays(column);
  if (!isUnknown || days != qz::DayOfWeek::every()) column = days.rawValue();
}

std::optional<qz::YYYYMMDD> existingDay(const std::optional<std::int64_t>& column) {
  return column ? existingDayFromStored(*column) : std::nullopt;
}

/// What is no day of the calendar stays until one is chosen.
void setDay(std::optional<std::int64_t>& column, const std::optional<qz::YYYYMMDD>& day) {
  if (existingDay(column) != day) column = day ? std::optional(day->intValue()) : std::nullopt;
}

std::optional<TriggerRegion> storedRegion(const std::optional<Bytes>& column) {
  return readingJSON(column, [](const nlohmann::json& json) { return std::optional(json.get<TriggerRegion>()); });
}

void setRegion(std::optional<Bytes>& column, const std::optional<TriggerRegion>& region) {
  if (storedRegion(column) == region) return;
  if (region)
    column = jsonBytes(*region);
  else
    column.reset();
}

}  // namespace

std::optional<TaskReminder> reminderOf(const TaskNotificationRemindersEntity& row) {
  const auto id = row.uniqueId ? qz::UniqueID::fromText(*row.uniqueId) : std::nullopt;
  const auto type = choice<TaskReminder::TriggerType>(row.reminderType);
  if (!id || !type) return std::nullopt;
  TaskReminder reminder{.uniqueId = *id};
  reminder.timeZone = choice<NotificationTimeZone>(row.timeZone);
  reminder.trigger = {.type = *type,
                      .timeOfDay = timeFromStored(row.timeOfDay),
                      .region = storedRegion(row.region),
                      .duration = row.duration};
  reminder.daysOfWeek = weekdays(row.daysOfWeek).value_or(reminder.daysOfWeek);
  reminder.dayIndexesFromStart = dayIndexes(row.daysFromStart);
  reminder.dayIndexesFromFinish = dayIndexes(row.daysFromFinish);
  reminder.snoozeTime = timeFromStored(row.snoozeTime);
  reminder.snoozeDate = existingDay(row.snoozeDate);
  reminder.snoozeTimeZone = choice<NotificationTimeZone>(row.snoozeTimeZone);
  reminder.sound = choice<SoundEffect>(row.sound);
  reminder.timeSensitive = row.timeSensitive;
  return reminder;
}

void setReminder(TaskNotificationRemindersEntity& row, const TaskReminder& reminder) {
  row.uniqueId = reminder.uniqueId.text();
  setChoice(row.timeZone, reminder.timeZone);
  row.reminderType = rawValue(reminder.trigger.type);
  setTime(row.timeOfDay, reminder.trigger.timeOfDay);
  setRegion(row.region, reminder.trigger.region);
  row.duration = reminder.trigger.duration;
  setWeekdays(row.daysOfWeek, reminder.daysOfWeek);
  setDayIndexes(row.daysFromStart, reminder.dayIndexesFromStart);
  setDayIndexes(row.daysFromFinish, reminder.dayIndexesFromFinish);
  setTime(row.snoozeTime, reminder.snoozeTime);
  setDay(row.snoozeDate, reminder.snoozeDate);
  setChoice(row.snoozeTimeZone, reminder.snoozeTimeZone);
  setChoice(row.sound, reminder.sound);
  row.timeSensitive = reminder.timeSensitive;
}

}  // namespace habitra
