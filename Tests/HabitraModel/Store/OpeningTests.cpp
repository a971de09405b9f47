#include <HabitraModel/Store/Files/StoreCopy.h>
#include <HabitraModel/Store/Files/WritersTurn.h>
#include <Support/ChildProcess.h>
#include <Support/FolderContent.h>
#include <Support/OrdinaryRights.h>

#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <map>

#include "StoreFixture.h"

namespace habitra {
namespace {

using OpeningTest = StoreTest;
using std::filesystem::path;

mode_t mode(const path& file) {
  struct stat status {};
  EXPECT_EQ(::stat(file.c_str(), &status), 0) << file;
  return status.st_mode & 0777;
}

TEST_F(OpeningTest, EverythingIsTheOwnersAloneWhateverTheUmask) {
  for (const mode_t mask : {0000U, 0377U}) {
    const path home = folder_ / ("data-" + std::to_string(mask)) / "habitra";
    const mode_t before = ::umask(mask);
    {
      StoreContext context(Store::open(home / "s.sqlite", clock_));
      context.insert(TaskEntity{});
      context.save({});
      ::umask(before);
      EXPECT_EQ(mode(home), 0700U);
      EXPECT_EQ(mode(home.parent_path()), 0700U);
      for (const auto& item : std::filesystem::directory_iterator(home)) EXPECT_EQ(mode(item), 0600U) << item;
    }
    EXPECT_TRUE(std::filesystem::exists(home / "Habitra.lock"));
  }
}

TEST_F(OpeningTest, ReadingMakesNothing) {
  EXPECT_EQ(Store::openForReading(file(), clock_), nullptr);
  EXPECT_FALSE(std::filesystem::exists(file().parent_path()));
  makeTask();
  EXPECT_NE(Store::openForReading(file(), clock_), nullptr);
}

TEST_F(OpeningTest, WhatCannotBeOpenedIsRefusedAndLeftAlone) {
  const path home = folder_ / "home";
  makeTask();
  runSQL(file(), "PRAGMA wal_checkpoint(TRUNCATE); PRAGMA journal_mode=DELETE");
  for (const char* name : {"damaged.sqlite", "older.sqlite", "newer.sqlite", "given.sqlite", "led.sqlite"})
    std::filesystem::copy_file(file(), home / name);
  {
    std::fstream damage(home / "damaged.sqlite", std::ios::in | std::ios::out | std::ios::binary);
    damage.seekp(100);
    damage << std::string(3000, '\xFF');
  }
  runSQL(home / "older.sqlite", "PRAGMA user_version=1");
  runSQL(home / "newer.sqlite", "PRAGMA user_version=99");
  std::filesystem::create_directories(home / "folder.sqlite");
  std::ofstream(home / "text.sqlite") << "task_id,title\n1,Walk\n";
  runSQL(home / "foreign.sqlite", "CREATE TABLE notes (content)");
  runSQL(home / "tagged.sqlite", "PRAGMA application_id=7");
  std::filesystem::create_symlink(home / "elsewhere.sqlite", home / "link.sqlite");
  std::filesystem::create_symlink(home / "elsewhere", home / "led.sqlite-wal");
  ASSERT_EQ(::mkfifo((home / "pipe.sqlite").c_str(), 0600), 0);
  using Kind = StoreError::Kind;
  std::map<std::string, Kind> expected{{"folder.sqlite", Kind::notAStore},   {"text.sqlite", Kind::notAStore},
                                       {"foreign.sqlite", Kind::notAStore},  {"tagged.sqlite", Kind::notAStore},
                                       {"link.sqlite", Kind::insecurePath},  {"pipe.sqlite", Kind::notAStore},
                                       {"newer.sqlite", Kind::newerVersion}, {"older.sqlite", Kind::olderVersion},
                                       {"damaged.sqlite", Kind::damaged},    {"led.sqlite", Kind::insecurePath}};
  if (::chown((home / "given.sqlite").c_str(), 12345, 12345) == 0) expected.emplace("given.sqlite", Kind::foreignOwner);
  const auto before = folderContent(home);
  for (const auto& [name, kind] : expected) {
    for (const auto openStore : {&Store::open, &Store::openForReading}) {
      try {
        (void)openStore(home / name, clock_, MaintenanceLock::defaultPatience);
        ADD_FAILURE() << name << " was opened";
      } catch (const StoreError& error) {
        const std::string message = error.what();
        EXPECT_EQ(error.kind(), kind) << message;
        EXPECT_NE(message.find(home / name), std::string::npos) << message;
        EXPECT_NE(message.find("; "), std::string::npos) << "it says what to do: " << message;
        EXPECT_EQ(message.find('\n'), std::string::npos) << message;
      }
    }
  }
  EXPECT_TRUE(folderContent(home) == before);
}

TEST_F(OpeningTest, WhatMayNotBeWrittenIsReadAndLeftAlone) {
  const path home = folder_ / "home";
  makeTask();
  for (const bool hasLog : {true, false}) {
    SCOPED_TRACE(hasLog);
    if (!hasLog) runSQL(file(), "PRAGMA wal_checkpoint(TRUNCATE)");
    EXPECT_EQ(std::filesystem::exists(file().string() + "-wal"), hasLog);
    for (const auto& item : std::filesystem::directory_iterator(home))
      std::filesystem::permissions(item, std::filesystem::perms(0400));
    std::filesystem::permissions(home, std::filesystem::perms(0500));
    const auto before = folderContent(home);
    ChildProcess reader([&](const ChildProcess::Talk&) {
      keepOrdinaryRights();
      for (const auto openStore : {&Store::open, &Store::openForReading}) {
        const auto store = openStore(file(), clock_, MaintenanceLock::defaultPatience);
        StoreContext context(store);
        if (!store->isReadOnly() || context.fetchAll<TaskEntity>().size() != 1) throw std::runtime_error("not read");
        if (errorKind([&] { context.beginUnit(); }) != StoreError::Kind::readOnly)
          throw std::runtime_error("a unit has begun");
      }
      try {
        (void)Store::open(home / "new.sqlite", clock_);
        throw std::runtime_error("a store was made");
      } catch (const StoreError& error) {
        if (std::string(error.what()).find("; ") == std::string::npos) throw;
      }
    });
    EXPECT_TRUE(reader.end());
    EXPECT_TRUE(folderContent(home) == before);
    std::filesystem::permissions(home, std::filesystem::perms(0700));
    for (const auto& item : std::filesystem::directory_iterator(home))
      std::filesystem::permissions(item, std::filesystem::perms(0600));
  }
}

TEST_F(OpeningTest, AHomeThatWasCopiedWhileItWasOpenCanBeRead) {
  makeTask();
  const path copied = folder_ / "a copy?";
  std::filesystem::create_directories(copied);
  for (const char* suffix : {"", "-wal"})
    std::filesystem::copy_file(file().string() + suffix, copied / ("s.sqlite" + std::string(suffix)));
  ASSERT_GT(std::filesystem::file_size(copied / "s.sqlite-wal"), 0U);
  std::filesystem::permissions(copied, std::filesystem::perms(0500));
  const auto before = folderContent(copied);
  ChildProcess reader([&](const ChildProcess::Talk&) {
    keepOrdinaryRights();
    const auto store = Store::openForReading(copied / "s.sqlite", clock_);
    for (int i = 0; i < 2; ++i) {
      StoreContext context(store);
      for (int j = 0; j < 2; ++j, context.refresh())
        if (context.fetchAll<TaskEntity>().size() != 1) throw std::runtime_error("not read");
    }
    copyStore(copied / "s.sqlite", folder_ / "whole.sqlite");
  });
  EXPECT_TRUE(reader.end());
  EXPECT_TRUE(folderContent(copied) == before);
  EXPECT_EQ(runSQL(folder_ / "whole.sqlite", "SELECT title FROM TaskEntity"), std::vector<std::string>{"Walk"});
  std::filesystem::permissions(copied, std::filesystem::perms(0700));
}

TEST_F(OpeningTest, WhatOthersMayReadIsTakenFromThemByTheFirstWriter) {
  makeTask();
  const auto open = [this](mode_t to) {
    for (const auto& item : std::filesystem::directory_iterator(file().parent_path())) {
      std::filesystem::permissions(item, std::filesystem::perms(to));
    }
    std::filesystem::permissions(file().parent_path(), std::filesystem::perms(0755));
  };
  const auto expectMode = [this](mode_t expected) {
    for (const auto& item : std::filesystem::directory_iterator(file().parent_path()))
      EXPECT_EQ(mode(item), expected) << item;
    EXPECT_EQ(mode(file().parent_path()), 0755U) << "others may have other things in the folder";
  };
  open(0644);
  const auto store = Store::openForReading(file(), clock_);
  StoreContext context(store);
  EXPECT_EQ(context.fetchAll<TaskEntity>().size(), 1U);
  expectMode(0644);
  context.insert(TaskEntity{});
  context.save({});
  expectMode(0600);
  open(0666);
  (void)openStore();
  expectMode(0600);
}

TEST_F(OpeningTest, TheHomeItselfMayBeALink) {
  std::filesystem::create_directories(folder_ / "real");
  std::filesystem::create_symlink(folder_ / "real", folder_ / "home");
  makeTask();
  EXPECT_TRUE(std::filesystem::exists(folder_ / "real" / "Habitra-Local.sqlite"));
}

TEST_F(OpeningTest, AHomeOfSomebodyElseIsRefused) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give a folder away";
  std::filesystem::create_directories(file().parent_path());
  ASSERT_EQ(::chown(file().parent_path().c_str(), 12345, 12345), 0);
  EXPECT_EQ(errorKind([&] { (void)open(); }), StoreError::Kind::foreignOwner);
  EXPECT_TRUE(std::filesystem::is_empty(file().parent_path()));
}

TEST_F(OpeningTest, AnEmptyFileBecomesAStore) {
  std::filesystem::create_directories(file().parent_path());
  std::ofstream(file()).close();
  EXPECT_EQ(Store::openForReading(file(), clock_), nullptr);
  makeTask();
  EXPECT_EQ(open()->fetchAll<TaskEntity>().size(), 1U);
}

TEST_F(OpeningTest, WhoWaitsTooLongForTheTurnIsTold) {
  const ObjectID id = makeTask();
  const auto context = open();
  context->beginUnit();
  WritersTurn other(file().parent_path(), std::chrono::milliseconds(0));
  EXPECT_EQ(errorKind([&] { other.take(); }), StoreError::Kind::busy);
  EXPECT_NE(open()->find<TaskEntity>(id), nullptr) << "who reads does not wait";
  context->rollback();
  other.take();
  EXPECT_TRUE(other.isHeld());
}

TEST_F(OpeningTest, ALockFileThatSomebodyRemovesGivesNobodyASecondTurn) {
  makeTask();
  const path home = file().parent_path();
  WritersTurn first(home, std::chrono::milliseconds(0));
  WritersTurn second(home, std::chrono::milliseconds(0));
  first.take();
  first.release();
  std::filesystem::remove(home / WritersTurn::fileName);
  second.take();
  EXPECT_EQ(errorKind([&] { first.take(); }), StoreError::Kind::busy);
  second.release();
  std::filesystem::remove(home / WritersTurn::fileName);
  first.take();
  EXPECT_EQ(errorKind([&] { second.take(); }), StoreError::Kind::busy);
}

TEST_F(OpeningTest, ALongWriteAheadLogIsCutOffWhereNoReaderNeedsIt) {
  const path log = file().string() + "-wal";
  const ObjectID task = makeTask();
  const auto context = open();
  const auto saveMany = [&] {
    for (int i = 0; i < 30'000; ++i) context->insertLogEntry(entryOn(task, 20240101 + i % 28));
    context->save({});
  };
  saveMany();
  EXPECT_GT(std::filesystem::file_size(file()), 1'000'000U) << "the rows are in the file itself";
  EXPECT_EQ(std::filesystem::file_size(log), 0U);

  const auto reader = open();
  EXPECT_EQ(reader->fetchLogEntries(task).size(), 30'000U);
  saveMany();
  EXPECT_GT(std::filesystem::file_size(log), 0U) << "the reader still looks at the first rows";
  EXPECT_EQ(reader->fetchLogEntries(task).size(), 30'000U);
}

}  // namespace
}  // namespace habitra
