#include <gtest/gtest.h>
#include <HabitraApp/Application.h>
#include <HabitraApp/WidgetSnapshot.h>
#include <HabitraModel/DataManager.h>
#include <Support/SettableClock.h>
#include <Support/TemporaryFolder.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>

namespace {

using std::chrono::hours;

/// Midday of 31 January 2024, UTC.
class ProcessingTests : public testing::Test {
 protected:
  [[nodiscard]] nlohmann::json snapshot() const { return nlohmann::json::parse(std::ifstream(snapshot_)); }

  TemporaryFolder folder_;
  std::filesystem::path snapshot_ = folder_ / "home" / habitra::WidgetSnapshot::fileName;
  std::shared_ptr<SettableClock> clock_ =
      std::make_shared<SettableClock>(qz::Moment(std::chrono::sys_days(std::chrono::January / 31 / 2024) + hours(12)));
  habitra::Application application_{{.home = folder_ / "home", .clock = clock_, .timeZone = qz::TimeZone::utc()}};
};

TEST_F(ProcessingTests, aHabitMayHaveBeenKeptBefore) {
  EXPECT_EQ(application_.add("Read", 12).streak.current, 12);
  EXPECT_EQ(application_.done({"Read"}, {}).at(0).habit.streak.current, 13);
  EXPECT_THROW(application_.add("Run", -1), qz::Error);
  EXPECT_EQ(application_.list().size(), 1u);
}

TEST_F(ProcessingTests, panelsShowWhatWasChangedAndAreLeftAloneOtherwise) {
  application_.afterAnswer();
  EXPECT_FALSE(std::filesystem::exists(snapshot_));
  application_.add("Read");
  application_.done({"Read"}, {});
  application_.afterAnswer();
  EXPECT_EQ(snapshot()["habits"][0]["streak"]["current"], 1);
  std::filesystem::remove(snapshot_);
  application_.processIfDue();
  application_.afterAnswer();
  EXPECT_FALSE(std::filesystem::exists(snapshot_));
  clock_->advance(hours(48));
  application_.processIfDue();
  application_.afterAnswer();
  EXPECT_EQ(snapshot()["day"], 20240202);
  EXPECT_EQ(snapshot()["habits"][0]["lastMissed"], 20240201);
  std::filesystem::remove(snapshot_);
  application_.undo("Read", qz::YYYYMMDD(2024, 1, 31));
  application_.afterAnswer();
  EXPECT_EQ(snapshot()["habits"][0]["streak"]["best"], 0);
}

TEST_F(ProcessingTests, aWatchOutlivesTheLastSecondOfADay) {
  application_.add("Read");
  clock_->advance(hours(12) - std::chrono::milliseconds(400));
  int passes = 0;
  application_.watch([&](const habitra::ProcessReport&) {
    if (++passes == 1) application_.stopWatching();
  });
  EXPECT_EQ(passes, 1);
}

}  // namespace
