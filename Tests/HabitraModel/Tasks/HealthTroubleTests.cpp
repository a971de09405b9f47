#include <HabitraModel/Health/SampleStore.h>
#include <HabitraModel/Tasks/Processing/TaskClaim.h>
#include <QZHealthKit/QZHealthStoreError.h>

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <utility>

#include "TaskWorld.h"

namespace habitra {
namespace {

using O = qz::QZHKObjectType;
using qz::YYYYMMDD;
using Log = std::vector<std::string>;
using Lifetime = TaskProcessor::Lifetime;

/// The samples of another store, which sometimes cannot be reached.
class TroubledHealthStore final : public qz::QZHealthStore {
 public:
  std::function<void()> beforeReading = [] {};
  bool isReachable = true;
  bool answersWhetherThereAreData = true;
  mutable int figuresAsked = 0;
  int refusals = 0;                 ///< of observations to come
  std::vector<qz::UniqueID> asked;  ///< to be observed

  [[nodiscard]] bool isHealthDataAvailable() const noexcept override {
    return isReachable && answersWhetherThereAreData && store_->isHealthDataAvailable();
  }
  [[nodiscard]] std::vector<qz::QZHKSample> samples(const qz::QZHKSampleQuery& query) const override {
    return store_->samples(query);
  }
  [[nodiscard]] qz::QZHKStatistics statistics(const qz::QZHKStatisticsQuery& query) const override {
    ++figuresAsked;
    beforeReading();
    return store_->statistics(query);
  }
  [[nodiscard]] std::optional<qz::QZHKActivitySummary> activitySummary(const qz::QZHKSpan& day) const override {
    return store_->activitySummary(day);
  }
  [[nodiscard]] std::set<qz::UniqueID> known(std::span<const qz::UniqueID> identifiers) const override {
    return store_->known(identifiers);
  }
  [[nodiscard]] qz::QZHKChanges changesSince(std::int64_t number) const override {
    if (!isReachable) fail();
    return store_->changesSince(number);
  }
  void save(std::span<const qz::QZHKSample> samples) override { store_->save(samples); }
  void remove(std::span<const qz::UniqueID> identifiers) override { store_->remove(identifiers); }
  void startObserving(const qz::QZHKObserverQuery& query, ChangeHandler handler) override {
    asked.push_back(query.identifier);
    if (refusals > 0 && refusals-- > 0) fail();
    store_->startObserving(query, std::move(handler));
  }
  void stopObserving(const qz::UniqueID& identifier) noexcept override { store_->stopObserving(identifier); }

  [[noreturn]] static void fail() {
    throw qz::QZHealthStoreError(qz::QZHealthStoreError::Reason::storage, "out of reach");
  }

 private:
  std::unique_ptr<SampleStore> store_ = SampleStore::inMemory();
};

class HealthTrouble : public TaskWorld {
 protected:
  TaskEntity& addAutomatic(AutomaticTaskType type) {
    TaskEntity& task = addTask();
    setAutomaticType(task, type);
    context_->save({});
    return task;
  }
  TaskEntity& addSteps() {
    return addAutomatic({.type = AutomaticTaskType::TaskType::healthKit(HealthType::runOrWalk),
                         .quantity = 10'000,
                         .unit = TypeUnit::steps,
                         .speeds = {}});
  }
  void walk(std::string_view day, double steps) {
    const qz::Moment start = at(std::string(day) + "T10:00:00Z");
    const qz::QZHKSample sample{.identifier = qz::UniqueID::generate(clock_->now()),
                                .objectType = O::stepCount,
                                .start = start,
                                .end = start + std::chrono::minutes(10),
                                .value = qz::QZHKQuantity{steps, qz::QZHKUnit::count},
                                .source = "Watch",
                                .device = std::nullopt,
                                .task = std::nullopt};
    health_.save(std::span(&sample, 1));
  }
  TaskProcessor::Environment environment() {
    auto withHealth = TestProgram::environment();
    withHealth.health = &health_;
    return withHealth;
  }
  TaskProcessorReport pass() { return walking_.processAllTasks(*context_, clock_->now()); }
  std::string dayOf(const TaskEntity& task, std::string_view day) {
    for (const std::string& line : log(task))
      if (line.starts_with(day)) return line.substr(day.size() + 1);
    return "";
  }

  TroubledHealthStore health_;
  TaskProcessor walking_{environment()};
};

TEST_F(HealthTrouble, LeavesATaskAsItIsUntilItsDataCanBeRead) {
  TaskEntity& task = addSteps();
  TaskEntity& plain = addTask("Plain");
  walk("2024-01-31", 100);
  const auto fails = [this] { return pass().failure != nullptr; };
  const std::vector<std::function<void()>> troubles{
      [&] {
        health_.beforeReading = [] { TroubledHealthStore::fail(); };
        EXPECT_TRUE(fails());
      },
      [&] {
        health_.answersWhetherThereAreData = false;
        health_.beforeReading = [] { TroubledHealthStore::fail(); };
        EXPECT_TRUE(fails()) << "it told of changes, and could be read no more then";
      },
      [&] {
        health_.isReachable = false;
        EXPECT_TRUE(fails()) << "it has no data by its own word";
        context_->beginUnit();
        walking_.process(*context_, task, clock_->now());
        EXPECT_FALSE(context_->hasChanges());
        context_->rollback();
      },
      [&] {
        health_.beforeReading = [] { throw std::runtime_error("a mistake"); };
        EXPECT_TRUE(fails());
      },
      [&] {
        const auto claim = TaskClaim::make(context_->storeIdentifier(), task.objectID);
        EXPECT_FALSE(fails()) << "whoever has it processes it";
      },
  };
  YYYYMMDD late(2024, 2, 5);
  clock_->set(at("2024-02-20T12:00:00Z"));
  for (const auto& trouble : troubles) {
    EXPECT_FALSE(fails());
    const auto processed = task.lastProcessedDate;
    clock_->advance(std::chrono::hours(24));
    walk(late.debugDescription(), 20'000);
    trouble();
    EXPECT_FALSE(context_->isInUnit());
    EXPECT_EQ(task.lastProcessedDate, processed);
    EXPECT_EQ(plain.lastProcessedDate, clock_->now()) << "others go on";
    health_.beforeReading = [] {};
    health_.isReachable = true;
    health_.answersWhetherThereAreData = true;
    EXPECT_FALSE(fails());
    EXPECT_EQ(dayOf(task, std::to_string(storedDay(late))), "completedAutomaticallyFull");
    late = late.nextDay();
  }
  const auto sequence = context_->sequence();
  EXPECT_EQ(pass().changed, 0u);
  EXPECT_EQ(context_->sequence(), sequence);
}

TEST_F(HealthTrouble, YearsThatChangeNothingAreMeasuredOnce) {
  AutomaticTaskType type{.type = AutomaticTaskType::TaskType::healthKit(HealthType::workout),
                         .quantity = 30,
                         .unit = TypeUnit::durationMinutes};
  type.extra.emplace().workoutTypes = {WorkoutType::cycling};
  addAutomatic(type);
  clock_->set(at("2024-06-20T12:00:00Z"));
  const auto run = [this](YYYYMMDD day) {
    const qz::Moment start = at(day.debugDescription() + "T10:00:00Z");
    return qz::QZHKSample{.identifier = qz::UniqueID::generate(clock_->now()),
                          .objectType = O::workout,
                          .start = start,
                          .end = start + std::chrono::minutes(30),
                          .value = qz::QZHKWorkout{WorkoutType::running, {}, {}},
                          .source = "Watch",
                          .device = std::nullopt,
                          .task = std::nullopt};
  };
  health_.save(std::vector{run(YYYYMMDD(2024, 2, 1))});
  pass();
  std::vector<qz::QZHKSample> runs;
  for (int day = 0; day < 20; ++day) runs.push_back(run(YYYYMMDD(2024, 2, 5).add(day)));
  health_.save(runs);
  EXPECT_EQ(pass().changed, 0u);
  health_.figuresAsked = 0;
  EXPECT_EQ(pass().changed, 0u);
  EXPECT_LE(health_.figuresAsked, 3) << "of the last days alone";
}

TEST_F(HealthTrouble, WhatCouldNotBeObservedIsTriedAgainWithEachPassUntilItCan) {
  const auto screen = AutomaticTaskType::TaskType::screenTime();
  AutomaticTaskType watched = AutomaticTaskType::ofNewTask(screen, TaskFrequencyPeriodType::day);
  ScreenTimeSettings settings;
  settings.setFamilyActivitySelection(FamilyActivitySelection{.applications = {"reader"}});
  watched.extra = TypeExtra{.screenTimeSettings = settings};
  const auto screenID = *qz::UniqueID::fromText(*addAutomatic(watched).uniqueId);
  const auto stepsID = *qz::UniqueID::fromText(*addSteps().uniqueId);
  const auto dayPasses = [this] {
    health_.asked.clear();
    walking_.calendarDayChanged();
    for (int follower = 0; follower < 3; ++follower) {
      walking_.waitForPasses();
      mainQueue_.drain();
    }
    return health_.asked;
  };
  walking_.applicationDidFinishLaunching(Lifetime::resident);
  EXPECT_EQ(health_.asked, std::vector{screenID}) << "there are no health data yet";
  walk("2024-01-31", 100);
  health_.refusals = 2;
  EXPECT_EQ(dayPasses(), std::vector{stepsID});
  EXPECT_EQ(dayPasses(), std::vector{stepsID});
  EXPECT_EQ(dayPasses(), std::vector{stepsID}) << "observed at last";
  EXPECT_EQ(dayPasses(), std::vector<qz::UniqueID>{});
  walking_.stopObserving();
}

TEST_F(HealthTrouble, WhatSomebodyElseHasDoneMeanwhileIsNotDoneAgain) {
  TaskEntity& task = addSteps();
  walk("2024-01-31", 4000);
  pass();
  const auto statusDate = task.statusDate;
  task.statusDate = std::nullopt;
  context_->save({});
  const auto other = manager_.context();
  health_.beforeReading = [&, isDone = false]() mutable {
    if (std::exchange(isDone, true)) return;
    other->find<TaskEntity>(task.objectID)->statusDate = statusDate;
    other->save({});
  };
  EXPECT_EQ(pass().changed, 0u);
  other->refresh();
  EXPECT_EQ(context_->sequence(), other->sequence());
  EXPECT_FALSE(context_->isInUnit());
}

TEST_F(HealthTrouble, AProcessorThatIsGoneHasNothingLeftToDoOnTheMainQueue) {
  addSteps();
  walk("2024-01-31", 4000);
  {
    TaskProcessor gone(environment());
    gone.applicationDidFinishLaunching(Lifetime::resident);
    clock_->advance(std::chrono::hours(24));
    gone.calendarDayChanged();
    gone.waitForPasses();
  }
  const auto asked = health_.asked;
  mainQueue_.drain();
  EXPECT_EQ(health_.asked, asked);
}

}  // namespace
}  // namespace habitra
