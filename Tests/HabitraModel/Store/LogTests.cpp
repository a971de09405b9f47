#include "StoreFixture.h"

#include <fmt/format.h>

namespace habitra {
namespace {

using LogTest = StoreTest;

std::vector<std::int32_t> days(StoreContext& context, ObjectID task, std::int32_t from = StoreContext::firstDay,
                               std::int32_t to = StoreContext::lastDay) {
  std::vector<std::int32_t> found;
  context.readLog(task, from, to, [&found](const LogRow& row) { found.push_back(row.entryDate); });
  return found;
}

TEST_F(LogTest, ReadsInOrderOfDayThenOfCreation) {
  const ObjectID task = makeTask();
  const auto context = open();
  const ObjectID other = context->insert(titled("Read")).objectID;
  for (const std::int32_t day : {20240103, 20240101, 20240102, 20240101}) context->insertLogEntry(entryOn(task, day));
  context->insertLogEntry(entryOn(other, 20240102));
  TaskLogEntryEntity orphan = entryOn(ObjectID::none, 20240104);
  orphan.entryPeriodType.reset();
  orphan.progressTotal = 2.5;
  context->insertLogEntry(orphan);
  EXPECT_EQ(days(*context, task).size(), 4U) << "a unit reads what it has written";
  context->save({});

  EXPECT_EQ(days(*context, task), (std::vector<std::int32_t>{20240101, 20240101, 20240102, 20240103}));
  EXPECT_EQ(days(*context, task, 20240102, 20240103), (std::vector<std::int32_t>{20240102, 20240103}));
  const auto entries = context->fetchLogEntries(task, 20240101, 20240101);
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_LT(entries[0].objectID, entries[1].objectID);
  EXPECT_EQ(context->earliestEntryDay(task), 20240101);
  EXPECT_EQ(context->newestEntryDay(task), 20240103);
  EXPECT_EQ(context->newestEntryDay(ObjectID{99}), std::nullopt);
  context->readLog(ObjectID::none, 20240104, 20240104, [](const LogRow& row) {
    EXPECT_EQ(row.entryPeriodType, "");
    EXPECT_EQ(row.progressTotal, 2.5);
    EXPECT_EQ(row.entryType, 1);
  });
}

TEST_F(LogTest, AnEntryWithoutADayIsNeitherFirstNorLast) {
  const ObjectID task = makeTask();
  const auto context = open();
  context->insertLogEntry(entryOn(task, 0));
  EXPECT_EQ(context->earliestEntryDay(task), std::nullopt);
  context->insertLogEntry(entryOn(task, 20240105));
  EXPECT_EQ(context->earliestEntryDay(task), 20240105);
  EXPECT_EQ(days(*context, task), (std::vector<std::int32_t>{0, 20240105}));
}

TEST_F(LogTest, AnEntryKeepsItsNumberWhereverItMoves) {
  const ObjectID task = makeTask();
  const auto context = open();
  const ObjectID other = context->insert(titled("Read")).objectID;
  TaskLogEntryEntity entry = entryOn(task, 20240101);
  entry.uniqueId = "A";
  entry.objectID = context->insertLogEntry(entry);
  context->save({});

  const LogKey old = entry.key();
  entry.task = other;
  entry.entryDate = 20240109;
  context->updateLogEntry(old, entry);
  context->save({});
  EXPECT_TRUE(days(*context, task).empty());
  EXPECT_EQ(context->fetchLogEntries(other), std::vector<TaskLogEntryEntity>{entry});
  context->updateLogEntry(entry.key(), entry);
  EXPECT_FALSE(context->hasChanges()) << "an update to what is stored is none";
  EXPECT_EQ(errorKind([&] { context->removeLogEntry(old); }), StoreError::Kind::conflict);
  context->removeLogEntry(entry.key());
  context->save({});
  EXPECT_EQ(context->findLogEntry("A"), std::nullopt);
}

TEST_F(LogTest, OfEntriesWithOneIdentifierTheOldestIsFound) {
  const ObjectID task = makeTask();
  const auto context = open();
  TaskLogEntryEntity entry = entryOn(task, 20240105);
  entry.uniqueId = "A";
  const ObjectID oldest = context->insertLogEntry(entry);
  entry.entryDate = 20240101;
  context->insertLogEntry(entry);
  EXPECT_EQ(context->findLogEntry("A")->objectID, oldest);
}

TEST_F(LogTest, ACheckpointLastsUntilAnOlderDayChanges) {
  const ObjectID task = makeTask();
  const auto context = open();
  const LogKey old{task, 20240105, context->insertLogEntry(entryOn(task, 20240105))};
  const LogKey young{task, 20240111, context->insertLogEntry(entryOn(task, 20240111))};
  const Checkpoint kept{.closedThrough = 20240110, .fingerprint = -3, .content = {1, 0, 2}};
  context->setCheckpoint(task, kept);
  context->save({});
  const std::int64_t sequence = context->sequence();
  const auto afterwards = [&](auto change) {
    context->setCheckpoint(task, kept);
    context->save({});
    EXPECT_EQ(context->checkpoint(task), kept);
    change();
    const auto inUnit = context->checkpoint(task);
    context->save({});
    EXPECT_EQ(context->checkpoint(task), inUnit);
    return inUnit.has_value();
  };
  EXPECT_EQ(context->checkpoint(task), kept);
  TaskLogEntryEntity moved = entryOn(task, 20240110);
  EXPECT_TRUE(afterwards([&] { context->insertLogEntry(entryOn(task, 20240111)); }));
  EXPECT_TRUE(afterwards([&] { context->removeLogEntry(young); }));
  EXPECT_TRUE(afterwards([&] { context->find<TaskEntity>(task)->bestStreak = 3; }));
  EXPECT_FALSE(afterwards([&] { context->insertLogEntry(entryOn(task, 20240110)); }));
  EXPECT_FALSE(afterwards([&] { context->updateLogEntry(old, moved); }));
  moved.entryDate = 20240120;
  EXPECT_FALSE(afterwards([&] { context->updateLogEntry({task, 20240110, old.objectID}, moved); }));
  EXPECT_FALSE(afterwards([&] { context->insertLogEntry(entryOn(task, 0)); }));
  EXPECT_EQ(context->sequence(), sequence + 7) << "a checkpoint is no change of the store";
}

TEST_F(LogTest, ACheckpointFallsWithAPeriodThatBeginsBeforeItsEnd) {
  const ObjectID task = makeTask();
  const auto context = open();
  const auto survives = [&](auto change) {
    context->setCheckpoint(task, {.closedThrough = 20240110, .fingerprint = 1, .content = {7}});
    context->save({});
    change();
    context->save({});
    return context->checkpoint(task).has_value();
  };
  TaskLogEntryEntity week = entryOn(task, 20240112);
  week.entryPeriodFrom = 20240108;
  week.entryPeriodTo = 20240114;
  EXPECT_FALSE(survives([&] { week.objectID = context->insertLogEntry(week); }));
  EXPECT_FALSE(survives([&] {
    week.progress = 1;
    context->updateLogEntry(week.key(), week);
  }));
  EXPECT_FALSE(survives([&] {
    week.entryPeriodFrom = 20240112;
    context->updateLogEntry(week.key(), week);
  })) << "a period that began before";
  EXPECT_FALSE(survives([&] {
    week.entryPeriodFrom = 20240110;
    context->updateLogEntry(week.key(), week);
  })) << "a period that begins before now";
  EXPECT_FALSE(survives([&] { context->removeLogEntry(week.key()); }));
  week.entryPeriodFrom = 0;
  EXPECT_FALSE(survives([&] { context->insertLogEntry(week); })) << "no period: that of its day may begin before";
  TaskLogEntryEntity later = entryOn(task, 20240112);
  EXPECT_TRUE(survives([&] { context->insertLogEntry(later); }));
}

TEST_F(LogTest, ADamagedCheckpointReadsAsNone) {
  const ObjectID task = makeTask();
  const auto context = open();
  for (const char* damage : {"content=x'0103'", "fingerprint=4", "closedThrough=20240109", "checksum=checksum+1"}) {
    context->setCheckpoint(task, {.closedThrough = 20240110, .fingerprint = 3, .content = {1, 2}});
    context->save({});
    EXPECT_TRUE(open()->checkpoint(task).has_value());
    runSQL(file(), std::string("UPDATE habitra_checkpoint SET ") + damage);
    EXPECT_EQ(open()->checkpoint(task), std::nullopt) << damage;
  }
}

TEST_F(LogTest, AValueWiderThanItsColumnIsDamageForEveryReader) {
  const ObjectID task = makeTask();
  {
    const auto context = open();
    context->insertLogEntry(entryOn(task, 20240101));
    context->save({});
  }
  for (const char* const wrong : {"entryType=65538", "entryPeriodTo=4315207396", "progress=9e999"}) {
    runSQL(file(), fmt::format("UPDATE TaskLogEntryEntity SET {}", wrong));
    EXPECT_EQ(errorKind([&] { days(*open(), task); }), StoreError::Kind::damaged) << wrong;
    EXPECT_EQ(errorKind([&] { (void)open()->fetchLogEntries(task); }), StoreError::Kind::damaged) << wrong;
    runSQL(file(), "UPDATE TaskLogEntryEntity SET entryType=1, entryPeriodTo=20240101, progress=0.0");
  }
  EXPECT_EQ(days(*open(), task).size(), 1U);
  runSQL(file(), "UPDATE TaskLogEntryEntity SET entryDate=4315207396");
  EXPECT_EQ(errorKind([&] { (void)open()->earliestEntryDay(task); }), StoreError::Kind::damaged);
  EXPECT_EQ(errorKind([&] { (void)open()->newestEntryDay(task); }), StoreError::Kind::damaged);
}

TEST_F(LogTest, TheLogIsNotChangedWhileItIsRead) {
  const ObjectID task = makeTask();
  const auto context = open();
  context->insertLogEntry(entryOn(task, 20240101));
  EXPECT_DEATH(context->readLog(task, 0, StoreContext::lastDay,
                                [&](const LogRow&) { context->insertLogEntry(entryOn(task, 20240102)); }),
               "changed while it is read");
}

}  // namespace
}  // namespace habitra
