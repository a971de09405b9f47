#include <HabitraCore/FutureEntries.h>
#include <HabitraModel/Mapping/LogEntryMapping.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Tasks/LogBeginning.h>
#include <HabitraModel/Tasks/Processing/LogWalk.h>
#include <HabitraModel/Tasks/Processing/TaskAssessment.h>
#include <HabitraModel/Tasks/Recording/FilledInEntries.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <limits>
#include <span>
#include <string_view>
#include <utility>

namespace habitra {
namespace {

/// Checkpoints are taken this many days before the days that the shares of success look at, from where a walk must
/// begin; so that most corrections of the last weeks leave them valid.
constexpr std::int64_t checkpointDistance = 11;
/// A walk of this many days more than it needs is still quick; after that a newer checkpoint pays.
constexpr std::int64_t checkpointPatience = 62;

/// What the content of a stored checkpoint holds, beside its two columns.
struct CheckpointContent {
  std::int32_t created;
  std::int32_t lastCompleted;
  std::int32_t lastMissed;
  std::int32_t lastSkipped;
  std::int32_t completedDays;
  std::int32_t unavailableDays;
  std::int32_t failedDays;
  std::int32_t lastCompletedDay;
  std::int32_t lastFailedDay;
  std::int32_t unused;  ///< 0
  std::int64_t current;
  std::int64_t best;
  std::int64_t numJudged;
  std::int64_t numSucceeded;
};
static_assert(sizeof(CheckpointContent) == 72 && std::endian::native == std::endian::little);

/// Of the calendar that a walk was made under: when the days begin elsewhere, or at another time, a checkpoint says
/// nothing any more. FNV-1a, the same on every machine.
std::uint64_t fingerprint(const TaskCalendar& calendar) {
  std::uint64_t hash = 0xcbf29ce484222325u;
  for (const char c : calendar.startOfDay.debugDescription() + calendar.timeZone.identifier())
    hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3u;
  return hash;
}

std::optional<HistoryCheckpoint> historyCheckpoint(const std::optional<Checkpoint>& stored,
                                                   const TaskCalendar& calendar) {
  CheckpointContent content{};
  if (!stored || stored->content.size() != sizeof content) return std::nullopt;
  std::memcpy(&content, stored->content.data(), sizeof content);
  return HistoryCheckpoint{.fingerprint = std::bit_cast<std::uint64_t>(stored->fingerprint) ^ fingerprint(calendar),
                           .created = content.created,
                           .closedThrough = stored->closedThrough,
                           .lastCompleted = content.lastCompleted,
                           .lastMissed = content.lastMissed,
                           .lastSkipped = content.lastSkipped,
                           .counts = {.completedDays = content.completedDays,
                                      .unavailableDays = content.unavailableDays,
                                      .failedDays = content.failedDays,
                                      .lastCompletedDay = content.lastCompletedDay,
                                      .lastFailedDay = content.lastFailedDay},
                           .streak = {.current = content.current, .best = content.best},
                           .numJudged = content.numJudged,
                           .numSucceeded = content.numSucceeded};
}

/// The newest day as of which a walk can be resumed, less a margin.
qz::YYYYMMDD checkpointDay(const TaskFrequency& frequency, qz::YYYYMMDD today) {
  return firstSampledDay(frequency, today).value_or(today).add(-checkpointDistance);
}

/// What the log holds beyond today.
struct LaterEntries {
  std::vector<LogKey> future;      ///< to delete
  std::vector<LogKey> premature;   ///< of these, the ones that were filled in for today
  std::vector<LoggedEntry> ahead;  ///< recorded in time by somebody who since flew west
};

LaterEntries laterEntries(StoreContext& context, const TaskEntity& task, const TaskAssessment& assessment,
                          qz::Moment now) {
  LaterEntries later;
  // A clock that is behind what the store has seen says nothing about what has not come: such entries count for
  // nothing, but may be right when it has caught up.
  const auto newest = context.newestTransactionMoment();
  const bool isClockBehind = newest && *newest > now;
  const std::int32_t today = storedDay(assessment.today);
  const auto look = [&](const TaskLogEntryEntity& entry) {
    // What was filled in, which no data asked for, is found anew when its day is over: it need not be spared for a
    // clock that may be wrong, nor for somebody who since flew west.
    const bool isDerived = isFilledIn(entry);
    if (entry.entryDate == today) {
      if (!isDerived) return;
      later.premature.push_back(entry.key());
      later.future.push_back(entry.key());
      return;
    }
    const EntryRecording recording{.entryDate = entry.entryDate,
                                   .createdTimestamp = entry.createdTimestamp,
                                   .createdTimeZone = entry.createdTimeZone
                                                          ? std::optional<std::string_view>(*entry.createdTimeZone)
                                                          : std::nullopt};
    if (!isDerived && !liesInFuture(recording, assessment.today, assessment.calendar.startOfDay, now)) {
      later.ahead.push_back(loggedEntry(entry));
    } else if (isDerived || !isClockBehind) {
      later.future.push_back(entry.key());
    }
  };
  context.readLogEntries(task.objectID, today, StoreContext::lastDay, look);
  return later;
}

/// What does not say when it was made began today.
qz::YYYYMMDD creationDay(const TaskEntity& task, const TaskCalendar& calendar, qz::YYYYMMDD today) {
  return std::min(calendar.creationDay(task).value_or(today), today);
}

/// The day of the last pass over a task.
std::optional<qz::YYYYMMDD> processedThrough(const TaskEntity& task, const TaskAssessment& assessment,
                                             std::optional<qz::Moment> lastProcessedHere) {
  std::optional<qz::Moment> last = task.lastProcessedDate;
  if (last && lastProcessedHere) last = std::min(*last, *lastProcessedHere);
  return last ? std::optional(std::min(assessment.calendar.day(*last), assessment.today)) : std::nullopt;
}

HistoryScope scopeOf(StoreContext& context, const TaskEntity& task, const TaskAssessment& assessment,
                     std::optional<qz::YYYYMMDD> processed) {
  const TaskCalendar& calendar = assessment.calendar;
  const qz::YYYYMMDD today = assessment.today;
  if (processed) processed = processed->add(-passOverlap);
  HistoryScope scope = HistoryScope::of(creationDay(task, calendar, today),
                                        beginningOfLog(context, task.objectID, storedDay(today)), processed, today);
  scope.checkpointDay = checkpointDay(assessment.rules->frequency, today);
  return scope;
}

/// The kept checkpoint, where a walk over these days of the log as `revision` leaves it can go on from it.
std::optional<HistoryCheckpoint> beginningOfWalk(StoreContext& context, const TaskEntity& task,
                                                 const HistoryScope& scope, const LogRevision& revision,
                                                 const TaskAssessment& assessment) {
  auto begin = historyCheckpoint(context.checkpoint(task.objectID), assessment.calendar);
  if (!begin || !HistoryWalk(*assessment.rules, scope).canResume(*begin)) return std::nullopt;
  if (revision.from && storedDay(*revision.from) <= begin->closedThrough) return std::nullopt;
  return begin;
}

/// Whether the checkpoint of a walk is worth keeping, when the walk was begun after `begun`.
bool isWorthKeeping(const HistoryResult& history, std::optional<qz::YYYYMMDD> begun) {
  const auto closedThrough = history.checkpoint ? dayFromStored(history.checkpoint->closedThrough) : std::nullopt;
  return begun && closedThrough && begun->distance(*closedThrough) > checkpointPatience;
}

/// The same without what was filled in too early.
LogRevision withoutPremature(LogRevision revision, const TaskAssessment& assessment) {
  revision.removed.insert(assessment.premature.begin(), assessment.premature.end());
  return revision;
}

/// REQUIRES: rules, and a scope that ends today.
LogWalk walkOf(StoreContext& context, const TaskEntity& task, const HistoryScope& scope, const LogRevision& revision,
               const TaskAssessment& assessment) {
  return {context,
          task.objectID,
          *assessment.rules,
          assessment.calendar,
          storedDay(scope.today),
          assessment.ahead,
          LogWalk::usualPart,
          withoutPremature(revision, assessment)};
}

/// REQUIRES: rules, and a scope that ends today.
void walkHistory(StoreContext& context, const TaskEntity& task, const HistoryScope& scope, const LogRevision& revision,
                 TaskAssessment& assessment) {
  const auto begin = beginningOfWalk(context, task, scope, revision, assessment);
  assessment.history = walkOf(context, task, scope, revision, assessment).run(scope, begin);
  assessment.checkpointIsStale =
      isWorthKeeping(*assessment.history, begin ? dayFromStored(begin->closedThrough) : scope.created);
}

}  // namespace

bool canBeJudged(const TaskEntity& task) {
  const auto rules = rulesWithoutPauses(task);
  return rules && HistoryWalk::supports(rules->frequency);
}

TaskAssessment assess(StoreContext& context, const TaskEntity& task, const TaskCalendars& calendars, qz::Moment now,
                      std::optional<qz::Moment> lastProcessedHere) {
  TaskAssessment assessment{.calendar = calendars.of(task)};
  assessment.today = assessment.calendar.day(now);
  LaterEntries later = laterEntries(context, task, assessment, now);
  for (LoggedEntry& entry : later.ahead) entry.isAhead = true;
  assessment.futureEntries = std::move(later.future);
  assessment.premature = std::move(later.premature);
  assessment.ahead = std::move(later.ahead);
  assessment.rules = rulesOf(context, task);
  if (assessment.today < earliestKeptDay) assessment.rules.reset();  // no calendar that a person keeps
  if (assessment.rules && !HistoryWalk::supports(assessment.rules->frequency)) assessment.rules = std::nullopt;
  if (!assessment.rules) return assessment;
  assessment.processedThrough = processedThrough(task, assessment, lastProcessedHere);
  const HistoryScope scope = scopeOf(context, task, assessment, assessment.processedThrough);
  assessment.created = scope.created;
  walkHistory(context, task, scope, {}, assessment);
  return assessment;
}

void revise(StoreContext& context, const TaskEntity& task, const LogRevision& revision, TaskAssessment& assessment) {
  HistoryScope scope = scopeOf(context, task, assessment, assessment.processedThrough);
  if (revision.from) scope.fillFrom = std::min(scope.fillFrom, std::max(scope.created, *revision.from));
  walkHistory(context, task, scope, revision, assessment);
}

void visitPeriods(StoreContext& context, const TaskEntity& task, const TaskAssessment& assessment, qz::YYYYMMDD from,
                  const LogRevision& revision, const std::function<void(const PeriodOfLog&)>& visit) {
  HistoryScope scope = scopeOf(context, task, assessment, assessment.processedThrough);
  scope.fillFrom = std::min(std::max(scope.created, from), scope.today);
  const std::int32_t first = storedDay(scope.fillFrom);
  const auto begin = beginningOfWalk(context, task, scope, revision, assessment);
  walkOf(context, task, scope, revision, assessment).visit(scope, begin, [&](const WalkedPeriod& walked) {
    if (walked.to < first) return;
    visit({.period = walked.period(),
           .isOpen = walked.isOpen,
           .isPaused = walked.isPaused,
           .missIsAllowed = walked.missIsAllowed,
           .expectedUnits = walked.expectedUnits,
           .entries = walked.entries});
  });
}

std::vector<FillIn> fillInsBefore(StoreContext& context, const TaskEntity& task, const TaskCalendars& calendars,
                                  qz::YYYYMMDD from, qz::YYYYMMDD day) {
  const TaskCalendar calendar = calendars.of(task);
  const auto rules = rulesOf(context, task);
  if (!rules || day < earliestKeptDay || !HistoryWalk::supports(rules->frequency)) return {};
  const std::int32_t lastDay = storedDay(day.previousDay());
  HistoryScope scope = HistoryScope::of(creationDay(task, calendar, day),
                                        beginningOfLog(context, task.objectID, lastDay), std::nullopt, day);
  scope.fillFrom = from;
  return LogWalk(context, task.objectID, *rules, calendar, lastDay).run(scope, std::nullopt).fillIns;
}

Checkpoint storedCheckpoint(const HistoryCheckpoint& checkpoint, const TaskCalendar& calendar) {
  const CheckpointContent content{.created = checkpoint.created,
                                  .lastCompleted = checkpoint.lastCompleted,
                                  .lastMissed = checkpoint.lastMissed,
                                  .lastSkipped = checkpoint.lastSkipped,
                                  .completedDays = checkpoint.counts.completedDays,
                                  .unavailableDays = checkpoint.counts.unavailableDays,
                                  .failedDays = checkpoint.counts.failedDays,
                                  .lastCompletedDay = checkpoint.counts.lastCompletedDay,
                                  .lastFailedDay = checkpoint.counts.lastFailedDay,
                                  .unused = 0,
                                  .current = checkpoint.streak.current,
                                  .best = checkpoint.streak.best,
                                  .numJudged = checkpoint.numJudged,
                                  .numSucceeded = checkpoint.numSucceeded};
  Checkpoint stored{.closedThrough = checkpoint.closedThrough,
                    .fingerprint = std::bit_cast<std::int64_t>(checkpoint.fingerprint ^ fingerprint(calendar))};
  stored.content.resize(sizeof content);
  std::memcpy(stored.content.data(), &content, sizeof content);
  return stored;
}

}  // namespace habitra
