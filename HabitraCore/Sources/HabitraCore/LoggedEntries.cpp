#include <HabitraCore/LoggedEntries.h>
#include <QZDateTime/YYYYMMDD.h>

#include <algorithm>
#include <optional>
#include <tuple>

namespace habitra {

namespace {

std::optional<qz::YYYYMMDD> existingDay(std::int32_t intValue) {
  const auto day = qz::YYYYMMDD::fromRawValue(intValue);
  return day && day->exists() ? day : std::nullopt;
}

bool hasUsablePeriod(const LoggedEntry& entry) {
  return entry.periodFrom <= entry.periodTo && existingDay(entry.periodFrom) && existingDay(entry.periodTo);
}

/// Whether the walk can read the entries where they lie: each period after the one before, and no day among them that
/// the calendar does not have. An entry of a single such day is met by no day and may stay.
bool isInOrder(std::span<const LoggedEntry> entries) {
  std::int32_t from = 0;
  std::int32_t to = 0;
  std::int64_t order = 0;
  for (const LoggedEntry& entry : entries) {
    if (entry.periodFrom > to) [[likely]] {
      const bool isOfOneDay = entry.periodFrom == entry.periodTo && entry.periodFrom == entry.entryDate;
      if (!isOfOneDay && !(hasUsablePeriod(entry) && existingDay(entry.entryDate))) return false;
    } else if (entry.periodFrom != from || entry.periodTo != to || entry.order < order || from == 0 ||
               (entry.entryDate != from && !existingDay(entry.entryDate))) {
      return false;
    }
    from = entry.periodFrom;
    to = entry.periodTo;
    order = entry.order;
  }
  return true;
}

/// Gives the entry the period of its day where it has none; false when the calendar does not have its day.
bool givePeriod(LoggedEntry& entry, const TaskRules& rules) {
  const auto day = existingDay(entry.entryDate);
  if (!day) return false;
  if (hasUsablePeriod(entry)) return true;
  const TaskFrequencyPeriod period = rules.frequency.period(*day, rules.firstDayOfWeek, rules.referenceDate).period;
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
