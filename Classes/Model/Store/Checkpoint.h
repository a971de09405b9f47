#pragma once

#include <HabitraModel/Store/StoredValues.h>

namespace habitra {

/// Where a walk over a task's log may start again: what it knew at the end of `closedThrough`. It is dropped by a save
/// that adds, changes or removes an entry whose day lies, or whose period begins, on or before that day, or that has no
/// usable period: before or after the change. A cache: it is in no history and can be made again from the log; a
/// damaged one reads as none.
struct Checkpoint {
  std::int32_t closedThrough = 0;  ///< a day as an integer
  std::int64_t fingerprint = 0;    ///< of all that the content depends on besides the log; for the owner to compare
  Bytes content;

  friend bool operator==(const Checkpoint&, const Checkpoint&) = default;
};

}  // namespace habitra
