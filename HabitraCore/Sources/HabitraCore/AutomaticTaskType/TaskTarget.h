#pragma once

#include <HabitraCore/AutomaticTaskType/TypeSpeed.h>
#include <HabitraCore/AutomaticTaskType/TypeUnit.h>

#include <nlohmann/json_fwd.hpp>

namespace habitra {

/// What an automatic task has to reach. Coded with the keys "quantity", "unit" and "speeds".
struct TaskTarget {
  double quantity = 0.0;  ///< in `unit`
  TypeUnit unit = TypeUnit::steps;
  TypeSpeeds speeds;

  friend bool operator==(const TaskTarget&, const TaskTarget&) = default;
};

void to_json(nlohmann::json& json, const TaskTarget& target);
/// Throws qz::DecodingError naming the key that is missing, of the wrong kind or an unknown unit.
void from_json(const nlohmann::json& json, TaskTarget& target);

}  // namespace habitra
