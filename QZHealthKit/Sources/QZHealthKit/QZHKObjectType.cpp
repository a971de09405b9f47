#include <QZHealthKit/QZHKObjectType.h>
#include <QZKit/OrderedRows.h>

#include <array>
#include <cstddef>

namespace qz {

namespace {

/// What is fixed about a type.
struct ObjectTypeRow {
  QZHKObjectType type;
  QZHKObjectKind kind;
  std::optional<QZHKDimension> dimension;
  QZHKAggregation aggregation;
  QZHKOrigin origin;
};

constexpr std::array<ObjectTypeRow, 85> rows = [] {
  using T = QZHKObjectType;
  using K = QZHKObjectKind;
  using D = QZHKDimension;
  using A = QZHKAggregation;
  using O = QZHKOrigin;
  constexpr std::nullopt_t none = std::nullopt;
  return std::array<ObjectTypeRow, 85>{{
      {T::stepCount, K::quantity, D::count, A::cumulative, O::measured},
      {T::distanceWalkingRunning, K::quantity, D::length, A::cumulative, O::measured},
      {T::distanceCycling, K::quantity, D::length, A::cumulative, O::measured},
      {T::distanceSwimming, K::quantity, D::length, A::cumulative, O::measured},
      {T::distanceWheelchair, K::quantity, D::length, A::cumulative, O::measured},
      {T::pushCount, K::quantity, D::count, A::cumulative, O::measured},
      {T::flightsClimbed, K::quantity, D::count, A::cumulative, O::measured},
      {T::activeEnergyBurned, K::quantity, D::energy, A::cumulative, O::measured},
      {T::basalEnergyBurned, K::quantity, D::energy, A::cumulative, O::measured},
      {T::exerciseTime, K::quantity, D::time, A::cumulative, O::measured},
      {T::standTime, K::quantity, D::time, A::cumulative, O::measured},
      {T::moveTime, K::quantity, D::time, A::cumulative, O::measured},
      {T::dietaryWater, K::quantity, D::volume, A::cumulative, O::entered},
      {T::dietaryEnergyConsumed, K::quantity, D::energy, A::cumulative, O::entered},
      {T::dietarySugar, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryCaffeine, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryProtein, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryFiber, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietarySodium, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryCalcium, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryCarbohydrates, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryCholesterol, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryIron, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryMagnesium, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryVitaminA, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryVitaminB6, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryVitaminB12, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryVitaminC, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryVitaminD, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryVitaminE, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryVitaminK, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryZinc, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryFolate, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryPotassium, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryRiboflavin, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryThiamin, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietarySelenium, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryFatTotal, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryFatMonounsaturated, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryFatPolyunsaturated, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryFatSaturated, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryPhosphorus, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryNiacin, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryManganese, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryIodine, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryCopper, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryChromium, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryChloride, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryBiotin, K::quantity, D::mass, A::cumulative, O::entered},
      {T::dietaryMolybdenum, K::quantity, D::mass, A::cumulative, O::entered},
      {T::alcoholicBeverages, K::quantity, D::count, A::cumulative, O::entered},
      {T::bodyMass, K::quantity, D::mass, A::discrete, O::measured},
      {T::bloodPressureSystolic, K::quantity, D::pressure, A::discrete, O::measured},
      {T::bloodPressureDiastolic, K::quantity, D::pressure, A::discrete, O::measured},
      {T::bloodGlucose, K::quantity, D::concentration, A::discrete, O::measured},
      {T::heartRate, K::quantity, D::frequency, A::discrete, O::measured},
      {T::waistCircumference, K::quantity, D::length, A::discrete, O::measured},
      {T::bodyTemperature, K::quantity, D::temperature, A::discrete, O::measured},
      {T::bodyFatPercentage, K::quantity, D::fraction, A::discrete, O::measured},
      {T::peakExpiratoryFlowRate, K::quantity, D::flow, A::discrete, O::measured},
      {T::height, K::quantity, D::length, A::discrete, O::measured},
      {T::insulinDelivery, K::quantity, D::biologicalActivity, A::cumulative, O::entered},
      {T::inhalerUsage, K::quantity, D::count, A::cumulative, O::entered},
      {T::oxygenSaturation, K::quantity, D::fraction, A::discrete, O::measured},
      {T::activeEnergyGoal, K::quantity, D::energy, A::discrete, O::entered},
      {T::exerciseGoal, K::quantity, D::time, A::discrete, O::entered},
      {T::standGoal, K::quantity, D::count, A::discrete, O::entered},
      {T::applicationUsage, K::quantity, D::time, A::cumulative, O::entered},
      {T::websiteUsage, K::quantity, D::time, A::cumulative, O::entered},
      {T::categoryUsage, K::quantity, D::time, A::cumulative, O::entered},
      {T::sleepAnalysis, K::category, none, A::cumulative, O::measured},
      {T::standHour, K::category, none, A::cumulative, O::measured},
      {T::rollHour, K::category, none, A::cumulative, O::measured},
      {T::mindfulSession, K::category, none, A::cumulative, O::measured},
      {T::sexualActivity, K::category, none, A::cumulative, O::measured},
      {T::toothbrushingEvent, K::category, none, A::cumulative, O::measured},
      {T::flossingEvent, K::category, none, A::cumulative, O::measured},
      {T::irregularHeartRhythmEvent, K::category, none, A::cumulative, O::measured},
      {T::lowHeartRateEvent, K::category, none, A::cumulative, O::measured},
      {T::highHeartRateEvent, K::category, none, A::cumulative, O::measured},
      {T::handwashingEvent, K::category, none, A::cumulative, O::measured},
      {T::workout, K::workout, none, A::cumulative, O::measured},
      {T::activitySummary, K::activitySummary, none, A::discrete, O::measured},
      {T::audiogram, K::category, none, A::cumulative, O::measured},
      {T::electrocardiogram, K::category, none, A::cumulative, O::measured},
  }};
}();

static_assert(standInOrder(rows, &ObjectTypeRow::type), "a row is found by its place");

const ObjectTypeRow& rowOf(QZHKObjectType type) { return rows[static_cast<std::size_t>(type)]; }

}  // namespace

QZHKObjectKind kind(QZHKObjectType type) { return rowOf(type).kind; }

std::optional<QZHKDimension> dimension(QZHKObjectType type) { return rowOf(type).dimension; }

QZHKAggregation aggregation(QZHKObjectType type) { return rowOf(type).aggregation; }

QZHKOrigin origin(QZHKObjectType type) { return rowOf(type).origin; }

bool isMeasured(QZHKObjectType type, QZHKUnit unit) {
  const QZHKDimension asked = dimension(unit);
  if (kind(type) == QZHKObjectKind::workout && (asked == QZHKDimension::energy || asked == QZHKDimension::length)) {
    return true;
  }
  return asked == dimension(type).value_or(QZHKDimension::count);
}

}  // namespace qz
