#include <gtest/gtest.h>
#include <HabitraCore/AutomaticTaskType/DisplayTitle.h>
#include <HabitraCore/AutomaticTaskType/TitleBuilder.h>

#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace habitra {
namespace {

using H = HealthType;
using S = TypeSpeed;
using U = TypeUnit;

struct Target {
  HealthType type;
  std::optional<double> quantity;
  std::optional<TypeUnit> unit;
  TypeSpeeds speeds;
};

std::string title(const Target& target, const DisplayTitleOptions& options) {
  return target.type.displayTitleForQuantity(target.quantity, target.unit, target.speeds, options).text();
}

std::string toDo(const Target& target, std::int64_t count = 1) {
  return title(target, {.numPartialCompletions = count});
}

std::string toAvoid(const Target& target, std::int64_t count = 1) {
  return title(target, {.isNegative = true, .numPartialCompletions = count});
}

TEST(DisplayTitle, SaysWhatToDo) {
  EXPECT_EQ(toDo({H::dietaryDrinkWater, 2, U::litres}), "Drink 2 litres of water");
  EXPECT_EQ(toDo({H::dietaryDrinkWater, 2, U::litres}, 8), "Drink 2 litres of water in 8 parts");
  EXPECT_EQ(toDo({H::dietaryDrinkWater, 1, U::cupsUS}), "Drink 1 cup of water");
  EXPECT_EQ(toDo({H::runOrWalk, 10'000, U::steps, {S::walk, S::run}}), "Take 10,000 steps");
  EXPECT_EQ(toDo({H::runOrWalk, 10'000, U::steps, {S::run}}), "Run 10,000 steps");
  EXPECT_EQ(toDo({H::runOrWalk, 5, U::distanceKm, {S::walk}}), "Walk 5 km");
  EXPECT_EQ(toDo({H::runOrWalk, 5, U::distanceKm, {S::run, S::walk}}), "Walk or run 5 km");
  EXPECT_EQ(toDo({H::runOrWalk, 5, U::distanceKm, {}}), "Walk or run 5 km");
  EXPECT_EQ(toDo({H::swimDistance, 500, U::distanceYards}), "Swim 500 yards");
  EXPECT_EQ(toDo({H::wheelchairPushes, 2'000, U::pushes}), "Make 2,000 wheelchair pushes");
  EXPECT_EQ(toDo({H::standHours, 12, U::durationHours}), "Get 12 stand hours");
  EXPECT_EQ(toDo({H::climbFlights, 10, U::flights}), "Climb 10 flights of stairs");
  EXPECT_EQ(toDo({H::burnActiveEnergy, 400, U::calories}), "Burn 400 kcal");
  EXPECT_EQ(toDo({H::dietaryIron, 18, U::milligrams}), "Get 18 mg of iron");
  EXPECT_EQ(toDo({H::dietaryVitaminB12, 2.4, U::micrograms}), "Get 2.4 mcg of vitamin B12");
  EXPECT_EQ(toDo({H::energyDeficit, 500, U::calories, {S::greaterThan}}), "Energy deficit of at least 500 kcal");
  EXPECT_EQ(toDo({H::energyDeficit, 500, U::calories, {S::lessThan}}), "Energy deficit of at most 500 kcal");
  EXPECT_EQ(toDo({H::workout, 30, U::durationMinutes}), "Work out for 30 minutes");
  EXPECT_EQ(toDo({H::workout, 300, U::calories}), "Burn 300 kcal in workouts");
  EXPECT_EQ(toDo({H::workout, {}, {}}, 3), "Work out 3 times");
  EXPECT_EQ(toDo({H::toothbrushingEventBrush, 2, U::durationMinutes, {S::timed}}), "Brush your teeth for 2 minutes");
  EXPECT_EQ(toDo({H::recordWeight, {}, {}}), "Record your weight");
  EXPECT_EQ(toDo({H::recordWeight, {}, {}}, 2), "Record your weight twice");
  EXPECT_EQ(toDo({H::handwashingEvent, {}, {}}, 6), "Wash your hands 6 times");
  EXPECT_EQ(toDo({H::activity, {}, {}}), "Close your activity rings");
}

TEST(DisplayTitle, SaysWhatToAvoid) {
  EXPECT_EQ(toAvoid({H::dietaryCaffeine, 200, U::milligrams}), "Under 200 mg caffeine");
  EXPECT_EQ(toAvoid({H::dietaryCaffeine, 200, U::milligrams}, 4), "Under 200 mg caffeine");
  EXPECT_EQ(toAvoid({H::alcoholConsumption, 3, U::drinks}, 3), "Under 3 alcoholic drinks");
  EXPECT_EQ(toAvoid({H::runOrWalk, 5, U::distanceKm, {S::run}}), "Run under 5 km");
  EXPECT_EQ(toAvoid({H::energyDeficit, 500, U::calories, {S::lessThan}}), "Energy deficit over 500 kcal");
  EXPECT_EQ(toAvoid({H::highHeartRateEvent, {}, {}}), "No high heart rate alerts");
  EXPECT_EQ(toAvoid({H::highHeartRateEvent, {}, {}}, 3), "Fewer than 3 high heart rate alerts");
  EXPECT_EQ(toAvoid({H::handwashingEvent, {}, {}}, 6), "Wash your hands fewer than 6 times");
  EXPECT_EQ(toAvoid({H::recordInhaler, {}, {}}, 2), "Use your inhaler fewer than 2 times");
  EXPECT_EQ(toAvoid({H::recordInhaler, {}, {}}), "Do not use your inhaler");
}

TEST(DisplayTitle, SaysNoneWhereAnyAtAllFails) {
  EXPECT_EQ(toAvoid({H::alcoholConsumption, 1, U::drinks}), "No alcohol");
  EXPECT_EQ(toAvoid({H::alcoholConsumption, 1, U::drinks}, 3), "No alcohol");
  EXPECT_EQ(toAvoid({H::alcoholConsumption, 2, U::drinks}), "Under 2 alcoholic drinks");
  EXPECT_EQ(toAvoid({H::dietaryDrinkWater, 0, U::litres}), "No water");
  EXPECT_EQ(toAvoid({H::dietaryDrinkWater, 1, U::litres}), "Under 1 litre of water");
  EXPECT_EQ(toAvoid({H::dietarySugar, -1, U::grams}, 3), "No sugar");
  EXPECT_EQ(toDo({H::dietarySugar, 0, U::grams}), "Get 0 g of sugar");
  EXPECT_EQ(toAvoid({H::bedtime, 0, U::timeOfDay, {S::inBedAfter}}), "Do not go to bed after 00:00");
  // To stay out of "0 at most" takes more than 0.
  EXPECT_EQ(toAvoid({H::energyDeficit, 0, U::calories, {S::lessThan}}), "Energy deficit over 0 kcal");
  EXPECT_EQ(toAvoid({H::energyDeficit, -500, U::calories, {S::greaterThan}}), "Energy deficit under -500 kcal");
}

TEST(DisplayTitle, SpeaksOfPartsOnlyWhereThereAreAny) {
  EXPECT_EQ(toDo({H::bedtime, 0, U::timeOfDay}, 3), "Go to bed at 00:00");
  EXPECT_EQ(toDo({H::alcoholConsumption, 7, U::drinks}, 7), "Have 7 alcoholic drinks");
  EXPECT_EQ(toDo({H::standHours, 12, U::durationHours}, 3), "Get 12 stand hours");
  EXPECT_EQ(toAvoid({H::toothbrushingEventBrush, 4, U::durationMinutes}, 2), "Brush your teeth for under 4 minutes");
}

TEST(DisplayTitle, ShortDurationsAreInAFinerUnit) {
  EXPECT_EQ(toDo({H::workout, 0.5, U::durationHours}), "Work out for 30 minutes");
  EXPECT_EQ(toDo({H::workout, 0.5, U::durationMinutes}), "Work out for 30 seconds");
  EXPECT_EQ(toDo({H::workout, 0.01, U::durationHours}), "Work out for 36 seconds");
  EXPECT_EQ(toDo({H::sleep, 7.5, U::durationHours}), "Sleep 7.5 hours");
  EXPECT_EQ(toDo({H::workout, 0, U::durationHours}), "Work out for 0 hours");
  EXPECT_EQ(toDo({H::standHours, 0.5, U::durationHours}), "Get 0.5 stand hours");
}

TEST(DisplayTitle, NamesSleepByWhatIsChosen) {
  const auto sleep = [](TypeSpeeds speeds) { return Target{H::sleep, 2, U::durationHours, speeds}; };
  EXPECT_EQ(toDo(sleep({S::sleepAsleep})), "Sleep 2 hours");
  EXPECT_EQ(toDo(sleep({})), "Sleep 2 hours");
  EXPECT_EQ(toDo(sleep({S::sleepAsleep, S::inBed})), "Spend 2 hours in bed");
  EXPECT_EQ(toDo(sleep({S::sleepREM, S::sleepDeep})), "Get 2 hours of deep and REM sleep");
  EXPECT_EQ(toDo(sleep({S::sleepREM, S::sleepDeep, S::sleepCore})), "Get 2 hours of core, deep and REM sleep");
  EXPECT_EQ(toAvoid(sleep({S::sleepCore})), "Under 2 hours of core sleep");
  EXPECT_EQ(toAvoid({H::sleep, 0, U::durationHours, {S::sleepREM, S::sleepDeep}}), "No deep and REM sleep");

  const auto bedtime = [](double hour, S speed) { return Target{H::bedtime, hour * 3'600, U::timeOfDay, {speed}}; };
  EXPECT_EQ(toDo(bedtime(22.5, S::asleepBefore)), "Be asleep before 22:30");
  EXPECT_EQ(toDo(bedtime(6, S::awakeAfter)), "Wake up after 06:00");
  EXPECT_EQ(toDo(bedtime(0, S::inBedBefore)), "Be in bed before 00:00");
  EXPECT_EQ(toAvoid(bedtime(6, S::outOfBedBefore)), "Do not get up before 06:00");
}

TEST(DisplayTitle, TimersAndScreenTimeAreTargetsToo) {
  const auto text = [](TitleForm form, double quantity, U unit, bool isNegative, std::int64_t count) {
    const DisplayTitleOptions options{.isNegative = isNegative, .numPartialCompletions = count};
    return displayTitle(form, std::nullopt, quantity, unit, {}, options).text();
  };
  using F = TitleForm;
  EXPECT_EQ(text(F::timer, 10, U::durationMinutes, false, 1), "10 minutes");
  EXPECT_EQ(text(F::timer, 30, U::durationMinutes, false, 3), "3 × 10 minutes");
  EXPECT_EQ(text(F::timer, 10, U::durationMinutes, false, 3), "3 × 200 seconds");  // not 3.3 minutes
  EXPECT_EQ(text(F::timer, 1, U::durationHours, true, 2), "Under 1 hour");
  EXPECT_EQ(text(F::timer, 1e308, U::durationHours, false, 2), "2 × 5e+307 hours");
  EXPECT_EQ(text(F::screenTime, 30, U::durationMinutes, true, 1), "Under 30 minutes of screen time");
  EXPECT_EQ(text(F::screenTime, 0, U::durationMinutes, true, 1), "No screen time");
  EXPECT_EQ(text(F::screenTime, 30, U::durationMinutes, false, 1), "Spend 30 minutes on the chosen apps");
}

// What a store of another version or a foreign file may hold.
TEST(DisplayTitle, AmountsThatATypeShouldNotHaveAreSaidAllTheSame) {
  EXPECT_EQ(toDo({H::recordWeight, 70, U::grams}), "Record your weight (70 g)");
  EXPECT_EQ(toDo({H::bedtime, 8, U::durationHours, {S::asleepBefore}}), "Go to bed on time (8 hours)");
  EXPECT_EQ(toAvoid({H::dietaryDrinkWater, 5, U::distanceKm}), "Drink water (under 5 km)");
  EXPECT_EQ(toDo({H::standHours, 120, U::durationMinutes}), "Stand up (120 minutes)");
  EXPECT_EQ(toAvoid({H::rollHours, 120, U::durationMinutes}), "Roll in your wheelchair (under 120 minutes)");
  EXPECT_EQ(toDo({H::handwashingEvent, 2, U::durationMinutes}), "Wash your hands for 2 minutes");
  EXPECT_EQ(toDo({H::cycle, {}, U::distanceKm}), "Cycle");
  EXPECT_EQ(toAvoid({H::dietarySugar, 5, {}}), "No sugar");
}

void expectReadable(const std::string& text, const DisplayTitleOptions& options) {
  SCOPED_TRACE(text);
  EXPECT_FALSE(text.empty());
  EXPECT_EQ(text.find_first_of(options.lineBreaks ? "{}|" : "{}|\n"), std::string::npos);
  for (const char* misprint : {"  ", " \n", "\n ", "( ", " ,"}) EXPECT_EQ(text.find(misprint), std::string::npos);
  for (const char end : {text.front(), text.back()}) EXPECT_TRUE(end != ' ' && end != '\n');
}

// A form without a row of its own for a unit would show it in brackets.
TEST(DisplayTitle, EveryTypeHasATitleForEachOfItsUnits) {
  for (const HealthType type : HealthType::allCases()) {
    std::vector<TypeSpeeds> selections{{}, type.defaultSpeeds()};
    for (const TypeSpeed speed : type.sortedSpeedOptions()) selections.push_back({speed});
    std::vector<std::optional<TypeUnit>> units{std::nullopt};
    for (const TypeUnit unit : type.unitOptions()) units.push_back(unit);
    for (const auto& unit : units) {
      for (const TypeSpeeds speeds : selections) {
        for (int variant = 0; variant < 8; ++variant) {
          const DisplayTitleOptions options{.isNegative = (variant & 1) != 0,
                                            .lineBreaks = (variant & 2) != 0,
                                            .numPartialCompletions = (variant & 4) != 0 ? 7 : 1};
          const std::optional<double> quantity = unit ? std::optional(3.0) : std::nullopt;
          const auto title = type.displayTitleForQuantity(quantity, unit, speeds, options);
          SCOPED_TRACE(std::string(rawValue(type)));
          ASSERT_NE(title.title(), nullptr);
          expectReadable(title.text(), options);
          const std::string kept = title.title()->title;
          const std::size_t place = kept.find("{quantity}");
          EXPECT_EQ(place != std::string::npos, unit.has_value()) << kept;
          DisplayTitleOptions again = options;
          again.customText = kept;
          EXPECT_EQ(type.displayTitleForQuantity(quantity, unit, speeds, again), title) << kept;
          if (!unit) continue;
          EXPECT_NE(title.text().find(formattedQuantityNumber(3.0, *unit)), std::string::npos) << title.text();
          EXPECT_EQ(kept.find('('), std::string::npos) << kept;
        }
      }
    }
  }
}

TEST(DisplayTitle, KeepsThePlaceOfTheAmountOpenAndBreaksLinesWhereAsked) {
  const auto title = [](const DisplayTitleOptions& options) {
    return *HealthType(H::dietaryDrinkWater).displayTitleForQuantity(2, U::litres, {}, options).title();
  };
  EXPECT_EQ(title({}), (TaskDisplayTitle{"Drink {quantity} of water", "Drink 2 litres of water"}));
  EXPECT_EQ(title({.lineBreaks = true, .numPartialCompletions = 8}),
            (TaskDisplayTitle{"Drink {quantity}\nof water\nin 8 parts", "Drink 2 litres\nof water\nin 8 parts"}));
}

TEST(DisplayTitle, ATasksOwnWordsHoldTheAmountOrStandBesideIt) {
  using Type = HealthType::DisplayTitleType;
  const auto custom = [](const Target& target, const char* words, bool isNegative = false, std::int64_t count = 1) {
    return target.type.displayTitleForQuantity(
        target.quantity, target.unit, target.speeds,
        {.customText = words, .isNegative = isNegative, .numPartialCompletions = count});
  };
  const Target water{H::dietaryDrinkWater, 2, U::litres};
  const Target weight{H::recordWeight, {}, {}};
  EXPECT_EQ(custom(water, "{quantity} | {count} a day"),
            Type::integrated({"{quantity} | {count} a day", "2 litres | {count} a day"}));
  EXPECT_EQ(custom(weight, "On the {quantity} scales"),
            Type::integrated({"On the {quantity} scales", "On the scales"}));
  EXPECT_EQ(custom(water, "Hydrate"), Type::separate("2 litres"));
  EXPECT_EQ(custom(water, "Hydrate", false, 8), Type::separate("2 litres in 8 parts"));
  EXPECT_EQ(custom({H::dietaryCaffeine, 200, U::milligrams}, "Calm", true), Type::separate("Under 200 mg"));
  EXPECT_EQ(custom({H::alcoholConsumption, 1, U::drinks}, "Dry", true), Type::separate("No alcohol"));
  EXPECT_EQ(custom({H::alcoholConsumption, 7, U::drinks}, "Wine", false, 7), Type::separate("7 alcoholic drinks"));
  EXPECT_EQ(custom({H::alcoholConsumption, 7, U::drinks}, "Max {quantity}").text(), "Max 7 alcoholic drinks");
  EXPECT_EQ(custom({H::standHours, 12, U::durationHours}, "Up"), Type::separate("12 stand hours"));
  EXPECT_EQ(custom({H::workout, 0.5, U::durationHours}, "Gym, {quantity}").text(), "Gym, 30 minutes");
  EXPECT_EQ(custom({H::bedtime, 81'000, U::timeOfDay, {S::inBedBefore}}, "Early"), Type::separate("Before 22:30"));
  EXPECT_EQ(custom({H::energyDeficit, 9, U::calories, {S::lessThan}}, "Slow"), Type::separate("At most 9 kcal"));
  EXPECT_EQ(custom(weight, "Scales"), Type::separate(""));
  EXPECT_EQ(custom(weight, "Scales", false, 3), Type::separate("3 times"));
  for (const char* words : {"", " \n", "{quantity}", "{quantity} {quantity}", "Record your weight"}) {
    EXPECT_EQ(custom(weight, words), Type::integrated({"Record your weight", "Record your weight"})) << words;
  }
  EXPECT_EQ(custom(weight, "Record\nyour weight\n3 times", false, 3).kind(), Type::Kind::integrated);
}

TEST(DisplayTitle, NumbersAreWrittenAsTheyAreRead) {
  EXPECT_EQ(formattedQuantity(1'234'567, U::steps), "1,234,567 steps");
  EXPECT_EQ(formattedQuantity(0.5, U::litres), "0.5 litres");
  EXPECT_EQ(formattedQuantity(1.004, U::litres), "1 litre");
  EXPECT_EQ(formattedQuantity(-1.5, U::grams), "-1.5 g");
  EXPECT_EQ(formattedQuantity(-0.001, U::grams), "0 g");
  EXPECT_EQ(formattedQuantity(999.999, U::grams), "1,000 g");
  EXPECT_EQ(formattedQuantity(0.15, U::durationMinutes), "0.2 minutes");
  EXPECT_EQ(formattedQuantity(2.5, U::calories), "3 kcal");
  EXPECT_EQ(formattedQuantity(1e18, U::calories), "1e+18 kcal");
  EXPECT_EQ(formattedQuantity(-std::numeric_limits<double>::max(), U::grams), "-1.7976931348623157e+308 g");
  EXPECT_EQ(formattedQuantityNumber(86'399, U::timeOfDay), "00:00");
  EXPECT_EQ(formattedQuantityNumber(-3'600, U::timeOfDay), "23:00");
  EXPECT_EQ(formattedQuantityNumber(1e300, U::timeOfDay).size(), 5U);
  constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
  EXPECT_EQ(formattedCount(englishTitles, least), "-9,223,372,036,854,775,808");
  EXPECT_EQ(formattedCount(englishTitles, 9'007'199'254'740'993), "9,007,199,254,740,993");
  EXPECT_EQ(formattedCount(englishTitles, 0), "0");
  EXPECT_DEATH(static_cast<void>(formattedQuantity(std::numeric_limits<double>::quiet_NaN(), U::grams)), "finite");
}

// The whole of what another language takes.
TEST(DisplayTitle, AnotherLanguageIsAnotherTable) {
  const TitleRow titles[] = {{.form = TitleForm::cycle,
                              .amount = {.given = true, .dimension = U::Dimension::distance},
                              .toDo = "{quantity}|Rad fahren",
                              .toAvoid = "Weniger als {quantity}|Rad fahren"},
                             {.amount = {.given = true}, .toDo = "{quantity}", .toAvoid = "Unter {quantity}"}};
  const TitleRow bedtimes[] = {{.amount = {.given = true}, .toDo = "Um {quantity}", .toAvoid = "Nicht um {quantity}"}};
  TitleTexts german = englishTitles;
  german.titles = titles;
  german.targets = bedtimes;
  german.inParts = "{title}|in {count} Teilen";
  german.numbers = {",", ".", "-", "{hour12}.{minute} Uhr {half}", {"früh", "abends"}};
  EXPECT_EQ(displayTitle(german, {TitleForm::cycle, H::cycle, 1'234.5, U::distanceKm, {}}, {.numPartialCompletions = 3})
                .text(),
            "1.234,5 km Rad fahren in 3 Teilen");
  EXPECT_EQ(
      displayTitle(german, {TitleForm::bedtime, H::bedtime, 81'000, U::timeOfDay, {}}, {.customText = "Bett"}).text(),
      "Um 10.30 Uhr abends");
}

}  // namespace
}  // namespace habitra
