#include <HabitraModel/MigratedDataCloudSummary.h>
#include <HabitraModel/Store/Entities/TaskShareEntity.h>
#include <HabitraModel/Store/Entities/TaskShareOwnerEntity.h>
#include <HabitraModel/Store/Files/StoreCopy.h>
#include <Support/OrdinaryRights.h>

#include <sys/resource.h>

#include "MigrationFixture.h"

namespace habitra {
namespace {

namespace fs = std::filesystem;
using Kind = StoreError::Kind;

/// All that the engine knows of tables, columns, indexes and references.
std::vector<std::string> layoutOf(const fs::path& file) {
  return runSQL(file, R"(
    SELECT t.name, t.type, t.wr, t.strict FROM pragma_table_list t WHERE t.schema='main' ORDER BY t.name;
    SELECT t.name, x.* FROM pragma_table_list t, pragma_table_xinfo(t.name) x WHERE t.schema='main' ORDER BY 1, 2;
    SELECT t.name, i.name, i."unique", i.origin, i.partial, x.seqno, x.name, x."desc", x.coll, x.key
      FROM pragma_table_list t, pragma_index_list(t.name) i, pragma_index_xinfo(i.name) x
      WHERE t.schema='main' ORDER BY 1, 2, x.seqno;
    SELECT t.name, f."from", f."table", f."to", f.on_update, f.on_delete
      FROM pragma_table_list t, pragma_foreign_key_list(t.name) f WHERE t.schema='main' ORDER BY 1, 2;
    SELECT name FROM sqlite_schema WHERE sql LIKE '%DEFERRABLE INITIALLY DEFERRED%' ORDER BY name)");
}

TEST_F(MigrationTest, MakesWhatANewStoreIs) {
  putOldStore(file());
  migrator().migrate(file());
  const fs::path fresh = home() / "fresh.sqlite";
  (void)Store::open(fresh, clock_);
  const auto layout = layoutOf(fresh);
  EXPECT_GT(layout.size(), 150U);
  EXPECT_EQ(layoutOf(file()), layout);
  EXPECT_EQ(version(file()), std::to_string(Store::schemaVersion));
}

TEST_F(MigrationTest, KeepsEveryRowAndACopy) {
  putOldStore(file());
  EXPECT_EQ(refusal(Kind::olderVersion, [&] { (void)openStore(); }).find(file()), 0U);
  EXPECT_TRUE(migrator().needsMigration(file()));
  CoreDataMigrator migrating = migrator();
  migrating.migrate(file());
  EXPECT_FALSE(migrating.needsMigration(file()));
  EXPECT_EQ(migrating.migratorVersion(), Store::schemaVersion);
  migrating.migrate(file());

  expectAllRows(file());
  const auto context = open();
  EXPECT_TRUE(StoreVerification::verifyChecksums(*context).empty());
  context->insert(titled("New"));
  context->save({});
  EXPECT_EQ(context->sequence(), 11) << "history goes on";

  const fs::path copy = backups() / "Habitra-Local-version-1-20240115T120000Z.sqlite";
  EXPECT_EQ(filesIn(backups()), std::vector<fs::path>{copy});
  expectAllRows(copy);
  EXPECT_EQ(version(copy), "1");
  EXPECT_FALSE(migrating.needsMigration(home() / "missing.sqlite"));
}

TEST_F(MigrationTest, KilledBeforeAnyStatementItIsWhollyOldOrNew) {
  const auto migrate = [this](CoreDataMigrator& migrating) { migrating.migrate(file()); };
  putOldStore(file());
  const auto oldLayout = layoutOf(file());
  const int steps = countSteps(migrate);
  const auto newLayout = layoutOf(file());
  EXPECT_GT(steps, 25);
  for (int step = 0; step < steps; ++step) {
    SCOPED_TRACE(step);
    fs::remove_all(home());
    fs::create_directories(home());
    putOldStore(file());
    killBefore(step, migrate);
    // Looked at elsewhere, so that nothing but the next program mends what this one left.
    const fs::path look = folder_ / ("look-" + std::to_string(step));
    fs::copy(home(), look, fs::copy_options::recursive);
    const fs::path left = look / file().filename();
    const bool isDone = step == steps - 1;
    EXPECT_EQ(version(left), isDone ? "2" : "1");
    EXPECT_EQ(layoutOf(left), isDone ? newLayout : oldLayout);
    expectAllRows(left);
    for (const fs::path& copy : filesIn(look / "Backups")) {
      EXPECT_EQ(version(copy), "1");
      expectAllRows(copy);
    }
    migrator().migrate(file());
    EXPECT_EQ(layoutOf(file()), newLayout);
    expectAllRows(file());
    EXPECT_TRUE(StoreVerification::verifyChecksums(*open()).empty());
  }
}

TEST_F(MigrationTest, OldDamageStaysAndNewDamageIsRefused) {
  putOldStore(file());
  runSQL(file(), "UPDATE TaskEntity SET title='Ran', userProfile=999 WHERE title='Walk'");
  auto sabotaged = migrator([this](std::string_view step) {
    if (step == "BEGIN IMMEDIATE") runSQL(file(), "UPDATE TaskLogEntryEntity SET entryType=9 WHERE objectID=20");
  });
  const std::string message = refusal(Kind::failed, [&] { sabotaged.migrate(file()); });
  EXPECT_NE(message.find("1 rows would be damaged, first row 20 of TaskLogEntryEntity"), std::string::npos) << message;
  EXPECT_EQ(version(file()), "1");
  migrator().migrate(file());
  EXPECT_EQ(StoreVerification::verifyChecksums(*open()).size(), 2U);

  putOldStore(home() / "other.sqlite");
  auto losing = migrator([this](std::string_view step) {
    if (step == "BEGIN IMMEDIATE") runSQL(home() / "other.sqlite", "DELETE FROM TaskEntity WHERE title='Walk'");
  });
  EXPECT_NE(refusal(Kind::failed, [&] { losing.migrate(home() / "other.sqlite"); }).find("1 rows of TaskEntity"),
            std::string::npos);
}

TEST_F(MigrationTest, WhatItCannotMigrateIsNotTouched) {
  putOldStore(home() / "newer.sqlite");
  runSQL(home() / "newer.sqlite", "PRAGMA journal_mode=DELETE; PRAGMA user_version=99");
  std::ofstream(home() / "text.sqlite") << std::string(2000, 'x');
  putOldStore(home() / "damaged.sqlite");
  {
    std::fstream damage(home() / "damaged.sqlite", std::ios::in | std::ios::out | std::ios::binary);
    damage.seekp(5000);
    damage << std::string(60000, '\xFF');
  }
  const auto before = folderContent(home());
  EXPECT_NE(
      refusal(Kind::newerVersion, [&] { migrator().migrate(home() / "newer.sqlite"); }).find("made by a newer version"),
      std::string::npos);
  refusal(Kind::notAStore, [&] { migrator().migrate(home() / "text.sqlite"); });
  refusal(Kind::damaged, [&] { migrator().migrate(home() / "damaged.sqlite"); });
  refusal(Kind::failed, [&] { migrator().migrate(home() / "missing.sqlite"); });
  const auto after = folderContent(home());
  for (const auto& [name, content] : before) EXPECT_TRUE(after.at(name) == content) << name;
  EXPECT_TRUE(filesIn(backups()).empty());
}

TEST_F(MigrationTest, WaitsForOpenStores) {
  putOldStore(file());
  (void)Store::open(home() / "other.sqlite", clock_);
  const auto other = Store::open(home() / "other.sqlite", clock_);
  EXPECT_NE(refusal(Kind::busy, [&] { migrator().migrate(file()); }).find("this program itself"), std::string::npos);
  EXPECT_EQ(version(file()), "1");
  EXPECT_NO_THROW(migrator().migrate(other->file())) << "nothing is to do";
}

TEST_F(MigrationTest, WhereNothingMayBeWrittenItHappensInMemory) {
  putOldStore(file());
  fs::permissions(file(), fs::perms(0400));
  fs::permissions(home(), fs::perms(0500));
  const auto before = folderContent(folder_.path());
  ChildProcess reader([&](const ChildProcess::Talk&) {
    keepOrdinaryRights();
    for (const auto openStore : {&Store::openForReading, &Store::open}) {
      const auto store = openStore(file(), clock_, MaintenanceLock::defaultPatience);
      StoreContext context(store);
      int entries = 0;
      for (const TaskEntity* task : context.fetchAll<TaskEntity>())
        context.readLog(task->objectID, 0, StoreContext::lastDay, [&entries](const LogRow&) { ++entries; });
      const bool isRead = store->isReadOnly() && entries == 21 && context.fetchAll<TaskShareEntity>().empty() &&
                          StoreContext(store).fetchAll<TaskEntity>().size() == 3;
      if (!isRead) throw std::runtime_error("not everything was read");
      if (errorKind([&] { context.beginUnit(); }) != Kind::readOnly) throw std::runtime_error("a unit has begun");
    }
  });
  EXPECT_TRUE(reader.end());
  EXPECT_TRUE(folderContent(folder_.path()) == before);
  fs::permissions(home(), fs::perms(0700));
}

TEST_F(MigrationTest, TheSummaryTellsTasksAndOwners) {
  const auto context = open();
  const qz::UniqueID active = qz::UniqueID::generate(testMoment);
  const qz::UniqueID archived = qz::UniqueID::generate(testMoment);
  TaskEntity& task = context->insert(TaskEntity{.status = "active", .uniqueId = active.text()});
  context->insert(TaskEntity{.status = "archived", .uniqueId = archived.text()});
  context->insert(TaskEntity{.status = "active", .uniqueId = "no identifier"});
  context->save({});
  EXPECT_EQ(MigratedDataCloudSummary::of(*context),
            (MigratedDataCloudSummary{.activeTasks = {active}, .archivedTasks = {archived}, .owners = {}}));

  auto& owner = context->insert(TaskShareOwnerEntity{.ckRecordIdRecordName = "record",
                                                     .ckRecordIdZoneName = "",
                                                     .cloudStatusDate = testMoment,
                                                     .cnFormattedName = "Ada"});
  context->insert(TaskShareEntity{.owner = owner.objectID, .task = task.objectID});
  context->save({});
  const MigratableOwner expected{.cloudRecordIdentifier = {.recordName = "record", .zoneName = "", .zoneOwnerName = ""},
                                 .properties = {{"ckRecordIdRecordName", "record"}, {"cnFormattedName", "Ada"}},
                                 .taskIdentifiers = {active}};
  EXPECT_EQ(MigratedDataCloudSummary::of(*context).owners, std::vector<MigratableOwner>{expected});
}

TEST_F(MigrationTest, ADiskWithoutRoomLeavesEverythingAsItWas) {
  putOldStore(file());
  const std::string before = folderContent(home()).at(file().filename());
  const auto size = fs::file_size(file());
  for (const rlim_t room : {rlim_t{0}, rlim_t{4096}, rlim_t{size / 2}, rlim_t{size + 4096}}) {
    SCOPED_TRACE(room);
    ChildProcess child([&](const ChildProcess::Talk&) {
      ::signal(SIGXFSZ, SIG_IGN);
      const rlimit limit{.rlim_cur = room, .rlim_max = room};
      ::setrlimit(RLIMIT_FSIZE, &limit);
      const auto fails = [this](auto&& step) {
        const auto kind = errorKind(step);
        return kind == StoreError::Kind::failed || kind == StoreError::Kind::diskFull;
      };
      if (!fails([this] { migrator().migrate(file()); })) throw std::runtime_error("it was migrated");
      if (room < size && !fails([this] { copyStore(file(), folder_ / "copy.sqlite"); }))
        throw std::runtime_error("it was copied");
      if (room == 0 && !fails([this] { (void)Store::open(home() / "new.sqlite", clock_); }))
        throw std::runtime_error("a store was made");
    });
    EXPECT_TRUE(child.end());
    EXPECT_TRUE(folderContent(home()).at(file().filename()) == before);
    EXPECT_FALSE(fs::exists(folder_ / "copy.sqlite"));
    for (const auto& backup : filesIn(backups())) expectAllRows(backup);
  }
  migrator().migrate(file());
  expectAllRows(file());
  EXPECT_NE(Store::open(home() / "new.sqlite", clock_), nullptr);
}

}  // namespace
}  // namespace habitra
