#include <HabitraBackup/MovingIn/ForeignFrequency.h>
#include <HabitraBackup/MovingIn/ForeignText.h>

#include <fmt/core.h>
#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace habitra {

namespace {

using Mode = TaskFrequency::DayMode;

struct CountingPeriod {
  Mode mode;
  std::int64_t shortest;  // days of such a period
  std::int64_t longest;
  std::string_view name;
};

constexpr std::array<CountingPeriod, 4> countingPeriods{{
    {Mode::numberOfDaysInWeek, 7, 7, "week"},
    {Mode::numberOfDaysInFortnight, 14, 14, "fortnight"},
    {Mode::numberOfDaysInMonth, 30, 31, "month"},
    {Mode::numberOfDaysInYear, 365, 366, "year"},
}};

std::string said(std::int64_t times, std::int64_t days) {
  return fmt::format("{} in {}", times == 1 ? "once" : fmt::format("{} times", times),
                     days == 1 ? "a day" : fmt::format("{} days", days));
}

std::string counted(std::int64_t times, std::string_view period) {
  return fmt::format("{} {} a {}", times, times == 1 ? "day" : "days", period);
}

TaskFrequency daysIn(const CountingPeriod& period, std::int64_t times) {
  TaskFrequency frequency;
  frequency.dayMode = period.mode;
  frequency.numCompletions = times;
  return frequency;
}

ForeignFrequency nearest(std::int64_t times, std::int64_t days) {
  const auto fits = [days](const CountingPeriod& period) { return days <= period.longest; };
  const auto found = std::find_if(countingPeriods.begin(), countingPeriods.end(), fits);
  const CountingPeriod& period = found == countingPeriods.end() ? countingPeriods.back() : *found;
  const double share = static_cast<double>(times) / static_cast<double>(days);
  const auto rounded = static_cast<std::int64_t>(std::llround(share * static_cast<double>(period.shortest)));
  const std::int64_t count = std::clamp<std::int64_t>(rounded, 1, period.shortest);
  return {daysIn(period, count), fmt::format("{} became {}", said(times, days), counted(count, period.name))};
}

}  // namespace

ForeignFrequency frequencyOfTimesInDays(std::int64_t times, std::int64_t days) {
  if (times == days) return {};
  if (times > days) return {TaskFrequency::everyDay(), said(times, days) + " became every day"};
  for (const CountingPeriod& period : countingPeriods) {
    if (days == period.shortest || days == period.longest) return {daysIn(period, times), {}};
  }
  const bool isInterval = times == 1 && days <= TaskFrequency::dailyCompletionMaxIntervalDays;
  if (!isInterval) return nearest(times, days);
  TaskFrequency frequency;
  frequency.dayMode = Mode::dayInterval;
  frequency.dayInterval = days;
  return {frequency, fmt::format("{} became every {} days", said(times, days), days)};
}

}  // namespace habitra
