#include <gtest/gtest.h>
#include <HabitraApp/Application.h>
#include <HabitraModel/DataManager.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <QZDateTime/ISO8601.h>
#include <Support/SettableClock.h>
#include <Support/TemporaryFolder.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

// Today is the same day in the list, in what is recorded and in what is filled in.
namespace habitra {
namespace {

using qz::YYYYMMDD;

qz::Moment at(std::string_view text) { return qz::momentFromISO8601(text).value(); }

/// Two habits: one that is marked at every look, and one that nobody ever marks.
class TodayTests : public testing::Test {
 protected:
  void begin(std::string_view moment, const std::string& zone, const std::string& startOfDay) {
    clock_->set(at(moment));
    moveTo(zone);
    application_->changeSetting("start-of-day", startOfDay);
    application_->add("Marked");
    application_->add("Idle");
  }
  void moveTo(const std::string& zone) {
    application_ = std::make_unique<Application>(ApplicationSettings{
        .home = folder_ / "home", .clock = clock_, .timeZone = qz::TimeZone::fromIdentifier(zone).value()});
  }
  void expectToday(YYYYMMDD today) {
    SCOPED_TRACE(qz::iso8601(clock_->now()));
    EXPECT_EQ(application_->today(), today);
    for (const HabitSummary& habit : application_->list()) EXPECT_EQ(habit.period->startDate, today) << "listed";
    // What stands already is not recorded again.
    if (application_->done({"Marked"}, std::nullopt).front().outcome == Marked::Outcome::already)
      application_->skip({"Marked"}, std::nullopt);
    const auto rows = log("Marked");
    EXPECT_EQ(std::ranges::max_element(rows, {}, &TaskLogEntryEntity::objectID)->entryDate, storedDay(today))
        << "recorded";
    application_->process();
  }
  void expectFilledInThrough(YYYYMMDD day) { EXPECT_EQ(log("Idle").back().entryDate, storedDay(day)) << "filled in"; }
  std::vector<TaskLogEntryEntity> log(const std::string& title) {
    DataManager manager(DataManager::storeLocation(folder_ / "home"), clock_);
    const auto context = manager.context();
    return context->fetchLogEntries(context->find<TaskEntity>("title", title)->objectID);
  }

  TemporaryFolder folder_;
  std::shared_ptr<SettableClock> clock_ = std::make_shared<SettableClock>(qz::Moment{});
  std::unique_ptr<Application> application_;
};

struct Night {
  std::string name;
  std::string startOfDay;
  YYYYMMDD day;  ///< on which the clocks change in Berlin
  std::string begins;
  std::string ends;
};

class TodayOverANight : public TodayTests, public testing::WithParamInterface<Night> {};

TEST_P(TodayOverANight, ChangesForAllAtOnce) {
  const Night& night = GetParam();
  begin("2024-03-01T12:00:00Z", "Europe/Berlin", night.startOfDay);
  clock_->set(at(night.begins) - std::chrono::days(1));
  application_->process();
  for (const auto& [moment, day] : {std::pair(night.begins, night.day), {night.ends, night.day.nextDay()}}) {
    clock_->set(at(moment) - std::chrono::seconds(1));
    expectToday(day.previousDay());
    expectFilledInThrough(day.add(-2));
    clock_->set(at(moment));
    expectToday(day);
    expectFilledInThrough(day.previousDay());
  }
}

// The clocks go from 02:00 to 03:00, and from 03:00 back to 02:00; a day that starts in the evening begins on the date
// before.
INSTANTIATE_TEST_SUITE_P(
    , TodayOverANight,
    testing::Values(
        Night{"SpringAtMidnight", "00:00", {2024, 3, 31}, "2024-03-30T23:00:00Z", "2024-03-31T22:00:00Z"},
        Night{"SpringInTheGap", "02:30", {2024, 3, 31}, "2024-03-31T01:00:00Z", "2024-04-01T00:30:00Z"},
        Night{"SpringAtThree", "03:00", {2024, 3, 31}, "2024-03-31T01:00:00Z", "2024-04-01T01:00:00Z"},
        Night{"SpringInTheEvening", "20:00", {2024, 3, 31}, "2024-03-30T19:00:00Z", "2024-03-31T18:00:00Z"},
        Night{"AutumnAtMidnight", "00:00", {2024, 10, 27}, "2024-10-26T22:00:00Z", "2024-10-27T23:00:00Z"},
        Night{"AutumnInTheHourThatComesTwice", "02:30", {2024, 10, 27}, "2024-10-27T00:30:00Z", "2024-10-28T01:30:00Z"},
        Night{"AutumnAtThree", "03:00", {2024, 10, 27}, "2024-10-27T02:00:00Z", "2024-10-28T02:00:00Z"},
        Night{"AutumnInTheEvening", "20:00", {2024, 10, 27}, "2024-10-26T18:00:00Z", "2024-10-27T19:00:00Z"}),
    [](const auto& night) { return night.param.name; });

TEST_F(TodayTests, isTheSameForAllAfterALongFlight) {
  begin("2024-01-30T06:00:00Z", "Europe/London", "03:00");
  clock_->set(at("2024-01-31T12:30:00Z"));
  expectToday({2024, 1, 31});
  moveTo("Pacific/Fiji");  // 12 hours ahead; still before three there
  clock_->set(at("2024-01-31T14:30:00Z"));
  expectToday({2024, 1, 31});
  clock_->set(at("2024-01-31T15:00:00Z"));
  expectToday({2024, 2, 1});
  expectFilledInThrough({2024, 1, 31});

  moveTo("Europe/London");
  clock_->advance(std::chrono::hours(1));
  EXPECT_EQ(application_->process().removed, 1u) << "what was filled in; what was recorded ahead was in time";
  expectToday({2024, 1, 31});
  moveTo("America/Los_Angeles");
  clock_->set(at("2024-02-01T10:59:59Z"));
  expectToday({2024, 1, 31});
  clock_->set(at("2024-02-01T11:00:00Z"));
  expectToday({2024, 2, 1});
  EXPECT_EQ(application_->process().filledIn, 0u) << "that day was filled in before";
}

}  // namespace
}  // namespace habitra
