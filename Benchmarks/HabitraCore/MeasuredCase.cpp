#include "MeasuredCase.h"

#include <HabitraCore/RawValue.h>

#include <benchmark/benchmark.h>

namespace habitra::benchmarks {
namespace {

// Not inlined, so that whoever counts instructions finds both by name.

[[gnu::noinline]] void walkHistories(const std::vector<History>& histories) {
  for (const History& history : histories) {
    const HistoryResult result = HistoryWalk(history.rules, history.scope).walk(history.log);
    benchmark::DoNotOptimize(result.figures.streak.current);
  }
}

[[gnu::noinline]] void sumHistories(const std::vector<History>& histories) {
  for (const History& history : histories) {
    std::int64_t sum = 0;
    for (const LoggedEntry& entry : history.log) sum += entry.entryDate;
    benchmark::DoNotOptimize(sum);
  }
}

std::vector<History> believableHistories(TaskFrequency::DayMode mode, bool isNegative, std::int64_t years) {
  std::vector<History> histories;
  for (std::int64_t seed = 0; seed < 100 / years; ++seed)
    histories.push_back(believableHistory(usualRules(mode, isNegative), years, static_cast<std::uint64_t>(seed)));
  return histories;
}

std::vector<History> plainDailyHistories() { return {plainHistory({.frequency = TaskFrequency::everyDay()}, 10)}; }

std::vector<History> plainYearCountedHistories() {
  return {plainHistory(usualRules(TaskFrequency::DayMode::numberOfDaysInYear, false), 10)};
}

std::vector<MeasuredCase> makeCases() {
  using Work = MeasuredCase::Work;
  std::vector<MeasuredCase> cases{{plainDaily, Work::walk, plainDailyHistories},
                                  {plainYearCounted, Work::walk, plainYearCountedHistories},
                                  {sumOfEntries, Work::sum, plainDailyHistories}};
  for (const auto& row : RawValueTable<TaskFrequency::DayMode>::rows)
    for (const bool isNegative : {false, true})
      for (const std::int64_t years : lengthsInYears)
        cases.emplace_back(
            believableName(row.value, isNegative, years), Work::walk,
            [mode = row.value, isNegative, years] { return believableHistories(mode, isNegative, years); });
  return cases;
}

}  // namespace

const std::vector<History>& MeasuredCase::histories() const {
  if (histories_.empty()) histories_ = makeHistories_();
  return histories_;
}

std::int64_t MeasuredCase::numDays() const {
  std::int64_t days = 0;
  for (const History& history : histories()) days += history.numDays();
  return days;
}

void MeasuredCase::run() const { work_ == Work::walk ? walkHistories(histories_) : sumHistories(histories_); }

std::string believableName(TaskFrequency::DayMode mode, bool isNegative, std::int64_t years) {
  return std::string(caseName(mode)) + (isNegative ? "/toAvoid/" : "/toDo/") + std::to_string(years) +
         (years == 1 ? "year" : "years");
}

const std::vector<MeasuredCase>& allCases() {
  static const std::vector<MeasuredCase> cases = makeCases();
  return cases;
}

}  // namespace habitra::benchmarks
