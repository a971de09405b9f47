#pragma once

#include <HabitraCore/AutomaticTaskType/HealthType.h>
#include <QZHealthKit/QZHKStatisticsOptions.h>

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

/// What is known of each health type, as data: a row per type, in order of declaration. The rows stand in
/// HealthTypeTableActivity.cpp, HealthTypeTableNutrition.cpp and HealthTypeTableRecords.cpp and can be checked there
/// without reading code. For sources of this module.
namespace habitra {

/// How the steps between the amounts on offer grow with the period: the day's step times this.
struct PeriodSteps {
  double week;
  double fortnight;
  double month;
  double year;
};
/// Amounts of seven days are chosen in coarser steps than those of one.
inline constexpr PeriodSteps coarserSteps{.week = 5, .fortnight = 10, .month = 20, .year = 100};
/// Few things, of which each one matters in any period.
inline constexpr PeriodSteps singleSteps{.week = 1, .fortnight = 1, .month = 1, .year = 5};

/// A unit that a type offers, with the amounts to choose from in a day. A longer period offers as many times the
/// highest and the usual amount as it has days (7, 14, 30, 365), the lowest and the step grown by `steps`. A time of
/// day is the same in every period.
struct QuantityRow {
  TypeUnit unit;
  double lowest;
  double highest;
  double step;
  double usual;  ///< what a new task starts with
  PeriodSteps steps = coarserSteps;
  /// The health data to read for this unit where they are not those of the type.
  std::span<const qz::QZHKObjectType> reads = {};
};

/// What makes the progress of a period.
enum class Measured : std::uint8_t {
  rings,      ///< the three activity rings
  amount,     ///< a sum of quantities, or a time covered
  balance,    ///< one amount less another
  timeOfDay,  ///< when it happened
  samples,    ///< how often it happened; no quantity
};

/// Which title a type has; the words stand in the table of a language (TitleTexts.h).
enum class TitleForm : std::uint8_t {
  activityRings,
  sleep,
  inBed,
  bedtime,
  standHours,
  standMinutes,
  rollHours,
  moveMinutes,
  walkOrRun,
  climbFlights,
  activeEnergy,
  wheelchairDistance,
  wheelchairPushes,
  workout,
  exercise,
  cycle,
  swim,
  mindfulMinutes,
  ownWorkout,
  water,
  dietaryEnergy,
  nutrient,
  energyDeficit,
  record,
  brush,
  floss,
  heartEvent,
  handwashing,
  alcohol,
  timer,
  screenTime,
};

struct HealthTypeRow {
  HealthType type;
  Measured measured;
  std::span<const QuantityRow> quantities = {};  ///< the default unit first; none: no quantity
  bool quantityIsOptional = false;               ///< a task may do without one; then each sample counts
  std::span<const TypeSpeed> speeds = {};        ///< on offer, in the order in which they are shown
  HealthType::SpeedSelectionType speedSelection = HealthType::SpeedSelectionType::noSpeed;
  TypeSpeeds defaultSpeeds = {};
  std::span<const qz::QZHKObjectType> reads;
  /// Read as well when only some of the speeds on offer are chosen, to tell them apart.
  std::span<const qz::QZHKObjectType> readsToTellSpeeds = {};
  qz::QZHKStatisticsOptions statistics;  ///< how samples are put together
  qz::QZHKUpdateFrequency update;
  bool fluctuating = false;
  bool writesBack = false;
  std::span<const std::string_view> icons;  ///< the best one first
  TitleForm title;
};

[[nodiscard]] const HealthTypeRow& healthTypeRow(HealthType type);

/// The parts of the table, in order: activity to habitraWorkout, dietaryDrinkWater to energyDeficit, and from
/// recordWeight on.
[[nodiscard]] std::span<const HealthTypeRow> activityRows();
[[nodiscard]] std::span<const HealthTypeRow> nutritionRows();
[[nodiscard]] std::span<const HealthTypeRow> recordRows();

/// The amounts that a row offers in a period, and the one that a new task starts with, which is one of them.
[[nodiscard]] ValueRange quantityOptions(const QuantityRow& row, TaskFrequencyPeriodType measurementDuration);
[[nodiscard]] double usualQuantity(const QuantityRow& row, TaskFrequencyPeriodType measurementDuration);

}  // namespace habitra
