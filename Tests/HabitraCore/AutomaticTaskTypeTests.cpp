#include <gtest/gtest.h>
#include <HabitraCore/AutomaticTaskType/AutomaticTaskType.h>
#include <HabitraCore/AutomaticTaskType/EnergyDeficit.h>
#include <HabitraCore/AutomaticTaskType/StoredAutomaticType.h>
#include <QZHealthKit/QZHKQuery.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <nlohmann/json.hpp>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "HabitraCore/AutomaticTypeGenerators.h"
#include "HabitraCore/CodingComplaints.h"

namespace habitra {
namespace {

using Period = TaskFrequencyPeriodType;
using TaskType = AutomaticTaskType::TaskType;

AutomaticTaskType typed(HealthType type, double quantity, std::optional<TypeUnit> unit, TypeSpeeds speeds = {}) {
  AutomaticTaskType automatic{.type = TaskType::healthKit(type), .quantity = quantity, .unit = unit};
  automatic.speeds = speeds;
  return automatic;
}

std::vector<std::uint8_t> bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

/// Names and raw values in order of declaration, each read back; the place is the number.
template <typename E>
std::string rowsInOrder() {
  std::string found;
  std::set<std::string_view> distinct;
  for (const auto& row : RawValueTable<E>::rows) {
    EXPECT_EQ(fromRawValue<E>(row.raw), row.value) << row.raw;
    found += std::string(row.name) + " " + std::string(row.raw) + " ";
    distinct.insert(row.raw);
  }
  EXPECT_EQ(distinct.size(), RawValueTable<E>::rows.size());
  for (const char* const unknown : {"", "hk_", "HK_SLEEP", "sleep ", "unknown"})
    EXPECT_EQ(fromRawValue<E>(unknown), std::nullopt) << unknown;
  return found;
}

// What stores have held from the beginning.
TEST(AutomaticTypes, KeepTheirStoredTextsAndOrder) {
  EXPECT_EQ(rowsInOrder<HealthType>(),
            "activity hk_activity sleep hk_sleep inBed hk_in_bed bedtime hk_bedtime standHours hk_stand "
            "standMinutes hk_stand_minutes rollHours hk_roll_hours moveMinutes hk_move_minutes runOrWalk "
            "hk_distance climbFlights hk_climb_flights burnActiveEnergy hk_burn_active_calories "
            "wheelchairDistance hk_wheelchair_distance wheelchairPushes hk_wheelchair_pushes workout hk_workout "
            "exercise hk_exercise cycle hk_cycle swimDistance hk_swim_distance mindfulMinutes hk_breathe "
            "habitraWorkout hk_workout_habitra dietaryDrinkWater hk_water dietaryEnergy hk_dietary_energy "
            "dietarySugar hk_dietary_sugar dietaryCaffeine hk_dietary_caffeine dietaryProtein hk_dietary_protein "
            "dietaryFiber hk_dietary_fiber dietarySodium hk_dietary_sodium dietaryCalcium hk_dietary_calcium "
            "dietaryCarbohydrates hk_dietary_carbs dietaryCholesterol hk_dietary_cholesterol dietaryIron "
            "hk_dietary_iron dietaryMagnesium hk_dietary_magnesium dietaryVitaminA hk_dietary_vitamina "
            "dietaryVitaminB6 hk_dietary_vitaminb6 dietaryVitaminB12 hk_dietary_vitaminb12 dietaryVitaminC "
            "hk_dietary_vitaminc dietaryVitaminD hk_dietary_vitamind dietaryVitaminE hk_dietary_vitamine "
            "dietaryVitaminK hk_dietary_vitamink dietaryZinc hk_dietary_zinc dietaryFolate hk_dietary_folate "
            "dietaryPotassium hk_dietary_potassium dietaryRiboflavin hk_dietary_riboflavin dietaryThiamin "
            "hk_dietary_thiamin dietarySelenium hk_dietary_selenium dietaryFatTotal hk_dietary_fat_total "
            "dietaryFatMonounsaturated hk_dietary_fat_monounsaturated dietaryFatPolyunsaturated "
            "hk_dietary_fat_polyunsaturated dietaryFatSaturated hk_dietary_fat_saturated dietaryPhosphorus "
            "hk_dietary_phosphorus dietaryNiacin hk_dietary_niacin dietaryManganese hk_dietary_manganese "
            "dietaryIodine hk_dietary_iodine dietaryCopper hk_dietary_copper dietaryChromium hk_dietary_chromium "
            "dietaryChloride hk_dietary_chloride dietaryBiotin hk_dietary_biotin dietaryMolybdenum "
            "hk_dietary_molybdenum energyDeficit hk_energy_deficit recordWeight hk_record_weight "
            "recordBloodPressure hk_record_blood_pressure recordBloodGlucose hk_record_blood_glucose "
            "recordHeartRate hk_record_heart_rate recordWaistCircumference hk_record_waist_circumference "
            "recordBodyTemperature hk_record_body_temperature recordSexualActivity hk_record_sexual_activity "
            "recordBodyFatPercentage hk_record_body_fat_percentage recordAudiogram hk_record_audiogram "
            "recordElectroCardiogram hk_record_ecg recordPeakExpiratoryFlow hk_record_pef recordHeight "
            "hk_record_height recordInsulin hk_record_insulin recordInhaler hk_record_inhaler "
            "recordOxygenSaturation hk_record_oxygen_saturation toothbrushingEventBrush hk_toothbrushing_brush "
            "toothbrushingEventFloss hk_toothbrushing_floss irregularHeartRhythmEvent hk_irregular_heart_rhythm "
            "lowHeartRateEvent hk_low_heart_rate highHeartRateEvent hk_high_heart_rate handwashingEvent "
            "hk_handwashing alcoholConsumption hk_alcohol_consumption ");
  EXPECT_EQ(rowsInOrder<TypeUnit>(),
            "distanceKm km distanceMeters m distanceMiles miles distanceYards yd steps steps pushes pushes drinks "
            "drinks fluidOuncesUS floz_us litres litres millilitres mls cupsUS cups_us calories kcal kilojoules "
            "kj durationSeconds seconds durationMinutes minutes durationHours hours flights flights milligrams "
            "milligrams micrograms micrograms grams grams timeOfDay timeOfDay ");
  EXPECT_EQ(rowsInOrder<TypeSpeed>(),
            "walk walk run run timed timed asleepBefore asleep_before asleepAfter asleep_after awakeBefore "
            "awake_before awakeAfter awake_after inBedBefore in_bed_before inBedAfter in_bed_after outOfBedBefore "
            "out_of_bed_before outOfBedAfter out_of_bed_after greaterThan greater_than lessThan less_than "
            "sleepAsleep sleep sleepCore sleep_core sleepDeep sleep_deep sleepREM sleep_rem inBed in_bed ");
  EXPECT_EQ(rowsInOrder<DataSource>(), "currentTask curr allData all ");
}

TEST(AutomaticTypes, SourcesAreNumberedAndReadOnlyWhatTheyKnow) {
  const auto sources = TaskType::allCases();
  ASSERT_EQ(sources.size(), 82u);
  for (std::size_t i = 0; i < sources.size(); ++i) {
    EXPECT_EQ(sources[i].compactNumber(), static_cast<std::int64_t>(i));
    EXPECT_EQ(TaskType::fromRawValue(sources[i].rawValue()), sources[i]);
    EXPECT_EQ(sources[i].healthType().has_value(), i < 80);
  }
  EXPECT_EQ(TaskType::fromRawValue("hk_breathe"), TaskType::healthKit(HealthType::mindfulMinutes));
  EXPECT_EQ(TaskType::fromRawValue("hk_distance"), TaskType::healthKit(HealthType::runOrWalk));
  EXPECT_EQ(TaskType::fromRawValue("timer"), TaskType::timer());
  EXPECT_EQ(TaskType::fromRawValue("screenTime"), TaskType::screenTime());
  for (const char* const unknown : {"", "hk_mindful", "Timer", "screentime"})
    EXPECT_EQ(TaskType::fromRawValue(unknown), std::nullopt) << unknown;
}

using H = HealthType;
using U = TypeUnit;

/// Something that is computed, and what it has to come to.
struct Sum {
  std::string what;
  std::function<std::vector<double>()> compute;
  std::vector<double> expected;

  friend void PrintTo(const Sum& sum, std::ostream* out) { *out << sum.what; }
};

/// Into how many parts a target is split: suggested, to begin with, at most.
Sum parts(const AutomaticTaskType& type, Period period, double suggested, double standard, double most) {
  const auto compute = [type, period]() -> std::vector<double> {
    return {static_cast<double>(type.suggestedNumPartialCompletions(period)),
            static_cast<double>(type.defaultPartialCompletions(period)),
            static_cast<double>(type.maxPartialCompletions(period))};
  };
  return {nlohmann::json(type).dump() + " in a " + std::string(caseName(period)), compute, {suggested, standard, most}};
}

/// A timer: the quantity it keeps, what the rules measure it by, and what one completion lasts, to the very second.
Sum timed(double seconds, std::int64_t count, TypeUnit unit, double quantity) {
  const auto compute = [=]() -> std::vector<double> {
    const auto timer = AutomaticTaskType::timer(seconds, count, unit, DataSource::currentTask);
    return {timer.quantity, timer.measure().target, timer.timerDurationPerCompletion(count)};
  };
  return {std::to_string(count) + " x " + std::to_string(seconds) + " s in " + std::string(rawValue(unit)),
          compute,
          {quantity, seconds * static_cast<double>(count), seconds}};
}

/// An amount as it is recorded, of water and as a distance; each also sees the units of the other.
Sum cut(double quantity, TypeUnit unit, double water, double distance) {
  const auto compute = [=]() -> std::vector<double> {
    return {HealthType::normalizeWaterValue(quantity, unit), HealthType::normalizeDistanceValue(quantity, unit)};
  };
  return {std::to_string(quantity) + " " + std::string(rawValue(unit)), compute, {water, distance}};
}

class Arithmetic : public testing::TestWithParam<Sum> {};

TEST_P(Arithmetic, IsExact) { EXPECT_EQ(GetParam().compute(), GetParam().expected); }

INSTANTIATE_TEST_SUITE_P(
    AutomaticTypes, Arithmetic,
    testing::Values(parts(typed(H::dietaryDrinkWater, 2, U::litres), Period::day, 8, 1, 18),
                    parts(typed(H::dietaryDrinkWater, 64, U::fluidOuncesUS), Period::day, 8, 1, 18),
                    parts(typed(H::dietaryDrinkWater, 3000, U::millilitres), Period::day, 12, 1, 18),
                    parts(typed(H::dietaryDrinkWater, 20, U::cupsUS), Period::day, 18, 18, 18),
                    parts(typed(H::dietaryDrinkWater, 20, U::cupsUS), Period::week, 20, 20, 36),
                    parts(typed(H::dietaryDrinkWater, 12, U::cupsUS), Period::day, 12, 12, 18),
                    parts(typed(H::dietaryDrinkWater, 0.5, U::cupsUS), Period::day, 1, 1, 18),
                    parts(typed(H::dietaryDrinkWater, 500, U::grams), Period::day, 1, 1, 18),
                    parts(typed(H::handwashingEvent, 0, std::nullopt), Period::day, 6, 1, 18),
                    parts(typed(H::handwashingEvent, 20, U::durationSeconds), Period::day, 1, 1, 1),
                    parts(typed(H::alcoholConsumption, 3.9, U::drinks), Period::day, 3, 1, 18),
                    parts(typed(H::alcoholConsumption, 60, U::drinks), Period::month, 36, 1, 36),
                    parts(typed(H::toothbrushingEventBrush, 2, U::durationMinutes), Period::day, 2, 1, 18),
                    parts(typed(H::mindfulMinutes, 10, U::durationMinutes), Period::year, 1, 1, 36),
                    parts(typed(H::dietaryIron, 18, U::milligrams), Period::day, 1, 1, 18),
                    parts(typed(H::energyDeficit, 500, U::calories), Period::day, 1, 1, 1),
                    parts(typed(H::activity, 0, std::nullopt), Period::day, 1, 1, 1),
                    parts(typed(H::workout, 0, std::nullopt), Period::fortnight, 1, 1, 36),
                    parts(typed(H::workout, 30, U::durationMinutes), Period::week, 1, 1, 1),
                    parts(typed(H::recordWeight, 0, std::nullopt), Period::day, 1, 1, 18),
                    parts(AutomaticTaskType{}, Period::day, 1, 1, 18),
                    parts(AutomaticTaskType{.type = TaskType::screenTime()}, Period::week, 1, 1, 1),
                    timed(600, 3, U::durationMinutes, 30), timed(600, 3, U::durationHours, 0.5),
                    timed(600, 3, U::durationSeconds, 1800), timed(600, 3, U::litres, 1800),
                    timed(125, 1, U::durationMinutes, 125.0 / 60), timed(1'980, 7, U::durationHours, 3.85),
                    timed(31, 36, U::durationMinutes, 18.6), cut(0, U::litres, 0, 0), cut(0.04, U::litres, 0.1, 0.1),
                    cut(1.29, U::litres, 1.2, 1.2), cut(0.3, U::litres, 0.3, 0.3), cut(-2, U::litres, 0.1, 0.1),
                    cut(0.2, U::cupsUS, 1, 0.2), cut(2.57, U::cupsUS, 2.5, 2.5), cut(0.99, U::fluidOuncesUS, 1, 0.9),
                    cut(250.06, U::millilitres, 250, 250), cut(4.99, U::distanceKm, 4.9, 4.9),
                    cut(0.01, U::distanceMiles, 0.1, 0.1), cut(399.9, U::distanceMeters, 399.9, 399),
                    cut(0.4, U::distanceYards, 0.4, 1)));

TEST(AutomaticTypes, AnAmountThatIsNoCountStopsTheProgram) {
  for (const double wild : {std::numeric_limits<double>::infinity(), std::nan(""), 1e300}) {
    EXPECT_DEATH(
        static_cast<void>(typed(H::dietaryDrinkWater, wild, U::litres).suggestedNumPartialCompletions(Period::day)),
        "not a count");
    EXPECT_DEATH(static_cast<void>(typed(H::dietaryDrinkWater, wild, U::cupsUS).defaultPartialCompletions(Period::day)),
                 "not a count");
    EXPECT_DEATH(
        static_cast<void>(typed(H::alcoholConsumption, wild, U::drinks).suggestedNumPartialCompletions(Period::day)),
        "not a count");
    EXPECT_DEATH(static_cast<void>(HealthType::normalizeWaterValue(wild, U::litres)), "not a count");
    EXPECT_DEATH(static_cast<void>(HealthType::normalizeDistanceValue(wild, U::distanceKm)), "not a count");
  }
}

TEST(AutomaticTypes, ATimerIsMadeOfItsCompletions) {
  AutomaticTaskType timer = AutomaticTaskType::timer(600, 3, U::durationMinutes, DataSource::allData);
  EXPECT_EQ(timer.type, TaskType::timer());
  EXPECT_EQ(timer.speeds, TypeSpeeds{TypeSpeed::timed});
  EXPECT_EQ(timer.extra, std::nullopt);
  EXPECT_EQ(timer.dataSource, DataSource::allData);
  EXPECT_EQ(timer.unit, U::durationMinutes);
  timer.setTimerDuration(90, 2);
  EXPECT_EQ(timer.quantity, 3);
  EXPECT_EQ(timer.measure(), (TaskMeasure{.kind = TaskMeasure::Kind::timed, .target = 180}));
}

TEST(AutomaticTypes, UnitsConvertWithinWhatTheyMeasure) {
  EXPECT_EQ(TypeUnit(U::distanceMiles).convert(5, U::distanceKm), 8.04672);
  EXPECT_EQ(TypeUnit(U::distanceYards).convert(1760, U::distanceMiles), 1);
  EXPECT_EQ(TypeUnit(U::cupsUS).convert(8, U::fluidOuncesUS), 64);
  EXPECT_EQ(TypeUnit(U::fluidOuncesUS).convert(1, U::millilitres), 29.5735295625);
  EXPECT_EQ(TypeUnit(U::calories).convert(500, U::kilojoules), 2092);
  EXPECT_EQ(TypeUnit(U::durationMinutes).convert(90, U::durationHours), 1.5);
  EXPECT_EQ(TypeUnit(U::micrograms).convert(2.4, U::milligrams), 0.0024);
  EXPECT_EQ(AutomaticTaskType::taskProgressValueFromMetres(1'609.344, U::distanceMiles), 1);
  EXPECT_EQ(AutomaticTaskType::taskProgressValueFromMetres(100, U::steps), std::nullopt);
  for (const auto& from : RawValueTable<U>::rows) {
    for (const auto& to : RawValueTable<U>::rows) {
      SCOPED_TRACE(std::string(from.raw) + " to " + std::string(to.raw));
      const auto there = from.value.convert(1000, to.value);
      EXPECT_EQ(there.has_value(), from.value.dimension() == to.value.dimension());
      if (!there) continue;
      EXPECT_NEAR(to.value.convert(*there, from.value).value(), 1000, 1e-9);
      if (!from.value.isDuration()) continue;
      EXPECT_EQ(*there, to.value.convertFromTimeInterval(from.value.convertToTimeInterval(1000)));
    }
  }
}

TEST(AutomaticTypes, TheRulesMeasureThemByWhatTheyCount) {
  using Kind = TaskMeasure::Kind;
  const auto measure = [](HealthType type) {
    return AutomaticTaskType::ofNewTask(TaskType::healthKit(type), Period::day).measure();
  };
  EXPECT_EQ(measure(H::activity).kind, Kind::rings);
  EXPECT_EQ(measure(H::dietaryDrinkWater), (TaskMeasure{.kind = Kind::quantity, .target = 2}));
  EXPECT_EQ(measure(H::mindfulMinutes), (TaskMeasure{.kind = Kind::timed, .target = 600}));
  EXPECT_EQ(measure(H::bedtime).kind, Kind::byHand) << "no part of a time of day is reached before the whole";
  EXPECT_EQ(measure(H::recordWeight).kind, Kind::byHand);
  EXPECT_EQ(measure(H::energyDeficit).kind, Kind::byHand) << "it falls again with every meal";
  EXPECT_EQ(typed(H::workout, 0, std::nullopt).measure().kind, Kind::byHand);
  const AutomaticTaskType screenTime{.type = TaskType::screenTime(), .quantity = 45, .unit = U::durationMinutes};
  EXPECT_EQ(screenTime.measure(), (TaskMeasure{.kind = Kind::quantity, .target = 45}));
}

TEST(AutomaticTypes, StartWithWhatTheirSourceOffers) {
  for (const TaskType& source : TaskType::allCases()) {
    SCOPED_TRACE(source.rawValue());
    const auto type = AutomaticTaskType::ofNewTask(source, Period::week);
    EXPECT_EQ(type.unit.has_value(), type.quantitySelectionStyle() != QuantitySelectionStyle::unavailable);
    EXPECT_EQ(type.canAdjustDifficulty(), type.unit.has_value());
    if (type.unit) {
      EXPECT_TRUE(type.quantityOptions(Period::week)->contains(type.quantity)) << type.quantity;
    }
    EXPECT_FALSE(type.displayTitleForTargetQuantity({}).text().empty());
  }
  const auto timer = AutomaticTaskType::ofNewTask(TaskType::timer(), Period::day);
  EXPECT_TRUE(timer.isTimed());
  EXPECT_TRUE(timer.quantityCanCountdown());
  EXPECT_EQ(timer.measure(), (TaskMeasure{.kind = TaskMeasure::Kind::timed, .target = 600}));
  EXPECT_EQ(timer.displayTitleForTargetQuantity({.numPartialCompletions = 2}).text(), "2 × 5 minutes");
  EXPECT_FALSE(AutomaticTaskType{}.quantityCanCountdown()) << "no amount";
  EXPECT_FALSE(typed(H::energyDeficit, 500, U::calories).quantityCanCountdown());
  EXPECT_FALSE(typed(H::bedtime, 0, U::timeOfDay).quantityCanCountdown());
  EXPECT_EQ(AutomaticTaskType::optionsForTimedTasks(U::durationMinutes, Period::day)->highest, 240);
  EXPECT_EQ(AutomaticTaskType::optionsForTimedTasks(U::steps, Period::day), std::nullopt);
  EXPECT_EQ(AutomaticTaskType::optionsForAlcoholConsumption(Period::week).highest, 140);
  EXPECT_EQ(AutomaticTaskType::supportedFrequencyModes().size(), 11u);
  EXPECT_EQ(timer.formattedQuantityNumber(12.5), "12.5");
  std::string ownData;
  for (const TaskType& source : TaskType::allCases()) {
    if (defaultDataSource(source) == DataSource::currentTask) ownData += std::string(source.rawValue()) + " ";
  }
  EXPECT_EQ(ownData, "hk_workout_habitra timer ");
}

// A health store can answer what types make us ask of it, with any unit on offer and with none.
TEST(AutomaticTypes, AskTheHealthStoreWhatItCanAnswer) {
  for (const HealthType health : HealthType::allCases()) {
    std::vector<std::optional<TypeUnit>> units{std::nullopt};
    for (const TypeUnit unit : health.unitOptions()) units.emplace_back(unit);
    for (const auto& unit : units) {
      SCOPED_TRACE(std::string(caseName(health)) + " in " + (unit ? std::string(caseName(*unit)) : "no unit"));
      const AutomaticTaskType type = typed(health, 1, unit);
      const auto options = type.healthKitStatisticsOptions();
      EXPECT_EQ(options.isEmpty(), health == H::activity || health == H::bedtime);
      const auto asked = unit ? unit : health == H::workout ? std::nullopt : health.defaultUnit();
      const auto reads = health.healthKitReadTypes(asked, health.defaultSpeeds());
      EXPECT_FALSE(reads.empty());
      for (const qz::QZHKObjectType read : reads) {
        const qz::QZHKSampleQuery samples{.objectType = read, .span = {}, .predicate = {}};
        if (options.isEmpty()) continue;
        EXPECT_EQ(qz::problem({.samples = samples, .unit = type.healthKitCountUnit(), .options = options}),
                  std::nullopt);
      }
    }
  }
  EXPECT_EQ(typed(H::recordWeight, 0, std::nullopt).healthKitCountUnit(), qz::QZHKUnit::kilogram);
  EXPECT_EQ(typed(H::workout, 0, std::nullopt).healthKitStatisticsOptions(), qz::QZHKStatisticsOptions::cumulativeSum);
  EXPECT_EQ(typed(H::workout, 30, U::durationMinutes).healthKitStatisticsOptions(),
            qz::QZHKStatisticsOptions::duration);
  EXPECT_EQ(typed(H::sleep, 8, U::durationHours).healthKitCountUnit(), qz::QZHKUnit::hour);
}

TEST(AutomaticTypes, SpeedsOfANightAreShownFromTheWholeToTheBed) {
  const TypeSpeeds chosen{TypeSpeed::inBed, TypeSpeed::sleepREM, TypeSpeed::timed, TypeSpeed::sleepAsleep};
  EXPECT_EQ(chosen.sortedSleepOptions(), (std::vector{TypeSpeed::sleepAsleep, TypeSpeed::sleepREM, TypeSpeed::inBed}));
}

TEST(AutomaticTypes, NeighboursOfATargetAreOnOffer) {
  const auto water = typed(H::dietaryDrinkWater, 2, U::litres);
  const auto options = water.quantityOptions(Period::day).value();
  EXPECT_TRUE(options.contains(water.nextQuantity(Period::day).value()));
  EXPECT_GT(water.nextQuantity(Period::day), 2);
  EXPECT_LT(water.previousQuantity(Period::day), 2);
  EXPECT_EQ(typed(H::dietaryDrinkWater, options.highest, U::litres).nextQuantity(Period::day), std::nullopt);
  EXPECT_EQ(typed(H::bedtime, 85'500, U::timeOfDay).nextQuantity(Period::day), 0) << "the clock goes round";
  EXPECT_EQ(typed(H::bedtime, 0, U::timeOfDay).previousQuantity(Period::day), 85'500);
  EXPECT_EQ(typed(H::recordWeight, 0, std::nullopt).nextQuantity(Period::day), std::nullopt);
  EXPECT_TRUE(typed(H::activity, 0, std::nullopt).canAdjustDifficultyExternally());
  EXPECT_FALSE(water.canAdjustDifficultyExternally());
}

TEST(AutomaticTypes, AnEnergyDeficitMeetsItsTarget) {
  using Processor = AutomaticTaskTypeEnergyDeficitProcessor;
  using enum Processor::Direction;
  const EnergyDeficit deficit{.activeEnergy = 600, .restingEnergy = 1500, .dietaryEnergy = 1600};
  EXPECT_EQ(deficit.total(), 500);
  EXPECT_TRUE(Processor::qualifies(greaterThan, 500, deficit, false));
  EXPECT_FALSE(Processor::qualifies(greaterThan, 501, deficit, false));
  EXPECT_TRUE(Processor::qualifies(lessThan, 500, deficit, false));
  EXPECT_FALSE(Processor::qualifies(lessThan, 499, deficit, false));
  const EnergyDeficit emptyDiary{.activeEnergy = 600, .restingEnergy = 1500};
  EXPECT_FALSE(Processor::qualifies(greaterThan, 500, emptyDiary, false));
  EXPECT_TRUE(Processor::qualifies(greaterThan, 500, emptyDiary, true));
}

TEST(AutomaticTypes, ASelectionOfScreenTimeIsKeptAndCounted) {
  ScreenTimeSettings settings;
  EXPECT_FALSE(settings.isConfigured());
  EXPECT_EQ(settings.numSelections(), 0);
  const FamilyActivitySelection selection{.applications = {"chess", "mail"}, .categories = {"games"}, .webDomains = {}};
  settings.setFamilyActivitySelection(selection);
  EXPECT_EQ(settings.familyActivitySelection(), selection);
  EXPECT_EQ(settings.numSelections(), 3);
  settings._familyActivitySelection = {0xFF, 0x00, 0x7B};
  EXPECT_TRUE(settings.isConfigured()) << "what another system wrote is present, though not readable";
  EXPECT_EQ(settings.familyActivitySelection(), std::nullopt);
  settings.setFamilyActivitySelection(std::nullopt);
  EXPECT_FALSE(settings.isConfigured());
}

RC_GTEST_PROP(AutomaticTypes, AreTheSameWhenTheyWereCodedOrStored, ()) {
  const AutomaticTaskType type = anyAutomaticType();
  RC_ASSERT(nlohmann::json::parse(nlohmann::json(type).dump()).get<AutomaticTaskType>() == type);
  RC_ASSERT(automaticType(stored(type)) == type);
  if (const auto target = type.taskTarget()) {
    RC_ASSERT(nlohmann::json::parse(nlohmann::json(*target).dump()).get<TaskTarget>() == *target);
    AutomaticTaskType other = type;
    other.setTaskTarget(*target);
    RC_ASSERT(other == type);
    RC_ASSERT(std::hash<AutomaticTaskType>{}(other) == std::hash<AutomaticTaskType>{}(type));
  }
}

TEST(AutomaticTypes, TheRecordHoldsThreeTextsANumberAndBytes) {
  AutomaticTaskType type = typed(H::runOrWalk, 5, U::distanceKm, {TypeSpeed::run, TypeSpeed::walk});
  StoredAutomaticType record = stored(type);
  EXPECT_EQ(record, (StoredAutomaticType{
                        .typeName = "hk_distance", .typeUnit = "km", .typeSpeed = "walk,run", .typeTarget = 5}));
  type.dataSource = DataSource::currentTask;
  record = stored(type);
  EXPECT_EQ(std::string(record.typeExtra->begin(), record.typeExtra->end()), R"({"dataSource":"curr"})");
  record.typeSpeed = "run,later_version,,walk";
  record.typeUnit = "furlongs";
  record.typeTarget = std::numeric_limits<double>::quiet_NaN();
  record.typeExtra = {'{', 'x'};
  EXPECT_EQ(automaticType(record), typed(H::runOrWalk, 0, std::nullopt, type.speeds));
  record.typeExtra = bytesOf(R"({"dataSource": "curr", "extra": {"workoutTypes": 5}})");
  EXPECT_EQ(automaticType(record)->dataSource, DataSource::currentTask)
      << "one bad member does not take the other along";
  record.typeTarget = -5;
  EXPECT_EQ(automaticType(record)->quantity, 0);
  record.typeTarget = 1e300;
  EXPECT_EQ(automaticType(record)->quantity, 0) << "no count that somebody asks for later stops the program";
  for (const auto& name :
       {std::optional<std::string>(), std::optional<std::string>(""), std::optional<std::string>("hk_new")}) {
    record.typeName = name;
    EXPECT_EQ(automaticType(record), std::nullopt);
  }
}

TEST(AutomaticTypes, AreReadStrictlyButForWhatALaterVersionKnows) {
  const nlohmann::json good = {{"type", "hk_workout"},
                               {"quantity", 30},
                               {"unit", "minutes"},
                               {"speeds", {"walk"}},
                               {"extra", {{"workoutTypes", {"yoga"}}, {"healthKitRecordDuration", 60}}},
                               {"dataSource", "all"}};
  EXPECT_EQ(complaint<AutomaticTaskType>(good), "");
  for (const char* const key : {"type", "quantity", "speeds"}) {
    nlohmann::json json = good;
    json.erase(key);
    EXPECT_EQ(complaint<AutomaticTaskType>(json), std::string("Unable to read \"") + key + "\": missing");
  }
  for (const char* const key : {"type", "quantity", "unit", "speeds", "extra", "dataSource"}) {
    nlohmann::json json = good;
    json[key] = true;
    EXPECT_EQ(complaint<AutomaticTaskType>(json), std::string("Unable to read \"") + key + "\" from true");
  }
  nlohmann::json json = good;
  json["quantity"] = 1e300;
  EXPECT_EQ(complaint<AutomaticTaskType>(json), R"(Unable to read "quantity" from 1e+300)");
  json = good;
  json["quantity"] = -5;
  EXPECT_EQ(complaint<AutomaticTaskType>(json), R"(Unable to read "quantity" from -5.0)");
  json["type"] = "hk_energy_deficit";
  EXPECT_EQ(complaint<AutomaticTaskType>(json), "") << "a surplus of 5";
  json = good;
  json["extra"]["healthKitRecordDuration"] = 1e300;
  EXPECT_EQ(complaint<AutomaticTaskType>(json),
            R"(Unable to read "extra": Unable to read "healthKitRecordDuration" from 1e+300)");
  json["extra"] = {{"workoutTypes", {"hovering"}}};
  EXPECT_EQ(json.get<AutomaticTaskType>().extra->workoutTypes, std::set{WorkoutType::other}) << "and not all of them";
  json = good;
  json["type"] = "hk_new";
  EXPECT_EQ(complaint<AutomaticTaskType>(json), R"(Unable to read "type" from "hk_new")");
  json = good;
  json["extra"]["screenTimeSettings"] = {{"_familyActivitySelection", "no base64"}};
  EXPECT_EQ(
      complaint<AutomaticTaskType>(json),
      R"(Unable to read "extra": Unable to read "screenTimeSettings": Unable to read "_familyActivitySelection" from "no base64")");
  json = good;
  json["unit"] = "furlongs";
  json["dataSource"] = "both";
  json["speeds"] = {"hover", "walk"};
  json["extra"]["workoutTypes"] = {"hovering", "yoga"};
  const auto read = json.get<AutomaticTaskType>();
  EXPECT_EQ(read.unit, std::nullopt);
  EXPECT_EQ(read.dataSource, std::nullopt);
  EXPECT_EQ(read.speeds, TypeSpeeds{TypeSpeed::walk});
  EXPECT_EQ(read.extra->workoutTypes, std::set{WorkoutType::yoga});
}

}  // namespace
}  // namespace habitra
