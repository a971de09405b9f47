#include <gtest/gtest.h>
#include <HabitraBackup/Exchange/TaskDataExporter.h>
#include <rapidcheck.h>

#include <string>

#include "BackupDocumentGenerators.h"
#include "ImportHome.h"

namespace habitra {
namespace {

HabitraJSONBackup documentOf(ImportHome& home) {
  const TaskDataExporter exporter(home.context);
  return exporter.backup(exporter.allTasks(), HabitraJSONBackupType::manual, home.now);
}

bool changesNothing(const ImportReport& report) {
  for (const ImportReport::Rows& rows :
       {report.notes(), report.parts(), report.pages, report.categories, report.settings})
    if (rows.haveChanged()) return false;
  const ImportReport::Entries entries = report.entries();
  return entries.added + entries.changed + entries.removed == 0 &&
         report.count(ImportReport::Outcome::left) == report.tasks.size();
}

TEST(RoundTripTests, WhatComesOutOfAStoreGoesIntoAnotherAndComesOutTheSame) {
  const bool holds = rc::check("store, document, store, document", [] {
    ImportHome first;
    first.import(anyDocument());
    const HabitraJSONBackup document = documentOf(first);
    ImportHome second;
    second.import(document);
    RC_ASSERT(documentOf(second).jsonString() == document.jsonString());
    RC_ASSERT(documentOf(second).csvString() == document.csvString());
    RC_ASSERT(changesNothing(second.import(document)));
    RC_ASSERT(changesNothing(first.import(document)));
    RC_ASSERT(documentOf(first).jsonString() == document.jsonString());
    second.import(document, ImportStrategy::overwrite);
    RC_ASSERT(documentOf(second).jsonString() == document.jsonString());
  });
  EXPECT_TRUE(holds);
}

}  // namespace
}  // namespace habitra
