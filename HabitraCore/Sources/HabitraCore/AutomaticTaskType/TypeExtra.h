#pragma once

#include <HabitraCore/AutomaticTaskType/ScreenTimeSettings.h>
#include <QZHealthKit/QZHKWorkoutActivityType.h>

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <set>

namespace habitra {

using WorkoutType = qz::QZHKWorkoutActivityType;

/// What only some automatic types need. Coded with its field names as keys.
struct TypeExtra {
  std::set<WorkoutType> workoutTypes;             ///< the kinds of workouts that count; empty: all
  std::optional<double> healthKitRecordDuration;  ///< in seconds: how long a sample lasts that we write for the task
  std::optional<ScreenTimeSettings> screenTimeSettings;

  friend bool operator==(const TypeExtra&, const TypeExtra&) = default;
};

void to_json(nlohmann::json& json, const TypeExtra& extra);
/// Unknown workout types are left out; where none of those chosen is known, it is `other` that counts. Throws
/// qz::DecodingError naming the key, also for a duration below 0 or of more than a year.
void from_json(const nlohmann::json& json, TypeExtra& extra);

}  // namespace habitra
