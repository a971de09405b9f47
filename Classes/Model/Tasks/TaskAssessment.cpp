#include <HabitraModel/Tasks/TaskAssessment.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <limits>
#include <span>

namespace habitra {
namespace {

/// Checkpoints are taken this many days back, so that corrections of the last weeks leave them valid. A walk that is to
/// give the success of the last 30 days must begin earlier than those.
constexpr std::int64_t checkpointDistance = 40;
/// A walk of this many days more than it needs is still quick; after that a newer checkpoint pays.
constexpr std::int64_t checkpointPatience = 62;
/// Filling in looks this many days further back than the last pass. Somebody who flew east, or whose day now begins
/// earlier, reads the moment of that pass as a later day than it was; the days in between would never be judged.
constexpr std::int64_t fillInOverlap = 2;
/// Days beyond these come from no calendar that a person kept.
constexpr qz::YYYYMMDD earliestDay(1, 1, 1);

/// What the content of a stored checkpoint holds, beside its two columns.
struct CheckpointContent {
  std::int32_t created;
  std::int32_t lastCompleted;
  std::int32_t lastMissed;
  std::int32_t lastSkipped;
  std::int64_t current;
  std::int64_t best;
};
static_assert(sizeof(CheckpointContent) == 32 && std::endian::native == std::endian::little);

std::optional<HistoryCheckpoint> historyCheckpoint(const std::optional<Checkpoint>& stored) {
  CheckpointContent content{};
  if (!stored || stored->content.size() != sizeof content) return std::nullopt;
  std::memcpy(&content, stored->content.data(), sizeof content);
  return HistoryCheckpoint{.fingerprint = std::bit_cast<std::uint64_t>(stored->fingerprint),
                           .created = content.created,
                           .closedThrough = stored->closedThrough,
                           .lastCompleted = content.lastCompleted,
                           .lastMissed = content.lastMissed,
                           .lastSkipped = content.lastSkipped,
                           .streak = {.current = content.current, .best = content.best}};
}

/// An unknown stored type says nothing about a day, like an undo.
TaskLogEntryType entryTypeOf(std::int16_t stored) {
  return fromRawValue<TaskLogEntryType>(stored).value_or(TaskLogEntryType::unknown);
}

LoggedEntry loggedEntry(const LogRow& row) {
  const auto periodType = fromRawValue<TaskFrequencyPeriodType>(row.entryPeriodType);
  return LoggedEntry{.order = rawValue(row.objectID),
                     .progress = row.progress,
                     .progressTotal = row.progressTotal,
                     .entryDate = row.entryDate,
                     .periodFrom = periodType ? row.entryPeriodFrom : 0,
                     .periodTo = periodType ? row.entryPeriodTo : 0,
                     .entryType = entryTypeOf(row.entryType),
                     .periodType = periodType.value_or(TaskFrequencyPeriodType{})};
}

std::vector<LoggedEntry> readEntries(StoreContext& context, const TaskEntity& task, std::int32_t from,
                                     std::int32_t to) {
  std::vector<LoggedEntry> entries;
  context.readLog(task.objectID, from, to, [&](const LogRow& row) { entries.push_back(loggedEntry(row)); });
  return entries;
}

/// The day that an attribute keeps, if the calendar has it: a row may say anything.
std::optional<qz::YYYYMMDD> existingDay(std::int32_t stored) {
  const auto day = dayFromStored(stored);
  return day && day->exists() && *day >= earliestDay ? day : std::nullopt;
}

/// The day of the earliest entry that says the task was being kept, up to `today`.
std::optional<std::int32_t> firstKeptDay(StoreContext& context, const TaskEntity& task, std::int32_t today) {
  const auto earliest = context.earliestEntryDay(task.objectID);
  if (!earliest || *earliest > today) return std::nullopt;
  std::optional<std::int32_t> first;
  const auto look = [&](const LogRow& row) {
    if (!first && marksHistory(entryTypeOf(row.entryType)) && existingDay(row.entryDate)) first = row.entryDate;
  };
  // Nearly always the first day decides; only where somebody took it back is the rest of the log looked through.
  context.readLog(task.objectID, *earliest, *earliest, look);
  if (!first) context.readLog(task.objectID, *earliest, today, look);
  return first;
}

bool wasRecordedInTime(const TaskLogEntryEntity& entry, const TaskCalendar& calendar, qz::Moment now) {
  if (!entry.createdTimestamp || *entry.createdTimestamp > now || !entry.createdTimeZone) return false;
  const auto zone = qz::TimeZone::fromIdentifier(*entry.createdTimeZone);
  if (!zone) return false;
  const qz::YYYYMMDD dayThere(calendar.startOfDay, *entry.createdTimestamp, *zone);
  return dayThere.intValue() >= entry.entryDate;
}

std::vector<LogKey> futureEntries(StoreContext& context, const TaskEntity& task, const TaskCalendar& calendar,
                                  std::int32_t today, qz::Moment now) {
  std::vector<LogKey> keys;
  if (const auto newest = context.newestTransactionMoment(); newest && *newest > now) return keys;
  context.readLogEntries(task.objectID, today + 1, StoreContext::lastDay, [&](const TaskLogEntryEntity& entry) {
    if (!wasRecordedInTime(entry, calendar, now)) keys.push_back(entry.key());
  });
  return keys;
}

/// The day the task was made on, by the clock of the zone it was made in: elsewhere the same moment can be the day
/// before, which was no day of its history.
qz::YYYYMMDD creationDay(const TaskEntity& task, const TaskCalendar& calendar, qz::YYYYMMDD today) {
  if (!task.created) return today;
  const auto zone = task.createdTimeZone ? qz::TimeZone::fromIdentifier(*task.createdTimeZone) : std::nullopt;
  const qz::YYYYMMDD day(calendar.startOfDay, *task.created, zone.value_or(calendar.timeZone));
  return std::clamp(day, std::min(earliestDay, today), today);
}

HistoryScope scopeOf(StoreContext& context, const TaskEntity& task, const TaskCalendar& calendar, qz::YYYYMMDD today) {
  HistoryScope scope;
  scope.today = today;
  scope.created = creationDay(task, calendar, today);
  if (const auto first = firstKeptDay(context, task, storedDay(today)))
    scope.created = std::min(scope.created, existingDay(*first).value_or(scope.created));
  scope.fillFrom = scope.created;
  if (task.lastProcessedDate) {
    const qz::YYYYMMDD processed = std::min(calendar.day(*task.lastProcessedDate), today);
    scope.fillFrom = std::max(scope.created, processed.add(-fillInOverlap));
  }
  scope.checkpointDay = today.add(-checkpointDistance);
  return scope;
}

/// A day that the zone left out altogether (Apia had no 30 December 2011) held no moment to do anything in: it is a
/// skip.
bool wasLeftOut(qz::YYYYMMDD day, const TaskCalendar& calendar) { return calendar.day(calendar.beginning(day)) != day; }

/// Turns the misses that the walk would fill in for days the zone left out into skips, by walking again with these.
template <typename Walk>
HistoryResult walkWithoutLeftOutDays(const Walk& walk, std::vector<LoggedEntry> entries, const TaskCalendar& calendar) {
  HistoryResult result = walk(entries);
  std::vector<FillIn> skips;
  for (const FillIn& fillIn : result.fillIns) {
    if (fillIn.period.periodType == TaskFrequencyPeriodType::day && wasLeftOut(fillIn.period.startDate, calendar))
      skips.push_back({fillIn.period, TaskLogEntryType::skippedAutomaticallyFull});
  }
  if (skips.empty()) return result;

  const auto byDay = [](const auto& a, const auto& b) { return a.entryDate < b.entryDate; };
  for (const FillIn& skip : skips) {
    const std::int32_t day = storedDay(skip.period.startDate);
    entries.push_back({.order = std::numeric_limits<std::int64_t>::max(),
                       .entryDate = day,
                       .periodFrom = day,
                       .periodTo = day,
                       .entryType = skip.entryType,
                       .periodType = skip.period.periodType});
  }
  std::stable_sort(entries.begin(), entries.end(), byDay);
  result = walk(entries);
  result.fillIns.insert(result.fillIns.end(), skips.begin(), skips.end());
  std::stable_sort(result.fillIns.begin(), result.fillIns.end(),
                   [](const FillIn& a, const FillIn& b) { return a.period.startDate < b.period.startDate; });
  return result;
}

void walkHistory(StoreContext& context, const TaskEntity& task, TaskAssessment& assessment) {
  const HistoryScope scope = scopeOf(context, task, assessment.calendar, assessment.today);
  const HistoryWalk walk(*assessment.rules, scope);
  const std::int32_t today = storedDay(scope.today);

  const auto checkpoint = historyCheckpoint(context.checkpoint(task.objectID));
  if (checkpoint && walk.canResume(*checkpoint)) {
    assessment.history =
        walkWithoutLeftOutDays([&](std::span<const LoggedEntry> entries) { return walk.resume(*checkpoint, entries); },
                               readEntries(context, task, checkpoint->closedThrough + 1, today), assessment.calendar);
    const auto closedThrough = dayFromStored(checkpoint->closedThrough);
    assessment.checkpointIsStale = closedThrough && closedThrough->distance(*scope.checkpointDay) > checkpointPatience;
  } else {
    assessment.history =
        walkWithoutLeftOutDays([&](std::span<const LoggedEntry> entries) { return walk.walk(entries); },
                               readEntries(context, task, StoreContext::firstDay, today), assessment.calendar);
    assessment.checkpointIsStale = scope.created.distance(*scope.checkpointDay) > checkpointPatience;
  }
}

}  // namespace

TaskAssessment assess(StoreContext& context, const TaskEntity& task, const TaskCalendars& calendars, qz::Moment now) {
  TaskAssessment assessment{.calendar = calendars.of(task)};
  assessment.today = assessment.calendar.day(now);
  assessment.futureEntries = futureEntries(context, task, assessment.calendar, storedDay(assessment.today), now);
  assessment.rules = rulesOf(task);
  if (assessment.rules && !HistoryWalk::supports(assessment.rules->frequency)) assessment.rules = std::nullopt;
  if (assessment.rules) walkHistory(context, task, assessment);
  return assessment;
}

Checkpoint storedCheckpoint(const HistoryCheckpoint& checkpoint) {
  const CheckpointContent content{.created = checkpoint.created,
                                  .lastCompleted = checkpoint.lastCompleted,
                                  .lastMissed = checkpoint.lastMissed,
                                  .lastSkipped = checkpoint.lastSkipped,
                                  .current = checkpoint.streak.current,
                                  .best = checkpoint.streak.best};
  Checkpoint stored{.closedThrough = checkpoint.closedThrough,
                    .fingerprint = std::bit_cast<std::int64_t>(checkpoint.fingerprint)};
  stored.content.resize(sizeof content);
  std::memcpy(stored.content.data(), &content, sizeof content);
  return stored;
}

}  // namespace habitra
