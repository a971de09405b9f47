#include <gtest/gtest.h>
#include <QZHealthKit/QZHKQuantity.h>
#include <QZHealthKit/QZHKUnit.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <string_view>
#include <vector>

namespace qz {
namespace {

std::vector<QZHKUnit> allUnits() {
  std::vector<QZHKUnit> units;
  for (const auto& row : RawValueTable<QZHKUnit>::rows) units.push_back(row.value);
  return units;
}

TEST(UnitTests, SymbolsNameOneUnitEach) {
  std::set<std::string_view> symbols;
  for (const QZHKUnit unit : allUnits()) {
    EXPECT_TRUE(symbols.insert(rawValue(unit)).second) << rawValue(unit);
    EXPECT_EQ(fromRawValue<QZHKUnit>(rawValue(unit)), unit);
  }
  EXPECT_EQ(fromRawValue<QZHKUnit>(std::string_view("KG")), std::nullopt);
}

TEST(UnitTests, AmountsThatPeopleKnow) {
  struct Row {
    double amount;
    QZHKUnit from;
    double expected;
    QZHKUnit to;
  };
  using enum QZHKUnit;
  for (const Row& row : std::initializer_list<Row>{
           {1, mile, 1.609344, kilometre},
           {26.2, mile, 42.1648128, kilometre},
           {1, mile, 1760, yard},
           {100, yard, 91.44, metre},
           {6, foot, 182.88, centimetre},
           {12, inch, 1, foot},
           {1, litre, 1000, millilitre},
           {128, fluidOunceUS, 3.785411784, litre},
           {1, cupUS, 8, fluidOunceUS},
           {1, cupUS, 236.5882365, millilitre},
           {2000, kilocalorie, 8368, kilojoule},
           {90, minute, 1.5, hour},
           {1, hour, 3600, second},
           {1, gram, 1'000'000, microgram},
           {1, pound, 453.59237, gram},
           {11, stone, 154, pound},
           {98.6, degreeFahrenheit, 37, degreeCelsius},
           {-40, degreeCelsius, -40, degreeFahrenheit},
           {5, millimolePerLitre, 90.078, milligramPerDecilitre},
       }) {
    const auto converted = QZHKQuantity{row.amount, row.from}.valueIn(row.to);
    ASSERT_TRUE(converted.has_value());
    EXPECT_DOUBLE_EQ(*converted, row.expected) << row.amount << " " << rawValue(row.from) << " in " << rawValue(row.to);
  }
}

TEST(UnitTests, WholeAmountsConvertWithoutError) {
  using enum QZHKUnit;
  for (int n = 1; n <= 10'000; ++n) {
    const double amount = n;
    ASSERT_EQ(convert(amount * 1000, millilitre, litre), amount);
    ASSERT_EQ(convert(amount * 1000, metre, kilometre), amount);
    ASSERT_EQ(convert(amount, metre, kilometre), amount / 1000);
    ASSERT_EQ(convert(amount, minute, hour), amount / 60);
    ASSERT_EQ(convert(amount, cupUS, fluidOunceUS), amount * 8);
  }
}

RC_GTEST_PROP(UnitTests, EveryPairOfADimensionConvertsAndConvertsBackAndNoOtherDoes, ()) {
  const double amount = *rc::gen::inRange(1, 1'000'000) / 64.0;
  for (const QZHKUnit from : allUnits()) {
    for (const QZHKUnit to : allUnits()) {
      const auto there = convert(amount, from, to);
      RC_ASSERT(there.has_value() == (dimension(from) == dimension(to)));
      if (!there) continue;
      const auto back = convert(*there, to, from);
      RC_ASSERT(back.has_value());
      // Where the zero moves, small degrees lose what the offset's digits take.
      const double size = dimension(from) == QZHKDimension::temperature ? amount + 1000 : amount;
      RC_ASSERT(std::abs(*back - amount) <= size * 4 * std::numeric_limits<double>::epsilon());
      if (from == to) RC_ASSERT(*there == amount);
    }
  }
}

}  // namespace
}  // namespace qz
