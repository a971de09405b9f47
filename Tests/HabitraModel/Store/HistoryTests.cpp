#include "SampleRows.h"
#include "StoreFixture.h"

namespace habitra {
namespace {

class HistoryTest : public StoreTest {
 protected:
  static std::vector<StoredChange> changes(StoreContext& context, std::int64_t sequence) {
    std::vector<StoredChange> found;
    context.readChanges(sequence, [&found](const StoredChange& change) { found.push_back(change); });
    return found;
  }
  template <typename T>
  static AttributeSet attributes(std::initializer_list<const char*> names) {
    AttributeSet set;
    for (const char* name : names) set.insert(T::description().position(name).value());
    return set;
  }
  static SaveRequest command(const std::string& name) { return {.author = Author::widget, .command = name}; }
};

TEST_F(HistoryTest, ATransactionSaysWhoWhenAndWhatFor) {
  const auto store = openStore();
  StoreContext context(store);
  EXPECT_EQ(context.newestTransactionMoment(), std::nullopt);
  context.insert(titled("Walk"));
  const std::int64_t first = context.save(command("add Walk")).sequence;
  clock_->set(testMoment - std::chrono::hours(1));
  context.insert(titled("Run"));
  context.noteUndo(first);
  const std::int64_t second =
      context.save({.author = Author::deviceActivity, .undoes = first, .backup = "before.sqlite"}).sequence;

  std::vector<StoredTransaction> found;
  context.readTransactions(0, [&found](const StoredTransaction& transaction) { found.push_back(transaction); });
  const StoredTransaction added{first, "ext_widget", store->writer(), testMoment, "add Walk", {}, {}};
  const StoredTransaction undone{second, "ext_deviceActivity", store->writer(), clock_->now(), {},
                                 first,  "before.sqlite"};
  EXPECT_EQ(found, (std::vector{added, undone}));
  EXPECT_EQ(second, first + 1);
  EXPECT_EQ(context.newestTransactionMoment(), testMoment) << "a clock that went back takes no later moment away";
  EXPECT_EQ(open()->newestTransactionMoment(), testMoment);
  EXPECT_NE(openStore()->writer(), store->writer());
  EXPECT_EQ(open()->storeIdentifier(), context.storeIdentifier());
}

TEST_F(HistoryTest, AnUpdateNamesWhatChangedAndKeepsItForUndo) {
  const ObjectID id = makeTask();
  const auto context = open();
  TaskEntity& task = *context->find<TaskEntity>(id);
  const TaskEntity before = task;
  task.title = "Run";
  task.bestStreak = 4;
  context->flush();
  task.title = "Jump";
  task.colorInfo = "red";
  const auto found = changes(*context, context->save(command("edit")).sequence);
  ASSERT_EQ(found.size(), 1U) << "one change per object, however often it was written";
  EXPECT_EQ(found[0].kind, ChangeKind::update);
  EXPECT_EQ(found[0].object, id);
  EXPECT_EQ(found[0].attributes, attributes<TaskEntity>({"title", "bestStreak", "colorInfo"}));
  TaskEntity restored = task;
  EXPECT_TRUE(restoreBefore(found[0], restored));
  EXPECT_EQ(restored, before);

  task.title = "Walk";
  const auto unasked = changes(*context, context->save({}).sequence);
  EXPECT_EQ(unasked.at(0).attributes, attributes<TaskEntity>({"title"}));
  EXPECT_EQ(unasked.at(0).before, std::nullopt) << "only a person's command can be undone";
}

TEST_F(HistoryTest, WhatIsChangedBackIsNoChange) {
  const ObjectID id = makeTask();
  const auto context = open();
  TaskLogEntryEntity entry = entryOn(id, 20240101);
  entry.uniqueId = "A";
  entry.objectID = context->insertLogEntry(entry);
  context->save({});
  const std::int64_t sequence = context->sequence();
  TaskEntity& task = *context->find<TaskEntity>(id);
  const auto changeAndBack = [&] {
    task.title = "Run";
    context->flush();
    task.title = "Walk";
    TaskLogEntryEntity moved = entry;
    moved.entryDate = 20240102;
    context->updateLogEntry(entry.key(), moved);
    context->updateLogEntry(moved.key(), entry);
    context->removeLogEntry({id, 20240103, context->insertLogEntry(entryOn(id, 20240103))});
  };
  changeAndBack();
  const SaveResult nothing = context->save(command("edit"));
  EXPECT_EQ(nothing.inserted + nothing.updated + nothing.removed, 0);
  EXPECT_EQ(nothing.sequence, sequence);
  EXPECT_EQ(open()->fetchLogEntries(id), std::vector{entry});

  changeAndBack();
  task.bestStreak = 4;
  const SaveResult result = context->save(command("edit"));
  EXPECT_EQ(result.updated, 1);
  const auto found = changes(*context, result.sequence);
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].attributes, attributes<TaskEntity>({"bestStreak"}));
}

TEST_F(HistoryTest, RemovedRowsAreKeptWhole) {
  const auto context = open();
  const TaskEntity task = context->insert(sample<TaskEntity>(9));
  TaskLogEntryEntity entry = sample<TaskLogEntryEntity>(10);
  entry.task = task.objectID;
  entry.objectID = context->insertLogEntry(entry);
  context->save({});
  context->find<TaskEntity>(task.objectID)->title = "changed first";
  context->remove(*context->find<TaskEntity>(task.objectID));
  const auto found = changes(*context, context->save(command("delete")).sequence);
  ASSERT_EQ(found.size(), 2U);
  TaskEntity restoredTask;
  TaskLogEntryEntity restoredEntry;
  EXPECT_TRUE(restoreBefore(found[0], restoredTask));
  EXPECT_TRUE(restoreBefore(found[1], restoredEntry));
  EXPECT_EQ(restoredTask, task) << "as it was before the command, not in the midst of it";
  EXPECT_EQ(restoredEntry, entry);
  EXPECT_EQ(found[1].task, task.objectID);
  EXPECT_EQ(found[1].day, entry.entryDate);
}

TEST_F(HistoryTest, ARemovedRowComesBackUnderItsNumber) {
  const auto context = open();
  const auto other = open();
  const TaskEntity task = context->insert(titled("Walk"));
  TaskLogEntryEntity entry = entryOn(task.objectID, 20240101);
  entry.objectID = context->insertLogEntry(entry);
  context->save({});
  entry = *context->findLogEntry(entry.key());
  ASSERT_NE(other->find<TaskEntity>(task.objectID), nullptr);
  other->refresh();
  EXPECT_EQ(errorKind([&] { context->reinsert(task); }), StoreError::Kind::conflict);
  EXPECT_EQ(errorKind([&] { context->reinsertLogEntry(entry); }), StoreError::Kind::conflict);

  context->remove(*context->find<TaskEntity>(task.objectID));
  EXPECT_DEATH(context->reinsert(task), "before its removal is saved");
  EXPECT_DEATH(context->reinsertLogEntry(entry), "by the unit that changed it");
  context->save({});
  EXPECT_EQ(other->find<TaskEntity>(task.objectID), nullptr);
  other->refresh();

  EXPECT_EQ(context->reinsert(task), task);
  context->reinsertLogEntry(entry);
  const auto found = changes(*context, context->save({}).sequence);
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0].kind, ChangeKind::insertion);
  EXPECT_EQ(found[1].object, entry.objectID);
  ASSERT_NE(other->find<TaskEntity>(task.objectID), nullptr) << "also where it was seen to go";
  EXPECT_EQ(*other->find<TaskEntity>(task.objectID), task);
  EXPECT_EQ(other->fetchLogEntries(task.objectID), std::vector{entry});
  EXPECT_GT(other->insert(titled("Run")).objectID, entry.objectID);
  other->rollback();

  // What somebody else removed can be put back where it was known.
  context->remove(*context->find<TaskEntity>(task.objectID));
  context->save({});
  EXPECT_EQ(other->reinsert(task), task);
  other->save({});
  EXPECT_EQ(*open()->find<TaskEntity>(task.objectID), task);
}

TEST_F(HistoryTest, LogChangesSayWhereTheRowLies) {
  const ObjectID task = makeTask();
  const auto context = open();
  const ObjectID fleeting = context->insertLogEntry(entryOn(task, 20240103));
  context->removeLogEntry({task, 20240103, fleeting});
  TaskLogEntryEntity entry = entryOn(task, 20240101);
  entry.objectID = context->insertLogEntry(entry);
  const auto inserted = changes(*context, context->save(command("done")).sequence);
  ASSERT_EQ(inserted.size(), 1U) << "what came and went at once was never there";
  EXPECT_EQ(inserted[0].kind, ChangeKind::insertion);
  EXPECT_EQ(inserted[0].attributes,
            attributes<TaskLogEntryEntity>(
                {"task", "entryDate", "entryPeriodFrom", "entryPeriodTo", "entryPeriodType", "entryType", "uniqueId"}));
  entry = *context->findLogEntry(entry.key());
  TaskLogEntryEntity moved = entry;
  moved.entryDate = 20240102;
  moved.progress = 0.5;
  context->updateLogEntry(entry.key(), moved);
  const auto updated = changes(*context, context->save(command("move")).sequence);
  ASSERT_EQ(updated.size(), 1U);
  EXPECT_EQ(updated[0].day, 20240102);
  EXPECT_EQ(updated[0].attributes, attributes<TaskLogEntryEntity>({"entryDate", "progress"}));
  EXPECT_TRUE(restoreBefore(updated[0], moved));
  EXPECT_EQ(moved, entry);
}

}  // namespace
}  // namespace habitra
