#include <HabitraModel/PersistentHistoryObserver.h>
#include <HabitraModel/Store/StoreVerification.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <csignal>
#include <functional>
#include <mutex>
#include <thread>

#include "StoreFixture.h"

namespace habitra {
namespace {

class ConcurrencyTest : public StoreTest {
 protected:
  /// Reads, decides and writes `count` times, as each author in turn.
  void addUp(StoreContext& context, ObjectID task, int count) const {
    for (int i = 0; i < count; ++i) {
      const Author author = allAuthors.at(static_cast<std::size_t>(i) % allAuthors.size());
      context.beginUnit();
      TaskEntity& object = *context.find<TaskEntity>(task);
      ++object.bestStreak;
      const auto newest = context.newestEntryDay(task).value_or(20000000);
      context.insertLogEntry(entryOn(task, newest + 1));
      context.save({.author = author});
    }
  }

  /// A process that does this; it must neither throw nor fail an expectation.
  template <typename Step>
  static pid_t fork(Step&& step) {
    const pid_t child = ::fork();
    if (child != 0) return child;
    int code = 1;
    try {
      step();
      code = HasFailure() ? 1 : 0;
    } catch (const std::exception& error) {
      ::fputs((std::string(error.what()) + "\n").c_str(), stderr);
    }
    ::_exit(code);
  }
  static void expectSuccess(const std::vector<pid_t>& children) {
    for (const pid_t child : children) {
      int status = 0;
      ASSERT_EQ(::waitpid(child, &status, 0), child);
      EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
  }

  /// Nothing was lost: every day once, every save counted.
  void expectAll(ObjectID task, int count) const {
    const auto context = open();
    EXPECT_EQ(context->find<TaskEntity>(task)->bestStreak, count);
    std::int32_t expected = 20000000;
    context->readLog(task, 0, StoreContext::lastDay,
                     [&expected](const LogRow& row) { EXPECT_EQ(row.entryDate, ++expected); });
    EXPECT_EQ(expected, 20000000 + count);
    EXPECT_EQ(context->sequence(), 1 + count);
    EXPECT_TRUE(StoreVerification::verifyChecksums(*context).empty());
    EXPECT_EQ(runSQL(file(), "PRAGMA integrity_check; PRAGMA foreign_key_check"), std::vector<std::string>{"ok"});
  }

  void observe(ObjectID task, int own, std::size_t foreign, const std::function<void()>& ready) const;
};

TEST_F(ConcurrencyTest, ProcessesTakeTurnsAndLoseNothing) {
  const ObjectID task = makeTask();
  std::vector<pid_t> children;
  for (int i = 0; i < 3; ++i) children.push_back(fork([&] { addUp(*open(), task, 100); }));
  expectSuccess(children);
  expectAll(task, 300);
}

/// Watches the store, saves some itself, and expects `foreign` saves of others.
void ConcurrencyTest::observe(ObjectID task, int own, std::size_t foreign, const std::function<void()>& ready) const {
  const auto container = std::make_shared<HabitraNSPersistentCloudKitContainer>(ContainerLocation::url(file()), clock_);
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<std::int64_t> seen;
  bool isReady = false;
  PersistentHistoryObserver observer(
      Author::app, KeyValueDefaults::file(file().parent_path() / "Habitra-Standard.json"), container,
      [&](const PersistentHistoryTransaction& read) {
        const std::scoped_lock lock(mutex);
        EXPECT_EQ(read.changes.size(), 2U) << "the habit and the entry";
        seen.push_back(read.transaction.sequence);
        changed.notify_all();
      },
      [&](const PersistentHistoryObserver::Changes& changes) {
        const std::scoped_lock lock(mutex);
        EXPECT_NE(changes.everythingChanged, isReady) << "only in the beginning";
        isReady = true;
        changed.notify_all();
      });
  observer.start();
  {
    std::unique_lock lock(mutex);
    changed.wait(lock, [&] { return isReady; });
  }
  ready();
  const auto context = container->newBackgroundContext();
  addUp(*context, task, own);
  std::unique_lock lock(mutex);
  changed.wait(lock, [&] { return seen.size() >= foreign; });
  lock.unlock();
  observer.processNow();
  observer.stop();

  std::vector<std::int64_t> expected;
  context->refresh();
  context->readTransactions(1, [&](const StoredTransaction& transaction) {
    if (transaction.writer != container->store()->writer()) expected.push_back(transaction.sequence);
  });
  EXPECT_EQ(expected.size(), foreign);
  EXPECT_EQ(seen, expected) << "every change of the others, once, in order, and none of its own";
}

TEST_F(ConcurrencyTest, AnObserverSeesWhatEightOtherProcessesSave) {
  constexpr int saves = 1'000;
  constexpr int writers = 8;
  const ObjectID task = makeTask();
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe(ends.data()), 0);
  const auto tell = [&] { EXPECT_EQ(::write(ends[1], "12345678", writers), writers); };
  const auto wait = [&] {
    char order = 0;
    EXPECT_EQ(::read(ends[0], &order, 1), 1);
  };
  std::vector<pid_t> children{
      fork([&] { observe(task, saves, static_cast<std::size_t>(writers) * static_cast<std::size_t>(saves), tell); })};
  for (int i = 0; i < writers; ++i) {
    children.push_back(fork([&] {
      ::close(ends[1]);
      wait();
      addUp(*open(), task, saves);
    }));
  }
  for (const int end : ends) ::close(end);  // so that nobody waits for an observer that has died
  expectSuccess(children);
  expectAll(task, (writers + 1) * saves);
}

TEST_F(ConcurrencyTest, ContextsOfOneStoreTakeTurnsToo) {
  const ObjectID task = makeTask();
  const auto store = openStore();
  std::vector<std::thread> threads;
  for (int i = 0; i < 3; ++i) {
    threads.emplace_back([&] {
      StoreContext context(store);
      addUp(context, task, 50);
    });
  }
  for (std::thread& thread : threads) thread.join();
  expectAll(task, 150);
}

TEST_F(ConcurrencyTest, AWriterThatDiesLeavesNothingHalfDone) {
  const ObjectID task = makeTask();
  const pid_t child = ::fork();
  if (child == 0) {
    const auto context = open();
    context->find<TaskEntity>(task)->bestStreak = 99;
    for (int i = 0; i < 5000; ++i) context->insertLogEntry(entryOn(task, 20240101));
    context->flush();
    ::_exit(0);  // under its turn, in the midst of its unit
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  addUp(*open(), task, 1);
  expectAll(task, 1);
}

TEST_F(ConcurrencyTest, AFileThatCannotGrowFailsTheWholeUnit) {
  const ObjectID task = makeTask();
  const pid_t child = ::fork();
  if (child == 0) {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{.rlim_cur = 300'000, .rlim_max = 300'000};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    const auto context = open();
    std::string message;
    try {
      for (int i = 0; i < 20000; ++i) context->insertLogEntry(entryOn(task, 20240101));
      context->save({});
    } catch (const StoreError& error) {
      message = error.what();
    }
    const bool isAsBefore = !context->hasChanges() && !context->isInUnit() && !context->newestEntryDay(task);
    ::_exit(message.find(file()) != std::string::npos && isAsBefore ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  addUp(*open(), task, 2);
  expectAll(task, 2);
}

}  // namespace
}  // namespace habitra
