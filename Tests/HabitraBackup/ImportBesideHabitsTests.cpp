#include "ImportHome.h"

#include <gtest/gtest.h>
#include <HabitraBackup/HabitraBackup.h>
#include <HabitraModel/Settings/StoreSettings.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/StoredPages.h>

#include <sstream>
#include <string>
#include <vector>

namespace habitra {
namespace {

using Home = ImportHome;
using Rows = ImportReport::Rows;

HabitraJSONBackup ofCsv(Home& home, const std::string& text) {
  std::istringstream stream(text);
  return HabitraBackup::loadCsv(stream, "test", home.now);
}

HabitraJSONBackup withSettings() {
  HabitraJSONBackup document;
  auto& task = document.tasks.emplace_back();
  task.title = "Theirs";
  task.log.emplace().emplace_back().entryType = TaskLogEntryType::completedManuallyFull;
  task.log->back().entryDate = qz::YYYYMMDD(2024, 5, 31);
  document.settings = {{.settingKey = "startOfDay", .intValue = 10800},
                       {.settingKey = "cloudSync", .booleanValue = true}};
  return document;
}

TEST(ImportBesideHabitsTests, SettingsOfAllHabitsComeOnlyWhereNoHabitIs) {
  const std::string remark =
      "What counts for all habits was left out, since there are habits here: cloudSync, startOfDay";
  for (const auto strategy : {ImportStrategy::merge, ImportStrategy::skip, ImportStrategy::importWithNewID}) {
    Home home;
    home.import(ofCsv(home, "title\nMine\n"));
    const auto report = home.import(withSettings(), strategy);
    EXPECT_EQ(report.settings, Rows{}) << caseName(strategy);
    EXPECT_EQ(report.remarks, std::vector<std::string>{remark});
    EXPECT_EQ(StoreSettings(home.context).get<std::int64_t>("startOfDay"), std::nullopt);
    EXPECT_EQ(home.log("Theirs").at(0).createdTimestamp, qz::momentFromISO8601("2024-05-30T22:00:00Z"))
        << "days begin as they do here";

    StoreSettings(home.context).set("startOfDay", std::int64_t{7200});
    StoreSettings(home.context).set("cloudSync", false);
    home.save();
    const auto again = home.import(withSettings(), strategy);
    EXPECT_EQ(again.settings, Rows{.left = 2});
    EXPECT_TRUE(again.remarks.empty()) << "nothing is missing";
    EXPECT_EQ(home.import(withSettings(), ImportStrategy::overwrite).settings, Rows{.changed = 2});
    EXPECT_EQ(StoreSettings(home.context).get<std::int64_t>("startOfDay"), 10800);
  }
  Home empty;
  EXPECT_EQ(empty.import(withSettings()).settings, Rows{.added = 2});
}

TEST(ImportBesideHabitsTests, OverwritingLeavesPictureAndPageWhereTheFileSaysNeither) {
  Home home;
  home.import(ofCsv(home, "title,page\nFirst,3\n"));
  home.import(ofCsv(home, "title,icon,entry_type,entry_date,page\nRead,ic_book,completed_manually,20240530,3\n"));
  const TaskEntity before = home.task("Read");
  const HabitraJSONBackup bare = ofCsv(home, "title,entry_type,entry_date\nRead,missed_manually,20240531\n");
  EXPECT_EQ(home.import(bare, ImportStrategy::overwrite).entries(), (ImportReport::Entries{.added = 1, .removed = 1}));
  EXPECT_EQ(home.task("Read").imageName, "ic_book");
  EXPECT_EQ(home.task("Read").userProfile, before.userProfile);
  EXPECT_EQ(home.task("Read").displayOrder, before.displayOrder);

  home.import(ofCsv(home, "title,icon,page\nRead,ic_walk,2\n"), ImportStrategy::overwrite);
  EXPECT_EQ(home.task("Read").imageName, "ic_walk");
  EXPECT_EQ(pageOf(home.task("Read"), home.context).rawValue(), 2);
}

TEST(ImportBesideHabitsTests, HabitsOfAnotherTrackerStandLast) {
  Home home;
  home.import(ofCsv(home, "title\nMine\nToo\n"));
  HabitraJSONBackup foreign;
  for (const auto* title : {"One", "Two"}) {
    auto& task = foreign.tasks.emplace_back();
    task.title = title;
    task.record.emplace().isWhole = false;
  }
  home.import(foreign);
  EXPECT_EQ(home.task("One").displayOrder, 2);
  EXPECT_EQ(home.task("Two").displayOrder, 3);
  home.task("Two").imageName = "ic_book";
  home.save();
  home.import(foreign, ImportStrategy::overwrite);
  EXPECT_EQ(home.task("Two").displayOrder, 3) << "what it does not say stays";
  EXPECT_EQ(home.task("Two").imageName, "ic_book");

  foreign.tasks[0].record->isWhole = true;
  home.import(foreign, ImportStrategy::overwrite);
  EXPECT_EQ(home.task("One").displayOrder, 0) << "a document of ours says the place";
}

}  // namespace
}  // namespace habitra
