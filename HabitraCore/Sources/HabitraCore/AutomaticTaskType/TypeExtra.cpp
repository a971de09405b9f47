#include <HabitraCore/AutomaticTaskType/TypeExtra.h>
#include <HabitraCore/MemberCoding.h>

namespace habitra {

namespace {

/// A year in seconds: no sample that we write lasts longer.
constexpr double longestRecordDuration = 366.0 * 86'400;

std::set<WorkoutType> decodeWorkoutTypes(const nlohmann::json& json) {
  std::set<WorkoutType> types;
  decodeKnownCases<WorkoutType>(json, [&](WorkoutType type) { types.insert(type); });
  // Empty means all: a choice of which nothing is known here must not become one of everything.
  if (types.empty() && !json.empty()) types.insert(WorkoutType::other);
  return types;
}

}  // namespace

void to_json(nlohmann::json& json, const TypeExtra& extra) {
  nlohmann::json workoutTypes = nlohmann::json::array();
  for (const WorkoutType type : extra.workoutTypes) workoutTypes.push_back(rawValue(type));
  json = {{"workoutTypes", std::move(workoutTypes)}};
  encodeMember(json, "healthKitRecordDuration", extra.healthKitRecordDuration);
  encodeMember(json, "screenTimeSettings", extra.screenTimeSettings);
}

void from_json(const nlohmann::json& json, TypeExtra& extra) {
  const char* const key = "workoutTypes";
  const auto duration = decodeMemberIfAny<double>(json, "healthKitRecordDuration");
  if (duration && !(*duration >= 0 && *duration <= longestRecordDuration))
    refuseMember("healthKitRecordDuration", *duration);
  extra = {.workoutTypes = namingMember(key, qz::coded_form::member(json, key), decodeWorkoutTypes),
           .healthKitRecordDuration = duration,
           .screenTimeSettings = decodeMemberIfAny<ScreenTimeSettings>(json, "screenTimeSettings")};
}

}  // namespace habitra
