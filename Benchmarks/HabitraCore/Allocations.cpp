#include "Allocations.h"

#include <HabitraCore/RawValue.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::int64_t> counter{0};

void* allocate(std::size_t size, std::size_t alignment) {
  counter.fetch_add(1, std::memory_order_relaxed);
  // aligned_alloc() wants whole multiples of the alignment.
  const std::size_t rounded = (std::max(size, std::size_t{1}) + alignment - 1) / alignment * alignment;
  void* const memory = std::aligned_alloc(alignment, rounded);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

// The forms for arrays and those that do not throw end here too.
void* operator new(std::size_t size) { return allocate(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }

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

std::int64_t numAllocations() { return counter.load(std::memory_order_relaxed); }

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
