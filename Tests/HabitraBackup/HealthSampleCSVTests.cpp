#include <gtest/gtest.h>
#include <HabitraBackup/CSV/CSVError.h>
#include <HabitraBackup/Files/FileReading.h>
#include <HabitraBackup/HealthSamples/HealthSampleCSV.h>
#include <QZDateTime/ISO8601.h>

#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace habitra {
namespace {

using namespace qz;
using T = QZHKObjectType;
using U = QZHKUnit;

constexpr const char* header = "type,start,end,value,unit,source\n";

std::vector<QZHKSample> decoded(const std::string& text) {
  std::vector<QZHKSample> samples;
  std::istringstream stream(text);
  readStream(stream, "walk.csv", [&](const ByteSource& source) {
    HealthSampleCSVDecoder().decode(source, [&](const QZHKSample& sample) { samples.push_back(sample); });
  });
  return samples;
}

std::string refusal(const std::string& text) {
  try {
    decoded(text);
  } catch (const CSVError& error) {
    return error.what();
  }
  return "read";
}

SampleStore::Saved bringIn(const std::string& text, SampleStore& store) {
  std::istringstream stream(text);
  return importHealthSamples(stream, "walk.csv", store);
}

TEST(HealthSampleCSVTests, EveryKindOfSampleCanBeWritten) {
  const auto samples = decoded(
      "source,unit,value,end,start,type,note\n"
      "Watch,km,1.25,2024-01-31T08:30:00+01:00,2024-01-31T08:00:00+01:00,distanceWalkingRunning,hilly\n"
      "\"Scale, old\",lb,160,,2024-01-31T07:00:00.5Z,bodyMass,\n"
      "Watch,,deep,2024-01-31T03:00:00Z,2024-01-31T02:00:00Z,sleepAnalysis,\n"
      "Watch,,swimming 0.5 mi 250 kcal,2024-01-31T03:00:00Z,2024-01-31T02:00:00Z,workout,\n"
      "Watch,,yoga,2024-01-31T03:00:00Z,2024-01-31T02:00:00Z,workout,\n"
      "org.example.Reader,min,12.5,2024-01-31T03:00:00Z,2024-01-31T02:00:00Z,applicationUsage,\n"
      "Brush,,,,2024-01-31T07:00:00Z,toothbrushingEvent,\n");
  ASSERT_EQ(samples.size(), 7U);
  EXPECT_EQ(samples[0].objectType, T::distanceWalkingRunning);
  EXPECT_EQ(samples[0].start, momentFromISO8601("2024-01-31T07:00:00Z"));
  EXPECT_EQ(samples[0].end - samples[0].start, std::chrono::minutes(30));
  EXPECT_EQ(samples[0].quantity(), (QZHKQuantity{1.25, U::kilometre}));
  EXPECT_EQ(samples[1].end, samples[1].start);
  EXPECT_EQ(samples[1].source, "Scale, old");
  EXPECT_EQ(samples[2].sleepValue(), QZHKSleepValue::deep);
  EXPECT_EQ(samples[3].workout(), (QZHKWorkout{QZHKWorkoutActivityType::swimming, QZHKQuantity{250, U::kilocalorie},
                                               QZHKQuantity{0.5, U::mile}}));
  EXPECT_EQ(samples[4].workout(), (QZHKWorkout{QZHKWorkoutActivityType::yoga, std::nullopt, std::nullopt}));
  EXPECT_EQ(samples[5].quantity(), (QZHKQuantity{12.5, U::minute}));
  EXPECT_EQ(samples[6].value, QZHKSampleValue());
}

TEST(HealthSampleCSVTests, IdentifiersFollowFromWhatARowSaysAndFromEqualRowsBeforeIt) {
  const std::string row = "stepCount,2024-01-31T08:00:00Z,2024-01-31T08:10:00Z,900,count,Watch\n";
  const std::string spelled = "stepCount,2024-01-31T09:00:00+01:00,2024-01-31T08:10:00.000Z,900.0,count,\"Watch\"\n";
  const auto samples = decoded(header + row + row +
                               "stepCount,2024-01-31T08:00:00Z,2024-01-31T08:10:00Z,901,count,Watch\n"
                               "stepCount,2024-01-31T08:00:00Z,2024-01-31T08:10:00Z,900,count,Phone\n"
                               "pushCount,2024-01-31T08:00:00Z,2024-01-31T08:10:00Z,900,count,Watch\n");
  std::set<UniqueID> identifiers;
  for (const QZHKSample& sample : samples) identifiers.insert(sample.identifier);
  EXPECT_EQ(identifiers.size(), samples.size());
  const auto again = decoded(header + spelled + row);
  EXPECT_EQ(again[0].identifier, samples[0].identifier);
  EXPECT_EQ(again[1].identifier, samples[1].identifier);
  // What was imported once stays known to every later version.
  EXPECT_EQ(samples[0].identifier.text(), "018D5E88-3000-877E-BA41-8A1AC3B79DA4");
}

TEST(HealthSampleCSVTests, ASecondImportAddsWhatIsNewAndARefusedOneNothing) {
  const auto store = SampleStore::inMemory();
  const std::string day = "dietaryWater,2024-01-31T08:00:00Z,,0.2,L,Me\ndietaryWater,2024-01-31T08:00:00Z,,0.2,L,Me\n";
  EXPECT_EQ(bringIn(header + day, *store).added, 2U);
  const auto later = bringIn(header + day + "dietaryWater,2024-01-31T09:00:00Z,,8,fl_oz_us,Me\n", *store);
  EXPECT_EQ(later.added, 1U);
  EXPECT_EQ(later.left, 2U);
  EXPECT_THROW(
      bringIn(header + std::string("flossingEvent,2024-01-31T08:00:00Z,,,,Me\nflossingEvent,,,,,Me\n"), *store),
      CSVError);
  const QZHKSpan ever{Moment::min(), Moment::max()};
  EXPECT_TRUE(store->samples({.objectType = T::flossingEvent, .span = ever, .predicate = {}}).empty());
  EXPECT_EQ(bringIn(header, *store).added, 0U);
}

TEST(HealthSampleCSVTests, WhatIsWrongIsSaidByLineAndColumn) {
  EXPECT_EQ(refusal("type,start,end,value,source\n"),
            "walk.csv: line 1: no column \"unit\" in the header \"type\", \"start\", \"end\", \"value\", \"source\"; "
            "expected type,start,end,value,unit,source");
  EXPECT_EQ(refusal("type,start,end,valeu,unit,source\n"),
            "walk.csv: line 1: unknown column \"valeu\", did you mean \"value\"?");
  const std::string moment = "2024-01-31T08:00:00Z";
  const auto row = [&](const std::string& rest) {
    return refusal(header + ("flossingEvent," + moment + ",,,,Me\n") + rest);
  };
  const struct {
    std::string row;
    const char* problem;
  } cases[] = {
      {"stepcount," + moment + ",,1,count,Me\n",
       "type: \"stepcount\" is not a type of health data such as stepCount, did you mean \"stepCount\"?"},
      {"activitySummary," + moment + ",,1,count,Me\n",
       "type: \"activitySummary\" is worked out from energy, exercise time and hours of standing, which were expected"},
      {"stepCount,31.1.2024,,1,count,Me\n", "start: \"31.1.2024\" is not a moment such as 2024-01-31T08:15:00+01:00"},
      {"stepCount," + moment + ",2024-01-31T07:00:00Z,1,count,Me\n",
       "end: \"2024-01-31T07:00:00Z\": stepCount ends before it starts"},
      {"stepCount," + moment + ",,\"1,5\",count,Me\n", "value: \"1,5\" is not a decimal number such as 1.5"},
      {"stepCount," + moment + ",,-1,count,Me\n", "value: \"-1\": stepCount cannot be below zero"},
      {"exerciseTime," + moment + ",,1,km,Me\n", "unit: \"km\" does not measure exerciseTime; expected s, min or hr"},
      {"sleepAnalysis," + moment + ",,tired,,Me\n", "value: \"tired\" is not inBed, asleep, awake, core, deep or rem"},
      {"workout," + moment + ",,runing 5 km,,Me\n",
       "value: \"runing 5 km\" does not begin with an activity such as running, did you mean \"running\"?"},
      {"workout," + moment + ",,running 5 km 3 mi,,Me\n",
       "value: \"running 5 km 3 mi\" is not an activity with one energy and one distance at most, such as \"running "
       "300 "
       "kcal 5.2 km\""},
      {"flossingEvent," + moment + ",,1,,Me\n",
       "value: \"1\" is a value, and flossingEvent has none; expected nothing"},
      {"flossingEvent," + moment + ",,,,\n",
       "source: \"\" is empty, and the program that recorded the sample was expected"},
  };
  for (const auto& wrong : cases) EXPECT_EQ(row(wrong.row), std::string("walk.csv: line 3, ") + wrong.problem);
}

}  // namespace
}  // namespace habitra
