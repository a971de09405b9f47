#include <HabitraCore/FollowingEntries.h>
#include <HabitraCore/RawValue.h>
#include <HabitraCore/TaskLogEntryChoice.h>
#include <HabitraModel/Mapping/LogEntryMapping.h>
#include <HabitraModel/Mapping/PeriodMapping.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Tasks/Recording/FilledInEntries.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace habitra {
namespace {

/// As many days are looked through first for the next completion.
constexpr std::int64_t nearDays = 15;

qz::DayOfWeek firstDayOfWeek(const std::optional<TaskRules>& rules) {
  return rules ? rules->firstDayOfWeek : qz::DayOfWeek(qz::DayOfWeek::sunday);
}

std::optional<DatedPeriod> counted(std::int32_t entryDate, const std::optional<TaskFrequencyPeriod>& own,
                                   const std::optional<TaskRules>& rules) {
  const auto day = existingDayFromStored(entryDate);
  if (!day) return std::nullopt;
  if (own) return DatedPeriod(*day, *own);
  if (!rules) return std::nullopt;
  return rules->frequency.period(*day, rules->firstDayOfWeek, rules->referenceDate);
}

bool isMeasured(TaskLogEntryType type, double share) {
  using Type = TaskLogEntryType;
  return share > 0 && (type == Type::completedAutomaticallyFull || type == Type::missedAutomaticallyFull ||
                       type == Type::allowableMissAutomaticallyFull);
}

bool isFilledIn(TaskLogEntryType type, double share) {
  return followsFromEarlierDays(type) && !isMeasured(type, share);
}

}  // namespace

std::optional<DatedPeriod> countedPeriod(const TaskLogEntryEntity& row, const std::optional<TaskRules>& rules) {
  return counted(row.entryDate, periodOf(row, firstDayOfWeek(rules)), rules);
}
std::optional<DatedPeriod> countedPeriod(const LogRow& row, const std::optional<TaskRules>& rules) {
  return counted(row.entryDate, periodOf(row, firstDayOfWeek(rules)), rules);
}

bool countsFor(const LogRow& row, const TaskFrequencyPeriod& period, const std::optional<TaskRules>& rules) {
  const auto counted = countedPeriod(row, rules);
  return counted && counted->period.startDate == period.startDate && counted->period.finishDate == period.finishDate;
}

bool isFilledIn(const TaskLogEntryEntity& row) { return isFilledIn(entryTypeFromStored(row.entryType), row.progress); }
bool isFilledIn(const LogRow& row) { return isFilledIn(entryTypeFromStored(row.entryType), row.progress); }
bool isFilledIn(const LoggedEntry& entry) { return isFilledIn(entry.entryType, entry.progress); }

bool isMeasured(const LoggedEntry& entry) { return isMeasured(entry.entryType, entry.progress); }

FilledInEntries::FilledInEntries(StoreContext& context, const TaskEntity& task, std::optional<TaskRules> rules)
    : context_(context), task_(task.objectID), rules_(std::move(rules)) {}

std::vector<LogKey> FilledInEntries::refutedBy(const TaskLogEntryEntity& row) const {
  std::vector<LogKey> refuted;
  const auto counted = refutedPeriod(row);
  if (!counted) return refuted;
  appendOfPeriod(counted->period, refuted);
  static_cast<void>(appendFollowing(counted->date, std::nullopt, refuted));
  // A longer period reaches into the days that follow.
  std::ranges::sort(refuted);
  const auto repeated = std::ranges::unique(refuted);
  refuted.erase(repeated.begin(), repeated.end());
  return refuted;
}

std::vector<LogKey> FilledInEntries::refutedAfter(const std::set<qz::YYYYMMDD>& days) const {
  std::vector<LogKey> refuted;
  std::optional<ClearedDays> seen;
  for (const qz::YYYYMMDD day : days) {
    if (day > latestKeptDay) break;
    seen = appendFollowing(day, seen, refuted);
  }
  std::ranges::sort(refuted);
  const auto repeated = std::ranges::unique(refuted);
  refuted.erase(repeated.begin(), repeated.end());
  return refuted;
}

std::vector<LogKey> FilledInEntries::refutedByEarlierBeginning(qz::YYYYMMDD beginning) const {
  std::vector<LogKey> refuted;
  if (!rules_ || !(rules_->frequency.isCountedDays() || rules_->frequency.isAggregate())) return refuted;
  const TaskFrequencyPeriodType type = rules_->frequency.isCountedDays()
                                           ? rules_->frequency.periodTypeForCompletionCountCalculation()
                                           : rules_->frequency.measurementDuration();
  const qz::YYYYMMDD last = lastDate(type, beginning, rules_->firstDayOfWeek, rules_->referenceDate);
  if (last <= latestKeptDay) (void)appendBetween(storedDay(beginning), storedDay(last), false, refuted);
  return refuted;
}

void FilledInEntries::removeRefutedBy(const TaskLogEntryEntity& row) {
  const auto counted = refutedPeriod(row);
  if (!counted) return;
  const auto removeAll = [this](const std::vector<LogKey>& refuted) {
    for (const LogKey& key : refuted) context_.removeLogEntry(key);
  };
  std::vector<LogKey> refuted;
  appendOfPeriod(counted->period, refuted);
  removeAll(refuted);
  refuted.clear();
  cleared_ = appendFollowing(counted->date, cleared_, refuted);
  removeAll(refuted);
}

void FilledInEntries::wroteUpTo(qz::YYYYMMDD day) {
  if (cleared_) cleared_->first = std::max(cleared_->first, storedDay(day.nextDay()));
}

std::optional<DatedPeriod> FilledInEntries::refutedPeriod(const TaskLogEntryEntity& row) const {
  const auto type = fromRawValue<TaskLogEntryType>(row.entryType);
  // Whatever decides something takes the place of a miss that was filled in.
  if (!type || isFilledIn(row) || !supersedes(*type, TaskLogEntryType::missedAutomaticallyFull)) return std::nullopt;
  auto counted = countedPeriod(row, rules_);
  if (!counted || std::max(counted->date, counted->period.finishDate) > latestKeptDay) return std::nullopt;
  return counted;
}

void FilledInEntries::appendOfPeriod(const TaskFrequencyPeriod& period, std::vector<LogKey>& refuted) const {
  context_.readLog(task_, storedDay(period.startDate), storedDay(period.finishDate), [&](const LogRow& row) {
    if (isFilledIn(row) && countsFor(row, period, rules_)) refuted.push_back({task_, row.entryDate, row.objectID});
  });
}

auto FilledInEntries::appendFollowing(qz::YYYYMMDD day, const std::optional<ClearedDays>& cleared,
                                      std::vector<LogKey>& refuted) const -> std::optional<ClearedDays> {
  const auto following = rules_ ? followingDays(*rules_, day) : std::nullopt;
  if (!following) return std::nullopt;
  const std::int32_t first = storedDay(following->first);
  const std::int32_t last = following->last ? storedDay(*following->last) : StoreContext::lastDay;
  qz::YYYYMMDD from = following->first;
  std::int64_t daysAhead = nearDays;
  if (cleared && cleared->first <= first && first <= cleared->last) {
    if (!cleared->completion) return cleared;
    // It may have gone since.
    from = *cleared->completion;
    daysAhead = 0;
  }
  // The next completion is mostly near; the longer there is none, the more is read at once.
  const std::int32_t newest = context_.newestEntryDay(task_).value_or(first);
  for (;; daysAhead = 2 * daysAhead + 1) {
    const qz::YYYYMMDD ahead = from.add(daysAhead);
    const bool isRest = ahead > latestKeptDay || storedDay(ahead) >= std::min(newest, last);
    const std::int32_t to = isRest ? last : storedDay(ahead);
    if (const auto completion = appendBetween(storedDay(from), to, following->endAtCompletion, refuted)) {
      const auto completedDay = existingDayFromStored(*completion);
      if (!completedDay) return std::nullopt;
      return ClearedDays{.first = first, .last = *completion - 1, .completion = completedDay};
    }
    if (isRest) return ClearedDays{.first = first, .last = last};
    from = ahead.nextDay();
  }
}

std::optional<std::int32_t> FilledInEntries::appendBetween(std::int32_t from, std::int32_t to, bool endAtCompletion,
                                                           std::vector<LogKey>& refuted) const {
  std::vector<LogKey> found;
  std::optional<std::int32_t> completion;
  context_.readLog(task_, from, to, [&](const LogRow& row) {
    if (completion) return;
    if (endAtCompletion && isCompletedFull(entryTypeFromStored(row.entryType))) completion = row.entryDate;
    if (isFilledIn(row)) found.push_back({task_, row.entryDate, row.objectID});
  });
  // What stands on its day beside it stays.
  if (completion) std::erase_if(found, [&](const LogKey& key) { return key.entryDate == *completion; });
  refuted.insert(refuted.end(), found.begin(), found.end());
  return completion;
}

}  // namespace habitra
