#include <HabitraCore/AutomaticTaskType/QuantityCoding.h>
#include <HabitraCore/AutomaticTaskType/TaskTarget.h>
#include <HabitraCore/MemberCoding.h>

namespace habitra {

void to_json(nlohmann::json& json, const TaskTarget& target) {
  json = nlohmann::json::object();
  encodeMember(json, "quantity", target.quantity);
  encodeMember(json, "unit", target.unit);
  encodeMember(json, "speeds", target.speeds);
}

void from_json(const nlohmann::json& json, TaskTarget& target) {
  target = {.quantity = decodeQuantity(json),
            .unit = decodeMember<TypeUnit>(json, "unit"),
            .speeds = decodeMember<TypeSpeeds>(json, "speeds")};
}

}  // namespace habitra
