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

/// Whether the walk can read the entries where they lie. A single day that does not exist is met by no day and may
/// stay.
bool isInOrder(std::span<const LoggedEntry> entries) {
  std::int32_t from = 0;
  std::int32_t to = 0;
  std::int64_t order = 0;
  for (const LoggedEntry& entry : entries) {
    if (entry.periodFrom > from) [[likely]] {
      if (entry.periodFrom != entry.periodTo && !hasUsablePeriod(entry)) return false;
    } else if (entry.periodFrom != from || entry.periodTo != to || entry.order < order || from == 0) {
      return false;
    }
    from = entry.periodFrom;
    to = entry.periodTo;
    order = entry.order;
  }
  return true;
}

/// Gives the entry the period of its day where it has none; false when it has no day either.
bool givePeriod(LoggedEntry& entry, const TaskRules& rules) {
  if (hasUsablePeriod(entry)) return true;
  const auto day = existingDay(entry.entryDate);
  if (!day) return false;
  const TaskFrequencyPeriod period = rules.frequency.period(*day, rules.firstDayOfWeek, rules.referenceDate).period;
  entry.periodFrom = qz::checkedNarrow<std::int32_t>(period.startDate.intValue());
  entry.periodTo = qz::checkedNarrow<std::int32_t>(period.finishDate.intValue());
  entry.periodType = period.periodType;
  return true;
}

}  // namespace

LoggedEntries::LoggedEntries(std::span<const LoggedEntry> entries, const TaskRules& rules, std::int32_t today) {
  const auto isFuture = [&](const LoggedEntry& entry) { return entry.entryDate > today && !entry.isAhead; };
  while (!entries.empty() && isFuture(entries.back())) entries = entries.first(entries.size() - 1);
  inOrder_ = entries;
  const bool hasAhead = !entries.empty() && entries.back().entryDate > today;
  if (!hasAhead && isInOrder(entries)) return;
  copy_.assign(entries.begin(), entries.end());
  std::erase_if(copy_, [&](LoggedEntry& entry) { return isFuture(entry) || !givePeriod(entry, rules); });
  std::stable_sort(copy_.begin(), copy_.end(), [](const LoggedEntry& a, const LoggedEntry& b) {
    return std::tie(a.periodFrom, b.periodTo, a.order) < std::tie(b.periodFrom, a.periodTo, b.order);
  });
  inOrder_ = copy_;
}

}  // namespace habitra
