#pragma once

#include <HabitraCore/CompletionStatus.h>
#include <HabitraCore/StreakStatus.h>
#include <HabitraCore/TaskFrequency.h>
#include <HabitraCore/TaskFrequencyPeriod.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/UniqueID.h>

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

namespace habitra {

/// How one habit stands now: what a list shows a line of. Values only; they do not follow later changes.
struct HabitSummary {
  qz::UniqueID uniqueId;
  std::string title;
  std::int64_t page;  ///< from 1
  bool isNegative;    ///< a habit to avoid

  /// What follows is derived, and absent where the stored frequency cannot be read: such a habit is shown and left
  /// alone.
  std::optional<TaskFrequency> frequency;
  std::optional<TaskFrequencyPeriod> period;  ///< the one that holds the habit's today
  std::optional<CompletionStatus> status;     ///< of that period
  bool due = false;                           ///< its today is a day on which the habit is due
  StreakStatus streak;
  std::optional<qz::YYYYMMDD> lastCompleted;
  std::optional<qz::YYYYMMDD> lastMissed;
  std::optional<qz::YYYYMMDD> lastSkipped;
};

/// Keys as the members; `period` as "type", "from", "to"; days as integers; what is absent is an absent key.
void to_json(nlohmann::json& json, const HabitSummary& habit);

}  // namespace habitra
