#pragma once

#include <HabitraCore/StreakStatus.h>

#include <cstdint>

namespace habitra {

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
  StreakStatus streak;

  friend bool operator==(const HistoryCheckpoint&, const HistoryCheckpoint&) = default;
};

}  // namespace habitra
