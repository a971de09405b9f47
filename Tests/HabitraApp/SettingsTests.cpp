#include <gtest/gtest.h>
#include <HabitraApp/Application.h>
#include <HabitraApp/SettingText.h>
#include <HabitraCore/TaskFrequencyValidation.h>
#include <HabitraModel/DataManager.h>
#include <rapidcheck/gtest.h>
#include <Support/SettableClock.h>
#include <Support/TemporaryFolder.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

namespace habitra {
namespace {

using std::chrono::hours;

/// Two programs on one home; three in the morning of 31 January 2024, UTC.
class SettingsTests : public testing::Test {
 protected:
  [[nodiscard]] Application program() const {
    return Application({.home = folder_ / "home", .clock = clock_, .timeZone = qz::TimeZone::utc()});
  }
  [[nodiscard]] std::int64_t newestTransaction() const {
    return DataManager(DataManager::storeLocation(folder_ / "home"), clock_).context()->sequence();
  }
  static std::string complaint(Application& application, std::string_view name, std::string_view value) {
    try {
      application.changeSetting(name, value);
    } catch (const SettingError& error) {
      return error.what();
    }
    return "";
  }

  TemporaryFolder folder_;
  std::shared_ptr<SettableClock> clock_ =
      std::make_shared<SettableClock>(qz::Moment(std::chrono::sys_days(std::chrono::January / 31 / 2024) + hours(3)));
  Application application_ = program();
};

TEST_F(SettingsTests, readingMakesNothingAndChoicesAreKept) {
  ASSERT_EQ(application_.settings().size(), 3u);
  EXPECT_EQ(application_.setting("start-of-day").value, "00:00");
  EXPECT_FALSE(application_.setting("START OF_DAY").isChosen);
  EXPECT_EQ(application_.resetSetting("startOfDay").value, "00:00");
  EXPECT_FALSE(std::filesystem::exists(folder_ / "home"));

  EXPECT_EQ(application_.changeSetting("start of day", "4:00").value, "04:00");
  EXPECT_EQ(application_.changeSetting("default-frequency", "Mon, wed and FRI x2").value,
            "monday, wednesday, friday x2");
  const std::int64_t transaction = newestTransaction();
  EXPECT_EQ(application_.changeSetting("start-of-day", "04:00:00").value, "04:00");
  EXPECT_EQ(newestTransaction(), transaction) << "nothing new";

  Application other = program();
  EXPECT_TRUE(other.setting("start-of-day").isChosen);
  EXPECT_EQ(other.resetSetting("start-of-day").value, "00:00");
  EXPECT_FALSE(application_.setting("start-of-day").isChosen);
}

TEST_F(SettingsTests, whatCannotBeIsSaidAndChangesNothing) {
  EXPECT_EQ(complaint(application_, "start-of-days", "04:00"),
            "no setting is called \"start-of-days\", did you mean 'start-of-day'?");
  for (const std::string time : {"", "4", "24:00", "4:60", "04:00:00:00", "-1:00", "4:", "04:00 pm"})
    EXPECT_TRUE(complaint(application_, "start-of-day", time)
                    .ends_with("is no time of day; enter one from 00:00 to 23:59, such as '04:00'"))
        << time;
  EXPECT_EQ(complaint(application_, "first-day-of-week", "mo"), "\"mo\" is no weekday; enter one such as 'monday'");
  for (const std::string frequency :
       {"", "x2", "sometimes", "every days", "3 days", "3 days a decade", "days", "days 0", "days 32", "days last-8",
        "every day x", "monday 3", "99999999999999999999 days a week"})
    EXPECT_NE(complaint(application_, "default-frequency", frequency).find("is no frequency; enter one such as"),
              std::string::npos)
        << frequency;
  EXPECT_EQ(complaint(application_, "default-frequency", "every 31 days"),
            "\"every 31 days\" cannot be a frequency: 31 is not from 2 to 30");
  EXPECT_EQ(complaint(application_, "default-frequency", "8 days a week"),
            "\"8 days a week\" cannot be a frequency: 8 is not from 1 to 7");
  for (const SettingSummary& setting : application_.settings()) EXPECT_FALSE(setting.isChosen);
  EXPECT_FALSE(std::filesystem::exists(folder_ / "home")) << "nor makes it a store";
}

TEST_F(SettingsTests, newHabitsAreMadeByThem) {
  application_.changeSetting("first-day-of-week", "saturday");
  application_.changeSetting("default-frequency", "3 times a week");
  const HabitSummary habit = program().add("Read");
  EXPECT_EQ(habit.frequency, frequencyFromText("3 times a week"));
  ASSERT_TRUE(habit.period);
  EXPECT_EQ(habit.period->startDate, qz::YYYYMMDD(2024, 1, 27)) << "a Saturday";
}

TEST_F(SettingsTests, aStartOfDayChangedByAnotherProgramCountsFromTheNextCommandOn) {
  application_.add("Read");
  EXPECT_EQ(application_.list().at(0).period->startDate, qz::YYYYMMDD(2024, 1, 31));
  program().changeSetting("start-of-day", "04:00");
  EXPECT_EQ(application_.today(), qz::YYYYMMDD(2024, 1, 30)) << "it is three in the morning";
  EXPECT_EQ(application_.list().at(0).period->startDate, qz::YYYYMMDD(2024, 1, 30));
  program().changeSetting("start-of-day", "02:00");
  EXPECT_EQ(application_.done({"Read"}, {}).at(0).habit.lastCompleted, qz::YYYYMMDD(2024, 1, 31));
}

RC_GTEST_PROP(SettingTextProperty, everyTextGivenOutIsReadBackAsTheSameValue, ()) {
  TaskFrequency frequency;
  frequency.dayMode = *rc::gen::map(rc::gen::inRange(0, 11), [](int mode) { return TaskFrequency::DayMode(mode); });
  if (frequency.dayMode == TaskFrequency::DayMode::specificDaysOfWeek)
    frequency.days = qz::DaysOfWeek::fromRawValue(*rc::gen::inRange(1, 128)).value();
  if (frequency.dayMode == TaskFrequency::DayMode::specificDaysOfMonth)
    frequency.daysOfMonth = DaysOfMonth(*rc::gen::arbitrary<std::int64_t>()) & DaysOfMonth::every();
  if (frequency.dayMode == TaskFrequency::DayMode::dayInterval) frequency.dayInterval = *rc::gen::inRange(2, 31);
  if (frequency.isCountedDays() || frequency.isAggregate()) frequency.numCompletions = *rc::gen::inRange(1, 400);
  frequency.numPartialCompletions = *rc::gen::inRange(1, 40);
  if (problems(frequency).empty()) RC_ASSERT(frequencyFromText(frequencyText(frequency)) == frequency);

  const auto time = qz::HHMMSS::fromRawValue(*rc::gen::inRange(0, 86'400)).value();
  RC_ASSERT(timeOfDayFromText(timeOfDayText(time)) == time);
  const auto day = qz::DayOfWeek::fromRawValue(*rc::gen::inRange(0, 7)).value();
  RC_ASSERT(weekdayFromText(weekdayText(day)) == day);
}

}  // namespace
}  // namespace habitra
