#include <gtest/gtest.h>
#include <QZHealthKit/QZHKObjectType.h>
#include <QZHealthKit/QZHKSleepValue.h>
#include <QZHealthKit/QZHKStatisticsOptions.h>
#include <QZHealthKit/QZHKUpdateFrequency.h>
#include <QZHealthKit/QZHKWorkoutActivityType.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace qz {
namespace {

/// The cases are numbered as their rows, and each raw value is one case's name.
template <typename E>
void expectTableInOrder() {
  std::size_t index = 0;
  std::set<std::string_view> texts;
  for (const auto& row : RawValueTable<E>::rows) {
    EXPECT_EQ(static_cast<std::size_t>(row.value), index++) << row.name;
    EXPECT_EQ(row.raw, row.name);
    EXPECT_TRUE(texts.insert(row.raw).second) << row.raw;
  }
}

std::vector<QZHKObjectType> allTypes() {
  std::vector<QZHKObjectType> types;
  for (const auto& row : RawValueTable<QZHKObjectType>::rows) types.push_back(row.value);
  return types;
}

TEST(ObjectTypeTests, TablesAreInOrderOfDeclaration) {
  expectTableInOrder<QZHKObjectType>();
  expectTableInOrder<QZHKSleepValue>();
  expectTableInOrder<QZHKUpdateFrequency>();
  expectTableInOrder<QZHKWorkoutActivityType>();
  EXPECT_EQ(fromRawValue<QZHKObjectType>(std::string_view("stepcount")), std::nullopt);
}

TEST(ObjectTypeTests, QuantitiesComeFirstAndHaveADimension) {
  for (const QZHKObjectType type : allTypes()) {
    const bool isQuantity = kind(type) == QZHKObjectKind::quantity;
    EXPECT_EQ(isQuantity, type < QZHKObjectType::sleepAnalysis) << rawValue(type);
    EXPECT_EQ(isQuantity, dimension(type).has_value()) << rawValue(type);
  }
  EXPECT_EQ(kind(QZHKObjectType::handwashingEvent), QZHKObjectKind::category);
  EXPECT_EQ(kind(QZHKObjectType::electrocardiogram), QZHKObjectKind::category);
}

TEST(ObjectTypeTests, UnitsMeasureWhatTheTypeSays) {
  using T = QZHKObjectType;
  using U = QZHKUnit;
  EXPECT_TRUE(isMeasured(T::dietaryWater, U::cupUS));
  EXPECT_FALSE(isMeasured(T::dietaryWater, U::gram));
  EXPECT_TRUE(isMeasured(T::dietaryVitaminB12, U::microgram));
  EXPECT_TRUE(isMeasured(T::standHour, U::count));
  EXPECT_FALSE(isMeasured(T::standHour, U::hour));
  EXPECT_EQ(aggregation(T::stepCount), QZHKAggregation::cumulative);
  EXPECT_EQ(aggregation(T::heartRate), QZHKAggregation::discrete);
  // What is entered is what is eaten, drunk, injected, inhaled and used, nothing else.
  EXPECT_EQ(std::ranges::count_if(allTypes(),
                                  [](QZHKObjectType type) {
                                    return aggregation(type) == QZHKAggregation::cumulative &&
                                           origin(type) == QZHKOrigin::entered;
                                  }),
            44);
  // Of a goal the latest stands, and several do not add up.
  EXPECT_TRUE(isMeasured(T::standGoal, U::count));
  EXPECT_EQ(aggregation(T::activeEnergyGoal), QZHKAggregation::discrete);
}

template <typename E>
void expectNamedIn(const std::string& page) {
  for (const auto& row : RawValueTable<E>::rows)
    EXPECT_NE(page.find("`" + std::string(row.raw) + "`"), std::string::npos) << row.raw;
}

TEST(ObjectTypeTests, ThePageNamesAllThatAFileMaySay) {
  std::ifstream stream(HEALTH_PAGE);
  const std::string page{std::istreambuf_iterator<char>(stream), {}};
  expectNamedIn<QZHKObjectType>(page);
  expectNamedIn<QZHKUnit>(page);
  expectNamedIn<QZHKSleepValue>(page);
  expectNamedIn<QZHKWorkoutActivityType>(page);
}

TEST(ObjectTypeTests, OptionsIterateInOrder) {
  using O = QZHKStatisticsOption;
  const QZHKStatisticsOptions options{O::duration, O::cumulativeSum};
  EXPECT_EQ(options, QZHKStatisticsOptions::duration | QZHKStatisticsOptions::cumulativeSum);
  EXPECT_EQ(std::vector<O>(options.begin(), options.end()), (std::vector<O>{O::cumulativeSum, O::duration}));
  EXPECT_FALSE(options.contains(O::mostRecent));
  EXPECT_TRUE(QZHKStatisticsOptions().isEmpty());
}

}  // namespace
}  // namespace qz
