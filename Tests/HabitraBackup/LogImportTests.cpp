#include "ImportHome.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <HabitraModel/Mapping/FrequencyMapping.h>
#include <HabitraModel/Store/StoreContext.h>
#include <QZDateTime/ISO8601.h>

#include <memory>
#include <string>
#include <vector>

namespace habitra {
namespace {

using Type = TaskLogEntryType;
using Entry = HabitraJSONBackupTaskEntry;
using Entries = ImportReport::Entries;
using Words = std::vector<std::string>;
using Home = ImportHome;

/// An entry of a day in May 2024, made at an hour of a day in May.
Entry entry(Type type, int day, std::optional<std::string> made = std::nullopt, double progress = 0) {
  Entry entry;
  entry.entryType = type;
  entry.entryDate = qz::YYYYMMDD(2024, 5, day);
  if (made) entry.createdTimestamp = qz::momentFromISO8601("2024-05-" + *made + ":00:00Z").value();
  if (progress != 0) entry.progress = progress;
  return entry;
}

HabitraJSONBackup documentOf(std::vector<Entry> entries, bool hasRecord = false) {
  HabitraJSONBackup document;
  auto& task = document.tasks.emplace_back();
  task.title = "A";
  task.log = std::move(entries);
  if (hasRecord) task.record.emplace();
  return document;
}

/// The log in the order of its rows, "30 completedManuallyFull" for an entry of the thirtieth.
Words logOf(Home& home) {
  Words words;
  for (const TaskLogEntryEntity& row : home.log("A"))
    words.push_back(fmt::format("{} {}", row.entryDate % 100, caseName(fromRawValue<Type>(row.entryType).value())));
  return words;
}

TEST(LogImportTests, AnOlderDocumentTakesNoDecidedDayBack) {
  const HabitraJSONBackup older = documentOf(
      {entry(Type::missedAutomaticallyFull, 27, "31T05"), entry(Type::missedAutomaticallyFull, 28, "31T05"),
       entry(Type::skippedAutomaticallyFull, 29, "31T05"), entry(Type::missedAutomaticallyFull, 30, "31T05")});
  Home home;
  home.import(older);
  const auto decided = home.import(
      documentOf({entry(Type::completedManuallyFull, 27, "31T08"), entry(Type::completedAutomaticallyFull, 28, "31T08"),
                  entry(Type::missedAutomaticallyFull, 29, "31T08", 0.5)}));
  EXPECT_EQ(decided.entries(), (Entries{.added = 3, .removed = 3})) << "decided by a person or by data";
  const Words log{"27 completedManuallyFull", "28 completedAutomaticallyFull", "29 missedAutomaticallyFull",
                  "30 missedAutomaticallyFull"};
  EXPECT_EQ(logOf(home), log);
  EXPECT_EQ(home.import(older).entries(), (Entries{.left = 1, .passedOver = 3}));
  EXPECT_EQ(logOf(home), log);

  home.import(documentOf({entry(Type::completedManuallyPartial, 26, "26T08")}));
  EXPECT_EQ(home.import(documentOf({entry(Type::missedAutomaticallyFull, 26, "31T05"),
                                    entry(Type::skippedAutomaticallyFull, 30, "31T06")}))
                .entries(),
            (Entries{.added = 1, .passedOver = 1}))
      << "a part decides nothing, and what is filled in stands once";
}

TEST(LogImportTests, OnlyWhatWasFilledInGivesWayAndOnlyToADecision) {
  Home home;
  home.import(documentOf({entry(Type::completedAutomaticallyFull, 27, "27T08", 1),
                          entry(Type::missedAutomaticallyFull, 28, "28T08", 0.5),
                          entry(Type::completedAutomaticallyPartial, 29, "29T08", 0.5)}));
  const Words before = logOf(home);
  EXPECT_EQ(home.import(documentOf({entry(Type::missedAutomaticallyFull, 27, "31T05"),
                                    entry(Type::skippedAutomaticallyFull, 28, "31T05")}))
                .entries(),
            Entries{.passedOver = 2});
  EXPECT_EQ(logOf(home), before);
  EXPECT_EQ(home.import(documentOf({entry(Type::missedManuallyFull, 27, "31T08"),
                                    entry(Type::completedManuallyFull, 28, "31T08"),
                                    entry(Type::completedManuallyFull, 29, "31T08")}))
                .entries(),
            Entries{.added = 3})
      << "what data said stays beside it";
}

TEST(LogImportTests, EntriesOfAPeriodStandInTheOrderOfTheirMaking) {
  Home home;
  home.import(documentOf({entry(Type::skippedManuallyFull, 31, "31T08"), entry(Type::unknown, 30, "31T12"),
                          entry(Type::completedManuallyFull, 30, "30T09"), entry(Type::timerManual, 30)}));
  EXPECT_EQ(logOf(home), (Words{"30 timerManual", "30 completedManuallyFull", "30 unknown", "31 skippedManuallyFull"}));
  const auto undo = home.log("A").at(2);

  home.import(
      documentOf({entry(Type::missedManuallyFull, 30, "31T13"), entry(Type::skippedManuallyFull, 30, "30T10")}));
  EXPECT_EQ(logOf(home), (Words{"30 timerManual", "30 completedManuallyFull", "30 skippedManuallyFull", "30 unknown",
                                "30 missedManuallyFull", "31 skippedManuallyFull"}));
  EXPECT_EQ(home.log("A").at(3).uniqueId, undo.uniqueId);
  EXPECT_EQ(home.log("A").at(3).createdTimestamp, undo.createdTimestamp);

  home.import(documentOf({entry(Type::unknown, 30, "31T12"), entry(Type::completedManuallyFull, 30, "31T11")}),
              ImportStrategy::overwrite);
  EXPECT_EQ(logOf(home), (Words{"30 completedManuallyFull", "30 unknown"}));
}

TEST(LogImportTests, EntriesOfAWeekStandInTheOrderOfItsDays) {
  Home home;
  home.import(documentOf({}));
  TaskFrequency weekly;
  weekly.dayMode = TaskFrequency::DayMode::aggregateOverWeek;
  setFrequency(home.task("A"), weekly);
  home.save();
  home.import(documentOf({entry(Type::completedManuallyFull, 22, "22T08"), entry(Type::unknown, 24, "24T08")}));
  home.import(documentOf({entry(Type::skippedManuallyFull, 23, "23T08")}));
  EXPECT_EQ(logOf(home), (Words{"22 completedManuallyFull", "23 skippedManuallyFull", "24 unknown"}));
  const auto log = home.log("A");
  EXPECT_LT(log.at(1).objectID, log.at(2).objectID) << "a week is judged by the order of its rows";
}

TEST(LogImportTests, AWholeLogIsTakenInItsOwnOrder) {
  Home home;  // a clock that was set back between the two
  home.import(documentOf({entry(Type::completedManuallyFull, 30, "30T12"), entry(Type::unknown, 30, "30T09")}, true));
  EXPECT_EQ(logOf(home), (Words{"30 completedManuallyFull", "30 unknown"}));
}

TEST(LogImportTests, WhoeverPutsBackTakesEntriesAfterTodayAlong) {
  Home home;
  home.entriesAfterToday = EntriesAfterToday::taken;
  home.now = qz::momentFromISO8601("2024-05-29T10:00:00Z").value();
  const auto report = home.import(documentOf({entry(Type::completedManuallyFull, 31, "31T08")}));
  EXPECT_EQ(report.entries(), Entries{.added = 1});
  EXPECT_TRUE(report.tasks.at(0).remarks.empty());
  EXPECT_EQ(logOf(home), Words{"31 completedManuallyFull"});
}

TEST(LogImportTests, OverwritingTakesAwayWhatAnEntryOfAWholeTaskDoesNotSay) {
  Entry provisional = entry(Type::completedManuallyFull, 30, "30T09", 0.5);
  provisional.progressTotal = 750;
  provisional.details =
      std::make_shared<HabitraJSONBackupTaskEntryDetails>(HabitraJSONBackupTaskEntryDetails{.cloudStatus = "TMP"});
  for (const bool hasRecord : {false, true}) {
    Home home;
    home.import(documentOf({provisional}, hasRecord));
    const auto report = home.import(documentOf({entry(Type::completedManuallyFull, 30, "30T09")}, hasRecord),
                                    ImportStrategy::overwrite);
    const TaskLogEntryEntity row = home.log("A").at(0);
    EXPECT_EQ(report.entries().changed, hasRecord ? 1U : 0U);
    EXPECT_EQ(row.progressTotal, hasRecord ? 0 : 750);
    EXPECT_EQ(row.progress, hasRecord ? 0 : 0.5);
    EXPECT_EQ(row.cloudStatus.has_value(), !hasRecord);
  }
}

}  // namespace
}  // namespace habitra
