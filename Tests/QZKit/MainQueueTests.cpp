#include <QZKit/MainQueue.h>

#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

TEST(MainQueue, RunsInOrderOnTheDrainingThreadWithWhatTasksAdd) {
  qz::MainQueue queue;
  std::vector<int> ran;
  std::thread::id ranOn;
  std::thread([&] {
    queue.async([&] {
      ranOn = std::this_thread::get_id();
      ran.push_back(1);
      queue.async([&] { ran.push_back(3); });
    });
    queue.async([&] { ran.push_back(2); });
  }).join();
  EXPECT_TRUE(ran.empty());
  queue.drain();
  EXPECT_EQ(ran, (std::vector{1, 2, 3}));
  EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TEST(MainQueue, AnExceptionReachesTheCallerAndLosesNothingBehindIt) {
  qz::MainQueue queue;
  bool ran = false;
  queue.async([] { throw std::runtime_error("no"); });
  queue.async([&] { ran = true; });
  EXPECT_THROW(queue.drain(), std::runtime_error);
  EXPECT_FALSE(ran);
  queue.drain();
  EXPECT_TRUE(ran);
}

TEST(MainQueue, RunsUntilItIsStoppedFromAnyThread) {
  qz::MainQueue queue;
  queue.stop();
  queue.run();  // was stopped before
  std::vector<int> ran;
  std::thread other([&] {
    queue.async([&] { ran.push_back(1); });
    queue.async([&] {
      ran.push_back(2);
      std::thread([&] { queue.stop(); }).join();
    });
    queue.async([&] { ran.push_back(3); });
  });
  queue.run();
  other.join();
  EXPECT_EQ(ran, (std::vector{1, 2}));
  queue.drain();
  EXPECT_EQ(ran, (std::vector{1, 2, 3}));
}

}  // namespace
