#pragma once

#include <cstdint>
#include <string>

namespace habitra::benchmarks {

/// The processor's own count of the instructions that this thread executes outside the kernel. Many machines keep it to
/// themselves, virtual ones above all. One thread only.
class InstructionCounter {
 public:
  InstructionCounter();
  ~InstructionCounter();
  InstructionCounter(const InstructionCounter&) = delete;
  InstructionCounter& operator=(const InstructionCounter&) = delete;

  [[nodiscard]] bool isAvailable() const { return file_ >= 0; }
  /// What the kernel said when there is none.
  [[nodiscard]] const std::string& refusal() const { return refusal_; }

  /// Instructions since the counter was made. REQUIRES: isAvailable().
  [[nodiscard]] std::int64_t read() const;

 private:
  int file_ = -1;
  std::string refusal_;
};

}  // namespace habitra::benchmarks
