#include <QZKit/SerialQueue.h>

#include <gtest/gtest.h>
#include <pthread.h>

#include <array>
#include <atomic>
#include <future>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using qz::SerialQueue;

TEST(SerialQueue, RunsTasksOfManyThreadsOneAtATimeEachThreadsInOrder) {
  constexpr int threads = 4;
  constexpr int tasks = 500;
  std::vector<std::pair<int, int>> ran;  // touched by the queue only: the thread sanitizer watches
  {
    SerialQueue queue("org.habitra.test.order");
    std::vector<std::thread> givers;
    for (int thread = 0; thread < threads; ++thread)
      givers.emplace_back([&, thread] {
        for (int task = 0; task < tasks; ++task) {
          if (task % 3 == 0)
            queue.sync([&] { ran.emplace_back(thread, task); });
          else
            queue.async([&ran, thread, task] { ran.emplace_back(thread, task); });
        }
      });
    for (auto& giver : givers) giver.join();
  }  // the end drains
  ASSERT_EQ(ran.size(), std::size_t{threads * tasks});
  std::array<int, threads> next{};
  for (const auto& [thread, task] : ran) EXPECT_EQ(task, next[static_cast<std::size_t>(thread)]++);
}

TEST(SerialQueue, AnIdleQueueRunsSynchronousWorkOnTheCallersThread) {
  SerialQueue queue("org.habitra.test.idle");
  EXPECT_EQ(queue.sync([] { return std::this_thread::get_id(); }), std::this_thread::get_id());
  EXPECT_THROW(queue.sync([] { throw std::runtime_error("no"); }), std::runtime_error);
  EXPECT_EQ(queue.sync([&] { return queue.sync([&] { return queue.isCurrent() ? 7 : 0; }); }), 7);
  EXPECT_FALSE(queue.isCurrent());
}

TEST(SerialQueue, SynchronousWorkWaitsItsTurnAndRunsInlineOnItsOwnQueue) {
  SerialQueue queue("org.habitra.test.turns");
  std::promise<void> go;
  std::vector<int> ran;
  queue.async([&, gate = go.get_future().share()] {
    gate.wait();
    ran.push_back(1);
    queue.async([&] { ran.push_back(4); });
    queue.sync([&] { ran.push_back(2); });
  });
  queue.async([&] { ran.push_back(3); });
  std::thread opener([&] { go.set_value(); });
  EXPECT_EQ(queue.sync([&] { return ran.size(); }) >= 3, true);
  opener.join();
  queue.drain();
  EXPECT_EQ(ran, (std::vector{1, 2, 3, 4}));
}

TEST(SerialQueue, ATaskGivenDuringSynchronousWorkWaitsForItsEnd) {
  SerialQueue queue("org.habitra.test.during");
  std::vector<int> ran;
  queue.sync([&] {
    queue.async([&] { ran.push_back(2); });
    ran.push_back(1);
  });
  queue.drain();
  EXPECT_EQ(ran, (std::vector{1, 2}));
}

TEST(SerialQueue, TwoQueuesNestWithinOneThread) {
  SerialQueue outer("org.habitra.test.outer");
  SerialQueue inner("org.habitra.test.inner");
  const bool both =
      outer.sync([&] { return inner.sync([&] { return outer.sync([&] { return inner.isCurrent(); }); }); });
  EXPECT_TRUE(both);
  EXPECT_FALSE(outer.isCurrent() || inner.isCurrent());
}

TEST(SerialQueue, ADrainThrowsTheFirstFailureOnceAndTheTasksBehindItRan) {
  SerialQueue queue("org.habitra.test.failing");
  std::atomic<int> ran = 0;
  queue.async([] { throw std::runtime_error("first"); });
  queue.async([] { throw std::runtime_error("second"); });
  queue.async([&] { ++ran; });
  try {
    queue.drain();
    FAIL() << "the failure is lost";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "first");
  }
  EXPECT_EQ(ran, 1);
  EXPECT_NO_THROW(queue.drain());
}

TEST(SerialQueue, WhatATaskHoldsMayUseTheQueueAsItGoesAlsoAfterAFailure) {
  SerialQueue queue("org.habitra.test.held");
  std::vector<bool> wentInTurn;
  const auto held = [&] {
    return std::shared_ptr<void>(nullptr, [&](void*) { queue.sync([&] { wentInTurn.push_back(queue.isCurrent()); }); });
  };
  queue.async([hold = held()] {});
  queue.async([hold = held()] { throw std::runtime_error("no"); });
  EXPECT_THROW(queue.drain(), std::runtime_error);
  EXPECT_EQ(wentInTurn, (std::vector{true, true}));
}

TEST(SerialQueue, AFailureThatNobodyDrainedIsSaidAtTheEnd) {
  testing::internal::CaptureStderr();
  {
    SerialQueue queue("org.habitra.test.lost");
    queue.async([] { throw std::runtime_error("disk is full"); });
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "habitra: a task of org.habitra.test.lost failed: disk is full\n");
}

TEST(SerialQueue, ItsThreadBearsTheLastPartOfTheLabel) {
  SerialQueue queue("org.habitra.datamanager.persistenthistory");
  std::string name;
  queue.async([&] {
    std::array<char, 32> text{};
    pthread_getname_np(pthread_self(), text.data(), text.size());
    name = text.data();
  });
  queue.drain();
  EXPECT_EQ(name, "persistenthisto");
}

TEST(SerialQueueDeathTest, ATaskThatWaitsForTheEndOfItsOwnQueueStopsTheProgram) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(
      {
        SerialQueue queue("org.habitra.test.own");
        queue.sync([&] { queue.drain(); });
      },
      "waits for the end of its own queue");
}

}  // namespace
