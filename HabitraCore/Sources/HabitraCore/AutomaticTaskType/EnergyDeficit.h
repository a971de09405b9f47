#pragma once

#include <HabitraCore/AutomaticTaskType/TypeUnit.h>

#include <cstdint>

namespace habitra {

/// The energy that a body took in and used up in a period.
struct EnergyDeficit {
  TypeUnit unit = TypeUnit::calories;  ///< of all amounts: calories or kilojoules
  double activeEnergy = 0.0;           ///< used up by moving
  double restingEnergy = 0.0;          ///< used up by living
  double dietaryEnergy = 0.0;          ///< eaten and drunk

  [[nodiscard]] double totalInput() const { return dietaryEnergy; }
  [[nodiscard]] double totalOutput() const { return activeEnergy + restingEnergy; }
  /// The deficit: output less input. Negative when more was taken in than used up.
  [[nodiscard]] double total() const { return totalOutput() - totalInput(); }

  friend bool operator==(const EnergyDeficit&, const EnergyDeficit&) = default;
};

/// Whether a period's deficit meets a target.
struct AutomaticTaskTypeEnergyDeficitProcessor {
  enum class Direction : std::uint8_t { lessThan, greaterThan };

  /// The target, in the unit of the deficit, is met at least (`greaterThan`) or at most (`lessThan`); exactly the
  /// target meets both. Without `zeroesAllowed` a period in which nothing was taken in, or nothing used up, is one of
  /// which nothing was recorded: it does not qualify, so that an empty diary is no success.
  [[nodiscard]] static bool qualifies(Direction direction, double target, const EnergyDeficit& deficit,
                                      bool zeroesAllowed);
};

}  // namespace habitra
