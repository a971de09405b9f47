// Stepping, weekday, distance and sums of days, each against the same loop over plain day numbers and against itself
// without the cache. "Uncached" starts from year, month and day and nothing else.

#include <QZDateTime/Calendar.h>
#include <QZDateTime/YYYYMMDD.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

namespace qz {
namespace {

constexpr std::int64_t firstNumber = 12'784;  // 2005-01-01
constexpr std::int64_t days = 7'236;          // some twenty years, a long history

/// Makes a value exist, so that no loop is optimized away.
void keep(const std::int64_t& value) { benchmark::DoNotOptimize(value); }

void keep(const YYYYMMDD& day) {
  keep(day.y());
  keep(day.m());
  keep(day.d());
}

void finish(benchmark::State& state, std::int64_t items) { state.SetItemsProcessed(state.iterations() * items); }

/// The days of a history in arbitrary order, as their numbers.
const std::vector<std::int64_t>& numbers() {
  static const std::vector<std::int64_t> result = [] {
    std::mt19937_64 random(1);
    std::vector<std::int64_t> list;
    for (int i = 0; i < 512; ++i) list.push_back(firstNumber + static_cast<std::int64_t>(random() % days));
    return list;
  }();
  return result;
}

const std::vector<YYYYMMDD>& dayList() {
  static const std::vector<YYYYMMDD> result = [] {
    std::vector<YYYYMMDD> list;
    for (const std::int64_t number : numbers()) list.push_back(YYYYMMDD::fromDayNumber(number));
    return list;
  }();
  return result;
}

void stepNumbers(benchmark::State& state) {
  for (auto _ : state) {
    std::int64_t number = firstNumber;
    for (std::int64_t i = 0; i < days; ++i) {
      ++number;
      keep(number);
    }
  }
  finish(state, days);
}

template <typename Step>
void step(benchmark::State& state, Step stepOnce, std::int64_t from = firstNumber) {
  for (auto _ : state) {
    YYYYMMDD day = YYYYMMDD::fromDayNumber(from);
    for (std::int64_t i = 0; i < days; ++i) {
      day = stepOnce(day);
      keep(day);
    }
  }
  finish(state, days);
}

void nextDay(benchmark::State& state) {
  step(state, [](const YYYYMMDD& day) { return day.nextDay(); });
}

void nextDayUncached(benchmark::State& state) {
  step(state, [](const YYYYMMDD& day) { return day.nextDayUsingCalendar(); });
}

void previousDay(benchmark::State& state) {
  step(
      state, [](const YYYYMMDD& day) { return day.previousDay(); }, firstNumber + days);
}

void previousDayUncached(benchmark::State& state) {
  const Calendar calendar(TimeZone::utc());
  step(
      state, [&](const YYYYMMDD& day) { return day.addUsingCalendar(calendar, -1); }, firstNumber + days);
}

void weekdayOfNumbers(benchmark::State& state) {
  const auto& list = numbers();
  for (auto _ : state)
    for (const std::int64_t number : list) keep(((number + 4) % 7 + 7) % 7);
  finish(state, static_cast<std::int64_t>(list.size()));
}

void weekday(benchmark::State& state) {
  const auto& list = dayList();
  for (auto _ : state)
    for (const YYYYMMDD& day : list) keep(day.dayOfWeek().rawValue());
  finish(state, static_cast<std::int64_t>(list.size()));
}

/// From year, month and day, as it is without anything kept.
void weekdayUncached(benchmark::State& state) {
  const auto& list = dayList();
  for (auto _ : state)
    for (const YYYYMMDD& day : list)
      keep(DayOfWeek(DayOfWeek::thursday).add(day_number::ofNear(day.y(), day.m(), day.d())).rawValue());
  finish(state, static_cast<std::int64_t>(list.size()));
}

template <typename List, typename Distance>
void distances(benchmark::State& state, const List& list, Distance distanceOf) {
  for (auto _ : state)
    for (std::size_t i = 1; i < list.size(); ++i) keep(distanceOf(list[i - 1], list[i]));
  finish(state, static_cast<std::int64_t>(list.size() - 1));
}

void distanceOfNumbers(benchmark::State& state) {
  distances(state, numbers(), [](std::int64_t from, std::int64_t to) { return to - from; });
}

void distance(benchmark::State& state) {
  distances(state, dayList(), [](const YYYYMMDD& from, const YYYYMMDD& to) { return from.distance(to); });
}

void distanceUncached(benchmark::State& state) {
  distances(state, dayList(), [](const YYYYMMDD& from, const YYYYMMDD& to) {
    return day_number::ofNear(to.y(), to.m(), to.d()) - day_number::ofNear(from.y(), from.m(), from.d());
  });
}

/// Sums that stay within the history: about a week, a month, a year to either side.
std::int64_t span(std::size_t i) {
  constexpr std::int64_t spans[] = {7, -7, 30, -30, 365, -365, 14, -1};
  return spans[i % std::size(spans)];
}

template <typename Add>
void add(benchmark::State& state, Add addOnce) {
  const auto& list = dayList();
  for (auto _ : state)
    for (std::size_t i = 0; i < list.size(); ++i) {
      keep(addOnce(list[i], span(i)));
    }
  finish(state, static_cast<std::int64_t>(list.size()));
}

void addDays(benchmark::State& state) {
  add(state, [](const YYYYMMDD& day, std::int64_t numDays) { return day.add(numDays); });
}

void addDaysUncached(benchmark::State& state) {
  const Calendar calendar(TimeZone::utc());
  add(state, [&](const YYYYMMDD& day, std::int64_t numDays) { return day.addUsingCalendar(calendar, numDays); });
}

/// Four hundred years from one to the next: far more than the cache holds.
template <typename Add>
void addWide(benchmark::State& state, Add addOnce) {
  constexpr std::int64_t count = 20'000;
  for (auto _ : state) {
    YYYYMMDD day = YYYYMMDD::fromDayNumber(-60'000);
    for (std::int64_t i = 0; i < count; ++i) {
      day = addOnce(day);
      keep(day);
    }
  }
  finish(state, count);
}

void addWeeksWide(benchmark::State& state) {
  addWide(state, [](const YYYYMMDD& day) { return day.add(7); });
}

void addWeeksWideUncached(benchmark::State& state) {
  const Calendar calendar(TimeZone::utc());
  addWide(state, [&](const YYYYMMDD& day) { return day.addUsingCalendar(calendar, 7); });
}

/// Days that no calendar has, as stored integers may hold them: these do go through the cache.
const std::vector<YYYYMMDD>& oddDays() {
  static const std::vector<YYYYMMDD> result = [] {
    std::vector<YYYYMMDD> list;
    for (std::int64_t y = 2001; y <= 2020; ++y) list.emplace_back(y, 2, 30);
    return list;
  }();
  return result;
}

template <typename Call>
void eachOddDay(benchmark::State& state, Call call) {
  const auto& list = oddDays();
  for (auto _ : state)
    for (const YYYYMMDD& day : list) keep(call(day));
  finish(state, static_cast<std::int64_t>(list.size()));
}

void oddNextDay(benchmark::State& state) {
  eachOddDay(state, [](const YYYYMMDD& day) { return day.nextDay(); });
}

void oddNextDayUncached(benchmark::State& state) {
  eachOddDay(state, [](const YYYYMMDD& day) { return day.nextDayUsingCalendar(); });
}

void oddWeekday(benchmark::State& state) {
  eachOddDay(state, [](const YYYYMMDD& day) { return day.dayOfWeek().rawValue(); });
}

void oddWeekdayUncached(benchmark::State& state) {
  eachOddDay(state, [](const YYYYMMDD& day) {
    return DayOfWeek(DayOfWeek::thursday).add(day_number::ofAny(day.y(), day.m(), day.d())).rawValue();
  });
}

void oddDistance(benchmark::State& state) {
  const YYYYMMDD& first = oddDays().front();
  eachOddDay(state, [&](const YYYYMMDD& day) { return first.distance(day); });
}

void oddDistanceUncached(benchmark::State& state) {
  const YYYYMMDD& first = oddDays().front();
  eachOddDay(state, [&](const YYYYMMDD& day) {
    return checkedSubtract(day_number::ofAny(day.y(), day.m(), day.d()),
                           day_number::ofAny(first.y(), first.m(), first.d()));
  });
}

void oddDaysInMonth(benchmark::State& state) {
  eachOddDay(state, [](const YYYYMMDD& day) { return YYYYMM(day.y(), day.m() + 12).numberOfDays(); });
}

void oddDaysInMonthUncached(benchmark::State& state) {
  eachOddDay(state, [](const YYYYMMDD& day) { return YYYYMM(day.y(), day.m() + 12).add(0).numberOfDays(); });
}

BENCHMARK(stepNumbers);
BENCHMARK(nextDay);
BENCHMARK(nextDayUncached);
BENCHMARK(previousDay);
BENCHMARK(previousDayUncached);
BENCHMARK(weekdayOfNumbers);
BENCHMARK(weekday);
BENCHMARK(weekdayUncached);
BENCHMARK(distanceOfNumbers);
BENCHMARK(distance);
BENCHMARK(distanceUncached);
BENCHMARK(addDays);
BENCHMARK(addDaysUncached);
BENCHMARK(addWeeksWide);
BENCHMARK(addWeeksWideUncached);
BENCHMARK(oddNextDay);
BENCHMARK(oddNextDayUncached);
BENCHMARK(oddWeekday);
BENCHMARK(oddWeekdayUncached);
BENCHMARK(oddDistance);
BENCHMARK(oddDistanceUncached);
BENCHMARK(oddDaysInMonth);
BENCHMARK(oddDaysInMonthUncached);

}  // namespace
}  // namespace qz
