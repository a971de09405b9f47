#include <QZKit/NotificationCenter.h>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using qz::NotificationCenter;

TEST(NotificationCenter, CallsThoseOfTheNameInOrderUntilTheirObservationEnds) {
  std::optional<NotificationCenter> center(std::in_place);
  std::string heard;
  auto first = center->addObserver("a", [&] { heard += '1'; });
  NotificationCenter::Observation second;
  second = center->addObserver("a", [&] { heard += '2'; });
  const auto other = center->addObserver("b", [&] { heard += 'b'; });
  center->post("a");
  center->post("c");
  EXPECT_EQ(heard, "12");
  {
    const auto moved = std::move(first);
    center->post("a");
  }
  center->post("a");
  EXPECT_EQ(heard, "12122");
  second = center->addObserver("b", [&] { heard += 'B'; });  // ends the old one
  center->post("a");
  center->post("b");
  EXPECT_EQ(heard, "12122bB");
  center.reset();  // observations may outlive it
}

TEST(NotificationCenter, HandlersMayAddEndAndPost) {
  NotificationCenter center;
  std::string heard;
  NotificationCenter::Observation own;
  NotificationCenter::Observation added;
  NotificationCenter::Observation next;
  own = center.addObserver("a", [&] {
    heard += 'o';
    own.end();   // its own
    next.end();  // one that would be called next
    added = center.addObserver("a", [&] { heard += 'n'; });
    center.post("a");  // reaches the new one and the last one
  });
  next = center.addObserver("a", [&] { heard += 'x'; });
  const auto last = center.addObserver("a", [&] { heard += 'l'; });
  center.post("a");
  EXPECT_EQ(heard, "olnl");
}

TEST(NotificationCenter, AHandlerThatEndsItselfWithinItselfIsLetGoWhenItsLastCallReturns) {
  NotificationCenter center;
  auto held = std::make_shared<int>(0);
  const std::weak_ptr<int> watched = held;
  NotificationCenter::Observation own;
  own = center.addObserver("a", [&, held] {
    if (++*held == 1) center.post("a");
    own.end();
    EXPECT_FALSE(watched.expired());
  });
  held.reset();
  center.post("a");
  EXPECT_TRUE(watched.expired());
}

TEST(NotificationCenter, AFailingHandlerKeepsNobodyFromHearing) {
  NotificationCenter center;
  int heard = 0;
  const auto failing = center.addObserver("a", [] { throw std::runtime_error("first"); });
  const auto failingToo = center.addObserver("a", [] { throw std::logic_error("second"); });
  const auto well = center.addObserver("a", [&] { ++heard; });
  EXPECT_THROW(center.post("a"), std::runtime_error);
  EXPECT_EQ(heard, 1);
}

// What the handler touches goes right after its observation: the address and thread sanitizers see a call that comes
// late.
TEST(NotificationCenter, AfterTheEndOfAnObservationNoOtherThreadIsInItsHandler) {
  NotificationCenter center;
  std::atomic<bool> done = false;
  std::atomic<int> posts = 0;
  std::vector<std::thread> posters;
  for (int thread = 0; thread < 2; ++thread)
    posters.emplace_back([&] {
      while (!done) {
        center.post("a");
        ++posts;
      }
    });
  while (posts == 0) std::this_thread::yield();
  for (int round = 0; round < 100; ++round) {
    auto calls = std::make_unique<std::atomic<int>>(0);
    auto observation = center.addObserver("a", [target = calls.get()] { ++*target; });
    if (round % 2 == 0)
      while (*calls == 0) std::this_thread::yield();
    observation.end();
    calls.reset();
  }
  done = true;
  for (auto& poster : posters) poster.join();
}

}  // namespace
