#pragma once

#include <HabitraCore/AutomaticTaskType/AutomaticTaskType.h>
#include <HabitraCore/AutomaticTaskType/EnergyDeficit.h>
#include <HabitraCore/AutomaticTaskType/SleepNight.h>
#include <QZHealthKit/QZHKActivitySummary.h>

#include <cstdint>
#include <optional>
#include <span>

/// What is measured of a period for a task that completes itself, and how much of it the task needs.
///
/// - Amounts, and the use of applications and sites, have to come to the target of the period, in the unit in which the
///   rules measure the task (timed ones: seconds).
/// - What only happens, and workouts without a quantity, has to happen as often as the period needs completions.
/// - Bedtimes: as many nights have to be kept as the period needs completions, of a day its own.
/// - Activity rings: those of a day have to be closed, the amount is their mean; in a longer period they have to be
///   closed on as many days as it needs completions.
/// - A balance of energies is that of the whole period.
namespace habitra {

enum class MeasurementFamily : std::uint8_t { amount, samples, rings, bedtime, balance, screenTime };

/// How a type is measured; none where only people and our own timers say what was done.
[[nodiscard]] std::optional<MeasurementFamily> measurementFamily(const AutomaticTaskType& type);

/// How much a period needs that asks for so many completions; 0 or less where it can never be reached. A balance is
/// reached by itself.
[[nodiscard]] double neededAmount(const AutomaticTaskType& type, std::int64_t expectedUnits, bool isSingleDay);

struct PeriodMeasurement {
  bool hasData = false;  ///< something was measured, were it 0
  double amount = 0.0;
  std::optional<bool> isReached;  ///< where the amount alone does not say it

  friend bool operator==(const PeriodMeasurement&, const PeriodMeasurement&) = default;
};

/// The rings of the days of a period; none for a day of which nothing is known.
[[nodiscard]] PeriodMeasurement measuredRings(std::span<const std::optional<qz::QZHKActivitySummary>> days);

/// The balance of a period against the target. Where nothing eaten or nothing used up was recorded it is not reached.
[[nodiscard]] PeriodMeasurement measuredBalance(const AutomaticTaskType& type, const EnergyDeficit& deficit);

/// The nights of a period, none for one without sleep: how many were kept; of a single night, its time of day instead.
[[nodiscard]] PeriodMeasurement measuredBedtimes(const AutomaticTaskType& type,
                                                 std::span<const std::optional<SleepNight>> nights,
                                                 const qz::TimeZone& timeZone);

}  // namespace habitra
