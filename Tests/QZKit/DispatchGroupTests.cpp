#include <QZKit/DispatchGroup.h>

#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace qz {
namespace {

TEST(DispatchGroupTest, NotifiesOnceNothingIsUnderWay) {
  MainQueue queue;
  DispatchGroup group;
  int told = 0;
  const auto tell = [&] {
    group.notify(queue, [&] { ++told; });
    queue.drain();
  };
  tell();
  EXPECT_EQ(told, 1) << "nothing is under way yet";
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) group.enter();
  tell();
  for (int i = 0; i < 3; ++i) threads.emplace_back([&] { group.leave(); });
  for (std::thread& thread : threads) thread.join();
  queue.drain();
  EXPECT_EQ(told, 1) << "one is left";
  group.leave();
  EXPECT_EQ(told, 1) << "not before the queue runs";
  queue.drain();
  EXPECT_EQ(told, 2);
  EXPECT_DEATH(group.leave(), "entered");
}

}  // namespace
}  // namespace qz
