#pragma once

#include <QZHealthKit/QZHKUnit.h>
#include <QZKit/RawValue.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace qz {

/// What a record of a health store is about. The raw value, under which files name it, is the name of the case.
/// Quantities come first, new ones last among them; new types of another kind come at the end.
enum class QZHKObjectType : std::uint8_t {
  stepCount,
  distanceWalkingRunning,
  distanceCycling,
  distanceSwimming,
  distanceWheelchair,
  pushCount,
  flightsClimbed,
  activeEnergyBurned,
  basalEnergyBurned,
  exerciseTime,
  standTime,
  moveTime,
  dietaryWater,
  dietaryEnergyConsumed,
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
  alcoholicBeverages,
  bodyMass,
  bloodPressureSystolic,
  bloodPressureDiastolic,
  bloodGlucose,
  heartRate,
  waistCircumference,
  bodyTemperature,
  bodyFatPercentage,
  peakExpiratoryFlowRate,
  height,
  insulinDelivery,
  inhalerUsage,
  oxygenSaturation,
  activeEnergyGoal,  ///< of the move ring: what is to be spent in a day; it stands until the next one
  exerciseGoal,      ///< of the exercise ring, likewise
  standGoal,         ///< of the stand ring, likewise: a number of hours, in `count`
  applicationUsage,  ///< how long an application was used; its source is the application
  websiteUsage,      ///< how long a site was used; its source is the site
  categoryUsage,     ///< how long applications of a category were used; its source is the category
  sleepAnalysis,
  standHour,  ///< an hour in which the person stood for a while; the sample covers the whole hour
  rollHour,   ///< an hour in which the person rolled in a wheelchair for a while; likewise
  mindfulSession,
  sexualActivity,
  toothbrushingEvent,
  flossingEvent,
  irregularHeartRhythmEvent,
  lowHeartRateEvent,
  highHeartRateEvent,
  handwashingEvent,
  workout,
  activitySummary,
  audiogram,
  electrocardiogram,
};

template <>
struct RawValueTable<QZHKObjectType> {
  using T = QZHKObjectType;
  static constexpr std::array<RawValueRow<T, std::string_view>, 85> rows{{
      {T::stepCount, "stepCount", "stepCount"},
      {T::distanceWalkingRunning, "distanceWalkingRunning", "distanceWalkingRunning"},
      {T::distanceCycling, "distanceCycling", "distanceCycling"},
      {T::distanceSwimming, "distanceSwimming", "distanceSwimming"},
      {T::distanceWheelchair, "distanceWheelchair", "distanceWheelchair"},
      {T::pushCount, "pushCount", "pushCount"},
      {T::flightsClimbed, "flightsClimbed", "flightsClimbed"},
      {T::activeEnergyBurned, "activeEnergyBurned", "activeEnergyBurned"},
      {T::basalEnergyBurned, "basalEnergyBurned", "basalEnergyBurned"},
      {T::exerciseTime, "exerciseTime", "exerciseTime"},
      {T::standTime, "standTime", "standTime"},
      {T::moveTime, "moveTime", "moveTime"},
      {T::dietaryWater, "dietaryWater", "dietaryWater"},
      {T::dietaryEnergyConsumed, "dietaryEnergyConsumed", "dietaryEnergyConsumed"},
      {T::dietarySugar, "dietarySugar", "dietarySugar"},
      {T::dietaryCaffeine, "dietaryCaffeine", "dietaryCaffeine"},
      {T::dietaryProtein, "dietaryProtein", "dietaryProtein"},
      {T::dietaryFiber, "dietaryFiber", "dietaryFiber"},
      {T::dietarySodium, "dietarySodium", "dietarySodium"},
      {T::dietaryCalcium, "dietaryCalcium", "dietaryCalcium"},
      {T::dietaryCarbohydrates, "dietaryCarbohydrates", "dietaryCarbohydrates"},
      {T::dietaryCholesterol, "dietaryCholesterol", "dietaryCholesterol"},
      {T::dietaryIron, "dietaryIron", "dietaryIron"},
      {T::dietaryMagnesium, "dietaryMagnesium", "dietaryMagnesium"},
      {T::dietaryVitaminA, "dietaryVitaminA", "dietaryVitaminA"},
      {T::dietaryVitaminB6, "dietaryVitaminB6", "dietaryVitaminB6"},
      {T::dietaryVitaminB12, "dietaryVitaminB12", "dietaryVitaminB12"},
      {T::dietaryVitaminC, "dietaryVitaminC", "dietaryVitaminC"},
      {T::dietaryVitaminD, "dietaryVitaminD", "dietaryVitaminD"},
      {T::dietaryVitaminE, "dietaryVitaminE", "dietaryVitaminE"},
      {T::dietaryVitaminK, "dietaryVitaminK", "dietaryVitaminK"},
      {T::dietaryZinc, "dietaryZinc", "dietaryZinc"},
      {T::dietaryFolate, "dietaryFolate", "dietaryFolate"},
      {T::dietaryPotassium, "dietaryPotassium", "dietaryPotassium"},
      {T::dietaryRiboflavin, "dietaryRiboflavin", "dietaryRiboflavin"},
      {T::dietaryThiamin, "dietaryThiamin", "dietaryThiamin"},
      {T::dietarySelenium, "dietarySelenium", "dietarySelenium"},
      {T::dietaryFatTotal, "dietaryFatTotal", "dietaryFatTotal"},
      {T::dietaryFatMonounsaturated, "dietaryFatMonounsaturated", "dietaryFatMonounsaturated"},
      {T::dietaryFatPolyunsaturated, "dietaryFatPolyunsaturated", "dietaryFatPolyunsaturated"},
      {T::dietaryFatSaturated, "dietaryFatSaturated", "dietaryFatSaturated"},
      {T::dietaryPhosphorus, "dietaryPhosphorus", "dietaryPhosphorus"},
      {T::dietaryNiacin, "dietaryNiacin", "dietaryNiacin"},
      {T::dietaryManganese, "dietaryManganese", "dietaryManganese"},
      {T::dietaryIodine, "dietaryIodine", "dietaryIodine"},
      {T::dietaryCopper, "dietaryCopper", "dietaryCopper"},
      {T::dietaryChromium, "dietaryChromium", "dietaryChromium"},
      {T::dietaryChloride, "dietaryChloride", "dietaryChloride"},
      {T::dietaryBiotin, "dietaryBiotin", "dietaryBiotin"},
      {T::dietaryMolybdenum, "dietaryMolybdenum", "dietaryMolybdenum"},
      {T::alcoholicBeverages, "alcoholicBeverages", "alcoholicBeverages"},
      {T::bodyMass, "bodyMass", "bodyMass"},
      {T::bloodPressureSystolic, "bloodPressureSystolic", "bloodPressureSystolic"},
      {T::bloodPressureDiastolic, "bloodPressureDiastolic", "bloodPressureDiastolic"},
      {T::bloodGlucose, "bloodGlucose", "bloodGlucose"},
      {T::heartRate, "heartRate", "heartRate"},
      {T::waistCircumference, "waistCircumference", "waistCircumference"},
      {T::bodyTemperature, "bodyTemperature", "bodyTemperature"},
      {T::bodyFatPercentage, "bodyFatPercentage", "bodyFatPercentage"},
      {T::peakExpiratoryFlowRate, "peakExpiratoryFlowRate", "peakExpiratoryFlowRate"},
      {T::height, "height", "height"},
      {T::insulinDelivery, "insulinDelivery", "insulinDelivery"},
      {T::inhalerUsage, "inhalerUsage", "inhalerUsage"},
      {T::oxygenSaturation, "oxygenSaturation", "oxygenSaturation"},
      {T::activeEnergyGoal, "activeEnergyGoal", "activeEnergyGoal"},
      {T::exerciseGoal, "exerciseGoal", "exerciseGoal"},
      {T::standGoal, "standGoal", "standGoal"},
      {T::applicationUsage, "applicationUsage", "applicationUsage"},
      {T::websiteUsage, "websiteUsage", "websiteUsage"},
      {T::categoryUsage, "categoryUsage", "categoryUsage"},
      {T::sleepAnalysis, "sleepAnalysis", "sleepAnalysis"},
      {T::standHour, "standHour", "standHour"},
      {T::rollHour, "rollHour", "rollHour"},
      {T::mindfulSession, "mindfulSession", "mindfulSession"},
      {T::sexualActivity, "sexualActivity", "sexualActivity"},
      {T::toothbrushingEvent, "toothbrushingEvent", "toothbrushingEvent"},
      {T::flossingEvent, "flossingEvent", "flossingEvent"},
      {T::irregularHeartRhythmEvent, "irregularHeartRhythmEvent", "irregularHeartRhythmEvent"},
      {T::lowHeartRateEvent, "lowHeartRateEvent", "lowHeartRateEvent"},
      {T::highHeartRateEvent, "highHeartRateEvent", "highHeartRateEvent"},
      {T::handwashingEvent, "handwashingEvent", "handwashingEvent"},
      {T::workout, "workout", "workout"},
      {T::activitySummary, "activitySummary", "activitySummary"},
      {T::audiogram, "audiogram", "audiogram"},
      {T::electrocardiogram, "electrocardiogram", "electrocardiogram"},
  }};
};

/// What form the records of a type have.
enum class QZHKObjectKind : std::uint8_t {
  quantity,         ///< samples with an amount in a unit
  category,         ///< samples that say what was the case, or only that something was
  workout,          ///< samples of one activity each
  activitySummary,  ///< one summary a day: no samples
};

/// What several samples of a type amount to.
enum class QZHKAggregation : std::uint8_t {
  cumulative,  ///< they add up over time: amounts, or the number of samples where a sample has no amount
  discrete,    ///< each stands for its moment: a sum means nothing, extremes and the latest do
};

/// Whether what two sources say of the same time is one thing or two, in the sum of a cumulative type. Nothing asks it
/// of a discrete one.
enum class QZHKOrigin : std::uint8_t {
  measured,  ///< one: devices record it as it goes on, and two that do so at the same time record the same
  entered,   ///< two: people enter it, one by one, as a glass of water during a meal; or each source is what was used
};

[[nodiscard]] QZHKObjectKind kind(QZHKObjectType type);
/// What amounts measure; none unless the kind is quantity.
[[nodiscard]] std::optional<QZHKDimension> dimension(QZHKObjectType type);
[[nodiscard]] QZHKAggregation aggregation(QZHKObjectType type);
[[nodiscard]] QZHKOrigin origin(QZHKObjectType type);

/// Whether sums and other figures of this type can be given in the unit. What has no amounts is counted, in `count`;
/// workouts can be summed by energy and by distance as well.
[[nodiscard]] bool isMeasured(QZHKObjectType type, QZHKUnit unit);

}  // namespace qz
