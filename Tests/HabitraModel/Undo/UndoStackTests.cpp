#include <HabitraCore/TaskLogEntryType.h>
#include <HabitraModel/CoreDataMigrator.h>
#include <HabitraModel/Store/Entities/HealthKitRequestEntity.h>
#include <HabitraModel/Store/Entities/TaskNoteEntity.h>
#include <HabitraModel/Store/History/HistoryTrimming.h>
#include <HabitraModel/Store/StoreVerification.h>
#include <HabitraModel/Tasks/TaskCategories.h>

#include <sys/stat.h>

#include <fstream>

#include "../Store/SampleRows.h"
#include "UndoFixture.h"

namespace habitra {
namespace {

using Reason = UndoStack::Error::Reason;

TEST_F(UndoStackTest, CommandsGoAndComeBackOneByOne) {
  EXPECT_EQ(refusal()->reason(), Reason::nothingToUndo);
  const ObjectID walk = add("Walk").objectID;
  const std::int64_t done = record(walk, 20240115, "done 'Walk'");
  EXPECT_EQ(stack_.newest(*context_), (UndoStack::Command{done, "done 'Walk'", clock_->now()}));
  context_->find<TaskEntity>(walk)->bestStreak = 1;
  save(std::nullopt);
  const auto before = rows();

  undo();
  EXPECT_TRUE(context_->fetchLogEntries(walk).empty());
  EXPECT_EQ(context_->find<TaskEntity>(walk)->bestStreak, 1) << "what no person did stays";
  EXPECT_EQ(standing(), std::vector<std::string>{"add 'Walk'"});
  EXPECT_EQ(stack_.newestUndone(*context_)->sequence, done);
  undo();
  EXPECT_EQ(context_->find<TaskEntity>(walk), nullptr);
  EXPECT_TRUE(standing().empty());
  redo();
  redo();
  EXPECT_EQ(rows(), before) << "under their numbers, with their checksums";
  EXPECT_EQ(standing(), (std::vector<std::string>{"done 'Walk'", "add 'Walk'"}));
  EXPECT_THROW(redo(), UndoStack::Error);
  undo();
  EXPECT_EQ(refusal(done)->reason(), Reason::takenBack);
  context_->find<TaskEntity>(walk)->title = "Run";
  save("rename");
  EXPECT_EQ(stack_.newestUndone(*context_), std::nullopt) << "something new was done since";
  EXPECT_EQ(stack_.list(*context_, 1).size(), 1U);
  EXPECT_EQ(refusal(999)->reason(), Reason::notReached);
  EXPECT_EQ(refusal(context_->sequence() - 1)->reason(), Reason::notReached) << "an undo is put back by redo";

  std::vector<std::optional<std::int64_t>> undoes;
  context_->readTransactions(0, [&](const StoredTransaction& transaction) { undoes.push_back(transaction.undoes); });
  EXPECT_EQ(undoes, (std::vector<std::optional<std::int64_t>>{{}, {}, {}, 2, 1, 5, 4, 2, {}}));
}

TEST_F(UndoStackTest, ARemovedTaskComesBackWithAllThatWentWithIt) {
  TaskEntity values = sample<TaskEntity>(3);
  values.status = "active";
  values.userProfile = context_->insert(sample<UserProfileEntity>(1)).objectID;
  TaskEntity& task = context_->insert(values);
  addCategory(*context_, task, context_->insert(sample<TaskCategoryEntity>(5)));
  TaskNoteEntity note = sample<TaskNoteEntity>(6);
  note.task = task.objectID;
  context_->insert(note);
  TaskTemporalDataEntity data = sample<TaskTemporalDataEntity>(7);
  data.task = task.objectID;
  context_->insert(data);
  TaskLogEntryEntity entry = entryOn(task.objectID, 20240110);
  HealthKitRequestEntity request = sample<HealthKitRequestEntity>(8);
  request.taskLogEntry = context_->insertLogEntry(entry);
  context_->insert(request);
  entry.entryType = rawValue(TaskLogEntryType::missedAutomaticallyFull);
  entry.entryDate = 20240111;
  context_->insertLogEntry(entry);
  save(std::nullopt);
  const auto before = rows();

  const ObjectID id = task.objectID;
  context_->remove(task);
  save("delete");
  ASSERT_LT(rows().size(), before.size() - 6);
  const auto undone = stack_.undo(*context_);
  EXPECT_EQ(undone.tasks, (std::vector<UndoStack::TouchedTask>{{id, qz::YYYYMMDD(2024, 1, 10)}}));
  finish(undone);
  auto now = rows();
  EXPECT_EQ(now, before);
  EXPECT_TRUE(StoreVerification::verifyChecksums(*context_).empty());
  EXPECT_EQ(runSQL(file(), "PRAGMA integrity_check; PRAGMA foreign_key_check"), std::vector<std::string>{"ok"});
  redo();
  EXPECT_EQ(context_->find<TaskEntity>(id), nullptr);
  undo();
  EXPECT_EQ(rows(), before);
}

TEST_F(UndoStackTest, WhatAPersonDidLaterStandsInTheWay) {
  const ObjectID walk = add("Walk").objectID;
  const std::int64_t done = record(walk, 20240115, "done 'Walk'");
  const auto entry = context_->fetchLogEntries(walk).at(0);
  context_->removeLogEntry(entry.key());
  const std::int64_t skip = record(walk, 20240115, "skip 'Walk'");
  const auto before = rows();

  const auto refused = refusal(done);
  ASSERT_TRUE(refused);
  EXPECT_EQ(refused->reason(), Reason::inTheWay);
  EXPECT_EQ(refused->obstacle()->command.sequence, skip);
  EXPECT_EQ(refused->obstacle()->habit, "Walk");
  EXPECT_STREQ(refused->what(),
               "'done 'Walk'' cannot be undone: 'skip 'Walk'' of 2024-01-15 came later and changed the same of 'Walk'; "
               "undo that first");
  // The habit itself: entries were added to it.
  EXPECT_EQ(refusal(1)->obstacle()->command.text, "done 'Walk'");
  EXPECT_EQ(rows(), before);
  undo();
  undo(done);
  EXPECT_TRUE(context_->fetchLogEntries(walk).empty());
  undo(1);
  EXPECT_EQ(context_->find<TaskEntity>(walk), nullptr);
}

TEST_F(UndoStackTest, AnotherAttributeOfTheSameRowStandsInTheWayButNotADerivedOne) {
  TaskEntity& task = add("Walk");
  task.title = "Run";
  const std::int64_t rename = save("rename");
  task.typeProgress = 4;
  task.lastProcessedDate = testMoment;
  save("done");
  task.colorInfo = "red";  // by a program
  task.title = "Jump";
  save(std::nullopt);
  undo(rename);
  EXPECT_EQ(task.title, "Jump") << "what was changed since stays, attribute by attribute";
  EXPECT_EQ(task.colorInfo, "red");
  redo();
  task.imageName = "ic_walk";
  save("icon");
  EXPECT_EQ(refusal(rename)->reason(), Reason::inTheWay);
}

TEST_F(UndoStackTest, WhatARowLedToHasToBeThere) {
  UserProfileEntity& first = context_->insert(sample<UserProfileEntity>(1));
  UserProfileEntity& second = context_->insert(sample<UserProfileEntity>(2));
  TaskEntity values = titled("Walk");
  values.userProfile = first.objectID;
  TaskEntity& task = context_->insert(values);
  save(std::nullopt);
  task.userProfile = second.objectID;
  const std::int64_t move = save("move");
  const ObjectID page = first.objectID;
  context_->remove(first);
  const std::int64_t removal = save("remove the page");
  const auto refused = refusal(move);
  ASSERT_TRUE(refused);
  EXPECT_EQ(refused->obstacle()->command.sequence, removal);
  undo(removal);
  undo(move);
  EXPECT_EQ(task.userProfile, page);
  // Nobody's command: the link leads nowhere instead.
  redo();
  context_->remove(*context_->find<UserProfileEntity>(page));
  save(std::nullopt);
  undo(move);
  EXPECT_EQ(task.userProfile, ObjectID::none);
}

TEST_F(UndoStackTest, OnlyARemovalIsInTheWayOfALink) {
  UserProfileEntity& first = context_->insert(sample<UserProfileEntity>(1));
  TaskEntity values = titled("Walk");
  values.userProfile = first.objectID;
  TaskEntity& task = context_->insert(values);
  save(std::nullopt);
  task.userProfile = ObjectID::none;
  const std::int64_t move = save("move");
  first.displayOrder += 1;
  save("order pages");
  context_->remove(first);
  save(std::nullopt);
  undo(move);
  EXPECT_EQ(task.userProfile, ObjectID::none);
}

TEST_F(UndoStackTest, OnlyTheLastTwoHundredCommandsAreReached) {
  TaskEntity& task = add("Walk");
  for (int i = 1; i <= 200; ++i) {
    task.bestStreak = i;
    save("edit");
  }
  EXPECT_EQ(standing().size(), 200U);
  EXPECT_EQ(refusal(1)->reason(), Reason::notReached);
  for (int i = 199; i >= 0; --i) {
    undo();
    ASSERT_EQ(task.bestStreak, i) << "undos do not count";
  }
  EXPECT_EQ(HistoryTrimming::trim(*context_, {}, clock_->now() + std::chrono::days(30)).transactions, 1);
  EXPECT_EQ(refusal()->reason(), Reason::nothingToUndo);
  EXPECT_EQ(stack_.newestUndone(*context_)->sequence, 2);
  for (int i = 1; i <= 199; ++i) redo();
  EXPECT_EQ(task.bestStreak, 199);
  runSQL(file(), "UPDATE habitra_change SET before=NULL");
  context_->refresh();
  const auto gone = refusal();
  EXPECT_EQ(gone->reason(), Reason::valuesGone);
  EXPECT_STREQ(gone->what(), "'edit' cannot be undone: what was there before is no longer known");
  task.bestStreak = 7;
  save("another");
  undo();
  runSQL(file(), "UPDATE habitra_change SET before=NULL");
  context_->refresh();
  try {
    redo();
    FAIL();
  } catch (const UndoStack::Error& error) {
    EXPECT_STREQ(error.what(), "'another' cannot be redone: what was there before is no longer known");
  }
}

TEST_F(UndoStackTest, WhatWasRolledBackIsNotSavedAsUndone) {
  const ObjectID walk = add("Walk").objectID;
  const std::int64_t done = record(walk, 20240115, "done");
  const auto undone = stack_.undo(*context_);
  context_->rollback();
  EXPECT_THROW(finish(undone), StoreError);
  context_->beginUnit();
  context_->find<TaskEntity>(walk)->title = "Run";
  EXPECT_EQ(errorKind([&] { finish(undone); }), StoreError::Kind::conflict) << "some other unit";
  EXPECT_FALSE(context_->isInUnit());
  EXPECT_EQ(stack_.newest(*context_)->sequence, done);
  EXPECT_EQ(context_->find<TaskEntity>(walk)->title, "Walk");

  // Nothing is left to take back, which is saved all the same, but once.
  context_->removeLogEntry(context_->fetchLogEntries(walk).at(0).key());
  save(std::nullopt);
  const auto again = stack_.undo(*context_);
  finish(again);
  EXPECT_EQ(stack_.newest(*context_)->text, "add 'Walk'");
  EXPECT_THROW(finish(again), StoreError);
}

class BigCommandTest : public UndoStackTest {
 protected:
  [[nodiscard]] std::filesystem::path backups() const { return file().parent_path() / "Backups"; }
  [[nodiscard]] std::filesystem::path backup(std::int64_t sequence) const {
    const std::string store = context_->storeIdentifier();
    return backups() / ("before-" + std::to_string(sequence) + "-" + store.substr(store.size() - 8) + ".sqlite");
  }
  /// 1,200 entries, of which a command then changes every one.
  std::int64_t changeMany() {
    task_ = add("Walk").objectID;
    for (int i = 0; i < 1200; ++i) context_->insertLogEntry(entryOn(task_, 20200101 + i % 28 + i / 28 * 100 % 1200));
    save(std::nullopt);
    before_ = rows();
    for (TaskLogEntryEntity entry : context_->fetchLogEntries(task_)) {
      const LogKey key = entry.key();
      if (rawValue(key.objectID) % 3 == 0) {
        context_->removeLogEntry(key);
      } else {
        entry.progress = 0.5;
        entry.entryDate += 1;
        context_->updateLogEntry(key, entry);
      }
    }
    return save("tidy");
  }
  ObjectID task_{};
  std::vector<std::string> before_;
};

TEST_F(BigCommandTest, ABigCommandIsUndoneFromItsBackup) {
  const std::int64_t tidy = changeMany();
  const auto backup = this->backup(tidy);
  struct stat status {};
  ASSERT_EQ(::stat(backup.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  EXPECT_EQ(runSQL(file(), "SELECT backup FROM habitra_transaction WHERE backup IS NOT NULL"),
            std::vector{backup.filename().string()});
  EXPECT_EQ(runSQL(file(), "SELECT count(*), count(before) FROM habitra_change WHERE sequence=" + std::to_string(tidy)),
            std::vector<std::string>{"1200|0"});

  std::filesystem::rename(backup, folder_ / "elsewhere");
  const auto gone = refusal();
  ASSERT_TRUE(gone);
  EXPECT_EQ(gone->reason(), Reason::valuesGone);
  EXPECT_NE(std::string(gone->what()).find(backup), std::string::npos);
  std::filesystem::rename(folder_ / "elsewhere", backup);
  runSQL(backup, "UPDATE habitra_meta SET newestSequence=77");
  EXPECT_EQ(refusal()->reason(), Reason::valuesGone) << "some other copy";
  runSQL(backup, "UPDATE habitra_meta SET newestSequence=" + std::to_string(tidy - 1));

  undo();
  EXPECT_EQ(rows(), before_);
  EXPECT_TRUE(std::filesystem::exists(this->backup(tidy + 1)));
  redo();
  EXPECT_NE(rows(), before_);
  undo();
  EXPECT_EQ(rows(), before_);
}

TEST_F(BigCommandTest, ACopyOfTheStoreUndoesABigCommandFromTheSameBackup) {
  const std::int64_t tidy = changeMany();
  const auto backup = this->backup(tidy);
  const auto other = file().parent_path() / "Habitra-CloudKit.sqlite";
  const std::string identifier = context_->storeIdentifier();
  context_.reset();
  CoreDataMigrator(clock_).replaceStore(other, file());
  context_ = std::make_unique<StoreContext>(Store::open(other, clock_));
  ASSERT_NE(context_->storeIdentifier(), identifier);
  const auto refuses = [&](const std::string& make, const std::string& unmake) {
    runSQL(backup, make);
    const auto refused = refusal(tidy);
    runSQL(backup, unmake);
    return refused && refused->reason() == Reason::valuesGone;
  };
  EXPECT_TRUE(refuses("UPDATE habitra_meta SET storeIdentifier='00000000-'||storeIdentifier||'-00000000'",
                      "UPDATE habitra_meta SET storeIdentifier='" + identifier + "'"))
      << "of some other store";
  EXPECT_TRUE(refuses("UPDATE habitra_transaction SET moment=moment+1 WHERE sequence=2",
                      "UPDATE habitra_transaction SET moment=moment-1 WHERE sequence=2"))
      << "of a life of the store that was given up";
  HistoryTrimming::trim(*context_, {}, clock_->now() + std::chrono::days(30));
  undo();
  EXPECT_EQ(context_->fetchLogEntries(task_).size(), 1200U);
  EXPECT_EQ(context_->fetchLogEntries(task_).at(0).progress, 0);
}

TEST_F(BigCommandTest, ABackupThatCannotBeMadeFailsTheCommandAndOneOfAFailedCommandGoes) {
  std::filesystem::create_directories(file().parent_path());
  { std::ofstream(backups()) << "in the way"; }
  EXPECT_THROW(changeMany(), StoreError);
  EXPECT_FALSE(context_->hasChanges());
  EXPECT_EQ(rows(), before_);
  std::filesystem::remove(backups());
  std::filesystem::create_directories(backups());
  { std::ofstream(backup(context_->sequence() + 1)) << "left by a command that was never committed"; }
  context_->insert(titled("Run")).userProfile = ObjectID{4711};  // leads nowhere, which is refused at the end
  for (int i = 0; i < 1001; ++i) context_->insertLogEntry(entryOn(task_, 20240101));
  EXPECT_THROW(save("refused"), StoreError);
  EXPECT_TRUE(std::filesystem::is_empty(backups()));
}

TEST_F(BigCommandTest, BackupsGoWithTheReachOfUndo) {
  const std::int64_t tidy = changeMany();
  EXPECT_EQ(HistoryTrimming::trim(*context_, {}, clock_->now()), HistoryTrimming::Report{});
  std::filesystem::copy(backup(tidy), backup(99));
  std::filesystem::copy(backup(tidy), backups() / "before-99-FFFFFFFF.sqlite");
  EXPECT_EQ(HistoryTrimming::trim(*context_, {}, clock_->now()), (HistoryTrimming::Report{.backups = 1}))
      << "a copy that no command names";
  TaskEntity& task = *context_->find<TaskEntity>(task_);
  for (int i = 1; i <= 200; ++i) {
    task.bestStreak = i;
    save("edit");
  }
  EXPECT_EQ(HistoryTrimming::trim(*context_, {}, clock_->now()).backups, 1);
  EXPECT_EQ(HistoryTrimming::trim(*context_, {}, clock_->now()), HistoryTrimming::Report{});
  EXPECT_TRUE(std::filesystem::exists(backups() / "before-99-FFFFFFFF.sqlite")) << "of another store of the home";
}

}  // namespace
}  // namespace habitra
