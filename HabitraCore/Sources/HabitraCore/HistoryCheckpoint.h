#pragma once

#include <HabitraCore/StreakStatus.h>

#include <cstdint>

namespace habitra {

/// What a rule that counts has to know of the days before: plain numbers, days in the integer form of qz::YYYYMMDD, 0
/// for none. The counts are those of the counting period that holds the last day counted.
struct DueCounts {
  std::int32_t completedDays = 0;
  std::int32_t unavailableDays = 0;   ///< skipped by hand or paused
  std::int32_t failedDays = 0;        ///< to avoid: missed or allowed
  std::int32_t lastCompletedDay = 0;  ///< of the whole history
  std::int32_t lastFailedDay = 0;     ///< of the whole history

  friend bool operator==(const DueCounts&, const DueCounts&) = default;
};

/// What a walk over a history has to know of everything up to a day, to go on from the day after it. Plain numbers, to
/// be kept beside the log; days are in the integer form of qz::YYYYMMDD, 0 for none.
///
/// It is worthless once an entry whose period begins on or before `closedThrough` was added, changed or removed; that
/// is for its keeper to know. HistoryWalk::canResume() knows the rest.
struct HistoryCheckpoint {
  std::uint64_t fingerprint = 0;   ///< of the rules and the first day it was made under
  std::int32_t created = 0;        ///< first day of the history
  std::int32_t closedThrough = 0;  ///< last day of the last period that it holds
  std::int32_t lastCompleted = 0;
  std::int32_t lastMissed = 0;
  std::int32_t lastSkipped = 0;
  DueCounts counts;
  StreakStatus streak;
  std::int64_t numJudged = 0;     ///< periods judged so far
  std::int64_t numSucceeded = 0;  ///< successes among them

  friend bool operator==(const HistoryCheckpoint&, const HistoryCheckpoint&) = default;
};

}  // namespace habitra
