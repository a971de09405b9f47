#include "StoreFixture.h"

#include <algorithm>
#include <map>
#include <random>

namespace habitra {
namespace {

using ObjectTest = StoreTest;

TEST_F(ObjectTest, ARowIsFoundByWhatItIsLookedUpBy) {
  const auto context = open();
  const TaskEntity task = context->insert(TaskEntity{});
  const SettingEntity setting = context->insert(SettingEntity{.settingKey = "key", .intValue = 1});
  const TaskTemporalDataEntity data = context->insert(TaskTemporalDataEntity{.task = task.objectID});
  TaskLogEntryEntity entry = entryOn(task.objectID, 20240101);
  entry.uniqueId = "A";
  entry.objectID = context->insertLogEntry(entry);
  context->save({});
  EXPECT_TRUE(task.uniqueId.has_value()) << "an identifier is filled in";
  EXPECT_EQ(*open()->find<TaskEntity>("uniqueId", *task.uniqueId), task);
  EXPECT_EQ(*open()->find<SettingEntity>("settingKey", "key"), setting);
  EXPECT_EQ(*open()->fetchRelated<TaskTemporalDataEntity>("task", task.objectID).at(0), data);
  EXPECT_EQ(open()->findLogEntry("A"), entry);
  EXPECT_EQ(open()->findLogEntry(entry.key()), entry);
  EXPECT_EQ(open()->findLogEntry(entry.objectID), entry);
}

TEST_F(ObjectTest, ARowIsOneObjectThatKnowsItsChanges) {
  const ObjectID id = makeTask();
  const auto context = open();
  TaskEntity& task = *context->find<TaskEntity>(id);
  EXPECT_EQ(context->find<TaskEntity>("title", "Walk"), &task);
  EXPECT_EQ(context->fetchAll<TaskEntity>().at(0), &task);
  EXPECT_FALSE(context->hasChanges());

  task.bestStreak = 7;
  task.created = testMoment;
  EXPECT_TRUE(context->isChanged(task, &TaskEntity::bestStreak));
  EXPECT_FALSE(context->isChanged(task, &TaskEntity::title));
  EXPECT_TRUE(context->hasChanges());
  task.bestStreak = 0;
  task.created.reset();
  EXPECT_FALSE(context->hasChanges()) << "what is as stored again is no change";
  const std::int64_t before = context->sequence();
  EXPECT_EQ(context->save({}).sequence, before) << "nothing to write, nothing written";

  task.bestStreak = 8;
  EXPECT_EQ(context->save({}).updated, 1);
  EXPECT_EQ(open()->find<TaskEntity>(id)->bestStreak, 8);
  EXPECT_EQ(context->find<TaskEntity>(id), &task);
}

TEST_F(ObjectTest, RollbackTakesEverythingBack) {
  const ObjectID id = makeTask();
  const auto context = open();
  TaskEntity& task = *context->find<TaskEntity>(id);
  const TaskEntity asStored = task;
  context->beginUnit();
  task.title = "Run";
  const ObjectID lost = context->insert(titled("Swim")).objectID;
  const LogKey key{id, 20240101, context->insertLogEntry(entryOn(id, 20240101))};
  context->flush();
  task.title = "Jump";
  context->rollback();

  EXPECT_FALSE(context->hasChanges());
  EXPECT_EQ(task, asStored);
  EXPECT_EQ(context->find<TaskEntity>(lost), nullptr);
  EXPECT_FALSE(context->findLogEntry(key).has_value());
  context->remove(task);
  context->rollback();
  EXPECT_EQ(context->find<TaskEntity>(id), &task);
  EXPECT_EQ(context->fetchAll<TaskEntity>().size(), 1U);
}

TEST_F(ObjectTest, NumbersAscendAndAreNeverGivenTwice) {
  const ObjectID first = makeTask();
  const auto context = open();
  const ObjectID removed = context->insert(TaskEntity{}).objectID;
  context->save({});
  context->remove(*context->find<TaskEntity>(removed));
  context->save({});
  const ObjectID lost = context->insert(TaskEntity{}).objectID;
  context->rollback();
  const ObjectID next = context->insertLogEntry(entryOn(first, 20240101));
  context->save({});
  EXPECT_LT(first, removed);
  EXPECT_LT(removed, lost);
  EXPECT_LT(lost, next);
  EXPECT_LT(next, open()->insert(TaskEntity{}).objectID);
}

TEST_F(ObjectTest, RemovalFollowsTheDeleteRules) {
  const auto context = open();
  UserProfileEntity& page = context->insert(UserProfileEntity{.title = "Health"});
  TaskEntity& task = context->insert(titled("Walk"));
  TaskEntity& other = context->insert(titled("Read"));
  task.userProfile = other.userProfile = page.objectID;
  context->insert(TaskTemporalDataEntity{.task = task.objectID});
  context->insert(TaskTemporalDataEntity{.task = other.objectID});
  for (std::int32_t day = 20240101; day <= 20240105; ++day) context->insertLogEntry(entryOn(task.objectID, day));
  context->insertLogEntry(entryOn(other.objectID, 20240101));
  context->setCheckpoint(task.objectID, {.closedThrough = 20240110});
  context->save({});

  context->remove(task);
  EXPECT_EQ(context->fetchAll<TaskEntity>().size(), 1U);
  EXPECT_TRUE(context->fetchRelated<TaskTemporalDataEntity>("task", task.objectID).empty());
  EXPECT_EQ(context->save({}).removed, 7) << "a task, its figures, its five entries";
  context->remove(page);
  context->save({});
  EXPECT_EQ(other.userProfile, ObjectID::none);
  EXPECT_EQ(runSQL(file(),
                   "SELECT count(*) FROM TaskLogEntryEntity; SELECT count(*) FROM TaskTemporalDataEntity;"
                   "SELECT userProfile IS NULL FROM TaskEntity; SELECT count(*) FROM habitra_checkpoint;"
                   "PRAGMA foreign_key_check"),
            (std::vector<std::string>{"1", "1", "1", "0"}));
}

TEST_F(ObjectTest, AViewStaysUntilItIsRefreshed) {
  const ObjectID id = makeTask();
  const auto reader = open();
  TaskEntity& task = *reader->find<TaskEntity>(id);
  const std::int64_t sequence = reader->sequence();
  const auto writer = open();
  writer->find<TaskEntity>(id)->title = "Run";
  writer->insert(titled("Swim"));
  writer->save({});

  EXPECT_EQ(reader->sequence(), sequence);
  EXPECT_EQ(reader->fetchAll<TaskEntity>().size(), 1U);
  EXPECT_EQ(task.title, "Walk");
  reader->refresh();
  EXPECT_EQ(reader->sequence(), sequence + 1);
  EXPECT_EQ(reader->fetchAll<TaskEntity>().size(), 2U);
  EXPECT_EQ(task.title, "Run") << "the object takes over what was stored";
}

TEST_F(ObjectTest, ChangesOfTwoProgramsJoinOrCollide) {
  const ObjectID id = makeTask();
  const auto mine = open();
  const auto theirs = open();
  TaskEntity& task = *mine->find<TaskEntity>(id);
  task.bestStreak = 5;
  theirs->find<TaskEntity>(id)->title = "Run";
  theirs->save({});
  mine->save({});
  EXPECT_EQ(task.title, "Run");
  EXPECT_EQ(open()->find<TaskEntity>(id)->bestStreak, 5);

  task.bestStreak = 6;
  theirs->refresh();
  theirs->find<TaskEntity>(id)->bestStreak = 7;
  theirs->save({});
  EXPECT_EQ(errorKind([&] { mine->save({}); }), StoreError::Kind::conflict);
  EXPECT_FALSE(mine->isInUnit());
  EXPECT_EQ(mine->find<TaskEntity>(id)->bestStreak, 7) << "nothing of the failed unit is left";
}

TEST_F(ObjectTest, WhatAnotherProgramRemovedIsNotLostSilently) {
  const ObjectID id = makeTask();
  const ObjectID page = [this] {
    const auto context = open();
    const ObjectID made = context->insert(UserProfileEntity{.title = "Health"}).objectID;
    context->save({});
    return made;
  }();
  const auto mine = open();
  const auto theirs = open();
  TaskEntity& task = *mine->find<TaskEntity>(id);
  task.userProfile = page;
  theirs->remove(*theirs->find<UserProfileEntity>(page));
  theirs->save({});
  EXPECT_EQ(errorKind([&] { mine->save({}); }), StoreError::Kind::conflict) << "a link to what is gone";
  EXPECT_EQ(task.userProfile, ObjectID::none);

  task.title = "Run";
  theirs->remove(*theirs->find<TaskEntity>(id));
  theirs->save({});
  mine->refresh();
  EXPECT_EQ(mine->find<TaskEntity>(id), nullptr);
  EXPECT_EQ(errorKind([&] { mine->save({}); }), StoreError::Kind::conflict);
  mine->insert(titled("Swim"));
  EXPECT_EQ(mine->save({}).inserted, 1);
  EXPECT_EQ(task.title, "Walk") << "whoever holds the object may still look at it";
  task.title = "Jump";
  EXPECT_EQ(errorKind([&] { mine->save({}); }), StoreError::Kind::conflict);
  task.title = "Jump";
  mine->remove(task);
  EXPECT_EQ(mine->save({}).removed, 0) << "it is gone, as is wished";
}

TEST_F(ObjectTest, SearchesOfAUnitFindWhatIsSetBesideThousandsOfOtherChanges) {
  const auto context = open();
  context->beginUnit();
  std::vector<ObjectID> pages{ObjectID::none};
  for (int i = 0; i < 3; ++i) pages.push_back(context->insert(UserProfileEntity{}).objectID);
  std::map<ObjectID, TaskEntity*> tasks;
  std::mt19937 random(7);  // NOLINT: the same run every time
  const auto below = [&random](std::size_t limit) { return random() % limit; };
  const auto anyTask = [&] { return std::next(tasks.begin(), static_cast<std::ptrdiff_t>(below(tasks.size()))); };
  const auto expected = [&tasks](auto matches) {
    std::vector<TaskEntity*> found;
    for (const auto& [id, task] : tasks)
      if (matches(*task)) found.push_back(task);
    return found;
  };
  const auto title = [&below] { return std::to_string(below(4)); };
  for (int step = 0; step < 2000; ++step) {
    const std::size_t choice = tasks.empty() ? 0 : below(8);
    const std::string text = title();
    const ObjectID page = pages[below(pages.size())];
    if (choice == 0) {
      TaskEntity& task = context->insert(titled(text));
      tasks.emplace(task.objectID, &task);
    } else if (choice == 1) {
      context->remove(*anyTask()->second);
      std::erase_if(tasks, [&](const auto& item) { return context->find<TaskEntity>(item.first) == nullptr; });
    } else if (choice == 2) {
      anyTask()->second->title = text;
    } else if (choice == 3) {
      anyTask()->second->userProfile = page;
    } else if (choice == 4) {
      anyTask()->second->bestStreak += 1;
    } else if (choice == 5) {
      ASSERT_EQ(context->fetch<TaskEntity>("title", text),
                expected([&](const TaskEntity& task) { return task.title == text; }));
    } else if (choice == 6) {
      ASSERT_EQ(context->fetchRelated<TaskEntity>("userProfile", page),
                expected([&](const TaskEntity& task) { return task.userProfile == page; }));
    } else if (step % 50 == 0 && page != ObjectID::none) {
      context->remove(*context->find<UserProfileEntity>(page));
      std::erase(pages, page);
      for (const auto& [id, task] : tasks) ASSERT_NE(task->userProfile, page);
    } else {
      ASSERT_EQ(context->fetchAll<TaskEntity>(), expected([](const TaskEntity&) { return true; }));
    }
  }
  context->save({});
  const auto reader = open();
  ASSERT_EQ(reader->fetchAll<TaskEntity>().size(), tasks.size());
  for (const auto& [id, task] : tasks) EXPECT_EQ(*reader->find<TaskEntity>(id), *task) << "nothing that waited is lost";
}

TEST_F(ObjectTest, ContextsOfAStoreInMemoryShareIt) {
  const auto store = Store::inMemory(clock_);
  StoreContext reader(store);
  EXPECT_TRUE(reader.fetchAll<TaskEntity>().empty());
  StoreContext writer(store);
  const ObjectID id = writer.insert(titled("Walk")).objectID;
  writer.insertLogEntry(entryOn(id, 20240101));
  writer.save({});
  EXPECT_EQ(reader.find<TaskEntity>(id)->title, "Walk");
  EXPECT_EQ(reader.newestEntryDay(id), 20240101);
  StoreContext other(Store::inMemory(clock_));
  EXPECT_TRUE(other.fetchAll<TaskEntity>().empty());
}

TEST_F(ObjectTest, ALinkToARowThatIsNotThereIsRefused) {
  const auto context = open();
  context->insert(TaskTemporalDataEntity{.task = ObjectID{77}});
  EXPECT_EQ(errorKind([&] { context->save({}); }), StoreError::Kind::conflict);
  EXPECT_FALSE(context->hasChanges());
  EXPECT_EQ(errorKind([&] { context->insertLogEntry(entryOn(ObjectID{77}, 20240101)); }), StoreError::Kind::conflict);
  EXPECT_EQ(context->sequence(), 0);
}

TEST_F(ObjectTest, MisuseStopsTheProgram) {
  const ObjectID id = makeTask();
  const auto context = open();
  TaskEntity foreign = *context->find<TaskEntity>(id);
  EXPECT_DEATH((void)context->changedAttributes(foreign), "an object of another context");
  TaskEntity& task = *context->find<TaskEntity>(id);
  task.last7Pct = std::numeric_limits<double>::quiet_NaN();
  EXPECT_DEATH(context->save({}), "not finite");
}

}  // namespace
}  // namespace habitra
