#include <HabitraCore/FollowingEntries.h>
#include <HabitraCore/RawValue.h>
#include <HabitraCore/TaskLogEntryChoice.h>
#include <HabitraModel/Mapping/PeriodMapping.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Tasks/Recording/FilledInEntries.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace habitra {
namespace {

/// As many days are looked through first for the next completion.
constexpr std::int64_t nearDays = 90;

}  // namespace

std::optional<DatedPeriod> countedPeriod(const TaskLogEntryEntity& row, const std::optional<TaskRules>& rules) {
  const auto day = existingDayFromStored(row.entryDate);
  if (!day) return std::nullopt;
  if (const auto own = periodOf(row, rules ? rules->firstDayOfWeek : qz::DayOfWeek(qz::DayOfWeek::sunday)))
    return DatedPeriod(*day, *own);
  if (!rules) return std::nullopt;
  return rules->frequency.period(*day, rules->firstDayOfWeek, rules->referenceDate);
}

bool isFilledIn(const TaskLogEntryEntity& row) {
  const auto type = fromRawValue<TaskLogEntryType>(row.entryType);
  return type && followsFromEarlierDays(*type);
}

FilledInEntries::FilledInEntries(StoreContext& context, const TaskEntity& task, std::optional<TaskRules> rules)
    : context_(context), task_(task.objectID), rules_(std::move(rules)) {}

std::vector<TaskLogEntryEntity> FilledInEntries::refutedBy(const TaskLogEntryEntity& row) const {
  std::vector<TaskLogEntryEntity> refuted;
  const auto type = fromRawValue<TaskLogEntryType>(row.entryType);
  // Whatever decides something takes the place of a miss that was filled in.
  if (!type || isFilledIn(row) || !supersedes(*type, TaskLogEntryType::missedAutomaticallyFull)) return refuted;
  const auto counted = countedPeriod(row, rules_);
  if (!counted || counted->period.finishDate > latestKeptDay) return refuted;
  const TaskFrequencyPeriod& period = counted->period;
  for (TaskLogEntryEntity& other :
       context_.fetchLogEntries(task_, storedDay(period.startDate), storedDay(period.finishDate))) {
    const auto own = isFilledIn(other) ? countedPeriod(other, rules_) : std::nullopt;
    if (own && own->period.startDate == period.startDate && own->period.finishDate == period.finishDate)
      refuted.push_back(std::move(other));
  }
  appendFollowing(counted->date, std::nullopt, refuted);
  return refuted;
}

std::vector<TaskLogEntryEntity> FilledInEntries::refutedAfter(const std::set<qz::YYYYMMDD>& days) const {
  std::vector<TaskLogEntryEntity> refuted;
  for (auto day = days.begin(); day != days.end() && *day <= latestKeptDay; ++day) {
    // What follows from a day after the next one of them follows from that one, too.
    const auto next = std::next(day);
    appendFollowing(*day, next != days.end() ? std::optional(*next) : std::nullopt, refuted);
  }
  return refuted;
}

std::vector<TaskLogEntryEntity> FilledInEntries::refutedByEarlierBeginning(qz::YYYYMMDD beginning) const {
  std::vector<TaskLogEntryEntity> refuted;
  if (!rules_ || !(rules_->frequency.isCountedDays() || rules_->frequency.isAggregate())) return refuted;
  const TaskFrequencyPeriodType type = rules_->frequency.isCountedDays()
                                           ? rules_->frequency.periodTypeForCompletionCountCalculation()
                                           : rules_->frequency.measurementDuration();
  const qz::YYYYMMDD last = lastDate(type, beginning, rules_->firstDayOfWeek, rules_->referenceDate);
  if (last <= latestKeptDay) (void)appendBetween(storedDay(beginning), storedDay(last), false, refuted);
  return refuted;
}

void FilledInEntries::appendFollowing(qz::YYYYMMDD day, std::optional<qz::YYYYMMDD> end,
                                      std::vector<TaskLogEntryEntity>& refuted) const {
  const auto following = rules_ ? followingDays(*rules_, day) : std::nullopt;
  if (!following) return;
  const std::int32_t first = storedDay(following->first);
  std::int32_t last = following->last ? storedDay(following->last) : StoreContext::lastDay;
  if (end) last = std::min(last, storedDay(*end));
  // The next completion is mostly near; only where it is not the rest of the log is read.
  const std::int32_t near = std::min(last, storedDay(following->first.add(nearDays)));
  const bool isOver = appendBetween(first, near, following->endAtCompletion, refuted);
  if (!isOver && near < last) (void)appendBetween(near + 1, last, following->endAtCompletion, refuted);
}

bool FilledInEntries::appendBetween(std::int32_t from, std::int32_t to, bool endAtCompletion,
                                    std::vector<TaskLogEntryEntity>& refuted) const {
  const auto entries = context_.fetchLogEntries(task_, from, to);
  const auto end = std::ranges::find_if(entries, [&](const TaskLogEntryEntity& entry) {
    const auto type = fromRawValue<TaskLogEntryType>(entry.entryType);
    return endAtCompletion && type && isCompletedFull(*type);
  });
  for (const TaskLogEntryEntity& entry : entries) {
    if (end != entries.end() && entry.entryDate >= end->entryDate) break;
    if (isFilledIn(entry)) refuted.push_back(entry);
  }
  return end != entries.end();
}

}  // namespace habitra
