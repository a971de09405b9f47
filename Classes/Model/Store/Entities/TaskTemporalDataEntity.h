#pragma once

#include <HabitraModel/Store/EntityDescription.h>
#include <HabitraModel/Store/StoredValues.h>

#include <optional>
#include <string>

namespace habitra {

/// The derived figures of a task, rewritten by the processor where they differ. Days are integers, 0 for no day.
struct TaskTemporalDataEntity {
  static const EntityDescription& description();

  ObjectID objectID = ObjectID::none;

  std::int64_t activeStreak = 0;
  std::int64_t bestStreak = 0;
  std::optional<qz::Moment> lastChangedDifficulty;
  std::optional<std::string> lastChangedDifficultyStatus;
  std::optional<std::string> lastChangedDifficultyTimeZone;
  std::int32_t lastCompleted = 0;
  std::int32_t lastMissed = 0;
  std::int32_t lastSkipped = 0;
  std::optional<qz::Moment> lastUpdated;
  double progress = 0;
  std::int32_t progressDate = 0;
  std::int16_t recentLongTermNumSamples = 0;
  double recentLongTermPct = 0;
  std::int16_t recentShortTermNumSamples = 0;
  double recentShortTermPct = 0;
  ObjectID task = ObjectID::none;

  friend bool operator==(const TaskTemporalDataEntity&, const TaskTemporalDataEntity&) = default;
};

}  // namespace habitra
