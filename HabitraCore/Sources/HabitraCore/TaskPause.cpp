#include <HabitraCore/DayCoding.h>
#include <HabitraCore/TaskPause.h>

#include <nlohmann/json.hpp>

namespace habitra {

void to_json(nlohmann::json& json, const TaskPause& pause) {
  json = {{"from", pause.from}};
  if (pause.to) json["to"] = *pause.to;
}

void from_json(const nlohmann::json& json, TaskPause& pause) {
  pause.from = existingDay(json, "from");
  pause.to = std::nullopt;
  if (qz::coded_form::memberIfAny(json, "to") != nullptr) pause.to = existingDay(json, "to");
}

}  // namespace habitra
