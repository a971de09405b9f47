#include <HabitraModel/Health/ChangeSchedule.h>
#include <Support/ChildProcess.h>

#include <condition_variable>
#include <mutex>
#include <set>
#include <stdexcept>

#include "SampleFixture.h"

namespace habitra {
namespace {

using namespace qz;
using T = QZHKObjectType;
using Types = std::set<T>;

QZHKObserverQuery observing(Types types, std::uint32_t number = 500) {
  return {.identifier = identifier(number), .objectTypes = std::move(types), .updateFrequency = {}};
}

/// What a handler was told, and the wait for it without a limit of its own: what does not come fails by the runner's.
class Told {
 public:
  [[nodiscard]] QZHealthStore::ChangeHandler handler() {
    return [this](const QZHKObserverQuery&, const Types& types) { add(types); };
  }
  void add(const Types& types) {
    const std::scoped_lock lock(mutex_);
    told_.push_back(types);
    changed_.notify_all();
  }
  [[nodiscard]] Types next() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !told_.empty(); });
    const Types types = told_.front();
    told_.erase(told_.begin());
    return types;
  }
  [[nodiscard]] bool isEmpty() {
    const std::scoped_lock lock(mutex_);
    return told_.empty();
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Types> told_;
};

using SampleObserverTest = SampleStoreTest;

TEST_F(SampleObserverTest, AnObserverIsToldOfItsTypesOnly) {
  const auto store = SampleStore::inMemory();
  save(*store, {steps(1, 0, 1)});
  Told told;
  Told ofSummary;
  store->startObserving(observing({T::stepCount, T::flossingEvent}), told.handler());
  store->startObserving(observing({T::activitySummary}, 501), ofSummary.handler());
  save(*store, {sample(2, T::handwashingEvent, 0, 1)});
  save(*store, {steps(1, 0, 1)});  // changes nothing
  save(*store, {sample(3, T::flossingEvent, 0, 0)});
  EXPECT_EQ(told.next(), Types{T::flossingEvent});
  store->remove(std::vector{identifier(1)});
  EXPECT_EQ(told.next(), Types{T::stepCount});
  save(*store, {sample(4, T::standGoal, 0, 0, QZHKQuantity{12, QZHKUnit::count})});
  EXPECT_EQ(ofSummary.next(), Types{T::activitySummary});
}

TEST_F(SampleObserverTest, WhatOtherProgramsChangeIsTold) {
  save({sample(1, T::flossingEvent, 0, 0)});
  ChildProcess other([this](const ChildProcess::Talk& talk) {
    for (std::uint32_t number = 10; talk.wait(); ++number) {
      save({steps(number, 0, 1)});
      talk.tell();
    }
  });
  SampleStore store = open();
  Told told;
  store.startObserving(observing({T::stepCount, T::flossingEvent}), told.handler());
  for (int round = 0; round < 3; ++round) {
    other.talk().tell();
    EXPECT_EQ(told.next(), Types{T::stepCount});
    EXPECT_TRUE(other.talk().wait());
  }
}

TEST_F(SampleObserverTest, OnceStoppedAHandlerIsNeitherRunningNorCalled) {
  const auto store = SampleStore::inMemory();
  std::atomic<bool> isRunning = false;
  Told told;
  const auto handler = [&](const QZHKObserverQuery&, const Types& types) {
    isRunning = true;
    told.add(types);
    std::this_thread::yield();
    isRunning = false;
  };
  for (std::uint32_t round = 1; round < 50; ++round) {
    store->startObserving(observing({T::stepCount}), handler);
    save(*store, {steps(2 * round, 0, 1)});
    (void)told.next();
    save(*store, {steps(2 * round + 1, 0, 1)});
    store->stopObserving(identifier(500));
    EXPECT_FALSE(isRunning);
    while (!told.isEmpty()) (void)told.next();
  }
}

TEST_F(SampleObserverTest, AHandlerMayAskSaveStopAndFail) {
  const auto store = SampleStore::inMemory();
  Told told;
  store->startObserving(observing({T::stepCount}), [&](const QZHKObserverQuery& query, const Types& types) {
    const std::size_t count = store->samples(all(T::stepCount)).size();
    if (count == 1) throw std::runtime_error("a handler that fails is called again");
    if (count == 2) store->save(std::vector{steps(3, 0, 1)});
    if (count == 3) {
      store->stopObserving(query.identifier);
      told.add(types);
    }
  });
  Told ofOther;
  store->startObserving(observing({T::flossingEvent}, 501), ofOther.handler());
  save(*store, {steps(1, 0, 1)});
  save(*store, {sample(20, T::flossingEvent, 0, 0)});
  (void)ofOther.next();
  save(*store, {steps(2, 0, 1)});
  EXPECT_EQ(told.next(), Types{T::stepCount});
  save(*store, {steps(4, 0, 1), sample(21, T::flossingEvent, 0, 0)});
  (void)ofOther.next();
  EXPECT_TRUE(told.isEmpty());
}

TEST_F(SampleObserverTest, AQueryOfTheSameIdentifierTakesThePlaceOfTheOneBefore) {
  const auto store = SampleStore::inMemory();
  Told first;
  Told second;
  store->startObserving(observing({T::stepCount}), first.handler());
  store->startObserving(observing({T::flossingEvent}), second.handler());
  save(*store, {steps(1, 0, 1), sample(2, T::flossingEvent, 0, 0)});
  EXPECT_EQ(second.next(), Types{T::flossingEvent});
  EXPECT_TRUE(first.isEmpty());
}

TEST(ChangeScheduleTests, WhatFollowsWithinAnHourIsToldTogether) {
  using namespace std::chrono_literals;
  const ChangeSchedule::Time start{100h};
  ChangeSchedule schedule(QZHKUpdateFrequency::hourly);
  EXPECT_EQ(schedule.due(), std::nullopt);
  schedule.add({T::stepCount});
  EXPECT_EQ(schedule.due(), ChangeSchedule::Time::min());
  EXPECT_EQ(schedule.take(start), Types{T::stepCount});
  EXPECT_EQ(schedule.due(), std::nullopt);
  schedule.add({T::workout});
  schedule.add({T::stepCount});
  EXPECT_EQ(schedule.due(), start + 1h);
  EXPECT_EQ(schedule.take(start + 2h), (Types{T::workout, T::stepCount}));
  schedule.add({T::workout});
  EXPECT_EQ(schedule.due(), start + 3h);
}

}  // namespace
}  // namespace habitra
