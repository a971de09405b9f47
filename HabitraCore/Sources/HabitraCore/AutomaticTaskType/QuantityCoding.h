#pragma once

#include <HabitraCore/AutomaticTaskType/AutomaticTaskType.h>
#include <HabitraCore/AutomaticTaskType/HealthTypeTable.h>
#include <HabitraCore/AutomaticTaskType/TaskTarget.h>
#include <HabitraCore/MemberCoding.h>

#include <cmath>

/// How the quantity of a target is read. For sources of this module.
namespace habitra {

/// Whether it can be a target; NaN cannot.
[[nodiscard]] inline bool isQuantity(double value) { return std::abs(value) <= greatestQuantity; }
/// The same for a certain source: only a balance of energies can be wanted below 0.
[[nodiscard]] inline bool isQuantity(double value, const AutomaticTaskType::TaskType& type) {
  const auto healthType = type.healthType();
  const bool isBalance = healthType && healthTypeRow(*healthType).measured == Measured::balance;
  return isQuantity(value) && (value >= 0 || isBalance);
}

/// The member "quantity". Throws qz::DecodingError naming the key where it is missing, no number or too great.
[[nodiscard]] inline double decodeQuantity(const nlohmann::json& json) {
  const auto quantity = decodeMember<double>(json, "quantity");
  if (!isQuantity(quantity)) refuseMember("quantity", quantity);
  return quantity;
}

}  // namespace habitra
