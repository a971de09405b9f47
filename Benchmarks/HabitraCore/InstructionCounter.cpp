#include "InstructionCounter.h"

#include <linux/perf_event.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace habitra::benchmarks {

InstructionCounter::InstructionCounter() {
  perf_event_attr wanted{};
  wanted.size = sizeof(wanted);
  wanted.type = PERF_TYPE_HARDWARE;
  wanted.config = PERF_COUNT_HW_INSTRUCTIONS;
  wanted.exclude_kernel = 1;
  wanted.exclude_hv = 1;
  constexpr int thisThread = 0;
  constexpr int anyProcessor = -1;
  constexpr int noGroup = -1;
  // The C library has no function for it.
  file_ = static_cast<int>(
      ::syscall(SYS_perf_event_open, &wanted, thisThread, anyProcessor, noGroup, PERF_FLAG_FD_CLOEXEC));
  if (file_ < 0) refusal_ = std::generic_category().message(errno);
}

InstructionCounter::~InstructionCounter() {
  if (file_ >= 0) ::close(file_);
}

std::int64_t InstructionCounter::read() const {
  std::int64_t count = 0;
  if (::read(file_, &count, sizeof(count)) != sizeof(count)) throw std::runtime_error("the counter cannot be read");
  return count;
}

}  // namespace habitra::benchmarks
