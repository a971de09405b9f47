#include <HabitraModel/Health/SampleStore.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorHealthKitObserver.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorScreenTimeObserver.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "../Health/SampleFixture.h"

namespace habitra {
namespace {

using qz::QZHKUnit;
using Observer = TaskProcessorHealthKitObserver;
using Source = AutomaticTaskType::TaskType;
using T = qz::QZHKObjectType;

ObservedTask automatic(std::uint32_t number, const Source& source) {
  return {identifier(number), AutomaticTaskType::ofNewTask(source, TaskFrequencyPeriodType::day)};
}
ObservedTask walking(std::uint32_t number) {
  ObservedTask task = automatic(number, Source::healthKit(HealthType::runOrWalk));
  task.type.unit = TypeUnit::steps;
  return task;
}
ObservedTask screenTime(std::uint32_t number, bool isConfigured) {
  ObservedTask task = automatic(number, Source::screenTime());
  if (!isConfigured) return task;
  ScreenTimeSettings settings;
  settings.setFamilyActivitySelection(FamilyActivitySelection{.applications = {"reader"}});
  task.type.extra = TypeExtra{.screenTimeSettings = settings};
  return task;
}

/// What happened, in order, to be waited for. What does not come fails by the runner's limit.
class Events {
 public:
  void add(std::string event) {
    const std::scoped_lock lock(mutex_);
    events_.push_back(std::move(event));
    changed_.notify_all();
  }
  std::string next() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !events_.empty(); });
    std::string event = std::move(events_.front());
    events_.erase(events_.begin());
    return event;
  }
  [[nodiscard]] bool isEmpty() {
    const std::scoped_lock lock(mutex_);
    return events_.empty();
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::string> events_;
};

class TaskProcessorObserverTest : public testing::Test {
 protected:
  TaskProcessorObserverTest() {
    for (const char* name : {Observer::taskWasUpdatedInBackgroundByHealthKitHighPriority,
                             Observer::taskWasUpdatedInBackgroundByHealthKitLowPriority})
      observations_.push_back(notifications_.addObserver(name, [this, name] { events_.add(name); }));
  }

  /// Says which tasks it was called for, does what the test asks for, and reports that.
  ProcessTasks processing() {
    return [this](const std::set<qz::UniqueID>& tasks, LayoutDirection) {
      EXPECT_TRUE(queue_.isCurrent());
      EXPECT_EQ(tasks.size(), 1U);
      events_.add("pass " + std::to_string(tasks.begin()->bytes().back()));
      return pass_();
    };
  }
  void addSteps() {
    ++sample_;
    store_->save(std::vector{steps(sample_, sample_, sample_ + 1)});
  }

  std::unique_ptr<SampleStore> store_ = SampleStore::inMemory();
  qz::SerialQueue queue_{"org.habitra.taskprocessor"};
  qz::NotificationCenter notifications_;
  Events events_;
  std::function<TaskProcessorReport()> pass_ = [] { return TaskProcessorReport{.tasks = 1}; };
  std::vector<qz::NotificationCenter::Observation> observations_;
  std::uint32_t sample_ = 1'000;
};

TEST_F(TaskProcessorObserverTest, EachHealthTaskHasAQuery) {
  const auto water = automatic(2, Source::healthKit(HealthType::dietaryDrinkWater));
  const auto sleep = automatic(2, Source::healthKit(HealthType::sleep));
  const auto queries =
      Observer::observerQueriesForTasks({walking(1), automatic(3, Source::timer()), screenTime(4, true), water, sleep});
  ASSERT_EQ(queries.size(), 2U);
  EXPECT_EQ(queries[0].identifier, identifier(1));
  EXPECT_EQ(queries[0].objectTypes, std::set{T::stepCount});
  EXPECT_EQ(queries[0].updateFrequency, HealthType(HealthType::runOrWalk).healthKitBackgroundUpdateFrequency());
  EXPECT_EQ(queries[1].objectTypes, (std::set{T::dietaryWater, T::sleepAnalysis})) << "two rows of one identifier";
  EXPECT_EQ(queries[1].updateFrequency,
            std::min(HealthType(HealthType::sleep).healthKitBackgroundUpdateFrequency(),
                     HealthType(HealthType::dietaryDrinkWater).healthKitBackgroundUpdateFrequency()));

  using Screen = TaskProcessorScreenTimeObserver;
  EXPECT_EQ(Screen::monitorRequestsForTasks({walking(1), screenTime(5, true), screenTime(3, false)}),
            std::vector{Screen::MonitorRequest{identifier(5)}});
}

TEST_F(TaskProcessorObserverTest, DataWakeTheirTasksAndWhatTheyDecideIsUrgent) {
  Observer observer(*store_, queue_, notifications_, processing());
  TaskProcessorScreenTimeObserver screen(*store_, queue_, notifications_, processing());
  screen.observe({screenTime(2, true), screenTime(3, false)});
  const auto use = [&](std::uint32_t number, T type) {
    store_->save(std::vector{sample(number, type, 0, 10, qz::QZHKQuantity{60, QZHKUnit::second}, "reader")});
  };
  use(1, T::applicationUsage);
  EXPECT_EQ(events_.next(), "pass 2");
  queue_.drain();
  pass_ = [] { return TaskProcessorReport{.tasks = 1, .changed = 1, .decided = 1}; };
  use(2, T::websiteUsage);
  EXPECT_EQ(events_.next(), "pass 2");
  EXPECT_EQ(events_.next(), Observer::taskWasUpdatedInBackgroundByHealthKitHighPriority);
  screen.stop();

  pass_ = [] { return TaskProcessorReport{.tasks = 1, .changed = 1}; };
  const auto query = Observer::observerQueriesForTasks({walking(7)}).front();
  observer.observe({walking(7)});
  const auto updateIn = [&](ApplicationState state) {
    std::promise<void> completed;
    observer.processBackgroundHealthKitData(query, state, LayoutDirection::leftToRight,
                                            [&completed] { completed.set_value(); });
    completed.get_future().wait();
    queue_.drain();
    EXPECT_EQ(events_.next(), "pass 7");
    return events_.next();
  };
  EXPECT_EQ(updateIn(ApplicationState::background), Observer::taskWasUpdatedInBackgroundByHealthKitLowPriority);
  EXPECT_EQ(updateIn(ApplicationState::active), Observer::taskWasUpdatedInBackgroundByHealthKitHighPriority);
  EXPECT_TRUE(events_.isEmpty());
}

TEST_F(TaskProcessorObserverTest, DataThatComeDuringAPassAreSeenByOneMore) {
  Observer observer(*store_, queue_, notifications_, processing());
  observer.observe({walking(1)});
  const auto query = Observer::observerQueriesForTasks({walking(1)}).front();
  std::promise<void> goOn;
  pass_ = [this, wait = goOn.get_future().share()] {
    wait.wait();
    return TaskProcessorReport{.tasks = 1};
  };
  const auto dataCome = [&] {
    bool isRefused = false;
    observer.processBackgroundHealthKitData(query, ApplicationState::background, LayoutDirection::leftToRight,
                                            [&isRefused] { isRefused = true; });
    return isRefused;
  };
  queue_.sync([&] {
    observer.processBackgroundHealthKitData(query, ApplicationState::background, LayoutDirection::leftToRight, nullptr);
    EXPECT_TRUE(dataCome()) << "a pass waits that will see them";
  });
  EXPECT_EQ(events_.next(), "pass 1");
  EXPECT_TRUE(dataCome());
  EXPECT_TRUE(dataCome());
  EXPECT_TRUE(events_.isEmpty());
  goOn.set_value();
  EXPECT_EQ(events_.next(), "pass 1");
  queue_.drain();
  EXPECT_TRUE(events_.isEmpty()) << "one more for all that came";
}

TEST_F(TaskProcessorObserverTest, AfterStoppingNothingRuns) {
  std::atomic<bool> isRunning = false;
  pass_ = [&] {
    isRunning = true;
    std::this_thread::yield();
    isRunning = false;
    return TaskProcessorReport{.tasks = 1};
  };
  for (int round = 0; round < 30; ++round) {
    Observer observer(*store_, queue_, notifications_, processing());
    observer.observe({});
    observer.observe({walking(1)});
    addSteps();
    EXPECT_EQ(events_.next(), "pass 1");
    addSteps();
    observer.stop();
    EXPECT_FALSE(isRunning);
    queue_.drain();
    while (!events_.isEmpty()) (void)events_.next();
    addSteps();
    observer.observe({walking(2)});
    addSteps();
    EXPECT_EQ(events_.next(), "pass 2");
  }
}

TEST_F(TaskProcessorObserverTest, APassMayStopAndFail) {
  Observer observer(*store_, queue_, notifications_, processing());
  observer.observe({walking(1)});
  pass_ = []() -> TaskProcessorReport { throw std::runtime_error("no"); };
  addSteps();
  EXPECT_EQ(events_.next(), "pass 1");
  queue_.drain();
  pass_ = [&] {
    observer.observe({walking(2)});
    observer.stop();
    events_.add("stopped");
    return TaskProcessorReport{.tasks = 1};
  };
  // Once the failed pass is over, which the queue says.
  const auto query = Observer::observerQueriesForTasks({walking(1)}).front();
  observer.processBackgroundHealthKitData(query, ApplicationState::inactive, LayoutDirection::rightToLeft, nullptr);
  EXPECT_EQ(events_.next(), "pass 1");
  EXPECT_EQ(events_.next(), "stopped");
  queue_.drain();
}

}  // namespace
}  // namespace habitra
