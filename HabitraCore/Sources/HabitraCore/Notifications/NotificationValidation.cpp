#include <HabitraCore/Notifications/NotificationValidation.h>
#include <HabitraCore/Notifications/RecordFields.h>

#include <limits>
#include <set>

namespace habitra {

namespace {

using Problems = std::vector<NotificationProblem>;

static_assert(TaskReminder::greatestDayIndex == 366 && TaskReminder::Trigger::longestDuration == 1'000'000'000 &&
                  TriggerRegion::longestRadius == 100'000'000,
              "the rules below spell these out");

void append(Problems& problems, const Problems& more) { problems.insert(problems.end(), more.begin(), more.end()); }

/// The one of two fields that is missing where the other is there.
template <typename First, typename Second>
void requireBoth(Problems& problems, std::string_view firstField, const std::optional<First>& first,
                 std::string_view secondField, const std::optional<Second>& second) {
  if (!first && second) problems.push_back({.field = firstField, .rule = "be given"});
  if (first && !second) problems.push_back({.field = secondField, .rule = "be given"});
}

void requireIndexes(Problems& problems, std::string_view field, const std::optional<std::set<std::int64_t>>& indexes) {
  if (!indexes || indexes->empty()) return;
  const std::int64_t outermost = *indexes->begin() < 0 ? *indexes->begin() : *indexes->rbegin();
  if (outermost >= 0 && outermost <= TaskReminder::greatestDayIndex) return;
  problems.push_back({.field = field, .rule = "hold numbers from 0 to 366", .found = static_cast<double>(outermost)});
}

/// As from_json reads it.
bool canBeRead(const qz::YYYYMMDD& day) {
  return day.exists() && day.intValue() <= std::numeric_limits<std::int32_t>::max();
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
  if (!(region.radius > 0 && region.radius <= TriggerRegion::longestRadius))
    problems.push_back({.field = "radius", .rule = "be above 0 and at most 100000000", .found = region.radius});
  if (!region.notifyOnEntry && !region.notifyOnExit)
    problems.push_back({.field = "notifyOnEntry", .rule = "be true where notifyOnExit is false"});
  return problems;
}

std::vector<NotificationProblem> problems(const TaskReminder::Trigger& trigger) {
  Problems found;
  if (!trigger.isComplete()) found.push_back({.field = neededField(trigger.type), .rule = "be given"});
  if (trigger.region) append(found, problems(*trigger.region));
  if (trigger.duration && !(*trigger.duration >= 0 && *trigger.duration <= TaskReminder::Trigger::longestDuration))
    found.push_back({.field = "duration", .rule = "be from 0 to 1000000000", .found = trigger.duration});
  return found;
}

std::vector<NotificationProblem> problems(const TaskReminder& reminder) {
  Problems found = problems(reminder.trigger);
  if (reminder.daysOfWeek.isEmpty()) found.push_back({.field = "daysOfWeek", .rule = "hold at least one day"});
  requireIndexes(found, "dayIndexesFromStart", reminder.dayIndexesFromStart);
  requireIndexes(found, "dayIndexesFromFinish", reminder.dayIndexesFromFinish);
  requireBoth(found, "snoozeTime", reminder.snoozeTime, "snoozeDate", reminder.snoozeDate);
  if (reminder.snoozeDate && !canBeRead(*reminder.snoozeDate))
    found.push_back({.field = "snoozeDate", .rule = "be a day of the calendar"});
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
