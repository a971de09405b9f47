#include <gtest/gtest.h>
#include <QZHealthKit/QZHKObjectType.h>
#include <QZHealthKit/QZHKSleepValue.h>
#include <QZHealthKit/QZHKStatisticsOptions.h>
#include <QZHealthKit/QZHKUpdateFrequency.h>
#include <QZHealthKit/QZHKWorkoutActivityType.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <string>
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

TEST(ObjectTypeTests, TablesAreInOrderOfDeclaration) {
  expectTableInOrder<QZHKObjectType>();
  expectTableInOrder<QZHKSleepValue>();
  expectTableInOrder<QZHKUpdateFrequency>();
  expectTableInOrder<QZHKWorkoutActivityType>();
  EXPECT_EQ(fromRawValue<QZHKObjectType>(std::string_view("stepcount")), std::nullopt);
}

TEST(ObjectTypeTests, QuantitiesHaveADimensionAndComeFirstThenCategoriesThenTheRest) {
  const auto& rows = objectTypeRows();
  EXPECT_TRUE(std::ranges::is_sorted(rows, {}, &QZHKObjectTypeRow::kind));
  for (const QZHKObjectTypeRow& row : rows) {
    EXPECT_EQ(row.dimension.has_value(), row.kind == QZHKObjectKind::quantity) << rawValue(row.type);
  }
  EXPECT_EQ(kind(QZHKObjectType::oxygenSaturation), QZHKObjectKind::quantity);
  EXPECT_EQ(kind(QZHKObjectType::sleepAnalysis), QZHKObjectKind::category);
  EXPECT_EQ(kind(QZHKObjectType::handwashingEvent), QZHKObjectKind::category);
  EXPECT_EQ(kind(QZHKObjectType::electrocardiogram), QZHKObjectKind::electrocardiogram);
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
  // What is entered is what is eaten, drunk, injected and inhaled, nothing else.
  EXPECT_EQ(std::ranges::count(objectTypeRows(), QZHKOrigin::entered, &QZHKObjectTypeRow::origin), 41);
}

TEST(ObjectTypeTests, TitlesOfWorkoutsAreSortedAndDistinctWithOtherLast) {
  std::vector<std::string> titles;
  for (const auto& row : RawValueTable<QZHKWorkoutActivityType>::rows) {
    std::string letters;
    for (const char c : title(row.value)) {
      if (c != ' ') letters.push_back(static_cast<char>(std::tolower(c)));
    }
    std::string name(row.name);
    std::ranges::transform(name, name.begin(), [](char c) { return static_cast<char>(std::tolower(c)); });
    EXPECT_EQ(letters, name);
    titles.emplace_back(title(row.value));
  }
  EXPECT_EQ(titles.back(), "Other");
  EXPECT_TRUE(std::is_sorted(titles.begin(), titles.end() - 1));
}

TEST(ObjectTypeTests, OptionsIterateInOrderAndKeepTheirBits) {
  using O = QZHKStatisticsOption;
  const QZHKStatisticsOptions options{O::duration, O::cumulativeSum};
  EXPECT_EQ(options, QZHKStatisticsOptions::duration | QZHKStatisticsOptions::cumulativeSum);
  EXPECT_EQ(std::vector<O>(options.begin(), options.end()), (std::vector<O>{O::cumulativeSum, O::duration}));
  EXPECT_FALSE(options.contains(O::mostRecent));
  EXPECT_EQ(options.rawValue(), 33);
  for (std::int64_t bits = 0; bits <= 127; ++bits) {
    EXPECT_EQ(QZHKStatisticsOptions::fromRawValue(bits).value().rawValue(), bits);
  }
  EXPECT_EQ(QZHKStatisticsOptions::fromRawValue(128), std::nullopt);
  EXPECT_EQ(QZHKStatisticsOptions::fromRawValue(-1), std::nullopt);
}

}  // namespace
}  // namespace qz
