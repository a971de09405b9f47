#include <QZHealthKit/QZHKObjectType.h>

#include <cstddef>

namespace qz {

namespace {

constexpr std::array<QZHKObjectTypeRow, 79> rows = [] {
  using T = QZHKObjectType;
  using K = QZHKObjectKind;
  using D = QZHKDimension;
  using A = QZHKAggregation;
  constexpr std::nullopt_t none = std::nullopt;
  return std::array<QZHKObjectTypeRow, 79>{{
      {T::stepCount, K::quantity, D::count, A::cumulative},
      {T::distanceWalkingRunning, K::quantity, D::length, A::cumulative},
      {T::distanceCycling, K::quantity, D::length, A::cumulative},
      {T::distanceSwimming, K::quantity, D::length, A::cumulative},
      {T::distanceWheelchair, K::quantity, D::length, A::cumulative},
      {T::pushCount, K::quantity, D::count, A::cumulative},
      {T::flightsClimbed, K::quantity, D::count, A::cumulative},
      {T::activeEnergyBurned, K::quantity, D::energy, A::cumulative},
      {T::basalEnergyBurned, K::quantity, D::energy, A::cumulative},
      {T::exerciseTime, K::quantity, D::time, A::cumulative},
      {T::standTime, K::quantity, D::time, A::cumulative},
      {T::moveTime, K::quantity, D::time, A::cumulative},
      {T::dietaryWater, K::quantity, D::volume, A::cumulative},
      {T::dietaryEnergyConsumed, K::quantity, D::energy, A::cumulative},
      {T::dietarySugar, K::quantity, D::mass, A::cumulative},
      {T::dietaryCaffeine, K::quantity, D::mass, A::cumulative},
      {T::dietaryProtein, K::quantity, D::mass, A::cumulative},
      {T::dietaryFiber, K::quantity, D::mass, A::cumulative},
      {T::dietarySodium, K::quantity, D::mass, A::cumulative},
      {T::dietaryCalcium, K::quantity, D::mass, A::cumulative},
      {T::dietaryCarbohydrates, K::quantity, D::mass, A::cumulative},
      {T::dietaryCholesterol, K::quantity, D::mass, A::cumulative},
      {T::dietaryIron, K::quantity, D::mass, A::cumulative},
      {T::dietaryMagnesium, K::quantity, D::mass, A::cumulative},
      {T::dietaryVitaminA, K::quantity, D::mass, A::cumulative},
      {T::dietaryVitaminB6, K::quantity, D::mass, A::cumulative},
      {T::dietaryVitaminB12, K::quantity, D::mass, A::cumulative},
      {T::dietaryVitaminC, K::quantity, D::mass, A::cumulative},
      {T::dietaryVitaminD, K::quantity, D::mass, A::cumulative},
      {T::dietaryVitaminE, K::quantity, D::mass, A::cumulative},
      {T::dietaryVitaminK, K::quantity, D::mass, A::cumulative},
      {T::dietaryZinc, K::quantity, D::mass, A::cumulative},
      {T::dietaryFolate, K::quantity, D::mass, A::cumulative},
      {T::dietaryPotassium, K::quantity, D::mass, A::cumulative},
      {T::dietaryRiboflavin, K::quantity, D::mass, A::cumulative},
      {T::dietaryThiamin, K::quantity, D::mass, A::cumulative},
      {T::dietarySelenium, K::quantity, D::mass, A::cumulative},
      {T::dietaryFatTotal, K::quantity, D::mass, A::cumulative},
      {T::dietaryFatMonounsaturated, K::quantity, D::mass, A::cumulative},
      {T::dietaryFatPolyunsaturated, K::quantity, D::mass, A::cumulative},
      {T::dietaryFatSaturated, K::quantity, D::mass, A::cumulative},
      {T::dietaryPhosphorus, K::quantity, D::mass, A::cumulative},
      {T::dietaryNiacin, K::quantity, D::mass, A::cumulative},
      {T::dietaryManganese, K::quantity, D::mass, A::cumulative},
      {T::dietaryIodine, K::quantity, D::mass, A::cumulative},
      {T::dietaryCopper, K::quantity, D::mass, A::cumulative},
      {T::dietaryChromium, K::quantity, D::mass, A::cumulative},
      {T::dietaryChloride, K::quantity, D::mass, A::cumulative},
      {T::dietaryBiotin, K::quantity, D::mass, A::cumulative},
      {T::dietaryMolybdenum, K::quantity, D::mass, A::cumulative},
      {T::alcoholicBeverages, K::quantity, D::count, A::cumulative},
      {T::bodyMass, K::quantity, D::mass, A::discrete},
      {T::bloodPressureSystolic, K::quantity, D::pressure, A::discrete},
      {T::bloodPressureDiastolic, K::quantity, D::pressure, A::discrete},
      {T::bloodGlucose, K::quantity, D::concentration, A::discrete},
      {T::heartRate, K::quantity, D::frequency, A::discrete},
      {T::waistCircumference, K::quantity, D::length, A::discrete},
      {T::bodyTemperature, K::quantity, D::temperature, A::discrete},
      {T::bodyFatPercentage, K::quantity, D::fraction, A::discrete},
      {T::peakExpiratoryFlowRate, K::quantity, D::flow, A::discrete},
      {T::height, K::quantity, D::length, A::discrete},
      {T::insulinDelivery, K::quantity, D::biologicalActivity, A::cumulative},
      {T::inhalerUsage, K::quantity, D::count, A::cumulative},
      {T::oxygenSaturation, K::quantity, D::fraction, A::discrete},
      {T::sleepAnalysis, K::category, none, A::cumulative},
      {T::standHour, K::category, none, A::cumulative},
      {T::rollHour, K::category, none, A::cumulative},
      {T::mindfulSession, K::category, none, A::cumulative},
      {T::sexualActivity, K::category, none, A::cumulative},
      {T::toothbrushingEvent, K::category, none, A::cumulative},
      {T::flossingEvent, K::category, none, A::cumulative},
      {T::irregularHeartRhythmEvent, K::category, none, A::cumulative},
      {T::lowHeartRateEvent, K::category, none, A::cumulative},
      {T::highHeartRateEvent, K::category, none, A::cumulative},
      {T::handwashingEvent, K::category, none, A::cumulative},
      {T::workout, K::workout, none, A::cumulative},
      {T::activitySummary, K::activitySummary, none, A::discrete},
      {T::audiogram, K::audiogram, none, A::cumulative},
      {T::electrocardiogram, K::electrocardiogram, none, A::cumulative},
  }};
}();

const QZHKObjectTypeRow& rowOf(QZHKObjectType type) { return rows[static_cast<std::size_t>(type)]; }

}  // namespace

const std::array<QZHKObjectTypeRow, 79>& objectTypeRows() { return rows; }

QZHKObjectKind kind(QZHKObjectType type) { return rowOf(type).kind; }

std::optional<QZHKDimension> dimension(QZHKObjectType type) { return rowOf(type).dimension; }

QZHKAggregation aggregation(QZHKObjectType type) { return rowOf(type).aggregation; }

bool isMeasured(QZHKObjectType type, QZHKUnit unit) {
  return dimension(unit) == dimension(type).value_or(QZHKDimension::count);
}

}  // namespace qz
