#include <gtest/gtest.h>
#include <HabitraBackup/AutomaticBackups/AutomaticBackups.h>
#include <HabitraBackup/AutomaticBackups/BackupRotation.h>
#include <HabitraBackup/HabitraBackup.h>
#include <HabitraModel/DataManager.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <QZDateTime/ISO8601.h>
#include <Support/SettableClock.h>
#include <Support/TemporaryFolder.h>
#include <filesystem>
#include <fstream>
#include <set>

namespace habitra {
namespace {

using qz::YYYYMMDD;

TEST(BackupRotationTest, DaysThenWeeksThenMonthsAreKept) {
  const YYYYMMDD first(2023, 1, 1);
  std::set<YYYYMMDD> made;
  std::size_t most = 0;
  YYYYMMDD today = first;
  for (; today < YYYYMMDD(2025, 1, 1); today = today.nextDay()) {
    made.insert(today);
    for (const YYYYMMDD day : BackupRotation().outdated({made.begin(), made.end()}, today)) made.erase(day);
    most = std::max(most, made.size());
    ASSERT_TRUE(made.contains(today));
  }
  const YYYYMMDD last = today.previousDay();  // Tuesday, 31 December 2024
  for (int back = 0; back < 12; ++back) EXPECT_TRUE(made.contains(last.add(-back))) << back;
  for (const YYYYMMDD sunday : {YYYYMMDD(2024, 12, 15), YYYYMMDD(2024, 12, 1), YYYYMMDD(2024, 11, 3)})
    EXPECT_TRUE(made.contains(sunday)) << sunday.intValue();
  EXPECT_FALSE(made.contains(YYYYMMDD(2024, 12, 14)));
  for (const YYYYMMDD end : {YYYYMMDD(2024, 9, 30), YYYYMMDD(2024, 6, 30), YYYYMMDD(2024, 4, 30)})
    EXPECT_TRUE(made.contains(end)) << end.intValue();
  EXPECT_LT(*made.begin(), YYYYMMDD(2024, 5, 1));
  EXPECT_GE(*made.begin(), YYYYMMDD(2024, 4, 1));
  EXPECT_LE(most, 12U + 10U + 9U);
}

TEST(BackupRotationTest, TheNewestStaysHoweverOldAndWhatLiesAheadIsLeftAlone) {
  EXPECT_TRUE(BackupRotation().outdated({YYYYMMDD(2001, 1, 1)}, YYYYMMDD(2024, 1, 31)).empty());
  const BackupRotation none{.days = 0, .weeks = 0, .months = 0};
  EXPECT_EQ(none.outdated({YYYYMMDD(2038, 1, 1), YYYYMMDD(2024, 1, 30), YYYYMMDD(2024, 1, 31)}, YYYYMMDD(2024, 1, 31)),
            std::vector<YYYYMMDD>{YYYYMMDD(2024, 1, 30)})
      << "made under a clock that was wrong";
}

class AutomaticBackupsTest : public testing::Test {
 protected:
  static qz::Moment at(const char* text) { return qz::momentFromISO8601(text).value(); }

  void addTask(const std::string& title) {
    const auto context = manager_.context();
    context->insert(newlyMadeTask(title, qz::DayOfWeek::monday, clock_->now(), "UTC"));
    context->save({});
  }
  [[nodiscard]] bool isDue(YYYYMMDD today) { return backups_.isDue(*manager_.contextForReading(), today); }
  void make(YYYYMMDD today) { backups_.make(*manager_.contextForReading(), today, clock_->now()); }

  TemporaryFolder folder_;
  std::filesystem::path home_ = folder_ / "home";
  std::shared_ptr<SettableClock> clock_ = std::make_shared<SettableClock>(at("2024-01-31T12:00:00Z"));
  DataManager manager_{DataManager::storeLocation(home_), clock_};
  AutomaticBackups backups_{home_, manager_.standardDefaults(), "1.2"};
  const YYYYMMDD today_{2024, 1, 31};
};

TEST_F(AutomaticBackupsTest, OneIsMadeOnADayOnWhichSomethingHasChanged) {
  addTask("Read");
  EXPECT_TRUE(isDue(today_));
  make(today_);
  addTask("Run");
  EXPECT_FALSE(isDue(today_)) << "one a day";
  EXPECT_TRUE(isDue(today_.nextDay()));
  make(today_.nextDay());
  EXPECT_FALSE(isDue(today_.add(2))) << "nothing has changed";
  const auto all = backups_.all();
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(all[0].day, today_.nextDay());
  EXPECT_EQ(HabitraBackup::loadJson(all[0].file).document.tasks.size(), 2U);
  EXPECT_EQ(HabitraBackup::loadJson(all[0].file).document.appVersion, "1.2");
  EXPECT_EQ(HabitraBackup::loadJson(all[1].file).document.tasks.size(), 1U);
  EXPECT_EQ(std::filesystem::status(all[0].file).permissions(), std::filesystem::perms(0600));
  EXPECT_EQ(std::filesystem::status(home_ / "Backups").permissions(), std::filesystem::perms(0700));
  std::filesystem::remove_all(home_ / "Backups");
  EXPECT_TRUE(isDue(today_.add(2))) << "somebody has taken them away";
}

TEST_F(AutomaticBackupsTest, OnlyFilesOfItsOwnGo) {
  addTask("Read");
  std::filesystem::create_directory(home_ / "Backups");
  for (const char* name : {"2020-01-01.habitra", "mine-2020-01-01.habitra.zst", "2020-02-31.habitra.zst", "notes.txt",
                           ".2020-01-01.habitra.zst", ".2020-notes"})
    std::ofstream(home_ / "Backups" / name) << "kept";
  std::ofstream(home_ / "Backups" / ".2024-01-29.habitra.zst.4711-0") << "unfinished";
  for (const auto& entry : std::filesystem::directory_iterator(home_ / "Backups"))
    std::filesystem::last_write_time(entry, std::filesystem::file_time_type::clock::now() - std::chrono::hours(25));
  for (YYYYMMDD day(2020, 3, 1); day < YYYYMMDD(2020, 3, 31); day = day.nextDay())
    std::ofstream(home_ / "Backups" / (day.debugDescription() + ".habitra.zst")) << "old";
  make(today_);
  std::set<std::string> left;
  for (const auto& entry : std::filesystem::directory_iterator(home_ / "Backups"))
    left.insert(entry.path().filename().string());
  EXPECT_EQ(left.size(), 6U + 12U + 3U) << "twelve days, and the Sundays of three weeks that none of them lies in";
  EXPECT_TRUE(left.contains("2024-01-31.habitra.zst"));
  EXPECT_TRUE(left.contains("2020-02-31.habitra.zst"));
  EXPECT_FALSE(left.contains(".2024-01-29.habitra.zst.4711-0"));
}

TEST_F(AutomaticBackupsTest, NothingGoesWhenTheNewOneCannotBeWritten) {
  addTask("Read");
  std::filesystem::create_directory(home_ / "Backups");
  std::filesystem::create_directory(home_ / "Backups" / "2024-01-31.habitra.zst");
  for (YYYYMMDD day(2020, 3, 1); day < YYYYMMDD(2020, 3, 31); day = day.nextDay())
    std::ofstream(home_ / "Backups" / (day.debugDescription() + ".habitra.zst")) << "old";
  EXPECT_THROW(make(today_), qz::Error);
  EXPECT_EQ(backups_.all().size(), 30U);
}

}  // namespace
}  // namespace habitra
