#include <HabitraCore/DayForms.h>
#include <HabitraCore/LoggedEntries.h>
#include <QZDateTime/DayNumber.h>
#include <QZDateTime/YYYYMMDD.h>

#include <algorithm>
#include <cstddef>
#include <queue>
#include <tuple>
#include <utility>

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
    if (!mayFollow(*before, entry)) return false;
    before = &entry;
  }
  return true;
}

/// The same for a walk by the day. Nearly all entries count for the one day for which they were made, and one that does
/// not exist is met by no day.
bool isInOrderOfDays(std::span<const LoggedEntry> entries) {
  const LoggedEntry none;
  const LoggedEntry* before = &none;
  for (const LoggedEntry& entry : entries) {
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
  const TaskFrequencyPeriod period =
      rules.frequency.period(dayOf(entry.entryDate), rules.firstDayOfWeek, rules.referenceDate).period;
  entry.periodFrom = intForm(period.startDate);
  entry.periodTo = intForm(period.finishDate);
  entry.periodType = period.periodType;
  return true;
}

/// Entries on their way through the days, while their periods overlap: on top one of the period that ends first, of two
/// that end together the one that begins first, of two entries of one period the one that came first.
struct EndsLater {
  bool operator()(const LoggedEntry& a, const LoggedEntry& b) const {
    return std::tie(a.periodTo, a.periodFrom, a.order) > std::tie(b.periodTo, b.periodFrom, b.order);
  }
};
using Overlapping = std::priority_queue<LoggedEntry, std::vector<LoggedEntry>, EndsLater>;

/// Cuts overlapping periods to what LoggedEntries says, from the day `first` on, and puts the entries of each in order
/// of creation. `isFirstOfAll`: the first of them may begin before `first`.
std::vector<LoggedEntry> cutToStandingPeriods(std::vector<LoggedEntry> entries, std::int32_t first, bool isFirstOfAll) {
  std::ranges::stable_sort(entries, {}, &LoggedEntry::periodFrom);
  std::vector<LoggedEntry> result;
  result.reserve(entries.size());
  Overlapping overlapping;
  auto next = entries.begin();
  std::int32_t day = first;
  const auto takeUntil = [&](std::int32_t lastBeginning) {
    for (; next != entries.end() && next->periodFrom <= lastBeginning; ++next) overlapping.push(*next);
  };
  while (next != entries.end() || !overlapping.empty()) {
    if (overlapping.empty()) day = std::max(day, next->periodFrom);
    takeUntil(day);
    LoggedEntry standing = overlapping.top();
    if (!result.empty() || !isFirstOfAll) standing.periodFrom = std::max(standing.periodFrom, day);
    takeUntil(standing.periodTo);
    const auto begin = static_cast<std::ptrdiff_t>(result.size());
    for (; !overlapping.empty() && overlapping.top().periodTo <= standing.periodTo; overlapping.pop()) {
      LoggedEntry& entry = result.emplace_back(overlapping.top());
      entry.periodFrom = standing.periodFrom;
      entry.periodTo = standing.periodTo;
      entry.periodType = standing.periodType;
    }
    std::ranges::stable_sort(result.begin() + begin, result.end(), {}, &LoggedEntry::order);
    day = intForm(dayOf(standing.periodTo).nextDay());
  }
  return result;
}

}  // namespace

LoggedEntries::LoggedEntries(std::span<const LoggedEntry> entries, const TaskRules& rules, const Days& days) {
  const auto isFuture = [&](const LoggedEntry& entry) { return entry.entryDate > days.today && !entry.isAhead; };
  while (!entries.empty() && isFuture(entries.back())) entries = entries.first(entries.size() - 1);
  const bool hasAhead = !entries.empty() && entries.back().entryDate > days.today;
  const bool liesInOrder = rules.frequency.isAggregate() ? isInOrder(entries) : isInOrderOfDays(entries);
  if (!hasAhead && liesInOrder) {
    const auto isClosed = [&](const LoggedEntry& entry) { return entry.periodTo <= days.closedThrough; };
    inOrder_ = {std::ranges::partition_point(entries, isClosed), entries.end()};
    const bool reachesBack = !inOrder_.empty() && inOrder_.front().periodFrom <= days.closedThrough;
    if (!reachesBack) return;
  }
  const std::int32_t lastDayBefore = std::max(days.closedThrough, intForm(dayOf(days.created).previousDay()));
  copy_.assign(entries.begin(), entries.end());
  std::erase_if(copy_, [&](LoggedEntry& entry) {
    return isFuture(entry) || !givePeriod(entry, rules) || entry.periodTo <= lastDayBefore;
  });
  copy_ = cutToStandingPeriods(std::move(copy_), intForm(dayOf(lastDayBefore).nextDay()), days.closedThrough == 0);
  inOrder_ = copy_;
}

}  // namespace habitra
