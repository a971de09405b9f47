#include "NaiveHistoryPeriods.h"

#include <algorithm>
#include <sstream>

namespace habitra {

namespace {

/// A day as an entry keeps it; none when the calendar does not have it.
std::optional<qz::YYYYMMDD> realDay(std::int32_t integer) {
  const std::optional<qz::YYYYMMDD> day = qz::YYYYMMDD::fromRawValue(integer);
  return day && day->exists() ? day : std::nullopt;
}

NaivePeriod calendarPeriod(const TaskRules& rules, const qz::YYYYMMDD& day) {
  const TaskFrequencyPeriodType type = rules.frequency.measurementDuration();
  NaivePeriod period;
  period.type = type;
  period.from = firstDate(type, day, rules.firstDayOfWeek, rules.referenceDate);
  period.to = lastDate(type, day, rules.firstDayOfWeek, rules.referenceDate);
  return period;
}

/// The period stored with an entry; one without a usable period counts for that of its day. None for an entry that
/// counts for nothing: of a day that the calendar does not have, or after today and not made in time.
std::optional<NaivePeriod> periodOf(const LoggedEntry& entry, const TaskRules& rules, const HistoryScope& scope) {
  const std::optional<qz::YYYYMMDD> day = realDay(entry.entryDate);
  if (!day || (*day > scope.today && !entry.isAhead)) return std::nullopt;
  const std::optional<qz::YYYYMMDD> from = realDay(entry.periodFrom);
  const std::optional<qz::YYYYMMDD> to = realDay(entry.periodTo);
  NaivePeriod period;
  if (from && to && *from <= *to) {
    period.from = *from;
    period.to = *to;
    period.type = entry.periodType;
  } else {
    period = calendarPeriod(rules, *day);
  }
  period.entries = {entry};
  return period;
}

/// The periods that come with entries, one for each entry; but not those that ended before the history began.
std::vector<NaivePeriod> storedPeriods(const TaskRules& rules, const HistoryScope& scope,
                                       std::span<const LoggedEntry> log) {
  std::vector<NaivePeriod> stored;
  for (const LoggedEntry& entry : log)
    if (const auto period = periodOf(entry, rules, scope); period && period->to >= scope.created)
      stored.push_back(*period);
  return stored;
}

/// Whether the first days of a whole period of its type are missing.
bool isPart(const NaivePeriod& period) {
  if (period.isDay()) return false;
  if (period.type == TaskFrequencyPeriodType::month) return period.from.d() != 1;
  if (period.type == TaskFrequencyPeriodType::year) return period.from.m() != 1 || period.from.d() != 1;
  return period.from.distance(period.to) + 1 < nominalLength(period.type);
}

/// Of the stored periods that hold a day the one that ends first, with the entries of all that lie inside it; those
/// are taken out of `stored`. What reaches beyond it keeps the days after.
std::optional<NaivePeriod> standing(std::vector<NaivePeriod>& stored, const qz::YYYYMMDD& day, bool isFirst) {
  std::optional<NaivePeriod> found;
  for (const NaivePeriod& period : stored) {
    const auto isBefore = [&](const NaivePeriod& other) {
      if (period.to != other.to) return period.to < other.to;
      if (period.from != other.from) return period.from < other.from;
      return period.entries.front().order < other.entries.front().order;
    };
    if (period.contains(day) && (!found || isBefore(*found))) found = period;
  }
  if (!found) return found;
  if (!isFirst) found->from = day;
  found->isShortened = isPart(*found);
  found->entries.clear();
  std::erase_if(stored, [&](const NaivePeriod& period) {
    const bool isInside = period.from <= found->to && period.to <= found->to;
    if (isInside) found->entries.push_back(period.entries.front());
    return isInside;
  });
  std::ranges::stable_sort(found->entries, {}, &LoggedEntry::order);
  return found;
}

/// A day that no stored period covers: the calendar's period that holds it, from this day on (the first of the history
/// from its own first day) to its end or the day before the next stored period.
NaivePeriod uncovered(const TaskRules& rules, const qz::YYYYMMDD& day, bool isFirst,
                      const std::vector<NaivePeriod>& storedPeriods) {
  const NaivePeriod calendar = calendarPeriod(rules, day);
  NaivePeriod piece = calendar;
  if (!isFirst) piece.from = day;
  for (const NaivePeriod& stored : storedPeriods)
    if (stored.from > day) piece.to = std::min(piece.to, stored.from.previousDay());
  piece.isShortened = piece.from != calendar.from || piece.to != calendar.to;
  return piece;
}

}  // namespace

std::vector<NaivePeriod> naivePeriods(const TaskRules& rules, const HistoryScope& scope,
                                      std::span<const LoggedEntry> log) {
  std::vector<NaivePeriod> stored = storedPeriods(rules, scope, log);
  std::vector<NaivePeriod> periods;
  for (qz::YYYYMMDD day = scope.created; day <= scope.today; day = periods.back().to.nextDay()) {
    const std::optional<NaivePeriod> found = standing(stored, day, periods.empty());
    periods.push_back(found ? *found : uncovered(rules, day, periods.empty(), stored));
  }
  for (NaivePeriod& period : periods) {
    period.isOpen = period.contains(scope.today);
    period.isCut = period.from < scope.created;
  }
  return periods;
}

bool NaivePeriod::holds(bool (*is)(TaskLogEntryType)) const {
  return std::ranges::any_of(entries, [&](const LoggedEntry& entry) { return is(entry.entryType); });
}

std::optional<qz::YYYYMMDD> NaivePeriod::dayOfLast(bool (*is)(TaskLogEntryType)) const {
  std::optional<qz::YYYYMMDD> day;
  for (const LoggedEntry& entry : entries)
    if (is(entry.entryType)) day = qz::YYYYMMDD::fromRawValue(entry.entryDate);
  return day;
}

bool NaivePeriod::isSkippedByHand() const {
  std::optional<TaskLogEntryType> lastFull;
  for (const LoggedEntry& entry : entries)
    if (isFull(entry.entryType)) lastFull = entry.entryType;
  return kind != Kind::positiveComplete && lastFull == TaskLogEntryType::skippedManuallyFull;
}

qz::YYYYMMDD NaivePeriod::countsOn() const { return isDay() ? from : std::clamp(decidedOn.value(), from, to); }

std::string NaiveNumbers::text() const {
  std::ostringstream text;
  const auto add = [&](const char* name, const auto& number) {
    if constexpr (requires { number->intValue(); }) {
      if (number) text << ' ' << name << ' ' << number->intValue();
    } else {
      if (number) text << ' ' << name << ' ' << *number;
    }
  };
  add("counting from", countingFrom);
  add("to", countingTo);
  add("completed", completed);
  add("wanted", wanted);
  add("available", available);
  add("required", required);
  add("still possible", stillPossible);
  add("allowance", allowance);
  add("left", allowanceLeft);
  add("counted from", countedFrom);
  add("since", daysSince);
  return text.str();
}

}  // namespace habitra
