#pragma once

#include <HabitraModel/Store/StoredValues.h>

namespace habitra {

/// Where a walk over a task's log may start again: what it knew at the end of `closedThrough`. A save that changes the
/// task's log on or before that day drops it. A cache: it is in no history and can be made again from the log.
struct Checkpoint {
  std::int32_t closedThrough = 0;  ///< a day as an integer
  std::int64_t fingerprint = 0;    ///< of all that the content depends on besides the log; for the owner to compare
  Bytes content;

  friend bool operator==(const Checkpoint&, const Checkpoint&) = default;
};

}  // namespace habitra
