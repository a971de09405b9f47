#include <HabitraModel/Settings/Settings.h>

#include <gtest/gtest.h>

#include <string>

#include "../Store/StoreFixture.h"
#include "../Tasks/TaskWorld.h"

namespace habitra {
namespace {

class SettingsTest : public testing::Test {
 protected:
  /// A row as another device made it.
  SettingEntity& addRow(std::string_view key, std::optional<qz::Moment> created, std::int64_t value) {
    SettingEntity row;
    row.settingKey = key;
    row.dateCreated = created;
    row.intValue = value;
    return context_->insert(row);
  }
  [[nodiscard]] std::vector<SettingEntity*> rows(std::string_view key) {
    return context_->fetch<SettingEntity>("settingKey", key);
  }

  std::shared_ptr<SettableClock> clock_ = std::make_shared<SettableClock>(testMoment);
  std::unique_ptr<StoreContext> context_ = std::make_unique<StoreContext>(Store::inMemory(clock_));
  StoreSettings stored_{*context_};
};

TEST_F(SettingsTest, AValueLiesInTheColumnOfItsKindAloneAndIsWrittenOnce) {
  stored_.set("a", std::int64_t{7});
  context_->save({});
  clock_->advance(std::chrono::hours(1));
  stored_.set("a", std::int64_t{7});
  EXPECT_FALSE(context_->hasChanges());
  context_->rollback();
  EXPECT_EQ(stored_.get<std::int64_t>("a"), 7);
  EXPECT_EQ(stored_.get<double>("a"), std::nullopt);

  stored_.set("a", std::string("seven"));
  stored_.set("b", Bytes{0, 7});
  stored_.set("c", clock_->now());
  stored_.set("d", 0.7);
  stored_.set("e", false);
  context_->save({});
  EXPECT_EQ(stored_.get<std::int64_t>("a"), std::nullopt);
  EXPECT_EQ(stored_.get<std::string>("a"), "seven");
  EXPECT_EQ(rows("a").at(0)->dateCreated, clock_->now()) << "of the change";
  EXPECT_EQ(stored_.get<Bytes>("b"), (Bytes{0, 7}));
  EXPECT_EQ(stored_.get<qz::Moment>("c"), clock_->now());
  EXPECT_EQ(stored_.get<double>("d"), 0.7);
  EXPECT_EQ(stored_.get<bool>("e"), false);

  stored_.copy("b", "f");
  stored_.copy("nobody", "g");
  stored_.remove("a");
  EXPECT_EQ(stored_.get<Bytes>("f"), (Bytes{0, 7}));
  EXPECT_TRUE(rows("g").empty());
  EXPECT_TRUE(rows("a").empty());
}

TEST_F(SettingsTest, OfSeveralRowsTheLastChangedThatCanBeReadCounts) {
  addRow("a", testMoment, 1);
  addRow("a", testMoment + std::chrono::hours(2), 2);
  addRow("a", std::nullopt, 3);
  context_->save({});
  EXPECT_EQ(stored_.get<std::int64_t>("a"), 2);
  stored_.set("a", std::int64_t{2});
  EXPECT_FALSE(context_->hasChanges());
  stored_.set("a", std::int64_t{4});
  context_->save({});
  EXPECT_EQ(stored_.get<std::int64_t>("a"), 4);
  EXPECT_EQ(rows("a").size(), 1u);
  EXPECT_EQ(rows("a").at(0)->dateCreated, testMoment + std::chrono::hours(2)) << "though the clock says less";

  addRow("b", testMoment, 1);
  addRow("b", testMoment, 2);
  EXPECT_EQ(stored_.get<std::int64_t>("b"), 2) << "changed at the same moment: the later row";

  addRow("firstDayOfWeek", testMoment, 1);
  addRow("firstDayOfWeek", testMoment + std::chrono::hours(1), 7);
  SettingEntity text;
  text.settingKey = "firstDayOfWeek";
  text.dateCreated = testMoment + std::chrono::hours(2);
  text.stringValue = "sunday";
  context_->insert(text);
  EXPECT_EQ(Settings(context_.get(), nullptr, nullptr).chosen(settings::firstDayOfWeek),
            qz::DayOfWeek(qz::DayOfWeek::monday));
}

TEST_F(SettingsTest, WhatIsUnknownOrDamagedReadsAsTheDefault) {
  Settings settings(context_.get(), KeyValueDefaults::inMemory(), nullptr);
  for (const std::int64_t value : {-1, 7}) {
    stored_.set("firstDayOfWeek", value);
    EXPECT_EQ(settings.get(settings::firstDayOfWeek), qz::DayOfWeek::defaultFirst());
  }
  for (const std::int64_t value : {-1, 86'400}) {
    stored_.set("startOfDay", value);
    EXPECT_EQ(settings.get(settings::startOfDay), qz::HHMMSS::midnight);
  }
  stored_.set("startOfDay", std::string("04:00"));
  EXPECT_EQ(settings.chosen(settings::startOfDay), std::nullopt) << "of another kind";
  for (const std::string text : {"", "{", "[]", "{\"dayMode\":99}",
                                 R"({"dayMode":2,"days":[],"numPartialCompletions":1,"numCompletions":1,)"
                                 R"("dayInterval":31,"daysOfMonth":0})"}) {
    stored_.set("defaultFrequency", Bytes(text.begin(), text.end()));
    EXPECT_EQ(settings.get(settings::defaultFrequency), TaskFrequency::everyDay()) << text;
  }
}

TEST_F(SettingsTest, ChoicesAreKeptWhereTheyBelongAndCanBeGivenUp) {
  const auto shared = KeyValueDefaults::inMemory();
  Settings settings(context_.get(), shared, nullptr);
  TaskFrequency threeAWeek = TaskFrequency::everyDay();
  threeAWeek.dayMode = TaskFrequency::DayMode::numberOfDaysInWeek;
  threeAWeek.numCompletions = 3;
  settings.set(settings::firstDayOfWeek, qz::DayOfWeek(qz::DayOfWeek::saturday));
  settings.set(settings::startOfDay, qz::HHMMSS(4, 30));
  settings.set(settings::defaultFrequency, threeAWeek);
  settings.set(settings::cloudSync, true);
  context_->save({});
  EXPECT_EQ(stored_.get<std::int64_t>("firstDayOfWeek"), 6);
  EXPECT_EQ(stored_.get<std::int64_t>("startOfDay"), 16'200);
  EXPECT_EQ(settings.get(settings::defaultFrequency), threeAWeek);
  EXPECT_EQ(shared->get<bool>("dm.cloudSync"), true);

  settings.reset(settings::startOfDay);
  settings.reset(settings::cloudSync);
  EXPECT_EQ(settings.chosen(settings::startOfDay), std::nullopt);
  EXPECT_FALSE(settings.get(settings::cloudSync));
  EXPECT_EQ(Settings(nullptr, shared, nullptr).get(settings::startOfDay), qz::HHMMSS::midnight);
}

using CalendarChangeTest = TaskWorld;

/// Whoever moves the start of the day asks anew what was judged under the old one.
TEST_F(CalendarChangeTest, NoCheckpointOutlivesTheCalendarItWasMadeUnder) {
  TaskEntity& task = addTask();
  for (int day = 0; day < 200; day += 3)
    record(task, TaskLogEntryType::completedManuallyFull, qz::YYYYMMDD(2023, 6, 1).add(day));
  process();
  const auto before = context_->checkpoint(task.objectID);
  ASSERT_TRUE(before);
  EXPECT_FALSE(assess(*context_, task, calendars_, clock_->now()).checkpointIsStale);

  for (const TaskCalendars& other : {TaskCalendars(qz::TimeZone::utc(), qz::HHMMSS(4, 0)),
                                     TaskCalendars(*qz::TimeZone::fromIdentifier("Asia/Tokyo"), qz::HHMMSS::midnight)})
    EXPECT_TRUE(assess(*context_, task, other, clock_->now()).checkpointIsStale);

  calendars_ = TaskCalendars(qz::TimeZone::utc(), qz::HHMMSS(4, 0));
  process();
  const auto after = context_->checkpoint(task.objectID);
  ASSERT_TRUE(after);
  EXPECT_NE(after->fingerprint, before->fingerprint);
  EXPECT_FALSE(assess(*context_, task, calendars_, clock_->now()).checkpointIsStale);
}

}  // namespace
}  // namespace habitra
