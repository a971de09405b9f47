#include <HabitraCore/HistoryWalk.h>
#include <HabitraCore/TaskLogEntryChoice.h>
#include <HabitraModel/Mapping/LogEntryMapping.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Tasks/Recording/FailureRetyping.h>
#include <HabitraModel/Tasks/Recording/FilledInEntries.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace habitra {
namespace {

/// The days within which one failure decides what another is; the period of a day where none does.
struct Span {
  qz::YYYYMMDD from;
  qz::YYYYMMDD to;
};

Span daysAround(qz::YYYYMMDD day, const TaskRules& rules) {
  const TaskFrequency& frequency = rules.frequency;
  if (frequency.dayMode == TaskFrequency::DayMode::dayInterval)
    return Span{std::max(day.add(-frequency.dayInterval), earliestKeptDay), day.add(frequency.dayInterval)};
  if (!frequency.isCountedDays()) {
    const DatedPeriod dated = frequency.period(day, rules.firstDayOfWeek, rules.referenceDate);
    return Span{std::max(dated.period.startDate, earliestKeptDay), dated.period.finishDate};
  }
  const TaskFrequencyPeriodType type = frequency.periodTypeForCompletionCountCalculation();
  return Span{std::max(firstDate(type, day, rules.firstDayOfWeek, rules.referenceDate), earliestKeptDay),
              lastDate(type, day, rules.firstDayOfWeek, rules.referenceDate)};
}

void retype(StoreContext& context, ObjectID task, const TaskRules& rules, const Span& span, qz::YYYYMMDD day) {
  std::vector<LoggedEntry> entries;
  context.readLog(task, storedDay(span.from), storedDay(span.to),
                  [&](const LogRow& row) { entries.push_back(loggedEntry(row)); });
  HistoryScope scope{.created = span.from, .today = span.to, .fillFrom = span.from};
  // A longer stored period counts whole, though it began before.
  for (const LoggedEntry& entry : entries)
    if (const auto from = existingDayFromStored(entry.periodFrom); from && *from >= earliestKeptDay)
      scope.created = std::min(scope.created, *from);
  for (const Retyping& retyping : HistoryWalk(rules, scope).retypings(entries, day)) {
    const LogKey key{task, retyping.entryDate, ObjectID{retyping.order}};
    auto row = context.findLogEntry(key);
    if (!row) continue;
    row->entryType = rawValue(retyping.entryType);
    context.updateLogEntry(key, *row);
  }
}

}  // namespace

void retypeFailures(StoreContext& context, const TaskEntity& task, const TaskRules& rules,
                    const std::set<qz::YYYYMMDD>& days) {
  if (!rules.isNegative || !HistoryWalk::supports(rules.frequency)) return;
  std::optional<qz::YYYYMMDD> retypedThrough;
  for (const qz::YYYYMMDD day : days) {
    if (day < earliestKeptDay || day > latestKeptDay || (retypedThrough && day <= *retypedThrough)) continue;
    const Span span = daysAround(day, rules);
    retype(context, task.objectID, rules, span, day);
    // All that follows in a counting period has been looked at.
    if (rules.frequency.isCountedDays()) retypedThrough = span.to;
  }
}

bool failPeriod(const TaskRules& rules, const TaskFrequencyPeriod& period, std::span<const LoggedEntry> entries) {
  if (!HistoryWalk::supports(rules.frequency)) return false;
  if (period.startDate < earliestKeptDay || period.finishDate > latestKeptDay) return false;
  const HistoryScope scope{.created = period.startDate, .today = period.finishDate, .fillFrom = period.startDate};
  bool fails = false;
  static_cast<void>(HistoryWalk(rules, scope).walk(entries, [&](const WalkedPeriod& walked) {
    fails = fails || walked.status.isFailed();
  }));
  return fails;
}

bool failsByParts(StoreContext& context, const TaskRules& rules, const TaskLogEntryEntity& row) {
  const auto counted = countedPeriod(row, rules);
  if (!counted) return false;
  const TaskFrequencyPeriod& period = counted->period;
  const TaskLogEntryType type = entryTypeFromStored(row.entryType);
  std::vector<LoggedEntry> entries;
  context.readLog(row.task, storedDay(period.startDate), storedDay(period.finishDate), [&](const LogRow& other) {
    if (other.objectID == row.objectID || supersedes(type, entryTypeFromStored(other.entryType))) return;
    if (countsFor(other, period, rules)) entries.push_back(loggedEntry(other));
  });
  LoggedEntry entry = loggedEntry(row);
  if (row.objectID == ObjectID::none) entry.order = std::numeric_limits<std::int64_t>::max();
  const auto isBefore = [](const LoggedEntry& a, const LoggedEntry& b) {
    return std::pair(a.entryDate, a.order) < std::pair(b.entryDate, b.order);
  };
  entries.insert(std::ranges::upper_bound(entries, entry, isBefore), entry);
  return failPeriod(rules, period, entries);
}

}  // namespace habitra
