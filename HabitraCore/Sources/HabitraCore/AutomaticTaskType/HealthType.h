#pragma once

#include <HabitraCore/AutomaticTaskType/TaskTarget.h>
#include <HabitraCore/AutomaticTaskType/TypeSpeed.h>
#include <HabitraCore/AutomaticTaskType/TypeUnit.h>
#include <HabitraCore/AutomaticTaskType/ValueRange.h>
#include <HabitraCore/RawValue.h>
#include <HabitraCore/TaskFrequencyPeriodType.h>
#include <QZHealthKit/QZHKObjectType.h>
#include <QZHealthKit/QZHKUpdateFrequency.h>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace habitra {

struct DisplayTitleOptions;

/// Whether a task of a type has a target quantity.
enum class QuantitySelectionStyle : std::uint8_t { unavailable, required, optional };

/// A measurement of the health store that can drive a task. Used like an enumeration (`HealthType::sleep`,
/// `switch (type)`); stored and coded as its raw value. The order of declaration is fixed: it is the compact numbering
/// 0 to 79, and the dietary types are one run of it.
///
/// What is known of a type (units, ranges, defaults, what is read) is data: a row per type in HealthTypeTable.h, from
/// which the functions here answer. A measurement duration is the kind of period in which the task is measured.
class HealthType {
 public:
  enum class Case : std::uint8_t {
    activity,
    sleep,
    inBed,
    bedtime,
    standHours,
    standMinutes,
    rollHours,
    moveMinutes,
    runOrWalk,
    climbFlights,
    burnActiveEnergy,
    wheelchairDistance,
    wheelchairPushes,
    workout,
    exercise,
    cycle,
    swimDistance,
    mindfulMinutes,
    habitraWorkout,
    dietaryDrinkWater,
    dietaryEnergy,
    dietarySugar,
    dietaryCaffeine,
    dietaryProtein,
    dietaryFiber,
    dietarySodium,
    dietaryCalcium,
    dietaryCarbohydrates,
    dietaryCholesterol,
    dietaryIron,
    dietaryMagnesium,
    dietaryVitaminA,
    dietaryVitaminB6,
    dietaryVitaminB12,
    dietaryVitaminC,
    dietaryVitaminD,
    dietaryVitaminE,
    dietaryVitaminK,
    dietaryZinc,
    dietaryFolate,
    dietaryPotassium,
    dietaryRiboflavin,
    dietaryThiamin,
    dietarySelenium,
    dietaryFatTotal,
    dietaryFatMonounsaturated,
    dietaryFatPolyunsaturated,
    dietaryFatSaturated,
    dietaryPhosphorus,
    dietaryNiacin,
    dietaryManganese,
    dietaryIodine,
    dietaryCopper,
    dietaryChromium,
    dietaryChloride,
    dietaryBiotin,
    dietaryMolybdenum,
    energyDeficit,
    recordWeight,
    recordBloodPressure,
    recordBloodGlucose,
    recordHeartRate,
    recordWaistCircumference,
    recordBodyTemperature,
    recordSexualActivity,
    recordBodyFatPercentage,
    recordAudiogram,
    recordElectroCardiogram,
    recordPeakExpiratoryFlow,
    recordHeight,
    recordInsulin,
    recordInhaler,
    recordOxygenSaturation,
    toothbrushingEventBrush,
    toothbrushingEventFloss,
    irregularHeartRhythmEvent,
    lowHeartRateEvent,
    highHeartRateEvent,
    handwashingEvent,
    alcoholConsumption,
  };
  using enum Case;

  /// Whether no, at most one or several of the offered speeds may be chosen. `timed` is a choice as any other: without
  /// it the data come from other devices alone.
  enum class SpeedSelectionType : std::uint8_t { noSpeed, single, multi };
  class DisplayTitleType;  ///< see DisplayTitle.h

  /// Not explicit, so that `HealthType::sleep` is a HealthType wherever one is wanted.
  constexpr HealthType(Case value) : value_(value) {}  // NOLINT(google-explicit-constructor)
  /// Lets `switch` and the comparison operators see the case.
  constexpr operator Case() const { return value_; }  // NOLINT(google-explicit-constructor)

  /// All 80, in order of declaration.
  [[nodiscard]] static std::span<const HealthType> allCases();
  /// The place in the order of declaration, 0 to 79.
  [[nodiscard]] constexpr std::int64_t compactNumber() const { return static_cast<std::int64_t>(value_); }

  /// What a new task of this type starts with: unit (none where there is no quantity), amount in a unit (none for a
  /// unit that is not offered), speeds, and the three together.
  [[nodiscard]] std::optional<TypeUnit> defaultUnit() const;
  [[nodiscard]] std::optional<double> defaultQuantity(TypeUnit unit, TaskFrequencyPeriodType measurementDuration) const;
  [[nodiscard]] TypeSpeeds defaultSpeeds() const;
  [[nodiscard]] std::optional<TaskTarget> defaultTarget(TaskFrequencyPeriodType measurementDuration) const;

  /// The amounts to choose from; none for a unit that is not offered.
  [[nodiscard]] std::optional<ValueRange> quantityOptions(TypeUnit unit,
                                                          TaskFrequencyPeriodType measurementDuration) const;
  /// The units to choose from, the usual one first.
  [[nodiscard]] std::vector<TypeUnit> unitOptions() const;
  [[nodiscard]] bool canSelectUnit() const;
  [[nodiscard]] SpeedSelectionType canSelectSpeed() const;
  /// The speeds to choose from, in the order in which they are shown.
  [[nodiscard]] std::vector<TypeSpeed> sortedSpeedOptions() const;

  /// Whether a timer of our own can measure it.
  [[nodiscard]] bool canBeTimed() const;
  [[nodiscard]] static std::vector<HealthType> timedTypes();
  /// Whether some kinds of workouts can be chosen to be the only ones that count.
  [[nodiscard]] bool canSelectWorkoutTypes() const;
  [[nodiscard]] QuantitySelectionStyle quantitySelectionStyle() const;

  /// What is eaten and drunk, from water to molybdenum.
  [[nodiscard]] constexpr bool isDietary() const {
    return Case::dietaryDrinkWater <= value_ && value_ <= Case::dietaryMolybdenum;
  }
  /// Whether the amount can fall again while the period is open, so that a reached target is not yet safe.
  [[nodiscard]] bool isFluctuating() const;
  /// Whether an amount grows towards the target. Not so for the rings, a bedtime, a balance of energies and what is
  /// only counted.
  [[nodiscard]] bool isQuantityBased() const;
  /// Whether a completion recorded here is written to the health store as a sample.
  [[nodiscard]] bool writesToHealthKit() const;

  /// The kinds of health data to read for a task with this unit and these speeds.
  [[nodiscard]] std::vector<qz::QZHKObjectType> healthKitReadTypes(std::optional<TypeUnit> unit,
                                                                   TypeSpeeds speeds) const;
  /// How soon new data should wake us.
  [[nodiscard]] qz::QZHKUpdateFrequency healthKitBackgroundUpdateFrequency() const;

  /// Icon names, the best one first; never empty.
  [[nodiscard]] std::span<const std::string_view> suggestedIcons() const;

  /// An amount of water as it is offered to be recorded: cut to one decimal (1.29 is 1.2), and at least 1.0 of US
  /// fluid ounces and cups, 0.1 of any other unit; 0 stays 0. Stops the program when it is not finite or ten times it
  /// does not fit 64 bits.
  [[nodiscard]] static double normalizeWaterValue(double quantity, TypeUnit unit);
  /// The same for a distance: metres and yards whole and at least 1, kilometres and miles cut to one decimal and at
  /// least 0.1.
  [[nodiscard]] static double normalizeDistanceValue(double quantity, TypeUnit unit);

  /// The text of a target: "Drink 2 litres of water", or "Under 200 mg caffeine" for a task to avoid. One function for
  /// all families of titles: which family a type belongs to is a column of its row. `unit` and `quantity` are absent
  /// together. REQUIRES: the quantity is finite.
  [[nodiscard]] DisplayTitleType displayTitleForQuantity(std::optional<double> quantity, std::optional<TypeUnit> unit,
                                                         TypeSpeeds speeds, const DisplayTitleOptions& options) const;

 private:
  Case value_;
};

}  // namespace habitra

template <>
struct qz::RawValueTable<habitra::HealthType> {
  using T = habitra::HealthType;
  static constexpr std::array<RawValueRow<T, std::string_view>, 80> rows{{
      {T::activity, "hk_activity", "activity"},
      {T::sleep, "hk_sleep", "sleep"},
      {T::inBed, "hk_in_bed", "inBed"},
      {T::bedtime, "hk_bedtime", "bedtime"},
      {T::standHours, "hk_stand", "standHours"},
      {T::standMinutes, "hk_stand_minutes", "standMinutes"},
      {T::rollHours, "hk_roll_hours", "rollHours"},
      {T::moveMinutes, "hk_move_minutes", "moveMinutes"},
      {T::runOrWalk, "hk_distance", "runOrWalk"},
      {T::climbFlights, "hk_climb_flights", "climbFlights"},
      {T::burnActiveEnergy, "hk_burn_active_calories", "burnActiveEnergy"},
      {T::wheelchairDistance, "hk_wheelchair_distance", "wheelchairDistance"},
      {T::wheelchairPushes, "hk_wheelchair_pushes", "wheelchairPushes"},
      {T::workout, "hk_workout", "workout"},
      {T::exercise, "hk_exercise", "exercise"},
      {T::cycle, "hk_cycle", "cycle"},
      {T::swimDistance, "hk_swim_distance", "swimDistance"},
      {T::mindfulMinutes, "hk_breathe", "mindfulMinutes"},
      {T::habitraWorkout, "hk_workout_habitra", "habitraWorkout"},
      {T::dietaryDrinkWater, "hk_water", "dietaryDrinkWater"},
      {T::dietaryEnergy, "hk_dietary_energy", "dietaryEnergy"},
      {T::dietarySugar, "hk_dietary_sugar", "dietarySugar"},
      {T::dietaryCaffeine, "hk_dietary_caffeine", "dietaryCaffeine"},
      {T::dietaryProtein, "hk_dietary_protein", "dietaryProtein"},
      {T::dietaryFiber, "hk_dietary_fiber", "dietaryFiber"},
      {T::dietarySodium, "hk_dietary_sodium", "dietarySodium"},
      {T::dietaryCalcium, "hk_dietary_calcium", "dietaryCalcium"},
      {T::dietaryCarbohydrates, "hk_dietary_carbs", "dietaryCarbohydrates"},
      {T::dietaryCholesterol, "hk_dietary_cholesterol", "dietaryCholesterol"},
      {T::dietaryIron, "hk_dietary_iron", "dietaryIron"},
      {T::dietaryMagnesium, "hk_dietary_magnesium", "dietaryMagnesium"},
      {T::dietaryVitaminA, "hk_dietary_vitamina", "dietaryVitaminA"},
      {T::dietaryVitaminB6, "hk_dietary_vitaminb6", "dietaryVitaminB6"},
      {T::dietaryVitaminB12, "hk_dietary_vitaminb12", "dietaryVitaminB12"},
      {T::dietaryVitaminC, "hk_dietary_vitaminc", "dietaryVitaminC"},
      {T::dietaryVitaminD, "hk_dietary_vitamind", "dietaryVitaminD"},
      {T::dietaryVitaminE, "hk_dietary_vitamine", "dietaryVitaminE"},
      {T::dietaryVitaminK, "hk_dietary_vitamink", "dietaryVitaminK"},
      {T::dietaryZinc, "hk_dietary_zinc", "dietaryZinc"},
      {T::dietaryFolate, "hk_dietary_folate", "dietaryFolate"},
      {T::dietaryPotassium, "hk_dietary_potassium", "dietaryPotassium"},
      {T::dietaryRiboflavin, "hk_dietary_riboflavin", "dietaryRiboflavin"},
      {T::dietaryThiamin, "hk_dietary_thiamin", "dietaryThiamin"},
      {T::dietarySelenium, "hk_dietary_selenium", "dietarySelenium"},
      {T::dietaryFatTotal, "hk_dietary_fat_total", "dietaryFatTotal"},
      {T::dietaryFatMonounsaturated, "hk_dietary_fat_monounsaturated", "dietaryFatMonounsaturated"},
      {T::dietaryFatPolyunsaturated, "hk_dietary_fat_polyunsaturated", "dietaryFatPolyunsaturated"},
      {T::dietaryFatSaturated, "hk_dietary_fat_saturated", "dietaryFatSaturated"},
      {T::dietaryPhosphorus, "hk_dietary_phosphorus", "dietaryPhosphorus"},
      {T::dietaryNiacin, "hk_dietary_niacin", "dietaryNiacin"},
      {T::dietaryManganese, "hk_dietary_manganese", "dietaryManganese"},
      {T::dietaryIodine, "hk_dietary_iodine", "dietaryIodine"},
      {T::dietaryCopper, "hk_dietary_copper", "dietaryCopper"},
      {T::dietaryChromium, "hk_dietary_chromium", "dietaryChromium"},
      {T::dietaryChloride, "hk_dietary_chloride", "dietaryChloride"},
      {T::dietaryBiotin, "hk_dietary_biotin", "dietaryBiotin"},
      {T::dietaryMolybdenum, "hk_dietary_molybdenum", "dietaryMolybdenum"},
      {T::energyDeficit, "hk_energy_deficit", "energyDeficit"},
      {T::recordWeight, "hk_record_weight", "recordWeight"},
      {T::recordBloodPressure, "hk_record_blood_pressure", "recordBloodPressure"},
      {T::recordBloodGlucose, "hk_record_blood_glucose", "recordBloodGlucose"},
      {T::recordHeartRate, "hk_record_heart_rate", "recordHeartRate"},
      {T::recordWaistCircumference, "hk_record_waist_circumference", "recordWaistCircumference"},
      {T::recordBodyTemperature, "hk_record_body_temperature", "recordBodyTemperature"},
      {T::recordSexualActivity, "hk_record_sexual_activity", "recordSexualActivity"},
      {T::recordBodyFatPercentage, "hk_record_body_fat_percentage", "recordBodyFatPercentage"},
      {T::recordAudiogram, "hk_record_audiogram", "recordAudiogram"},
      {T::recordElectroCardiogram, "hk_record_ecg", "recordElectroCardiogram"},
      {T::recordPeakExpiratoryFlow, "hk_record_pef", "recordPeakExpiratoryFlow"},
      {T::recordHeight, "hk_record_height", "recordHeight"},
      {T::recordInsulin, "hk_record_insulin", "recordInsulin"},
      {T::recordInhaler, "hk_record_inhaler", "recordInhaler"},
      {T::recordOxygenSaturation, "hk_record_oxygen_saturation", "recordOxygenSaturation"},
      {T::toothbrushingEventBrush, "hk_toothbrushing_brush", "toothbrushingEventBrush"},
      {T::toothbrushingEventFloss, "hk_toothbrushing_floss", "toothbrushingEventFloss"},
      {T::irregularHeartRhythmEvent, "hk_irregular_heart_rhythm", "irregularHeartRhythmEvent"},
      {T::lowHeartRateEvent, "hk_low_heart_rate", "lowHeartRateEvent"},
      {T::highHeartRateEvent, "hk_high_heart_rate", "highHeartRateEvent"},
      {T::handwashingEvent, "hk_handwashing", "handwashingEvent"},
      {T::alcoholConsumption, "hk_alcohol_consumption", "alcoholConsumption"},
  }};
};

template <>
struct std::hash<habitra::HealthType> {
  std::size_t operator()(habitra::HealthType type) const noexcept {
    return static_cast<std::size_t>(type.compactNumber());
  }
};
