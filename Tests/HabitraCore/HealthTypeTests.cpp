#include <gtest/gtest.h>
#include <HabitraCore/AutomaticTaskType/HealthType.h>
#include <HabitraCore/AutomaticTaskType/HealthTypeTable.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "HabitraCore/FrequencyGenerators.h"

namespace habitra {
namespace {

using H = HealthType;
using U = TypeUnit;
using S = TypeSpeed;
using Period = TaskFrequencyPeriodType;

/// The names of the types for which something holds, in order.
std::string typesThat(const std::function<bool(HealthType)>& holds) {
  std::string names;
  for (const HealthType type : HealthType::allCases()) {
    if (holds(type)) names += std::string(caseName(type)) + " ";
  }
  return names;
}

/// Calls back for every amount row of the table.
void forEachQuantity(const std::function<void(HealthType, const QuantityRow&)>& check) {
  for (const HealthType type : HealthType::allCases()) {
    for (const QuantityRow& row : healthTypeRow(type).quantities) {
      SCOPED_TRACE(std::string(caseName(type)) + " in " + std::string(rawValue(row.unit)));
      check(type, row);
    }
  }
}

TEST(HealthTypes, EveryAmountOfEveryPeriodIsOneOnOffer) {
  forEachQuantity([](HealthType type, const QuantityRow& row) {
    for (const auto& period : RawValueTable<Period>::rows) {
      SCOPED_TRACE(period.name);
      const ValueRange options = type.quantityOptions(row.unit, period.value).value();
      const double usual = type.defaultQuantity(row.unit, period.value).value();
      EXPECT_TRUE(options.contains(usual)) << usual;
      EXPECT_TRUE(options.contains(options.highest)) << options.highest;
      EXPECT_GT(options.count(), 1);
      // As many as a picker can still show.
      EXPECT_LE(options.count(), 6'000);
      // What is chosen are multiples of the step: 250, 300, 350 and not 240, 290, 340.
      const double steps = options.lowest / options.step;
      EXPECT_NEAR(steps, std::round(steps), 1e-9);
      // Two neighbours never read the same.
      const double shown = options.step * std::pow(10, row.unit.decimals());
      EXPECT_NEAR(shown, std::round(shown), 1e-9) << options.step;
      // The usual amount of a longer period is that of its days, as near as the steps allow.
      const double numDays = period.value == Period::month  ? 30
                             : period.value == Period::year ? 365
                                                            : static_cast<double>(nominalLength(period.value));
      const double exact = row.usual * (row.unit == U::timeOfDay ? 1 : numDays);
      EXPECT_NEAR(usual, exact, options.step / 2 + 1e-9);
    }
  });
}

TEST(HealthTypes, UnitsOfATypeOfferTheSameAmounts) {
  forEachQuantity([](HealthType type, const QuantityRow& row) {
    EXPECT_EQ(quantityRow(healthTypeRow(type).quantities, row.unit), &row) << "offered twice";
    for (const QuantityRow& other : healthTypeRow(type).quantities) {
      const auto usual = other.unit.convert(other.usual, row.unit);
      if (!usual) continue;
      const double step = other.unit.convert(other.step, row.unit).value();
      EXPECT_NEAR(row.usual, *usual, std::max(row.step, step)) << rawValue(other.unit);
      // The ends differ by what round numbers differ: 100 km and 60 miles, 20,000 yards and 20,000 m.
      const double highest = other.unit.convert(other.highest, row.unit).value();
      EXPECT_NEAR(row.highest, highest, row.highest / 5) << rawValue(other.unit);
    }
  });
}

TEST(HealthTypes, TargetsBeginWithTheFirstUnitAndOnlyOfferedUnitsHaveAmounts) {
  for (const HealthType type : HealthType::allCases()) {
    SCOPED_TRACE(caseName(type));
    const auto units = type.unitOptions();
    const auto target = type.defaultTarget(Period::fortnight);
    ASSERT_EQ(target.has_value(), !units.empty());
    EXPECT_EQ(type.defaultUnit(), units.empty() ? std::nullopt : std::optional(units.front()));
    EXPECT_EQ(type.canSelectUnit(), units.size() > 1);
    for (const auto& [unit, raw, name] : RawValueTable<TypeUnit>::rows) {
      const bool isOffered = std::find(units.begin(), units.end(), unit) != units.end();
      EXPECT_EQ(type.quantityOptions(unit, Period::day).has_value(), isOffered) << name;
      EXPECT_EQ(type.defaultQuantity(unit, Period::day).has_value(), isOffered) << name;
    }
    if (!target) continue;
    EXPECT_EQ(target->unit, units.front());
    EXPECT_EQ(target->quantity, type.defaultQuantity(units.front(), Period::fortnight));
    EXPECT_EQ(target->speeds, type.defaultSpeeds());
  }
}

TEST(HealthTypes, SpeedsOnOfferFitHowManyMayBeChosen) {
  using Selection = HealthType::SpeedSelectionType;
  for (const HealthType type : HealthType::allCases()) {
    SCOPED_TRACE(caseName(type));
    const auto offered = type.sortedSpeedOptions();
    const auto chosen = type.defaultSpeeds();
    EXPECT_EQ(type.canSelectSpeed() == Selection::noSpeed, offered.empty());
    EXPECT_EQ(chosen.isEmpty(), offered.empty());
    if (type.canSelectSpeed() == Selection::single) {
      EXPECT_EQ(chosen.count(), 1);
    }
    for (const TypeSpeed speed : chosen)
      EXPECT_NE(std::find(offered.begin(), offered.end(), speed), offered.end()) << caseName(speed);
    EXPECT_EQ(std::set(offered.begin(), offered.end()).size(), offered.size());
  }
}

TEST(HealthTypes, ReadMoreToTellPacesApartAndOtherDataForOtherUnits) {
  using O = qz::QZHKObjectType;
  const HealthType walk = H::runOrWalk;
  EXPECT_EQ(walk.healthKitReadTypes(U::steps, {S::walk, S::run}), std::vector{O::stepCount});
  EXPECT_EQ(walk.healthKitReadTypes(U::steps, {}), std::vector{O::stepCount});
  EXPECT_EQ(walk.healthKitReadTypes(U::steps, {S::run}), (std::vector{O::stepCount, O::workout}));
  EXPECT_EQ(walk.healthKitReadTypes(U::distanceMiles, {S::walk}), (std::vector{O::distanceWalkingRunning, O::workout}));
  EXPECT_EQ(HealthType(H::energyDeficit).healthKitReadTypes(U::kilojoules, {S::lessThan}),
            (std::vector{O::activeEnergyBurned, O::basalEnergyBurned, O::dietaryEnergyConsumed}));
  EXPECT_EQ(HealthType(H::recordBloodPressure).healthKitReadTypes(std::nullopt, {}),
            (std::vector{O::bloodPressureSystolic, O::bloodPressureDiastolic}));
}

TEST(HealthTypes, AreClassified) {
  EXPECT_EQ(typesThat(&HealthType::canBeTimed), "mindfulMinutes toothbrushingEventBrush ");
  EXPECT_EQ(HealthType::timedTypes(), (std::vector<HealthType>{H::mindfulMinutes, H::toothbrushingEventBrush}));
  EXPECT_EQ(typesThat(&HealthType::canSelectWorkoutTypes), "workout habitraWorkout ");
  EXPECT_EQ(typesThat(&HealthType::isFluctuating), "energyDeficit ");
  EXPECT_EQ(typesThat([](HealthType type) { return type.writesToHealthKit() && !type.isDietary(); }),
            "mindfulMinutes habitraWorkout toothbrushingEventBrush toothbrushingEventFloss handwashingEvent "
            "alcoholConsumption ");
  EXPECT_EQ(typesThat([](HealthType type) { return type.isDietary() && !type.writesToHealthKit(); }), "");

  const auto hasStyle = [](QuantitySelectionStyle style) {
    return typesThat([style](HealthType type) { return type.quantitySelectionStyle() == style; });
  };
  EXPECT_EQ(hasStyle(QuantitySelectionStyle::optional), "workout ");
  const std::string withoutQuantity =
      "activity recordWeight recordBloodPressure recordBloodGlucose recordHeartRate recordWaistCircumference "
      "recordBodyTemperature recordSexualActivity recordBodyFatPercentage recordAudiogram recordElectroCardiogram "
      "recordPeakExpiratoryFlow recordHeight recordInsulin recordInhaler recordOxygenSaturation "
      "toothbrushingEventFloss "
      "irregularHeartRhythmEvent lowHeartRateEvent highHeartRateEvent handwashingEvent ";
  EXPECT_EQ(hasStyle(QuantitySelectionStyle::unavailable), withoutQuantity);
  EXPECT_EQ(
      typesThat([](HealthType type) { return !type.isQuantityBased() && !type.isFluctuating() && type != H::bedtime; }),
      withoutQuantity);
}

TEST(HealthTypes, HaveUpToFourIconsEach) {
  for (const HealthType type : HealthType::allCases()) {
    const auto icons = type.suggestedIcons();
    EXPECT_TRUE(1 <= icons.size() && icons.size() <= 4) << caseName(type);
    EXPECT_EQ(std::set(icons.begin(), icons.end()).size(), icons.size()) << caseName(type);
    for (const std::string_view icon : icons) EXPECT_TRUE(icon.starts_with("ic_") && icon.size() > 3) << icon;
  }
}

TEST(ValueRanges, HoldDecimalsAsTheyAreWritten) {
  const ValueRange tenths{.lowest = 0.1, .highest = 1, .step = 0.1};
  EXPECT_EQ(tenths.values(), (std::vector{0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9, 1.0}));
  EXPECT_TRUE(tenths.contains(0.3));
  EXPECT_FALSE(tenths.contains(0.1 + 0.2));
  EXPECT_FALSE(tenths.contains(std::numeric_limits<double>::quiet_NaN()));
  EXPECT_EQ(tenths.nearest(0.15), 0.2);
  EXPECT_EQ(tenths.next(0.25), 0.3);
  EXPECT_EQ(tenths.previous(1e300), 1.0);
  EXPECT_EQ(tenths.next(-1e300), 0.1);
  EXPECT_EQ(tenths.previous(0.1), std::nullopt);
  EXPECT_EQ(tenths.next(1), std::nullopt);
}

/// So many thousandths, read from their decimal form.
double fromThousandths(std::int64_t count) { return std::strtod((std::to_string(count) + "e-3").c_str(), nullptr); }

RC_GTEST_PROP(ValueRanges, AnswerAsAListOfTheirValuesDoes, ()) {
  const std::int64_t step = qz::between(1, 5'000);
  const std::int64_t lowest = qz::between(0, 3) == 0 ? qz::between(0, 900'000'000'000) : step * qz::between(0, 20);
  const std::int64_t beyond = qz::between(0, 40 * step);
  const ValueRange range{
      .lowest = fromThousandths(lowest), .highest = fromThousandths(lowest + beyond), .step = fromThousandths(step)};
  std::vector<double> values;
  for (std::int64_t each = lowest; each <= lowest + beyond; each += step) values.push_back(fromThousandths(each));
  RC_ASSERT(range.values() == values);

  // On a value, half-way between two, or anywhere.
  const std::int64_t asked = qz::between(0, 1) == 0 ? lowest + (step * qz::between(-3, 84)) / 2
                                                    : qz::between(lowest - 2 * step, lowest + beyond + 2 * step);
  const double value = fromThousandths(asked);
  const auto above = std::upper_bound(values.begin(), values.end(), value);
  const auto from = std::lower_bound(values.begin(), values.end(), value);
  RC_ASSERT(range.next(value) == (above == values.end() ? std::nullopt : std::optional(*above)));
  RC_ASSERT(range.previous(value) == (from == values.begin() ? std::nullopt : std::optional(*(from - 1))));
  RC_ASSERT(range.contains(value) == (from != above));
  const std::int64_t halfStepsUp = asked < lowest ? 0 : (2 * (asked - lowest) + step) / (2 * step);
  RC_ASSERT(range.nearest(value) == values[static_cast<std::size_t>(std::min(halfStepsUp, beyond / step))]);
}

}  // namespace
}  // namespace habitra
