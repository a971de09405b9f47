#include <fmt/format.h>
#include <gtest/gtest.h>
#include <HabitraBackup/Exchange/TaskDataExporter.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <rapidcheck.h>

#include <string>
#include <utility>

#include "BackupDocumentGenerators.h"
#include "ImportHome.h"

namespace habitra {
namespace {

HabitraJSONBackup documentOf(ImportHome& home) {
  const TaskDataExporter exporter(home.context);
  return exporter.backup(exporter.allTasks(), HabitraJSONBackupType::manual, home.now);
}

/// What an import changed, in words; empty for nothing.
std::string changes(const ImportReport& report) {
  std::string text;
  const auto add = [&text](const char* what, std::size_t added, std::size_t changed, std::size_t removed) {
    if (added + changed + removed == 0) return;
    text += fmt::format("{}: {} added, {} changed, {} removed\n", what, added, changed, removed);
  };
  const ImportReport::Entries entries = report.entries();
  add("entries", entries.added, entries.changed, entries.removed);
  const std::pair<const char*, ImportReport::Rows> rows[] = {{"notes", report.notes()},
                                                             {"parts", report.parts()},
                                                             {"pages", report.pages},
                                                             {"categories", report.categories},
                                                             {"settings", report.settings}};
  for (const auto& [what, counts] : rows) add(what, counts.added, counts.changed, counts.removed);
  return text;
}

TEST(RoundTripTests, WhatComesOutOfAStoreGoesIntoAnotherAndComesOutTheSame) {
  const bool holds = rc::check("store, document, store, document", [] {
    ImportHome first;
    first.import(anyDocument());
    const HabitraJSONBackup document = documentOf(first);
    RC_LOG() << document.jsonString();
    ImportHome second;
    second.import(document);
    RC_ASSERT(documentOf(second).jsonString() == document.jsonString());
    RC_ASSERT(documentOf(second).csvString() == document.csvString());
    RC_ASSERT(changes(second.import(document)) == "");
    RC_ASSERT(changes(first.import(document)) == "");
    RC_ASSERT(documentOf(first).jsonString() == document.jsonString());
    second.import(document, ImportStrategy::overwrite);
    RC_ASSERT(documentOf(second).jsonString() == document.jsonString());
  });
  EXPECT_TRUE(holds);
}

/// A habit that stands on no page's profile and has an entry of before it was made, beside settings in no order.
void fillByHand(ImportHome& home) {
  TaskEntity values = newlyMadeTask("Read", qz::DayOfWeek::monday, home.now, "Europe/Berlin");
  values.uniqueId = "0A1B2C3D-0000-7000-8000-00000000ABCD";
  const ObjectID task = home.context.insert(values).objectID;
  TaskLogEntryEntity entry;
  entry.task = task;
  entry.entryType = rawValue(TaskLogEntryType::completedManuallyFull);
  entry.entryDate = entry.entryPeriodFrom = entry.entryPeriodTo = 20240501;
  entry.entryPeriodType = "d";
  entry.createdTimestamp = home.now;
  entry.createdTimeZone = "Europe/Berlin";
  home.context.insertLogEntry(entry);
  home.context.insert<SettingEntity>({.settingKey = "startOfDay", .dateCreated = home.now, .intValue = 7200});
  home.context.insert<SettingEntity>({.settingKey = "cloudSync", .dateCreated = home.now, .booleanValue = true});
  home.context.insert<SettingEntity>({.settingKey = "startOfDay", .dateCreated = home.now, .intValue = 3600});
  home.save();
}

TEST(RoundTripTests, AStoreThatWasNotImportedComesOutTheSameToo) {
  ImportHome first;
  fillByHand(first);
  const HabitraJSONBackup document = documentOf(first);
  EXPECT_TRUE(document.pages->empty());
  for (const auto strategy : {ImportStrategy::merge, ImportStrategy::overwrite}) {
    ImportHome second;
    second.import(document, strategy);
    EXPECT_EQ(documentOf(second).jsonString(), document.jsonString());
    EXPECT_EQ(documentOf(second).csvString(), document.csvString());
    EXPECT_EQ(changes(second.import(document, strategy)), "");
    EXPECT_EQ(changes(first.import(document, strategy)), "");
  }
}

}  // namespace
}  // namespace habitra
