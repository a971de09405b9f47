#include <HabitraModel/Health/SampleStore.h>
#include <HabitraModel/Store/Entities/HealthKitRequestEntity.h>
#include <HabitraModel/Tasks/Processing/PendingHealthRequests.h>
#include <HabitraModel/Tasks/Processing/TaskProcessorSingleTaskOperation.h>
#include <HabitraModel/Tasks/Recording/HealthWriteRequest.h>
#include <HabitraModel/UndoStack.h>
#include <QZHealthKit/QZHealthStoreError.h>

#include <fmt/format.h>
#include <functional>
#include <set>
#include <span>
#include <utility>

#include "TaskWorld.h"

namespace habitra {
namespace {

using Type = TaskLogEntryType;
using Report = PendingHealthRequests::Report;
using qz::YYYYMMDD;
constexpr YYYYMMDD today(2024, 1, 31);

/// The samples of another store, with a step before each change of them.
class TappedHealthStore final : public qz::QZHealthStore {
 public:
  explicit TappedHealthStore(qz::QZHealthStore& store) : store_(store) {}
  std::function<void(std::span<const qz::QZHKSample>)> beforeSaving = [](auto) {};
  int changes = 0;

  [[nodiscard]] bool isHealthDataAvailable() const noexcept override { return store_.isHealthDataAvailable(); }
  [[nodiscard]] std::vector<qz::QZHKSample> samples(const qz::QZHKSampleQuery& query) const override {
    return store_.samples(query);
  }
  [[nodiscard]] qz::QZHKStatistics statistics(const qz::QZHKStatisticsQuery& query) const override {
    return store_.statistics(query);
  }
  [[nodiscard]] std::optional<qz::QZHKActivitySummary> activitySummary(const qz::QZHKSpan& day) const override {
    return store_.activitySummary(day);
  }
  [[nodiscard]] std::set<qz::UniqueID> known(std::span<const qz::UniqueID> identifiers) const override {
    return store_.known(identifiers);
  }
  [[nodiscard]] qz::QZHKChanges changesSince(std::int64_t number) const override { return store_.changesSince(number); }
  void save(std::span<const qz::QZHKSample> samples) override {
    ++changes;
    beforeSaving(samples);
    store_.save(samples);
  }
  void remove(std::span<const qz::UniqueID> identifiers) override {
    ++changes;
    store_.remove(identifiers);
  }
  void startObserving(const qz::QZHKObserverQuery& query, ChangeHandler handler) override {
    store_.startObserving(query, std::move(handler));
  }
  void stopObserving(const qz::UniqueID& identifier) noexcept override { store_.stopObserving(identifier); }

 private:
  qz::QZHealthStore& store_;
};

/// A habit of drinking water, whose completions are written to the health store.
class PendingHealthRequestsTest : public TaskWorld {
 protected:
  PendingHealthRequestsTest() {
    auto type = AutomaticTaskType::ofNewTask(AutomaticTaskType::TaskType::healthKit(HealthType::dietaryDrinkWater),
                                             TaskFrequencyPeriodType::day);
    type.quantity = 2.0;
    type.unit = TypeUnit::litres;
    setAutomaticType(water_, type);
    context_->save({});
  }

  /// So much has been drunk on the day; by default as a person's command.
  void drink(double litres, Type type = Type::completedManuallyPartial, const SaveRequest& save = {.command = "done"}) {
    auto data = entry(water_, type, today);
    data.progressValue = litres;
    recorder_.recordNow(water_, {.managedObjectContext = *context_,
                                 .context = TaskModifyContext::userInitiatedFromMainApp,
                                 .saveContext = false,
                                 .logEntries = {data},
                                 .createdTimestamp = clock_->now(),
                                 .createdTimeZone = qz::TimeZone::utc(),
                                 .recordToHealthKitIfNecessary = true});
    context_->save(save);
  }
  Report pass() {
    Report report = requests_.processPendingHealthKitRequests(*context_, clock_->now());
    changed_ = std::exchange(report.changed, {});
    return report;
  }
  [[nodiscard]] std::vector<double> litres() const {
    std::vector<double> amounts;
    for (const auto& sample : samples_->samples({.objectType = qz::QZHKObjectType::dietaryWater,
                              .span = {qz::Moment::min(), qz::Moment::max()},
                              .predicate = {}}))
      amounts.push_back(sample.quantity().value().value);
    std::ranges::sort(amounts);
    return amounts;
  }
  std::vector<std::string> statuses() {
    context_->refresh();
    std::vector<std::string> result;
    for (const auto* row : context_->fetchAll<HealthKitRequestEntity>()) result.push_back(row->status.value_or("none"));
    return result;
  }

  std::unique_ptr<TaskProcessor> processorWithHealth() {
    TaskProcessor::Environment withHealth = environment();
    withHealth.health = &health_;
    return std::make_unique<TaskProcessor>(withHealth);
  }

  TaskEntity& water_ = addTask("Water");
  std::unique_ptr<SampleStore> samples_ = SampleStore::inMemory();
  TappedHealthStore health_{*samples_};
  std::shared_ptr<KeyValueDefaults> defaults_ = KeyValueDefaults::inMemory();
  PendingHealthRequests requests_{health_, *defaults_};
  std::set<qz::QZHKObjectType> changed_;  ///< by the last pass
};

TEST_F(PendingHealthRequestsTest, WhatIsPendingIsWrittenOnceAndThenNothing) {
  drink(0.5);
  drink(0.75);
  context_->insert(HealthKitRequestEntity{.data = Bytes{1, 2}, .status = "pending", .type = "dietaryWater"});
  context_->save({});
  clock_->advance(std::chrono::hours(1));
  EXPECT_EQ(pass(), (Report{.written = 2, .failed = 1}));
  EXPECT_EQ(litres(), (std::vector{0.25, 0.5}));
  EXPECT_EQ(statuses(), (std::vector<std::string>{"done", "done", "failed"}));
  EXPECT_EQ(context_->fetchAll<HealthKitRequestEntity>().front()->statusDate, clock_->now());
  const auto before = context_->sequence();
  health_.changes = 0;
  for (int again = 0; again < 3; ++again) EXPECT_EQ(pass(), Report{});
  EXPECT_EQ(context_->sequence(), before);
  EXPECT_EQ(health_.changes, 0);

  const auto kept = [&] {
    return HistoryToken::fromText(*defaults_->get<std::string>(requests_.historyKey))->sequence;
  };
  const auto rename = [&](int times) {
    for (int i = 0; i < times; ++i) {
      water_.title = fmt::format("Water {} {}", times, i);
      context_->save({.command = "edit"});
    }
    EXPECT_EQ(pass(), Report{});
  };
  EXPECT_GE(kept(), before - 1) << "what was read of requests is not read again";
  rename(1);
  EXPECT_LE(kept(), before) << "what concerns no request costs no write";
  rename(300);
  EXPECT_GT(kept(), before) << "many are not looked through each time";
}

TEST_F(PendingHealthRequestsTest, WhatIsUndoneIsTakenOutAndWhatIsRedoneComesBack) {
  const UndoStack stack(calendars_);
  const auto undo = [&] { context_->save(stack.undo(*context_).saveRequest(Author::app, "undo")); };
  const auto redo = [&] { context_->save(stack.redo(*context_).saveRequest(Author::app, "redo")); };
  drink(0.5);
  undo();
  EXPECT_EQ(pass(), Report{}) << "it was never written";
  redo();
  EXPECT_EQ(pass(), Report{.written = 1});
  undo();
  EXPECT_EQ(pass(), Report{.removed = 1});
  EXPECT_TRUE(litres().empty());
  redo();
  EXPECT_EQ(pass(), Report{});
  EXPECT_EQ(litres(), std::vector{0.5});
  undo();
  redo();
  (void)pass();
  EXPECT_EQ(litres(), std::vector{0.5}) << "what there is now decides";
}

TEST_F(PendingHealthRequestsTest, ASampleOfAnEntryThatIsGoneIsMeasuredNoMore) {
  const auto process = [this] {
    return TaskProcessorSingleTaskOperation({.calendars = calendars_,
                                             .recorder = recorder_,
                                             .health = &health_,
                                             .sharedTasks = receivers_.sharedTasks,
                                             .standardDefaults = defaults_.get()},
                                            *context_, water_, TaskModifyContext::userInitiatedFromMainApp,
                                            LayoutDirection::leftToRight, true, clock_->now());
  };
  drink(2.0);
  EXPECT_EQ(pass().written, 1U);
  EXPECT_EQ(changed_, std::set{qz::QZHKObjectType::dietaryWater});
  context_->beginUnit();
  for (const TaskLogEntryEntity& row : context_->fetchLogEntries(water_.objectID)) context_->removeLogEntry(row.key());
  EXPECT_FALSE(process().runInUnit().decidedPeriod);
  context_->rollback();
  const UndoStack stack(calendars_);
  context_->save(stack.undo(*context_).saveRequest(Author::app, "undo"));
  EXPECT_FALSE(process().run().decidedPeriod) << "what was undone is not drunk again";
  EXPECT_TRUE(log(water_).empty());
  context_->save(stack.redo(*context_).saveRequest(Author::app, "redo"));
  EXPECT_TRUE(process().run().decidedPeriod);
  (void)pass();
  EXPECT_TRUE(changed_.empty()) << "the sample is there already";
}

TEST_F(PendingHealthRequestsTest, OnePassFollowsOnceTheHealthStoreHasChanged) {
  const auto processor = processorWithHealth();
  drink(0.5);
  (void)processor->processAllTasks(*context_, clock_->now());
  EXPECT_EQ(litres(), std::vector{0.5});
  const std::vector<std::string> both{"20240131 completedManuallyPartial", "20240131 completedAutomaticallyPartial"};
  EXPECT_EQ(log(water_), both);
  const auto sequence = context_->sequence();
  EXPECT_EQ(processor->processAllTasks(*context_, clock_->now()).changed, 0U);
  EXPECT_EQ(context_->sequence(), sequence);
}

TEST_F(PendingHealthRequestsTest, WhatFollowsInTheTasksWaitsWhilePassesAreHeld) {
  const auto processor = processorWithHealth();
  processor->applicationDidFinishLaunching(TaskProcessor::Lifetime::command);
  mainQueue_.drain();
  {
    const TaskProcessor::BulkDataUpdate update(*processor);
    drink(0.5);
    const auto sequence = context_->sequence();
    const auto before = log(water_);
    processor->processPendingHealthKitRequests(*context_);
    EXPECT_EQ(litres(), std::vector{0.5});
    EXPECT_EQ(log(water_), before);
    processor->waitForPasses();
    context_->refresh();
    EXPECT_EQ(log(water_), before);
    EXPECT_LE(context_->sequence(), sequence + 1) << "of the request alone";
  }
  processor->waitForPasses();
  context_->refresh();
  EXPECT_EQ(log(water_).back(), "20240131 completedAutomaticallyPartial");
}

TEST_F(PendingHealthRequestsTest, WhatAHealthStoreHasIsAskedOfIt) {
  setAutomaticType(water_,
                   AutomaticTaskType{.type = AutomaticTaskType::TaskType::healthKit(HealthType::handwashingEvent)});
  TaskFrequency inFour = TaskFrequency::everyDay();
  inFour.numPartialCompletions = 4;
  setFrequency(water_, inFour);
  context_->save({});
  const auto processor = processorWithHealth();
  const auto progress = [&] {
    (void)processor->processAllTasks(*context_, clock_->now());
    return figures(water_).progress;
  };
  drink(1);
  EXPECT_DOUBLE_EQ(progress(), 0.25);
  auto washed = samples_->samples({.objectType = qz::QZHKObjectType::handwashingEvent,
                                   .span = {qz::Moment::min(), qz::Moment::max()},
                                   .predicate = {}});
  ASSERT_EQ(washed.size(), 1U);
  const qz::UniqueID written = std::exchange(washed[0].identifier, qz::UniqueID::generate(clock_->now()));
  health_.save(washed);
  EXPECT_DOUBLE_EQ(progress(), 0.5);
  health_.remove(std::span(&written, 1));
  EXPECT_DOUBLE_EQ(progress(), 0.5) << "the first time counts by its entry now";
}

TEST_F(PendingHealthRequestsTest, AnotherEntryInItsPlaceTakesTheSampleOut) {
  drink(0.5);
  drink(0.75);
  EXPECT_EQ(pass().written, 2U);
  // Nothing but the health store lets go of what no person's command can bring back.
  drink(2.0, Type::completedManuallyFull, {});
  EXPECT_EQ(pass(), (Report{.written = 1, .removed = 2}));
  EXPECT_EQ(litres(), std::vector{2.0});
  context_->remove(water_);
  context_->save({.command = "delete Water"});
  EXPECT_EQ(pass(), Report{});
  EXPECT_EQ(litres(), std::vector{2.0}) << "the habit is gone, not what was drunk";
}

TEST_F(PendingHealthRequestsTest, AnEntryThatGoesWhileItsSampleIsWrittenTakesItAlong) {
  drink(0.5);
  const auto other = manager_.context();
  health_.beforeSaving = [&](auto) {
    for (const TaskLogEntryEntity& row : other->fetchLogEntries(water_.objectID)) other->removeLogEntry(row.key());
    other->save({});
  };
  EXPECT_EQ(pass(), (Report{.removed = 1}));
  EXPECT_TRUE(litres().empty());
}

TEST_F(PendingHealthRequestsTest, ADiskThatIsFullLeavesThemPending) {
  using Error = qz::QZHealthStoreError;
  drink(0.5);
  health_.beforeSaving = [](auto) { throw Error(Error::Reason::storage, "no room"); };
  EXPECT_EQ(pass(), (Report{.left = 1}));
  EXPECT_EQ(statuses(), std::vector<std::string>{"pending"});
  drink(0.75);
  health_.beforeSaving = [](std::span<const qz::QZHKSample> samples) {
    for (const auto& sample : samples)
      if (sample.quantity()->value == 0.5) throw Error(Error::Reason::invalidSample, "half a litre");
  };
  EXPECT_EQ(pass(), (Report{.written = 1, .failed = 1}));
  EXPECT_EQ(litres(), std::vector{0.25}) << "one that is refused costs the others nothing";
}

TEST_F(PendingHealthRequestsTest, PassesThatOverlapWriteOnce) {
  drink(0.5);
  const auto other = manager_.context();
  PendingHealthRequests ofOtherProcess(*samples_, *defaults_);
  health_.beforeSaving = [&](auto) {
    EXPECT_EQ(requests_.processPendingHealthKitRequests(*other, clock_->now()), Report{}) << "it is running";
    EXPECT_EQ(ofOtherProcess.processPendingHealthKitRequests(*other, clock_->now()).written, 1U);
  };
  EXPECT_EQ(pass(), Report{});
  EXPECT_EQ(litres(), std::vector{0.5});
  EXPECT_EQ(statuses(), std::vector<std::string>{"done"});
}

}  // namespace
}  // namespace habitra
