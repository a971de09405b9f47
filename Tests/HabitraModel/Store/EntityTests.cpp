#include <HabitraModel/Store/StoreVerification.h>

#include <vector>

#include "AllRows.h"
#include "StoreFixture.h"

namespace habitra {
namespace {

using EntityTest = StoreTest;

/// The delete rules once more, the slow way: what is left of the rows when one is taken out.
void takeOut(AllRows& rows, std::pair<EntityNumber, ObjectID> removed) {
  rows.erase(removed);
  const auto leadsToIt = [&removed](const AttributeDescription& attribute, void* row) {
    return attribute.type == StoredType::reference && attribute.relationship.target().number == removed.first &&
           *static_cast<ObjectID*>(attribute.field(row)) == removed.second;
  };
  std::vector<std::pair<EntityNumber, ObjectID>> further;
  for (auto& [key, row] : rows)
    for (const AttributeDescription& attribute : entityWithNumber(key.first)->attributes) {
      if (!leadsToIt(attribute, row.get())) continue;
      if (attribute.relationship.whenTargetIsRemoved == DeleteRule::cascade)
        further.push_back(key);
      else
        *static_cast<ObjectID*>(attribute.field(row.get())) = ObjectID::none;
    }
  for (const auto& key : further) takeOut(rows, key);
}

/// Takes the newest transaction back, as its history says.
void takeBack(StoreContext& context, std::int64_t sequence) {
  std::vector<StoredChange> changes;
  context.readChanges(sequence, [&changes](const StoredChange& change) { changes.push_back(change); });
  for (const StoredChange& change : changes)
    forEveryEntity([&]<typename T>(std::type_identity<T>) {
      if (T::description().number != change.entity) return;
      ASSERT_NE(change.kind, ChangeKind::insertion);
      T row;
      if constexpr (std::is_same_v<T, TaskLogEntryEntity>) {
        ASSERT_TRUE(restoreBefore(change, T::description(), &row));
        context.reinsertLogEntry(row);
      } else if (change.kind == ChangeKind::removal) {
        ASSERT_TRUE(restoreBefore(change, T::description(), &row));
        context.reinsert(row);
      } else {
        ASSERT_TRUE(restoreBefore(change, T::description(), context.find<T>(change.object)));
      }
    });
}

void removeRow(StoreContext& context, std::pair<EntityNumber, ObjectID> key) {
  forEveryEntity([&]<typename T>(std::type_identity<T>) {
    if (T::description().number != key.first) return;
    if constexpr (std::is_same_v<T, TaskLogEntryEntity>)
      context.removeLogEntry(context.findLogEntry(key.second)->key());
    else
      context.remove(*context.find<T>(key.second));
  });
}

TEST_F(EntityTest, EveryAttributeOfEveryEntityComesBack) {
  AllRows inserted;
  {
    const auto context = open();
    std::map<EntityNumber, ObjectID> newest;
    for (const std::int64_t seed : {1, 2, 3}) insertOneOfEach(*context, seed, newest);
    forEveryEntity([&]<typename T>(std::type_identity<T>) {
      if constexpr (!std::is_same_v<T, TaskLogEntryEntity>) context->insert(T{});
    });
    inserted = allRows(*context);
    EXPECT_EQ(inserted.size(), 4 * allEntities().size() - 1);
    context->save({});
  }
  const auto context = open();
  EXPECT_TRUE(areSame(inserted, allRows(*context)));
  EXPECT_TRUE(StoreVerification::verifyChecksums(*context).empty());
  EXPECT_EQ(runSQL(file(), "PRAGMA integrity_check; PRAGMA foreign_key_check"), std::vector<std::string>{"ok"});
}

TEST_F(EntityTest, RemovalFollowsTheDeleteRulesAndCanBeTakenBack) {
  const auto context = open();
  std::map<EntityNumber, ObjectID> newest;
  insertOneOfEach(*context, 1, newest);
  context->save({});
  insertOneOfEach(*context, 20, newest);
  // The second task shares the first one's page, category and owner, and rows lead to it that lead to nothing else.
  const auto& first = *context->fetchAll<TaskEntity>().front();
  context->find<TaskEntity>(newest.at(EntityNumber::task))->userProfile = first.userProfile;
  context->insert(TaskCategoryLink{.task = newest.at(EntityNumber::task),
                                   .category = context->fetchAll<TaskCategoryEntity>().front()->objectID});
  for (TaskShareEntity* share : context->fetchAll<TaskShareEntity>())
    share->owner = context->fetchAll<TaskShareOwnerEntity>().front()->objectID;
  context->save({});

  const AllRows before = allRows(*context);
  for (const auto& [key, row] : before) {
    SCOPED_TRACE(std::string(entityWithNumber(key.first)->name) + " " + std::to_string(rawValue(key.second)));
    AllRows expected;
    for (const auto& [other, content] : before)
      expected.try_emplace(other, *entityWithNumber(other.first), content.get());
    takeOut(expected, key);

    removeRow(*context, key);
    const SaveResult result = context->save({.command = "remove"});
    EXPECT_TRUE(areSame(expected, allRows(*open())));
    EXPECT_EQ(result.removed, static_cast<std::int64_t>(before.size() - expected.size()));
    EXPECT_EQ(runSQL(file(), "PRAGMA foreign_key_check"), std::vector<std::string>{});
    takeBack(*context, result.sequence);
    context->save({});
    ASSERT_TRUE(areSame(before, allRows(*open())));
  }
  EXPECT_TRUE(StoreVerification::verifyChecksums(*context).empty());
}

TEST_F(EntityTest, AnEntryTakesRequestsAlongThatAreNotSavedYet) {
  const ObjectID task = makeTask();
  const auto context = open();
  const LogKey first{task, 20240101, context->insertLogEntry(entryOn(task, 20240101))};
  const LogKey second{task, 20240102, context->insertLogEntry(entryOn(task, 20240102))};
  HealthKitRequestEntity& moved = context->insert(HealthKitRequestEntity{.taskLogEntry = first.objectID});
  context->save({});
  moved.taskLogEntry = second.objectID;
  context->removeLogEntry(first);
  context->save({});
  EXPECT_EQ(open()->fetchAll<HealthKitRequestEntity>().size(), 1U) << "what has been led elsewhere stays";

  context->insert(HealthKitRequestEntity{.taskLogEntry = second.objectID});
  context->removeLogEntry(second);
  EXPECT_EQ(context->save({}).removed, 2) << "a request that came and went counts for nothing";
  EXPECT_TRUE(open()->fetchAll<HealthKitRequestEntity>().empty());
  context->insert(HealthKitRequestEntity{.taskLogEntry = second.objectID});
  EXPECT_EQ(errorKind([&] { context->save({}); }), StoreError::Kind::conflict) << "an entry that is not there";
}

TEST_F(EntityTest, RowsAreFetchedByDaysInOrder) {
  const ObjectID task = makeTask();
  const auto context = open();
  const ObjectID other = context->insert(titled("Read")).objectID;
  for (const std::int32_t day : {20240103, 0, 20240101, 20240102, 20240101}) {
    context->insert(TaskCounterEntity{.entryDate = day, .task = task});
    context->insert(TaskTimerEntity{.entryDate = day, .task = task});
    context->insert(TaskNoteEntity{.noteDate = day, .task = task});
  }
  context->insert(TaskNoteEntity{.noteDate = 20240102, .task = other});
  const auto days = [&]<typename T>(std::int32_t T::*day, std::int32_t from, std::int32_t to) {
    std::vector<std::int32_t> found;
    for (const T* row : context->fetchRelated<T>("task", task, from, to)) found.push_back(row->*day);
    return found;
  };
  const std::vector<std::int32_t> two{20240101, 20240101, 20240102};
  EXPECT_EQ(days(&TaskCounterEntity::entryDate, 20240101, 20240102), two) << "what is not written yet is found";
  context->save({});
  EXPECT_EQ(days(&TaskTimerEntity::entryDate, 20240101, 20240102), two);
  EXPECT_EQ(days(&TaskNoteEntity::noteDate, 20240101, 20240102), two);
  EXPECT_EQ(days(&TaskNoteEntity::noteDate, StoreContext::firstDay, StoreContext::lastDay).front(), 0);
  EXPECT_EQ(context->fetchRelated<TaskNoteEntity>("task", task).front()->noteDate, 20240103) << "in order of creation";
  EXPECT_EQ(runSQL(file(),
                   "EXPLAIN QUERY PLAN SELECT noteDate FROM TaskNoteEntity WHERE task=1 AND noteDate BETWEEN 2 AND 3 "
                   "ORDER BY noteDate, objectID")
                .size(),
            1U)
      << "one search of the index, nothing to sort";
  EXPECT_DEATH((void)context->fetchRelated<TaskShareEntity>("task", task, 0, 1), "without a day");
}

TEST_F(EntityTest, AnEntryIsFoundByItsNumberWhereverItLies) {
  const ObjectID task = makeTask();
  const auto context = open();
  TaskLogEntryEntity entry = entryOn(task, 20240101);
  entry.objectID = context->insertLogEntry(entry);
  EXPECT_EQ(context->findLogEntry(entry.objectID)->key(), entry.key());
  const LogKey old = entry.key();
  entry.task = ObjectID::none;
  entry.entryDate = 0;
  context->insert(HealthKitRequestEntity{.taskLogEntry = entry.objectID});
  context->updateLogEntry(old, entry);
  context->save({});
  EXPECT_EQ(open()->findLogEntry(entry.objectID)->key(), entry.key());
  EXPECT_EQ(context->findLogEntry(ObjectID{99}), std::nullopt);
}

TEST_F(EntityTest, WhatIsStoredCanBeComparedWithWhatIsToBe) {
  const ObjectID id = makeTask();
  const auto context = open();
  TaskEntity& task = *context->find<TaskEntity>(id);
  task.title = "Run";
  EXPECT_EQ(context->storedValues(task).title, "Walk");
  context->save({});
  EXPECT_EQ(context->storedValues(task), task);
}

TEST_F(EntityTest, TwoTasksWithOneIdentifierStandSideBySide) {
  const auto context = open();
  TaskEntity task = titled("Walk");
  task.uniqueId = "018D0000-0000-7000-8000-000000000001";
  const ObjectID older = context->insert(task).objectID;
  const ObjectID newer = context->insert(task).objectID;
  context->save({});
  EXPECT_EQ(context->find<TaskEntity>("uniqueId", *task.uniqueId)->objectID, older);
  EXPECT_EQ(context->fetch<TaskEntity>("uniqueId", *task.uniqueId).size(), 2U);
  context->remove(*context->find<TaskEntity>(older));
  context->save({});
  EXPECT_EQ(open()->find<TaskEntity>("uniqueId", *task.uniqueId)->objectID, newer);
}

}  // namespace
}  // namespace habitra
