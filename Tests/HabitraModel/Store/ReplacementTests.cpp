#include <HabitraModel/Store/Files/StoreCopy.h>
#include <Support/OrdinaryRights.h>

#include <thread>

#include "MigrationFixture.h"

namespace habitra {
namespace {

namespace fs = std::filesystem;
using Kind = StoreError::Kind;

/// A store that gives way to another: both have changes that lie in their write-ahead logs alone.
class ReplacementTest : public MigrationTest {
 protected:
  [[nodiscard]] fs::path other() const { return folder_ / "elsewhere" / "backup.sqlite"; }
  [[nodiscard]] fs::path kept() const { return backups() / "Habitra-Local-replaced-20240115T120000Z.sqlite"; }

  void fill(const fs::path& store, const std::string& title, int tasks) const {
    StoreContext context(Store::open(store, clock_));
    for (int i = 0; i < tasks; ++i) context.insert(titled(title));
    context.save({});
  }
  void makeBoth() const {
    fill(file(), "old", 2);
    fill(other(), "new", 300);
  }
  [[nodiscard]] std::vector<std::string> titlesIn(const fs::path& store) const {
    StoreContext context(Store::openForReading(store, clock_));
    EXPECT_TRUE(StoreVerification::verifyChecksums(context).empty());
    std::vector<std::string> titles;
    for (const TaskEntity* task : context.fetchAll<TaskEntity>()) titles.push_back(task->title.value_or(""));
    return titles;
  }
  [[nodiscard]] static std::string identifierOf(const fs::path& store) {
    return runSQL(store, "SELECT storeIdentifier FROM habitra_meta").front();
  }

  const std::vector<std::string> oldTitles_{"old", "old"};
  const std::vector<std::string> newTitles_ = std::vector<std::string>(300, "new");
};

TEST_F(ReplacementTest, OneTakesThePlaceOfTheOtherAndTheOldOneIsKept) {
  makeBoth();
  const std::string oldIdentifier = identifierOf(file());
  fill(file(), "old", 0);
  migrator().replaceStore(file(), other());
  EXPECT_EQ(titlesIn(file()), newTitles_);
  EXPECT_EQ(titlesIn(other()), newTitles_) << "it is still there";
  EXPECT_EQ(titlesIn(kept()), oldTitles_);
  EXPECT_EQ(identifierOf(kept()), oldIdentifier);
  EXPECT_NE(identifierOf(file()), identifierOf(other())) << "its history is another's";
  EXPECT_EQ(runSQL(file(), "PRAGMA integrity_check; PRAGMA foreign_key_check"), std::vector<std::string>{"ok"});
  fill(file(), "newer", 1);

  migrator().replaceStore(file(), kept());
  EXPECT_EQ(titlesIn(file()), oldTitles_);
  migrator().replaceStore(home() / "Habitra-CloudKit.sqlite", file());
  EXPECT_EQ(titlesIn(home() / "Habitra-CloudKit.sqlite"), oldTitles_) << "where none was";
}

TEST_F(ReplacementTest, KilledBeforeAnyStepTheHomeHasOneOfThemWhole) {
  const auto replace = [this](CoreDataMigrator& replacing) { replacing.replaceStore(file(), other()); };
  makeBoth();
  const int steps = countSteps(replace);
  EXPECT_GE(steps, 6);
  for (int step = 0; step < steps; ++step) {
    SCOPED_TRACE(step);
    fs::remove_all(home());
    fs::remove_all(other().parent_path());
    makeBoth();
    killBefore(step, replace);
    EXPECT_EQ(titlesIn(file()), step == steps - 1 ? newTitles_ : oldTitles_);
    migrator().replaceStore(file(), other());
    EXPECT_EQ(titlesIn(file()), newTitles_);
    for (const fs::path& left : filesIn(home())) EXPECT_FALSE(left.filename().string().starts_with(".")) << left;
  }
}

TEST_F(ReplacementTest, WhatIsNoWholeStoreTakesNoPlace) {
  makeBoth();
  fs::create_directories(other().parent_path());
  const auto named = [this](const char* name) { return other().parent_path() / name; };
  for (const char* name : {"rows", "newer", "unsound"}) copyStore(other(), named(name));
  runSQL(named("rows"), "UPDATE TaskEntity SET title='forged' WHERE objectID IN (7, 8)");
  runSQL(named("newer"), "PRAGMA user_version=99");
  {
    std::fstream damage(named("unsound"), std::ios::in | std::ios::out | std::ios::binary);
    damage.seekp(static_cast<std::streamoff>(fs::file_size(named("unsound")) - 40'000));
    damage << std::string(30'000, '\xFF');
  }
  std::ofstream(named("text")) << "titles";
  const auto before = folderContent(home());
  const auto replaceWith = [&](const char* name) {
    return [this, path = named(name)] { migrator().replaceStore(file(), path); };
  };
  const std::string message = refusal(Kind::damaged, replaceWith("rows"));
  EXPECT_NE(message.find("2 damaged rows, first row 7 of TaskEntity"), std::string::npos) << message;
  refusal(Kind::newerVersion, replaceWith("newer"));
  refusal(Kind::damaged, replaceWith("unsound"));
  refusal(Kind::notAStore, replaceWith("text"));
  refusal(Kind::failed, replaceWith("missing"));
  refusal(Kind::failed, [&] { migrator().replaceStore(file(), file()); });
  EXPECT_TRUE(folderContent(home()) == before);
}

TEST_F(ReplacementTest, ADamagedStoreGivesWayAndItsBytesAreKept) {
  makeBoth();
  for (const char* suffix : {"", "-wal"}) {
    std::ofstream(file().string() + suffix) << std::string(5000, '\xAB');
    fs::permissions(file().string() + suffix, fs::perms(0600));
  }
  const auto before = folderContent(home());
  fs::permissions(file(), fs::perms(0644));
  migrator().replaceStore(file(), other());
  EXPECT_EQ(titlesIn(file()), newTitles_);
  const auto after = folderContent(backups());
  EXPECT_TRUE(after.at(kept().filename()) == before.at(file().filename()));
  EXPECT_TRUE(after.at(kept().filename().string() + "-wal") == before.at(file().filename().string() + "-wal"));
}

TEST_F(ReplacementTest, FollowsNoLinkAmongTheBackups) {
  makeBoth();
  std::ofstream(file()) << std::string(5000, '\xAB');
  std::ofstream(file().string() + "-wal") << "the rest";  // whole, it would hold the whole store
  std::ofstream(folder_ / "mine") << "mine";
  fs::create_directories(backups());
  fs::create_symlink(folder_ / "mine", kept().string() + "-wal");
  migrator().replaceStore(file(), other());
  EXPECT_EQ(titlesIn(file()), newTitles_);
  EXPECT_EQ(fs::file_size(folder_ / "mine"), 4U);
  EXPECT_EQ(fs::file_size(backups() / "Habitra-Local-replaced-20240115T120000Z-2.sqlite"), 5000U);
}

TEST_F(ReplacementTest, LeavesNothingBesideABackup) {
  makeBoth();
  const fs::path backup = folder_ / "disk" / "backup.sqlite";
  copyStore(other(), backup);
  const auto before = folderContent(backup.parent_path());
  migrator().replaceStore(file(), backup);
  copyStore(backup, folder_ / "copy.sqlite");
  EXPECT_TRUE(folderContent(backup.parent_path()) == before);
  EXPECT_EQ(runSQL(file(), "PRAGMA journal_mode"), std::vector<std::string>{"wal"});
}

TEST_F(ReplacementTest, KeepsTheOldOneOnlyWhenItIsNeeded) {
  makeBoth();
  auto failing = migrator([](std::string_view step) {
    if (step == "replace") throw StoreError(Kind::diskFull, "the disk is full; make room");
  });
  refusal(Kind::diskFull, [&] { failing.replaceStore(file(), other()); });
  EXPECT_EQ(titlesIn(file()), oldTitles_);
  EXPECT_TRUE(filesIn(backups()).empty());
  std::ofstream(file()) << std::string(5000, '\xAB');
  std::ofstream(file().string() + "-wal") << "the rest";
  refusal(Kind::diskFull, [&] { failing.replaceStore(file(), other()); });
  EXPECT_EQ(filesIn(backups()), (std::vector<fs::path>{kept(), kept().string() + "-wal"})) << "the log is gone";
}

using AdoptionTest = MigrationTest;

TEST_F(AdoptionTest, AStoreOfTheFutureIsNotAdopted) {
  const fs::path production = home() / "Habitra-Production.sqlite";
  putOldStore(production);
  runSQL(production, "PRAGMA journal_mode=DELETE; PRAGMA user_version=9");
  const std::string message = refusal(Kind::newerVersion, [&] { (void)migrator().adoptProductionStore(home()); });
  EXPECT_EQ(message.find(production), 0U) << message;
  EXPECT_FALSE(fs::exists(file()));
}

TEST_F(AdoptionTest, AnotherProgramMayBeQuickerAndStay) {
  putOldStore(home() / "Habitra-Production.sqlite");
  const auto open = Store::open(home() / "other.sqlite", clock_);
  CoreDataMigrator waiting(clock_);
  std::thread adopting(
      [&] { EXPECT_NO_THROW(EXPECT_EQ(waiting.adoptProductionStore(home()).value_or(file()), file())); });
  copyStore(open->file(), file());
  adopting.join();
}

TEST_F(AdoptionTest, ALoneProductionStoreIsAdoptedOnceAndStaysAsItWas) {
  const fs::path production = home() / "Habitra-Production.sqlite";
  EXPECT_EQ(migrator().adoptProductionStore(home()), std::nullopt);
  EXPECT_EQ(migrator().adoptProductionStore(home() / "missing"), std::nullopt);
  putOldStore(production);
  const std::string before = folderContent(home()).at(production.filename());
  EXPECT_EQ(migrator().adoptProductionStore(home()), file());
  expectAllRows(file());
  EXPECT_EQ(open()->fetchAll<TaskEntity>().size(), 3U);
  auto content = folderContent(home());
  EXPECT_TRUE(content.at(production.filename()) == before);
  EXPECT_FALSE(content.contains(production.filename().string() + "-wal"));
  EXPECT_EQ(migrator().adoptProductionStore(home()), std::nullopt);

  fs::rename(file(), home() / "Habitra-CloudKit.sqlite");
  EXPECT_EQ(migrator().adoptProductionStore(home()), std::nullopt) << "a cloud is in use";
}

TEST_F(AdoptionTest, KilledBeforeAnyStepItGoesOn) {
  const fs::path production = home() / "Habitra-Production.sqlite";
  const auto adopt = [this](CoreDataMigrator& adopting) { (void)adopting.adoptProductionStore(home()); };
  putOldStore(production);
  const int steps = countSteps(adopt);
  for (const int step : {0, 1, 2, 3, steps - 1}) {
    SCOPED_TRACE(step);
    fs::remove_all(home());
    fs::create_directories(home());
    putOldStore(production);
    killBefore(step, adopt);
    (void)migrator().adoptProductionStore(home());
    if (migrator().needsMigration(file())) migrator().migrate(file());
    expectAllRows(file());
    EXPECT_EQ(version(production), "1");
  }
}

TEST_F(AdoptionTest, WhereNothingMayBeWrittenItIsReadAsItIs) {
  const fs::path production = home() / "Habitra-Production.sqlite";
  putOldStore(production);
  fs::permissions(home(), fs::perms(0500));
  ChildProcess reader([&](const ChildProcess::Talk&) {
    keepOrdinaryRights();
    const auto store = migrator().adoptProductionStore(home());
    if (store != production || StoreContext(Store::openForReading(*store, clock_)).fetchAll<TaskEntity>().size() != 3)
      throw std::runtime_error("it was not read");
  });
  EXPECT_TRUE(reader.end());
  EXPECT_EQ(filesIn(home()), std::vector<fs::path>{production});
  fs::permissions(home(), fs::perms(0700));
}

}  // namespace
}  // namespace habitra
