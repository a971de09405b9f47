#pragma once

#include <HabitraApp/HabitSummary.h>

#include <string>
#include <utility>

/// A habit of page 1 that is due, with this streak; without a status.
inline habitra::HabitSummary sampleHabit(std::string title, std::int64_t streak, std::int64_t best) {
  return {.uniqueId = qz::UniqueID(qz::UniqueID::Bytes{}),
          .title = std::move(title),
          .page = 1,
          .isNegative = false,
          .frequency = {},
          .period = {},
          .status = {},
          .due = true,
          .streak = {.current = streak, .best = best},
          .lastCompleted = {},
          .lastMissed = {},
          .lastSkipped = {}};
}
