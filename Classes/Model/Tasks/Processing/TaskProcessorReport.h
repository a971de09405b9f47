#pragma once

#include <algorithm>
#include <cstddef>
#include <exception>

namespace habitra {

/// What a pass over tasks did: over all that are active, or those of them that were asked for.
struct TaskProcessorReport {
  std::size_t tasks = 0;     ///< active tasks looked at
  std::size_t changed = 0;   ///< of these, the ones that something was written for
  std::size_t filledIn = 0;  ///< automatic entries added
  std::size_t removed = 0;   ///< entries of the future deleted
  std::size_t decided = 0;   ///< tasks for which health data completed or failed a period; in passes that follow, anew
  /// What went wrong first, for a task or with the pass; null for nothing. It is in the log, too.
  std::exception_ptr failure = nullptr;

  /// Takes in what a pass over some of these tasks did that followed on it. Which tasks changed is not kept: where they
  /// are others than before, `changed` is the greater of the two numbers, and so never more than the tasks that did.
  void follow(const TaskProcessorReport& next) {
    changed = std::max(changed, next.changed);
    filledIn += next.filledIn;
    removed += next.removed;
    decided += next.decided;
    if (!failure) failure = next.failure;
  }

  friend bool operator==(const TaskProcessorReport&, const TaskProcessorReport&) = default;
};

}  // namespace habitra
