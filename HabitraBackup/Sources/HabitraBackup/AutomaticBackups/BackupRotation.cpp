#include <HabitraBackup/AutomaticBackups/BackupRotation.h>
#include <QZDateTime/DayOfWeek.h>

#include <algorithm>
#include <functional>
#include <set>

namespace habitra {

namespace {

/// Keeps the newest of each of the first `number` spans. REQUIRES: the newest day comes first.
template <typename SpanOf>
void keepNewest(const std::vector<qz::YYYYMMDD>& made, std::size_t number, SpanOf spanOf,
                std::set<qz::YYYYMMDD>& kept) {
  std::set<std::invoke_result_t<SpanOf, qz::YYYYMMDD>> spans;
  for (const qz::YYYYMMDD day : made) {
    if (spans.size() == number) return;
    if (spans.insert(spanOf(day)).second) kept.insert(day);
  }
}

}  // namespace

std::vector<qz::YYYYMMDD> BackupRotation::outdated(std::vector<qz::YYYYMMDD> made, qz::YYYYMMDD today) const {
  std::erase_if(made, [today](const qz::YYYYMMDD& day) { return day > today; });
  std::ranges::sort(made, std::greater<>());
  std::set<qz::YYYYMMDD> kept;
  if (!made.empty()) kept.insert(made.front());
  keepNewest(
      made, days, [](const qz::YYYYMMDD& day) { return day; }, kept);
  keepNewest(
      made, weeks, [](const qz::YYYYMMDD& day) { return day.startOfWeek(qz::DayOfWeek::monday); }, kept);
  keepNewest(
      made, months, [](const qz::YYYYMMDD& day) { return day.yyyymm(); }, kept);
  std::erase_if(made, [&kept](const qz::YYYYMMDD& day) { return kept.contains(day); });
  std::ranges::reverse(made);
  return made;
}

}  // namespace habitra
