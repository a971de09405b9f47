#include <HabitraModel/Store/StoreVerification.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <thread>

#include "StoreFixture.h"

namespace habitra {
namespace {

class ConcurrencyTest : public StoreTest {
 protected:
  /// Reads, decides and writes `count` times.
  void addUp(StoreContext& context, ObjectID task, int count) const {
    for (int i = 0; i < count; ++i) {
      context.beginUnit();
      TaskEntity& object = *context.find<TaskEntity>(task);
      ++object.bestStreak;
      const auto newest = context.newestEntryDay(task).value_or(20000000);
      context.insertLogEntry(entryOn(task, newest + 1));
      context.save({});
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
};

TEST_F(ConcurrencyTest, ProcessesTakeTurnsAndLoseNothing) {
  const ObjectID task = makeTask();
  std::vector<pid_t> children;
  for (int i = 0; i < 3; ++i) {
    const pid_t child = ::fork();
    if (child == 0) {
      int code = 1;
      try {
        addUp(*open(), task, 100);
        code = 0;
      } catch (const std::exception& error) {
        ::fputs((std::string(error.what()) + "\n").c_str(), stderr);
      }
      ::_exit(code);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }
  expectAll(task, 300);
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
