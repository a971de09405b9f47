#pragma once

#include <HabitraCore/AutomaticTaskType/AutomaticTaskType.h>
#include <rapidcheck.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "HabitraCore/FrequencyGenerators.h"

/// Arbitrary automatic types for property tests.
namespace habitra {

inline AutomaticTaskType::TaskType anyTaskType() {
  return AutomaticTaskType::TaskType::allCases()[static_cast<std::size_t>(qz::between(0, 81))];
}

/// A finite amount, mostly one that people use.
inline double anyQuantity() {
  const double hundredths = static_cast<double>(qz::between(0, 1'000'000)) / 100;
  return qz::between(0, 9) == 0 ? hundredths * 1e-7 : hundredths;
}

inline TypeSpeeds anySpeeds() {
  TypeSpeeds speeds;
  for (std::int64_t n = qz::between(0, 3); n > 0; --n) speeds.insert(anyCase<TypeSpeed>());
  return speeds;
}

inline std::optional<TypeExtra> anyExtra() {
  if (qz::between(0, 1) == 0) return std::nullopt;
  TypeExtra extra;
  for (std::int64_t n = qz::between(0, 3); n > 0; --n) extra.workoutTypes.insert(anyCase<WorkoutType>());
  if (qz::between(0, 1) == 1) extra.healthKitRecordDuration = anyQuantity();
  if (qz::between(0, 1) == 1) {
    extra.screenTimeSettings.emplace();
    if (qz::between(0, 1) == 1)
      extra.screenTimeSettings->_familyActivitySelection = *rc::gen::arbitrary<std::vector<std::uint8_t>>();
  }
  return extra;
}

inline AutomaticTaskType anyAutomaticType() {
  AutomaticTaskType type{.type = anyTaskType(), .quantity = anyQuantity()};
  const bool canBeBelowZero = type.type.healthType() == HealthType::energyDeficit;
  if (canBeBelowZero && qz::between(0, 1) == 1) type.quantity = -type.quantity;
  if (qz::between(0, 3) != 0) type.unit = anyCase<TypeUnit>();
  type.speeds = anySpeeds();
  type.extra = anyExtra();
  if (qz::between(0, 1) == 1) type.dataSource = anyCase<DataSource>();
  return type;
}

}  // namespace habitra
