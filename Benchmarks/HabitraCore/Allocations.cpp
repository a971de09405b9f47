#include "Allocations.h"

#include <HabitraCore/RawValue.h>
#include <Support/Memory.h>

#include <algorithm>
#include <array>
#include <cstdio>

namespace habitra::benchmarks {
namespace {

/// The most that one walk over a history of the case needs.
std::int64_t allocationsOfWalk(const std::string& name) {
  const auto found = std::ranges::find(allCases(), name, &MeasuredCase::name);
  std::int64_t most = 0;
  for (const History& history : found->histories()) {
    const std::int64_t before = numAllocations();
    static_cast<void>(HistoryWalk(history.rules, history.scope).walk(history.log));
    most = std::max(most, numAllocations() - before);
  }
  return most;
}

}  // namespace

bool allocationsAreFlat() {
  bool areFlat = true;
  std::printf("\n%-38s %8s %8s %9s\n", "allocations of a walk", "1 year", "10 years", "100 years");
  for (const auto& row : RawValueTable<TaskFrequency::DayMode>::rows)
    for (const bool isNegative : {false, true}) {
      std::array<std::int64_t, 3> counts{};
      std::ranges::transform(lengthsInYears, counts.begin(), [&](std::int64_t years) {
        return allocationsOfWalk(believableName(row.value, isNegative, years));
      });
      const bool isFlat = counts[0] == counts[1] && counts[1] == counts[2];
      areFlat = areFlat && isFlat;
      std::printf("%-25s %-12s %8ld %8ld %9ld  %s\n", row.name.data(), isNegative ? "to avoid" : "to do", counts[0],
                  counts[1], counts[2], isFlat ? "flat" : "NOT FLAT");
    }
  return areFlat;
}

}  // namespace habitra::benchmarks
