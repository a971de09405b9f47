#include <Support/Memory.h>

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::int64_t> counter{0};
std::atomic<std::int64_t> held{0};
std::atomic<std::int64_t> peak{0};

void* allocate(std::size_t size, std::size_t alignment) {
  counter.fetch_add(1, std::memory_order_relaxed);
  // aligned_alloc() wants whole multiples of the alignment.
  const std::size_t rounded = (std::max(size, std::size_t{1}) + alignment - 1) / alignment * alignment;
  void* const memory = std::aligned_alloc(alignment, rounded);
  if (memory == nullptr) throw std::bad_alloc();
  const auto bytes = static_cast<std::int64_t>(::malloc_usable_size(memory));
  const std::int64_t now = held.fetch_add(bytes, std::memory_order_relaxed) + bytes;
  for (std::int64_t most = peak.load(std::memory_order_relaxed);
       now > most && !peak.compare_exchange_weak(most, now, std::memory_order_relaxed);) {
  }
  return memory;
}

void giveBack(void* memory) {
  held.fetch_sub(static_cast<std::int64_t>(::malloc_usable_size(memory)), std::memory_order_relaxed);
  std::free(memory);
}

}  // namespace

// The forms for arrays and those that do not throw end here too.
void* operator new(std::size_t size) { return allocate(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept { giveBack(memory); }
void operator delete(void* memory, std::size_t) noexcept { giveBack(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { giveBack(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { giveBack(memory); }

namespace habitra::benchmarks {

std::int64_t numAllocations() { return counter.load(std::memory_order_relaxed); }

std::int64_t bytesHeld() { return held.load(std::memory_order_relaxed); }

std::int64_t takePeakOfBytesHeld() { return peak.exchange(bytesHeld(), std::memory_order_relaxed); }

}  // namespace habitra::benchmarks
