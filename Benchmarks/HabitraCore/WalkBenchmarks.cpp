// The walk over histories of every day mode and of three lengths: time, instructions and allocations for a day.
//
//   HabitraCoreBenchmarks                  all of it, with every option of Google Benchmark
//   HabitraCoreBenchmarks --once CASE      runs one case once, for a tool that counts from outside, and prints its days
//   HabitraCoreBenchmarks --ratios         prints what must hold: figure, case, yardstick and bound, between tabs

#include "Allocations.h"
#include "InstructionCounter.h"
#include "MeasuredCase.h"

#include <HabitraCore/RawValue.h>
#include <Support/RatioReport.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace habitra::benchmarks {
namespace {

std::vector<Ratio> ratios() {
  std::vector<Ratio> result = {{"every day, 10 years / sum of entries", plainDaily, sumOfEntries, 8},
                               {"days in year, 10 years / every day", plainYearCounted, plainDaily, 2}};
  for (const auto& row : RawValueTable<TaskFrequency::DayMode>::rows)
    for (const bool isNegative : {false, true})
      for (const std::int64_t years : {10, 100})
        result.push_back({believableName(row.value, isNegative, years) + " / 1",
                          believableName(row.value, isNegative, years), believableName(row.value, isNegative, 1), 1.3});
  return result;
}

const MeasuredCase* caseNamed(std::string_view name) {
  const auto found = std::ranges::find(allCases(), name, &MeasuredCase::name);
  return found == allCases().end() ? nullptr : &*found;
}

/// What a tool looks for that counts from outside.
[[gnu::noinline]] void runMeasured(const MeasuredCase& measured) { measured.run(); }

int once(std::string_view name) {
  const MeasuredCase* const measured = caseNamed(name);
  if (measured == nullptr) {
    std::fprintf(stderr, "no such case\n");
    return 2;
  }
  const std::int64_t days = measured->numDays();
  runMeasured(*measured);
  std::printf("%ld\n", days);
  return 0;
}

int printRatios() {
  for (const Ratio& ratio : ratios())
    std::printf("%s\t%s\t%s\t%g\n", ratio.figure.c_str(), ratio.ours.c_str(), ratio.yardstick.c_str(), ratio.bound);
  return 0;
}

double instructionsPerDay(const InstructionCounter& counter, const std::string& name) {
  const MeasuredCase& measured = *caseNamed(name);
  const auto days = static_cast<double>(measured.numDays());
  const std::int64_t before = counter.read();
  runMeasured(measured);
  return static_cast<double>(counter.read() - before) / days;
}

/// Whether every bound holds for instructions too, as far as the processor tells.
bool instructionsHold() {
  const InstructionCounter counter;
  if (!counter.isAvailable()) {
    std::printf("\nThis machine does not count instructions (%s): instructions.sh does, in a simulated processor.\n",
                counter.refusal().c_str());
    return true;
  }
  return printRatios("figure (instructions a day)", ratios(),
                     [&](const std::string& name) { return instructionsPerDay(counter, name); });
}

void registerCases() {
  for (const MeasuredCase& measured : allCases())
    benchmark::RegisterBenchmark(measured.name().c_str(), [&measured](benchmark::State& state) {
      const std::int64_t days = measured.numDays();
      for (auto _ : state) measured.run();
      state.SetItemsProcessed(state.iterations() * days);
    });
}

int measureAll(int argc, char** argv) {
  registerCases();
  const int timed = runWithRatios(argc, argv, ratios());
  if (timed == 2) return timed;
  const bool counted = instructionsHold();
  const bool areFlat = allocationsAreFlat();
  return timed == 0 && counted && areFlat ? 0 : 1;
}

}  // namespace
}  // namespace habitra::benchmarks

int main(int argc, char** argv) {
  using namespace habitra::benchmarks;
  const std::vector<std::string_view> arguments(argv + 1, argv + argc);
  if (arguments.size() == 2 && arguments[0] == "--once") return once(arguments[1]);
  if (arguments.size() == 1 && arguments[0] == "--ratios") return printRatios();
  return measureAll(argc, argv);
}
