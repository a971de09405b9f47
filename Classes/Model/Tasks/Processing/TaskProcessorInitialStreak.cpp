#include <HabitraCore/HistoryWalk.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorInitialStreak.h>
#include <QZKit/Error.h>

#include <fmt/format.h>
#include <algorithm>

namespace habitra {
namespace {

using DayMode = TaskFrequency::DayMode;

TaskFrequencyPeriod dayPeriod(qz::YYYYMMDD day, const TaskRules& rules) {
  return DatedPeriod(day, TaskFrequencyPeriodType::day, rules.firstDayOfWeek).period;
}

/// Every `step` days back from `last`.
std::vector<TaskFrequencyPeriod> daysBackFrom(qz::YYYYMMDD last, std::int64_t step, std::int64_t count,
                                              const TaskRules& rules) {
  std::vector<TaskFrequencyPeriod> days;
  for (std::int64_t number = count - 1; number >= 0; --number)
    days.push_back(dayPeriod(last.add(-step * number), rules));
  return days;
}

/// The last day before `today` that lies a multiple of the interval before or after the anchor.
qz::YYYYMMDD lastOccasion(const TaskRules& rules, qz::YYYYMMDD today) {
  const std::int64_t interval = rules.frequency.dayInterval;
  const qz::YYYYMMDD yesterday = today.previousDay();
  const std::int64_t since = rules.referenceDate.value_or(today).distance(yesterday) % interval;
  return yesterday.add(-(since < 0 ? since + interval : since));
}

/// The closed periods from about `first` on that ask for a completion while there is none.
std::vector<TaskFrequencyPeriod> duePeriods(const TaskRules& rules, qz::YYYYMMDD first, qz::YYYYMMDD today) {
  std::vector<TaskFrequencyPeriod> due;
  const HistoryScope scope{.created = first, .today = today, .fillFrom = today};
  (void)HistoryWalk(rules, scope).walk({}, [&](const WalkedPeriod& period) {
    if (period.isDue && !period.isOpen) due.push_back(period.period());
  });
  return due;
}

}  // namespace

std::vector<TaskFrequencyPeriod> lastDuePeriods(const TaskRules& rules, qz::YYYYMMDD today, std::int64_t count) {
  const TaskFrequency& frequency = rules.frequency;
  const bool isInterval = frequency.dayMode == DayMode::dayInterval;
  const auto checked = [&](std::vector<TaskFrequencyPeriod> periods) {
    if (!periods.empty() && periods.front().startDate < earliestKeptDay)
      throw qz::Error(fmt::format("a streak of {} would begin before any calendar", count));
    return periods;
  };
  if (rules.isNegative && (isInterval || frequency.isCountedDays()))
    return checked(daysBackFrom(today.previousDay(), 1, count, rules));
  if (isInterval) return checked(daysBackFrom(lastOccasion(rules, today), frequency.dayInterval, count, rules));

  const auto wanted = static_cast<std::size_t>(count);
  const std::int64_t perPeriod = nominalLength(frequency.periodTypeForCompletionCountCalculation());
  for (std::int64_t days = (count + 2) * std::max<std::int64_t>(perPeriod, 7);; days *= 2) {
    const qz::YYYYMMDD first = std::max(today.add(-days), earliestKeptDay);
    std::vector<TaskFrequencyPeriod> due = duePeriods(rules, first, today);
    if (due.size() >= wanted) {
      due.erase(due.begin(), due.end() - static_cast<std::ptrdiff_t>(wanted));
      return due;
    }
    if (first == earliestKeptDay) throw qz::Error(fmt::format("a streak of {} would begin before any calendar", count));
  }
}

}  // namespace habitra
