#include <HabitraModel/Store/Files/StoreCopy.h>
#include <HabitraModel/Store/StoreVerification.h>

#include <sys/stat.h>

#include <fstream>
#include <thread>

#include "StoreFixture.h"

namespace habitra {
namespace {

namespace fs = std::filesystem;

class CopyTest : public StoreTest {
 protected:
  [[nodiscard]] fs::path target() const { return folder_ / "home" / "Backups" / "copy.sqlite"; }

  void expectNothingMade() const {
    EXPECT_FALSE(fs::exists(target().parent_path()) && !fs::is_empty(target().parent_path()));
  }
};

TEST_F(CopyTest, IsTheStoreAsLastCommitted) {
  const ObjectID task = makeTask();
  const auto context = open();
  for (int i = 0; i < 3000; ++i) context->insertLogEntry(entryOn(task, 20240101 + i % 28));
  context->save({});
  // A unit of this very process, part of which lies in the log already.
  context->find<TaskEntity>(task)->title = "Run";
  for (int i = 0; i < 20000; ++i) context->insertLogEntry(entryOn(task, 20240201));
  context->flush();

  const mode_t before = ::umask(0277);
  copyStore(file(), target());
  ::umask(before);
  context->rollback();

  struct stat status {};
  ASSERT_EQ(::stat(target().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);
  ASSERT_EQ(::stat(target().parent_path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0700U);
  EXPECT_EQ(std::distance(fs::directory_iterator(target().parent_path()), {}), 1) << "nothing beside the copy";

  StoreContext copy(Store::openForReading(target(), clock_));
  EXPECT_EQ(copy.find<TaskEntity>(task)->title, "Walk");
  int entries = 0;
  copy.readLog(task, 0, StoreContext::lastDay, [&entries](const LogRow&) { ++entries; });
  EXPECT_EQ(entries, 3000);
  EXPECT_TRUE(StoreVerification::verifyChecksums(copy).empty());
  EXPECT_EQ(copy.sequence(), open()->sequence());
}

TEST_F(CopyTest, ManyAtOnceIntoOneFolder) {
  makeTask();
  std::vector<std::thread> copying;
  for (int i = 0; i < 4; ++i)
    copying.emplace_back([this, i] {
      for (int j = 0; j < 10; ++j)
        EXPECT_NO_THROW(copyStore(file(), target().parent_path() / (std::to_string(10 * i + j) + ".sqlite")));
    });
  for (std::thread& thread : copying) thread.join();
  EXPECT_EQ(std::distance(fs::directory_iterator(target().parent_path()), {}), 40);
}

TEST_F(CopyTest, ACopyPutInPlaceByHandGetsItsLog) {
  makeTask();
  copyStore(file(), target());
  EXPECT_EQ(runSQL(target(), "PRAGMA journal_mode"), std::vector<std::string>{"delete"});
  const fs::path home = folder_ / "other home";
  fs::create_directories(home);
  fs::rename(target(), home / "Habitra-Local.sqlite");
  (void)Store::open(home / "Habitra-Local.sqlite", clock_);
  EXPECT_EQ(runSQL(home / "Habitra-Local.sqlite", "PRAGMA journal_mode"), std::vector<std::string>{"wal"});
}

TEST_F(CopyTest, WhatIsThereStays) {
  makeTask();
  fs::create_directories(target().parent_path());
  std::ofstream(target()) << "mine";
  std::ofstream(target().parent_path() / ".habitra-copy-abcdef") << "left by a program that died";
  EXPECT_EQ(errorKind([&] { copyStore(file(), target()); }), StoreError::Kind::failed);
  EXPECT_EQ(fs::file_size(target()), 4U);
  fs::remove(target());
  copyStore(file(), target());
  EXPECT_EQ(std::distance(fs::directory_iterator(target().parent_path()), {}), 1);
}

TEST_F(CopyTest, WhatIsNoWholeStoreIsNotCopied) {
  EXPECT_EQ(errorKind([&] { copyStore(file(), target()); }), StoreError::Kind::failed);
  fs::create_directories(file().parent_path());
  runSQL(file(), "CREATE TABLE notes (content)");
  EXPECT_EQ(errorKind([&] { copyStore(file(), target()); }), StoreError::Kind::notAStore);
  fs::remove(file());

  const ObjectID task = makeTask();
  {
    const auto context = open();
    for (int i = 0; i < 3000; ++i) context->insertLogEntry(entryOn(task, 20240101 + i % 28));
    context->save({});
  }
  runSQL(file(), "PRAGMA wal_checkpoint(TRUNCATE)");
  {
    std::fstream damage(file(), std::ios::in | std::ios::out | std::ios::binary);
    damage.seekp(static_cast<std::streamoff>(fs::file_size(file()) - 4096));
    damage << std::string(64, '\xFF');
  }
  try {
    copyStore(file(), target());
    ADD_FAILURE() << "a damaged store was copied";
  } catch (const StoreError& error) {
    EXPECT_EQ(error.kind(), StoreError::Kind::damaged);
    EXPECT_NE(std::string(error.what()).find(file()), std::string::npos) << error.what();
  }
  expectNothingMade();
}

}  // namespace
}  // namespace habitra
