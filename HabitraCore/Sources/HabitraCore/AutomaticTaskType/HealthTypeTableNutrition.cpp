// What is eaten and drunk, and how it stands against what is burned: dietaryDrinkWater to energyDeficit. The columns
// are explained in HealthTypeTable.h.
//
// Sources of the usual amounts:
// - Daily Values of the US Food and Drug Administration for adults, 21 CFR 101.9(c) as revised in 2016, for a diet of
//   2,000 kcal: everything that has no other source here (sugar: added sugars);
// - energy in kilojoules: 8,400, the reference intake of Regulation (EU) No 1169/2011, which goes with 2,000 kcal;
// - water: European Food Safety Authority (2010), adequate intake of 2.0 litres a day for women, 2.5 for men, from all
//   food and drink. Customary units: eight cups of 8 US fluid ounces;
// - caffeine: European Food Safety Authority (2015), up to 400 mg a day raise no concern in healthy adults; the Food
//   and Drug Administration cites the same amount;
// - polyunsaturated fat: FAO and WHO, Fats and fatty acids in human nutrition (2010), 6 to 11 % of the energy; 20 g are
//   9 % of 2,000 kcal. Monounsaturated fat: by difference, as there: what the total leaves;
// - energy deficit: 500 kcal a day, the figure in common use for losing weight slowly.

#include <HabitraCore/AutomaticTaskType/HealthTypeTable.h>

#include <optional>

namespace habitra {

namespace {

using T = HealthType;
using U = TypeUnit;
using S = TypeSpeed;
using O = qz::QZHKObjectType;
using Selection = HealthType::SpeedSelectionType;
using Statistics = qz::QZHKStatisticsOptions;
using Update = qz::QZHKUpdateFrequency;
using Icons = ShortList<std::string_view, 4>;

/// A row of the nutrients, which differ in little. The lowest amount is one step.
struct Nutrient {
  HealthType type;
  qz::QZHKObjectType reads;
  TypeUnit unit;
  double step;
  double usual;
  double highest;
  std::optional<TypeUnit> alsoIn;  ///< a second unit on offer, with the same amounts
};

/// How many of the unit a gram is.
constexpr double perGram(TypeUnit unit) { return unit == U::micrograms ? 1e6 : unit == U::milligrams ? 1e3 : 1; }

constexpr HealthTypeRow row(const Nutrient& nutrient, const Icons& icons) {
  const auto in = [&nutrient](TypeUnit unit) {
    const double from = perGram(nutrient.unit);
    const double to = perGram(unit);
    // Whole factors on either side, so that the result is rounded once: 2,300 mg are 2.3 g.
    const auto converted = [from, to](double amount) {
      return to < from ? amount / (from / to) : amount * (to / from);
    };
    return QuantityRow{.unit = unit,
                       .lowest = converted(nutrient.step),
                       .highest = converted(nutrient.highest),
                       .step = converted(nutrient.step),
                       .usual = converted(nutrient.usual)};
  };
  using Quantities = ShortList<QuantityRow, 5>;
  return {
      .type = nutrient.type,
      .measured = Measured::amount,
      .quantities =
          nutrient.alsoIn ? Quantities{in(nutrient.unit), in(*nutrient.alsoIn)} : Quantities{in(nutrient.unit)},
      .reads = {nutrient.reads},
      .statistics = Statistics::cumulativeSum,
      .update = Update::immediate,
      .writesBack = true,
      .icons = icons,
      .title = TitleForm::nutrient,
  };
}

constexpr Icons sweet{"ic_sugar", "ic_candy", "ic_food"};
constexpr Icons coffee{"ic_coffee", "ic_cup"};
constexpr Icons protein{"ic_protein", "ic_egg", "ic_food"};
constexpr Icons grain{"ic_grain", "ic_bread", "ic_food"};
constexpr Icons salt{"ic_salt", "ic_food"};
constexpr Icons fat{"ic_fat", "ic_oil", "ic_food"};
constexpr Icons vitamin{"ic_vitamin", "ic_pill", "ic_fruit"};
constexpr Icons mineral{"ic_mineral", "ic_pill", "ic_food"};
constexpr std::nullopt_t none = std::nullopt;

constexpr std::array<HealthTypeRow, numNutritionRows> rows{{
    {
        .type = T::dietaryDrinkWater,
        .measured = Measured::amount,
        .quantities =
            {
                {.unit = U::litres, .lowest = 0.1, .highest = 10, .step = 0.1, .usual = 2},
                {.unit = U::millilitres, .lowest = 50, .highest = 10'000, .step = 50, .usual = 2'000},
                {.unit = U::fluidOuncesUS, .lowest = 4, .highest = 320, .step = 4, .usual = 64, .steps = singleSteps},
                {.unit = U::cupsUS, .lowest = 0.5, .highest = 40, .step = 0.5, .usual = 8, .steps = singleSteps},
            },
        .reads = {O::dietaryWater},
        .statistics = Statistics::cumulativeSum,
        .update = Update::immediate,
        .writesBack = true,
        .icons = {"ic_water", "ic_glass", "ic_drop", "ic_bottle"},
        .title = TitleForm::water,
    },
    {
        .type = T::dietaryEnergy,
        .measured = Measured::amount,
        .quantities =
            {
                {.unit = U::calories, .lowest = 50, .highest = 10'000, .step = 50, .usual = 2'000},
                {.unit = U::kilojoules, .lowest = 100, .highest = 40'000, .step = 100, .usual = 8'400},
            },
        .reads = {O::dietaryEnergyConsumed},
        .statistics = Statistics::cumulativeSum,
        .update = Update::immediate,
        .writesBack = true,
        .icons = {"ic_food", "ic_plate", "ic_energy"},
        .title = TitleForm::dietaryEnergy,
    },
    // type, what is read, unit, step, usual, highest, also in; icons
    row({T::dietarySugar, O::dietarySugar, U::grams, 5, 50, 500, none}, sweet),
    row({T::dietaryCaffeine, O::dietaryCaffeine, U::milligrams, 10, 400, 2'000, none}, coffee),
    row({T::dietaryProtein, O::dietaryProtein, U::grams, 5, 50, 500, none}, protein),
    row({T::dietaryFiber, O::dietaryFiber, U::grams, 1, 28, 200, none}, grain),
    row({T::dietarySodium, O::dietarySodium, U::milligrams, 50, 2'300, 10'000, U::grams}, salt),
    row({T::dietaryCalcium, O::dietaryCalcium, U::milligrams, 50, 1'300, 5'000, U::grams}, mineral),
    row({T::dietaryCarbohydrates, O::dietaryCarbohydrates, U::grams, 5, 275, 1'000, none}, grain),
    row({T::dietaryCholesterol, O::dietaryCholesterol, U::milligrams, 10, 300, 2'000, none}, protein),
    row({T::dietaryIron, O::dietaryIron, U::milligrams, 1, 18, 200, none}, mineral),
    row({T::dietaryMagnesium, O::dietaryMagnesium, U::milligrams, 10, 420, 2'000, none}, mineral),
    row({T::dietaryVitaminA, O::dietaryVitaminA, U::micrograms, 50, 900, 5'000, none}, vitamin),
    row({T::dietaryVitaminB6, O::dietaryVitaminB6, U::milligrams, 0.1, 1.7, 100, none}, vitamin),
    row({T::dietaryVitaminB12, O::dietaryVitaminB12, U::micrograms, 0.2, 2.4, 250, none}, vitamin),
    row({T::dietaryVitaminC, O::dietaryVitaminC, U::milligrams, 10, 90, 5'000, U::grams}, vitamin),
    row({T::dietaryVitaminD, O::dietaryVitaminD, U::micrograms, 5, 20, 500, none}, vitamin),
    row({T::dietaryVitaminE, O::dietaryVitaminE, U::milligrams, 1, 15, 1'000, none}, vitamin),
    row({T::dietaryVitaminK, O::dietaryVitaminK, U::micrograms, 5, 120, 1'000, none}, vitamin),
    row({T::dietaryZinc, O::dietaryZinc, U::milligrams, 1, 11, 100, none}, mineral),
    row({T::dietaryFolate, O::dietaryFolate, U::micrograms, 50, 400, 5'000, U::milligrams}, vitamin),
    row({T::dietaryPotassium, O::dietaryPotassium, U::milligrams, 100, 4'700, 15'000, U::grams}, mineral),
    row({T::dietaryRiboflavin, O::dietaryRiboflavin, U::milligrams, 0.1, 1.3, 100, none}, vitamin),
    row({T::dietaryThiamin, O::dietaryThiamin, U::milligrams, 0.1, 1.2, 100, none}, vitamin),
    row({T::dietarySelenium, O::dietarySelenium, U::micrograms, 5, 55, 500, none}, mineral),
    row({T::dietaryFatTotal, O::dietaryFatTotal, U::grams, 1, 78, 500, none}, fat),
    row({T::dietaryFatMonounsaturated, O::dietaryFatMonounsaturated, U::grams, 1, 38, 300, none}, fat),
    row({T::dietaryFatPolyunsaturated, O::dietaryFatPolyunsaturated, U::grams, 1, 20, 300, none}, fat),
    row({T::dietaryFatSaturated, O::dietaryFatSaturated, U::grams, 1, 20, 300, none}, fat),
    row({T::dietaryPhosphorus, O::dietaryPhosphorus, U::milligrams, 50, 1'250, 5'000, U::grams}, mineral),
    row({T::dietaryNiacin, O::dietaryNiacin, U::milligrams, 1, 16, 500, none}, vitamin),
    row({T::dietaryManganese, O::dietaryManganese, U::milligrams, 0.1, 2.3, 50, none}, mineral),
    row({T::dietaryIodine, O::dietaryIodine, U::micrograms, 10, 150, 2'000, none}, mineral),
    row({T::dietaryCopper, O::dietaryCopper, U::milligrams, 0.1, 0.9, 20, U::micrograms}, mineral),
    row({T::dietaryChromium, O::dietaryChromium, U::micrograms, 5, 35, 1'000, none}, mineral),
    row({T::dietaryChloride, O::dietaryChloride, U::milligrams, 50, 2'300, 10'000, U::grams}, salt),
    row({T::dietaryBiotin, O::dietaryBiotin, U::micrograms, 5, 30, 5'000, none}, vitamin),
    row({T::dietaryMolybdenum, O::dietaryMolybdenum, U::micrograms, 5, 45, 2'000, none}, mineral),
    {
        // What was burned less what was eaten; falls again with every meal.
        .type = T::energyDeficit,
        .measured = Measured::balance,
        .quantities =
            {
                {.unit = U::calories, .lowest = 50, .highest = 5'000, .step = 50, .usual = 500},
                {.unit = U::kilojoules, .lowest = 100, .highest = 20'000, .step = 100, .usual = 2'100},
            },
        .speeds = {S::greaterThan, S::lessThan},
        .speedSelection = Selection::single,
        .defaultSpeeds = {S::greaterThan},
        .reads = {O::activeEnergyBurned, O::basalEnergyBurned, O::dietaryEnergyConsumed},
        .statistics = Statistics::cumulativeSum,
        .update = Update::hourly,
        .fluctuating = true,
        .icons = {"ic_energy_balance", "ic_scales", "ic_flame"},
        .title = TitleForm::energyDeficit,
    },
}};

static_assert(isRunOfTypes(rows, T::dietaryDrinkWater));

}  // namespace

std::span<const HealthTypeRow, numNutritionRows> nutritionRows() { return rows; }

}  // namespace habitra
