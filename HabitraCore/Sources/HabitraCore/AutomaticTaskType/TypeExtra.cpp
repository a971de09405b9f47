#include <HabitraCore/AutomaticTaskType/TypeExtra.h>
#include <HabitraCore/MemberCoding.h>

namespace habitra {

namespace {

std::set<WorkoutType> decodeWorkoutTypes(const nlohmann::json& json) {
  std::set<WorkoutType> types;
  decodeKnownCases<WorkoutType>(json, [&](WorkoutType type) { types.insert(type); });
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
  extra = {.workoutTypes = namingMember(key, qz::coded_form::member(json, key), decodeWorkoutTypes),
           .healthKitRecordDuration = decodeMemberIfAny<double>(json, "healthKitRecordDuration"),
           .screenTimeSettings = decodeMemberIfAny<ScreenTimeSettings>(json, "screenTimeSettings")};
}

}  // namespace habitra
