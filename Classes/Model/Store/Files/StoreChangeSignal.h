#pragma once

#include <HabitraModel/Store/Files/ChangeListeners.h>

#include <cstdint>
#include <filesystem>
#include <memory>

namespace habitra {

/// Tells others that a store has moved: in a home through a file, "Habitra.changed" for stores of tasks, in memory
/// through listeners. Each object belongs to one writer and one queue.
///
/// The file holds the number of the newest transaction of whatever store of the home was last written to, as decimal
/// digits filled up with blanks to a line of 20 bytes. Nobody needs to read it: that it was written is the signal.
class StoreChangeSignal {
 public:
  static constexpr const char* fileName = "Habitra.changed";

  explicit StoreChangeSignal(std::filesystem::path file);
  explicit StoreChangeSignal(std::shared_ptr<const ChangeListeners> listeners);
  ~StoreChangeSignal();
  StoreChangeSignal(const StoreChangeSignal&) = delete;
  StoreChangeSignal& operator=(const StoreChangeSignal&) = delete;

  // Neither fails: what was saved is saved, and others see it at their next reading. Of failures in a row the first is
  // logged. REQUIRES of both: the writers' turn.

  /// Opens the file before the commit: when the writer dies between that and announce(), closing it is the signal.
  void prepare() noexcept;
  /// Says that the transaction `sequence` is committed.
  void announce(std::int64_t sequence) noexcept;

 private:
  template <typename Step>
  bool attempt(const Step& step) noexcept;
  void open();
  void write(std::int64_t sequence);
  /// Whether the open file is still the one that others find.
  [[nodiscard]] bool isInPlace() const;

  std::shared_ptr<const ChangeListeners> listeners_;  ///< in memory only
  std::filesystem::path file_;                        ///< none in memory
  int descriptor_ = -1;
  bool hasFailed_ = false;  ///< since others were last told
};

}  // namespace habitra
