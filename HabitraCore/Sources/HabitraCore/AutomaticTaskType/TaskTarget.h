#pragma once

#include <HabitraCore/AutomaticTaskType/TypeSpeed.h>
#include <HabitraCore/AutomaticTaskType/TypeUnit.h>

#include <nlohmann/json_fwd.hpp>

namespace habitra {

/// No target is greater, nor as far below 0: it fits a count many times over, in whatever unit. Readers refuse more.
inline constexpr double greatestQuantity = 1e12;

/// What an automatic task has to reach. Coded with the keys "quantity", "unit" and "speeds".
struct TaskTarget {
  double quantity = 0.0;  ///< in `unit`; at most greatestQuantity either way
  TypeUnit unit = TypeUnit::steps;
  TypeSpeeds speeds;

  friend bool operator==(const TaskTarget&, const TaskTarget&) = default;
};

void to_json(nlohmann::json& json, const TaskTarget& target);
/// Throws qz::DecodingError naming the key that is missing, of the wrong kind, an unknown unit or too great a quantity.
void from_json(const nlohmann::json& json, TaskTarget& target);

}  // namespace habitra
