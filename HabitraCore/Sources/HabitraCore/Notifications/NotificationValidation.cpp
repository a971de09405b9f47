#include <HabitraCore/Notifications/NotificationValidation.h>
#include <HabitraCore/Notifications/RecordFields.h>

#include <algorithm>
#include <set>

namespace habitra {

namespace {

using Problems = std::vector<NotificationProblem>;

void append(Problems& problems, const Problems& more) { problems.insert(problems.end(), more.begin(), more.end()); }

/// The one of two fields that is missing where the other is there.
template <typename First, typename Second>
void requireBoth(Problems& problems, std::string_view firstField, const std::optional<First>& first,
                 std::string_view secondField, const std::optional<Second>& second) {
  if (!first && second) problems.push_back({.field = firstField, .rule = "be given"});
  if (first && !second) problems.push_back({.field = secondField, .rule = "be given"});
}

void requireIndexes(Problems& problems, std::string_view field, const std::optional<std::set<std::int64_t>>& indexes) {
  if (!indexes || indexes->empty() || *indexes->begin() >= 0) return;
  problems.push_back(
      {.field = field, .rule = "hold numbers from 0 on", .found = static_cast<double>(*indexes->begin())});
}

}  // namespace

std::string NotificationProblem::message() const {
  const std::string demand = std::string(field) + " must " + std::string(rule);
  return found ? demand + ", not " + describe(*found) : demand;
}

std::vector<NotificationProblem> problems(const TriggerRegion& region) {
  Problems problems;
  // Written so that what is no number is out of range, too.
  if (!(region.latitude >= -90 && region.latitude <= 90))
    problems.push_back({.field = "latitude", .rule = "be from -90 to 90", .found = region.latitude});
  if (!(region.longitude >= -180 && region.longitude <= 180))
    problems.push_back({.field = "longitude", .rule = "be from -180 to 180", .found = region.longitude});
  if (!(region.radius > 0)) problems.push_back({.field = "radius", .rule = "be above 0", .found = region.radius});
  if (!region.notifyOnEntry && !region.notifyOnExit)
    problems.push_back({.field = "notifyOnEntry", .rule = "be true where notifyOnExit is false"});
  return problems;
}

std::vector<NotificationProblem> problems(const TaskReminder::Trigger& trigger) {
  if (!trigger.isComplete()) return {{.field = neededField(trigger.type), .rule = "be given"}};
  switch (trigger.type) {
    case TaskReminder::TriggerType::timeOfDay:
    case TaskReminder::TriggerType::timeOfDayMuted: break;
    case TaskReminder::TriggerType::location: return problems(*trigger.region);
    case TaskReminder::TriggerType::durationAfterStart:
    case TaskReminder::TriggerType::durationBeforeFinish:
      if (!(*trigger.duration >= 0)) return {{.field = "duration", .rule = "be 0 or more", .found = trigger.duration}};
  }
  return {};
}

std::vector<NotificationProblem> problems(const TaskReminder& reminder) {
  Problems found = problems(reminder.trigger);
  if (reminder.daysOfWeek.isEmpty()) found.push_back({.field = "daysOfWeek", .rule = "hold at least one day"});
  requireIndexes(found, "dayIndexesFromStart", reminder.dayIndexesFromStart);
  requireIndexes(found, "dayIndexesFromFinish", reminder.dayIndexesFromFinish);
  requireBoth(found, "snoozeTime", reminder.snoozeTime, "snoozeDate", reminder.snoozeDate);
  return found;
}

std::vector<NotificationProblem> problems(const TaskNotificationSettings& settings) {
  Problems found;
  requireBoth(found, "badgeFrom", settings.badgeFrom, "badgeTo", settings.badgeTo);
  if (settings.maxReminders < 0) {
    found.push_back(
        {.field = "maxReminders", .rule = "be 0 or more", .found = static_cast<double>(settings.maxReminders)});
  }
  for (const TaskReminder& reminder : settings.reminders) {
    Problems own = problems(reminder);
    for (NotificationProblem& problem : own) problem.reminder = reminder.uniqueId;
    append(found, own);
  }
  return found;
}

}  // namespace habitra
