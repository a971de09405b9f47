#include <HabitraCore/LoggedEntries.h>
#include <QZDateTime/DayNumber.h>
#include <QZDateTime/YYYYMMDD.h>

#include <algorithm>
#include <tuple>

namespace habitra {

namespace {

/// Whether the calendar has the day of an integer form.
bool exists(std::int32_t day) { return day >= 1 && qz::day_number::exists(day / 10'000, day / 100 % 100, day % 100); }

bool hasUsablePeriod(const LoggedEntry& entry) {
  return entry.periodFrom <= entry.periodTo && exists(entry.periodFrom) && exists(entry.periodTo);
}

/// Whether an entry may come after another one in a log that the walk reads where it lies: its period is the same and
/// it was made later, or its period comes after that one. REQUIRES of `before` the same, or that it has no period.
bool mayFollow(const LoggedEntry& before, const LoggedEntry& entry) {
  if (entry.periodFrom > before.periodTo) return hasUsablePeriod(entry) && exists(entry.entryDate);
  return entry.periodFrom != 0 && entry.periodFrom == before.periodFrom && entry.periodTo == before.periodTo &&
         entry.order >= before.order && (entry.entryDate == entry.periodFrom || exists(entry.entryDate));
}

/// Whether the walk can read the entries where they lie.
bool isInOrder(std::span<const LoggedEntry> entries) {
  const LoggedEntry none;
  const LoggedEntry* before = &none;
  for (const LoggedEntry& entry : entries) {
    // Nearly all entries count for the one day for which they were made. One that does not exist is met by no day.
    const bool isOfOneDay = entry.periodFrom == entry.periodTo && entry.periodFrom == entry.entryDate;
    if (entry.periodFrom <= before->periodTo || !isOfOneDay) [[unlikely]] {
      if (!mayFollow(*before, entry)) return false;
    }
    before = &entry;
  }
  return true;
}

/// Gives the entry the period of its day where it has none; false when the calendar does not have its day.
bool givePeriod(LoggedEntry& entry, const TaskRules& rules) {
  if (!exists(entry.entryDate)) return false;
  if (hasUsablePeriod(entry)) return true;
  const qz::YYYYMMDD day(entry.entryDate / 10'000, entry.entryDate / 100 % 100, entry.entryDate % 100);
  const TaskFrequencyPeriod period = rules.frequency.period(day, rules.firstDayOfWeek, rules.referenceDate).period;
  entry.periodFrom = qz::checkedNarrow<std::int32_t>(period.startDate.intValue());
  entry.periodTo = qz::checkedNarrow<std::int32_t>(period.finishDate.intValue());
  entry.periodType = period.periodType;
  return true;
}

/// Gives the entries of a period that overlaps an earlier one to that one, and puts all of its entries in order of
/// creation. REQUIRES: entries in order of the first day of their periods, the longer of two first.
void giveToEarlierPeriods(std::vector<LoggedEntry>& entries) {
  for (auto first = entries.begin(); first != entries.end();) {
    const LoggedEntry standing = *first;
    const auto end = std::find_if(first, entries.end(),
                                  [&](const LoggedEntry& entry) { return entry.periodFrom > standing.periodTo; });
    for (auto entry = first; entry != end; ++entry) {
      entry->periodFrom = standing.periodFrom;
      entry->periodTo = standing.periodTo;
      entry->periodType = standing.periodType;
    }
    std::stable_sort(first, end, [](const LoggedEntry& a, const LoggedEntry& b) { return a.order < b.order; });
    first = end;
  }
}

}  // namespace

LoggedEntries::LoggedEntries(std::span<const LoggedEntry> entries, const TaskRules& rules, const Days& days) {
  const auto isFuture = [&](const LoggedEntry& entry) { return entry.entryDate > days.today && !entry.isAhead; };
  while (!entries.empty() && isFuture(entries.back())) entries = entries.first(entries.size() - 1);
  inOrder_ = entries;
  const bool hasAhead = !entries.empty() && entries.back().entryDate > days.today;
  if (!hasAhead && isInOrder(entries)) return;
  copy_.assign(entries.begin(), entries.end());
  std::erase_if(copy_, [&](LoggedEntry& entry) {
    return isFuture(entry) || !givePeriod(entry, rules) || entry.periodTo < days.created ||
           entry.periodFrom <= days.closedThrough;
  });
  std::stable_sort(copy_.begin(), copy_.end(), [](const LoggedEntry& a, const LoggedEntry& b) {
    return std::tie(a.periodFrom, b.periodTo) < std::tie(b.periodFrom, a.periodTo);
  });
  giveToEarlierPeriods(copy_);
  inOrder_ = copy_;
}

}  // namespace habitra
