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
  EXPECT_EQ(std::filesystem::status(snapshot_).permissions(), std::filesystem::perms(0600));
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

  application_.done({"Read"}, {});  // by somebody who was stopped before the snapshot was written
  habitra::Application next({.home = folder_ / "home", .clock = clock_, .timeZone = qz::TimeZone::utc()});
  next.afterAnswer();
  EXPECT_EQ(snapshot()["habits"][0]["streak"]["best"], 1);
}

TEST_F(ProcessingTests, panelsNeverGoBackToWhatWasEarlier) {
  habitra::WidgetSnapshot widgets(folder_ / "home");
  const auto write = [&](const char* store, std::int64_t sequence, qz::YYYYMMDD day) {
    widgets.write({.stored = {.storeIdentifier = store, .sequence = sequence}, .day = day, .habits = {}});
    return snapshot()["day"].get<int>();
  };
  EXPECT_EQ(write("A", 7, {2024, 1, 31}), 20240131);
  EXPECT_EQ(write("A", 6, {2024, 1, 30}), 20240131) << "somebody who was slow";
  EXPECT_EQ(write("A", 7, {2024, 2, 1}), 20240201) << "a day has begun";
  EXPECT_EQ(write("B", 1, {2024, 2, 2}), 20240202) << "another store has taken its place";
  std::ofstream(snapshot_) << "{\"store\": \"B\", \"sequence\"";
  EXPECT_EQ(write("B", 1, {2024, 2, 3}), 20240203);

  std::filesystem::remove(snapshot_);
  std::filesystem::create_directory(snapshot_);
  widgets.reloadAllTimelines();
  EXPECT_THROW(write("B", 2, {2024, 2, 3}), qz::Error);
  EXPECT_TRUE(widgets.isOutdated({.storeIdentifier = "B", .sequence = 2}, {2024, 2, 3})) << "it is tried again";
}

TEST_F(ProcessingTests, aBackupIsMadeADayAndOneCanBeGoneBackTo) {
  application_.add("Read");
  application_.done({"Read"}, {});
  application_.afterAnswer();
  clock_->advance(hours(24));
  application_.add("Run");
  application_.afterAnswer();
  ASSERT_EQ(application_.backups().size(), 2U);
  const qz::YYYYMMDD first(2024, 1, 31);
  EXPECT_EQ(application_.backups().back().day, first);

  const habitra::RestoreOutcome outcome = application_.restore(first);
  EXPECT_EQ(outcome.tasks, 1U);
  const auto habits = application_.list();
  ASSERT_EQ(habits.size(), 1U);
  EXPECT_EQ(habits[0].streak.current, 1);
  EXPECT_THROW((void)application_.restore(qz::YYYYMMDD(2024, 1, 30)), qz::Error);
  std::size_t kept = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder_ / "home" / "Backups"))
    if (entry.path().filename().string().find("-replaced-") != std::string::npos) ++kept;
  EXPECT_EQ(kept, 1U);
  application_.done({"Read"}, {});
  EXPECT_EQ(application_.list().at(0).streak.current, 2) << "life goes on";
}

TEST_F(ProcessingTests, aWatchOutlivesTheLastSecondOfADay) {
  application_.add("Read");
  clock_->advance(hours(12) - std::chrono::milliseconds(400));
  int passes = 0;
  application_.watch([&](const habitra::ProcessReport&) {
    if (++passes == 1) application_.stopWatching();
  });
  EXPECT_GE(passes, 1);
}

}  // namespace
