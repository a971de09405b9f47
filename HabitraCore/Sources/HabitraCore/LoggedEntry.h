#pragma once

#include <HabitraCore/TaskFrequencyPeriodType.h>
#include <HabitraCore/TaskLogEntryType.h>

#include <cstdint>
#include <type_traits>

namespace habitra {

/// An entry of a task's log as the walk over its history reads it: small and plain, so that a reader can lay thousands
/// of them side by side. Days are in the integer form of qz::YYYYMMDD.
struct LoggedEntry {
  std::int64_t order = 0;        ///< place in the order of creation; any numbers that ascend
  double progress = 0.0;         ///< share that the entry reports, for measured tasks
  double progressTotal = 0.0;    ///< amount that the entry reports, for measured tasks
  std::int32_t entryDate = 0;    ///< the day for which the entry was made
  std::int32_t periodFrom = 0;   ///< first day of the period that it counts for; below 1: none is stored
  std::int32_t periodTo = 0;     ///< last day of that period
  TaskLogEntryType entryType{};  ///< an unknown stored value is read as TaskLogEntryType::unknown
  TaskFrequencyPeriodType periodType{};
  /// Made for a day after today, but in time (liesInFuture()): it counts where its period has begun.
  bool isAhead = false;
};
static_assert(std::is_trivially_copyable_v<LoggedEntry> && sizeof(LoggedEntry) == 40);

}  // namespace habitra
