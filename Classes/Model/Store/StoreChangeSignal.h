#pragma once

#include <HabitraModel/Store/Store.h>

#include <cstdint>
#include <memory>

namespace habitra {

/// Tells others that a store has moved: in a home through the file "Habitra.changed", in memory through the store
/// itself. Each object belongs to one writer and one queue.
///
/// The file holds the number of the newest transaction of whatever store of the home was last written to, as decimal
/// digits filled up with blanks to a line of 20 bytes. Nobody needs to read it: that it was written is the signal.
class StoreChangeSignal {
 public:
  static constexpr const char* fileName = "Habitra.changed";

  explicit StoreChangeSignal(std::shared_ptr<Store> store);
  ~StoreChangeSignal();
  StoreChangeSignal(const StoreChangeSignal&) = delete;
  StoreChangeSignal& operator=(const StoreChangeSignal&) = delete;

  /// Says that the transaction `sequence` is committed. A failure is logged once and then nothing more is tried: what
  /// was saved is saved, others see it at their next reading. REQUIRES: the writers' turn.
  void announce(std::int64_t sequence) noexcept;

 private:
  void write(std::int64_t sequence);

  std::shared_ptr<Store> store_;
  int descriptor_ = -1;
  bool hasFailed_ = false;
};

}  // namespace habitra
