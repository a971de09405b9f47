#include <HabitraModel/Store/Entities/TaskShareEntity.h>
#include <HabitraModel/Store/Entities/TaskShareOwnerEntity.h>
#include <HabitraModel/Tasks/Recording/HealthWriteRequest.h>

#include <functional>
#include <stdexcept>
#include <utility>

#include "TaskWorld.h"

namespace habitra {
namespace {

using Type = TaskLogEntryType;
using Notify = TaskLogRecorder::NotifyPairedDeviceType;
using qz::YYYYMMDD;
constexpr YYYYMMDD today(2024, 1, 31);

/// What a recorder does beside writing the row.
class RecorderEffects : public TaskWorld {
 protected:
  TaskLogRecorder::Request requestFor(std::vector<TaskLogRecorder::LogEntryData> entries,
                                      TaskModifyContext context = TaskModifyContext::userInitiatedFromMainApp) {
    return {.managedObjectContext = *context_,
            .context = context,
            .logEntries = std::move(entries),
            .createdTimestamp = clock_->now(),
            .createdTimeZone = qz::TimeZone::utc()};
  }
  void share(const TaskEntity& task, ObjectID owner = ObjectID::none) {
    context_->insert(TaskShareEntity{.owner = owner, .task = task.objectID});
    context_->save({});
  }
  std::vector<ObjectID> waiting(OutboxLink link) {
    std::vector<ObjectID> tasks;
    for (const OutboxItem& item : context_->outbox(link)) tasks.push_back(item.task);
    return tasks;
  }
  TaskEntity& addMeasured(HealthType type, double quantity, TypeUnit unit) {
    TaskEntity& task = addTask();
    auto measured =
        AutomaticTaskType::ofNewTask(AutomaticTaskType::TaskType::healthKit(type), TaskFrequencyPeriodType::day);
    measured.quantity = quantity;
    measured.unit = unit;
    setAutomaticType(task, measured);
    context_->save({});
    return task;
  }
  /// What the health store is to be told of one entry.
  std::optional<qz::QZHKSample> sampleFor(TaskEntity& task, TaskLogRecorder::LogEntryData entry) {
    auto request = requestFor({std::move(entry)});
    request.recordToHealthKitIfNecessary = true;
    request.healthKitDevice = "watch";
    recorder_.recordNow(task, request);
    const auto rows = context_->fetchAll<HealthKitRequestEntity>();
    if (rows.empty()) return std::nullopt;
    EXPECT_EQ(rows.back()->status, "pending");
    EXPECT_EQ(rows.back()->created, clock_->now());
    EXPECT_EQ(rows.back()->statusDate, clock_->now());
    const auto written = HealthWriteRequest::of(*rows.back());
    return written ? std::optional(written->sample) : std::nullopt;
  }
};

TEST_F(RecorderEffects, ATaskOfAnotherPersonIsLeftAlone) {
  TaskEntity& own = addTask();
  TaskEntity& foreign = addTask("Foreign");
  share(own);
  share(foreign, context_->insert(TaskShareOwnerEntity{}).objectID);
  EXPECT_EQ(messageOf(record(own, Type::completedManuallyFull, today)), "");
  const auto before = context_->sequence();
  EXPECT_EQ(messageOf(record(foreign, Type::completedManuallyFull, today)), "Unable to record to task shared with me");
  EXPECT_EQ(context_->sequence(), before);
  EXPECT_EQ(receivers_.widgets.reloads, 1) << "for the own task";
  EXPECT_EQ(waiting(OutboxLink::sharedTask), std::vector{own.objectID});

  context_->insert(TaskShareEntity{.statusUpdated = clock_->now(), .task = foreign.objectID});
  context_->save({});
  EXPECT_EQ(messageOf(record(foreign, Type::completedManuallyFull, today)), "") << "of two rows the newer one counts";
}

/// A link whose outbox is broken.
class BrokenLink : public TaskLink {
 public:
  void put(StoreContext&, const TaskEntity&, qz::Moment) override { throw std::out_of_range("no outbox"); }
  void deliver(std::function<void()>) override {}
};

TEST_F(RecorderEffects, AnyFailureIsToldToWhoeverWaits) {
  BrokenLink link;
  TaskLogRecorder recorder(calendars_, mainQueue_, {link, link, receivers_.widgets});
  TaskEntity& task = addTask();
  auto request = requestFor({entry(task, Type::completedManuallyFull, today)});
  request.notifyPairedDevice = Notify::immediate;
  std::string message;
  recorder.record(task, request, [&](const std::exception_ptr& error) { message = messageOf(error); });
  mainQueue_.drain();
  EXPECT_EQ(message, "no outbox");
  EXPECT_FALSE(context_->isInUnit());
  EXPECT_TRUE(log(task).empty());
}

TEST_F(RecorderEffects, AnInitialStreakNeverTouchesTheCloud) {
  TaskEntity& task = addTask();
  share(task);
  recorder_.record(
      task,
      requestFor({entry(task, Type::completedManuallyFull, today)},
                 TaskModifyContext::userInitiatedPopulateInitialStreak),
      [](std::exception_ptr) {}, true);
  EXPECT_TRUE(waiting(OutboxLink::sharedTask).empty());
  EXPECT_EQ(receivers_.widgets.reloads, 1);
}

TEST_F(RecorderEffects, ATaskWaitsInTheOutboxOnceAndAsLongAsAsked) {
  TaskEntity& task = addTask();
  const auto notify = [&](Notify type) {
    auto request = requestFor({entry(task, Type::completedManuallyFull, today)});
    request.notifyPairedDevice = type;
    recorder_.record(task, request, [](std::exception_ptr) {});
  };
  notify(Notify::none);
  EXPECT_TRUE(waiting(OutboxLink::watch).empty());
  notify(Notify::delayed);
  const OutboxItem first = context_->outbox(OutboxLink::watch).at(0);
  EXPECT_EQ(first.due, clock_->now() + TaskLogRecorder::batchingInterval);
  notify(Notify::delayed);
  notify(Notify::immediate);
  const OutboxItem second = context_->outbox(OutboxLink::watch).at(0);
  EXPECT_EQ(second, (OutboxItem{.task = task.objectID, .due = clock_->now(), .revision = 3}));
  context_->removeFromOutbox(OutboxLink::watch, first);
  context_->save({});
  EXPECT_EQ(waiting(OutboxLink::watch).size(), 1u) << "it changed while it was told of";
  context_->removeFromOutbox(OutboxLink::watch, second);
  context_->save({});
  EXPECT_TRUE(waiting(OutboxLink::watch).empty());
  notify(Notify::immediate);
  context_->remove(task);
  context_->save({});
  EXPECT_TRUE(waiting(OutboxLink::watch).empty()) << "there is nobody left to tell of";
}

/// A cloud that answers when it is told to.
class SlowCloud : public TaskLink {
 public:
  void put(StoreContext&, const TaskEntity&, qz::Moment) override {}
  void deliver(std::function<void()> finished) override { finished_ = std::move(finished); }
  [[nodiscard]] bool isAsked() const { return finished_ != nullptr; }
  void answer() { std::exchange(finished_, nullptr)(); }

 private:
  std::function<void()> finished_;
};

TEST_F(RecorderEffects, TheCompletionWaitsForTheCloudWhereItMay) {
  SlowCloud cloud;
  TaskLogRecorder recorder(calendars_, mainQueue_, {receivers_.watch, cloud, receivers_.widgets});
  TaskEntity& task = addTask();
  int completed = 0;
  const auto record = [&](TaskModifyContext context, bool canWait) {
    recorder.record(
        task, requestFor({entry(task, Type::completedManuallyFull, today)}, context),
        [&](std::exception_ptr error) { completed += error == nullptr; }, canWait);
    mainQueue_.drain();
    return std::exchange(completed, 0);
  };
  EXPECT_EQ(record(TaskModifyContext::userInitiatedFromMainApp, false), 1);
  EXPECT_EQ(record(TaskModifyContext::userInitiatedFromDeepLink, true), 1);
  EXPECT_EQ(record(TaskModifyContext::userInitiatedFromShortcut, true), 0);
  cloud.answer();
  EXPECT_EQ(completed, 0) << "not before the main queue runs";
  mainQueue_.drain();
  EXPECT_EQ(completed, 1);

  auto unsaved = requestFor({entry(task, Type::unknown, today)});
  unsaved.saveContext = false;
  recorder.record(
      task, unsaved, [](std::exception_ptr) {}, true);
  EXPECT_FALSE(cloud.isAsked()) << "nothing is told that was not saved";
  context_->save({});
  const TaskLogRecorder::Receivers receivers{receivers_.watch, cloud, receivers_.widgets};
  TaskLogRecorder::deliverSaved(receivers, TaskModifyContext::userInitiatedPopulateInitialStreak);
  EXPECT_FALSE(cloud.isAsked());
  TaskLogRecorder::deliverSaved(receivers, unsaved.context);
  EXPECT_TRUE(cloud.isAsked());
}

TEST_F(RecorderEffects, WhatAnEntryRefutesGoesAtOnce) {
  TaskEntity& task = addTask();
  setFrequency(task, {.dayMode = TaskFrequency::DayMode::dayInterval, .dayInterval = 2});
  task.created = at("2024-01-24T12:00:00Z");
  context_->save({});
  record(task, Type::completedManuallyFull, YYYYMMDD(2024, 1, 24));
  process();
  const auto before = log(task);
  record(task, Type::completedManuallyFull, YYYYMMDD(2024, 1, 25));
  EXPECT_EQ(log(task), (std::vector<std::string>{"20240124 completedManuallyFull", "20240125 completedManuallyFull"}))
      << "all that followed from the day";
  process();
  record(task, Type::unknown, YYYYMMDD(2024, 1, 25));
  process();
  auto after = log(task);
  EXPECT_EQ(std::erase(after, "20240125 unknown"), 1u);
  auto expected = before;
  std::erase(expected, "20240125 skippedAutomaticallyFull");
  std::erase(after, "20240125 skippedAutomaticallyFull");
  EXPECT_EQ(after, expected) << "as if it had never been recorded";
}

TEST_F(RecorderEffects, AMistypedDayTakesTheYearsAlongThatItFilledIn) {
  TaskEntity& task = addTask();
  record(task, Type::completedManuallyFull, YYYYMMDD(2024, 1, 29));
  process();
  const auto before = log(task);
  EXPECT_EQ(before, (std::vector<std::string>{"20240129 completedManuallyFull", "20240130 missedAutomaticallyFull"}));
  const YYYYMMDD mistyped(2023, 1, 29);
  record(task, Type::completedManuallyFull, mistyped);
  process();
  EXPECT_EQ(log(task).size(), 367U);
  record(task, Type::unknown, YYYYMMDD(2023, 6, 1));
  process();
  EXPECT_EQ(log(task).size(), 368U) << "the history begins where it began";
  record(task, Type::unknown, mistyped);
  process();
  auto after = log(task);
  std::erase_if(after, [](const std::string& line) { return line.ends_with(" unknown"); });
  EXPECT_EQ(after, before);
}

TEST_F(RecorderEffects, AnEntryThatMovesToItsRightDayTakesThemAlongAsWell) {
  TaskEntity& task = addTask();
  auto data = entry(task, Type::completedManuallyFull, YYYYMMDD(2023, 1, 29));
  record(task, {data});
  process();
  ASSERT_EQ(log(task).size(), 367U);
  const auto right = entry(task, Type::completedManuallyFull, YYYYMMDD(2024, 1, 29));
  data.period = right.period;
  data.startDate = data.endDate = right.startDate;
  record(task, {data});
  process();
  EXPECT_EQ(log(task),
            (std::vector<std::string>{"20240129 completedManuallyFull", "20240130 missedAutomaticallyFull"}));
}

TEST_F(RecorderEffects, AFailureThatDataReportedIsNotTakenForOneThatWasFilledIn) {
  TaskEntity& task = addTask("Sweets");
  setFrequency(task, {.dayMode = TaskFrequency::DayMode::numberOfDaysInWeek, .numCompletions = 7});
  task.isNegative = true;
  task.created = at("2024-01-22T00:00:00Z");
  context_->save({});
  auto reported = entry(task, Type::missedAutomaticallyFull, YYYYMMDD(2024, 1, 30));
  reported.progressPct = 1.5;
  record(task, {reported});
  const std::vector<std::string> expected{"20240129 unknown", "20240130 missedAutomaticallyFull"};
  record(task, Type::unknown, YYYYMMDD(2024, 1, 29));
  EXPECT_EQ(log(task), expected) << "an earlier day of the week says nothing about it";
  process();
  EXPECT_EQ(log(task), expected);
}

TEST_F(RecorderEffects, FailuresSayWhetherTheyLieWithinTheAllowance) {
  TaskEntity& task = addTask("Smoke");
  setFrequency(task, {.dayMode = TaskFrequency::DayMode::numberOfDaysInWeek, .numCompletions = 6});
  task.isNegative = true;
  task.created = at("2024-01-29T00:00:00Z");
  context_->save({});
  record(task, Type::missedManuallyFull, today);
  EXPECT_EQ(log(task), std::vector<std::string>{"20240131 allowableMissManuallyFull"});
  record(task, Type::missedManuallyFull, today.previousDay());
  EXPECT_EQ(log(task), (std::vector<std::string>{"20240130 allowableMissManuallyFull", "20240131 missedManuallyFull"}))
      << "the earlier one takes the allowance";
  record(task, Type::unknown, today.previousDay());
  EXPECT_EQ(log(task), (std::vector<std::string>{"20240130 unknown", "20240131 allowableMissManuallyFull"}));
}

TEST_F(RecorderEffects, AFailureOfAnIntervalDecidesTheNextOneOnly) {
  TaskEntity& task = addTask("Smoke");
  setFrequency(task, {.dayMode = TaskFrequency::DayMode::dayInterval, .dayInterval = 10});
  task.isNegative = true;
  task.created = at("2023-12-01T00:00:00Z");
  context_->save({});
  for (const int day : {1, 11, 21, 31}) record(task, Type::missedManuallyFull, YYYYMMDD(2024, 1, day));
  record(task, Type::missedManuallyFull, YYYYMMDD(2024, 1, 2));
  const std::vector<std::string> expected{"20240101 allowableMissManuallyFull", "20240102 missedManuallyFull",
                                          "20240111 missedManuallyFull", "20240121 allowableMissManuallyFull",
                                          "20240131 allowableMissManuallyFull"};
  EXPECT_EQ(log(task), expected);
  record(task, Type::unknown, YYYYMMDD(2024, 1, 11));
  record(task, Type::missedManuallyFull, YYYYMMDD(2024, 1, 11));
  EXPECT_EQ(log(task).at(3), "20240111 missedManuallyFull");
}

TEST_F(RecorderEffects, AFailureIsOfTheKindThatTheDayGivesItWhateverWasAskedFor) {
  TaskEntity& weekdays = addTask("Sweets");
  TaskFrequency mondays{.dayMode = TaskFrequency::DayMode::specificDaysOfWeek};
  mondays.days.insert(qz::DayOfWeek(qz::DayOfWeek::monday));
  setFrequency(weekdays, mondays);
  weekdays.isNegative = true;
  weekdays.created = at("2024-01-22T00:00:00Z");
  record(weekdays, Type::missedManuallyFull, YYYYMMDD(2024, 1, 28));
  record(weekdays, Type::allowableMissManuallyFull, YYYYMMDD(2024, 1, 29));
  EXPECT_EQ(log(weekdays),
            (std::vector<std::string>{"20240128 allowableMissManuallyFull", "20240129 missedManuallyFull"}));

  TaskEntity& weekly = addTask("Meat");
  setFrequency(weekly, {.dayMode = TaskFrequency::DayMode::aggregateOverWeek});
  weekly.isNegative = true;
  weekly.created = at("2024-01-22T00:00:00Z");
  auto failure = entry(weekly, Type::allowableMissManuallyFull, today);
  failure.period = DatedPeriod(today, TaskFrequencyPeriodType::week, qz::DayOfWeek::monday);
  record(weekly, {failure});
  EXPECT_EQ(log(weekly), std::vector<std::string>{"20240131 missedManuallyFull"});
}

TEST_F(RecorderEffects, TheLastPartOfAFailureIsTheFailure) {
  TaskEntity& task = addTask("Smoke");
  setFrequency(
      task, {.dayMode = TaskFrequency::DayMode::numberOfDaysInWeek, .numPartialCompletions = 2, .numCompletions = 6});
  task.isNegative = true;
  task.created = at("2024-01-29T00:00:00Z");
  const auto first = entry(task, Type::missedManuallyPartial, today);
  record(task, {first});
  record(task, {first});
  EXPECT_EQ(log(task), std::vector<std::string>{"20240131 missedManuallyPartial"}) << "the same one again";
  record(task, Type::missedManuallyPartial, today);
  EXPECT_EQ(log(task), std::vector<std::string>{"20240131 allowableMissManuallyFull"});
}

TEST_F(RecorderEffects, WhatADeviceReportsLateIsJudgedLikeWhatAPersonRecordsLate) {
  TaskEntity& task = addTask("Smoke");
  setFrequency(task, {.dayMode = TaskFrequency::DayMode::numberOfDaysInWeek, .numCompletions = 6});
  task.isNegative = true;
  task.created = at("2024-01-22T00:00:00Z");
  context_->save({});
  record(task, Type::missedManuallyFull, YYYYMMDD(2024, 1, 25));
  process();
  record(task, Type::missedAutomaticallyPartial, YYYYMMDD(2024, 1, 23));
  process();
  EXPECT_EQ(log(task), (std::vector<std::string>{"20240123 missedAutomaticallyPartial",
                                                 "20240123 missedAutomaticallyFull", "20240125 missedManuallyFull"}));
}

TEST_F(RecorderEffects, AHealthWriteSaysWhatTookPlace) {
  TaskEntity& water = addMeasured(HealthType::dietaryDrinkWater, 2.0, TypeUnit::litres);
  auto drunk = entry(water, Type::completedManuallyPartial, today);
  drunk.progressValue = 0.5;
  const auto glass = sampleFor(water, drunk);
  ASSERT_TRUE(glass);
  EXPECT_EQ(glass->objectType, qz::QZHKObjectType::dietaryWater);
  EXPECT_EQ(glass->quantity(), (qz::QZHKQuantity{0.5, qz::QZHKUnit::litre}));
  EXPECT_EQ(glass->device, "watch");

  drunk.progressValue = 0.75;
  EXPECT_EQ(sampleFor(water, drunk)->quantity(), (qz::QZHKQuantity{0.75, qz::QZHKUnit::litre}));
  EXPECT_EQ(context_->fetchAll<HealthKitRequestEntity>().size(), 1U) << "the same entry, put right";
  EXPECT_EQ(glass->start, glass->end);
  EXPECT_EQ(glass->task->text(), *water.uniqueId);

  auto more = entry(water, Type::completedManuallyPartial, today);
  more.progressPct = 0.5;  // a litre, of which three quarters are known
  EXPECT_EQ(sampleFor(water, more)->quantity(), (qz::QZHKQuantity{0.25, qz::QZHKUnit::litre}));
  const auto written = context_->fetchAll<HealthKitRequestEntity>().size();
  more.uniqueId = qz::UniqueID::generate(clock_->now());
  (void)sampleFor(water, more);
  EXPECT_EQ(context_->fetchAll<HealthKitRequestEntity>().size(), written) << "nothing new";
  auto measured = entry(water, Type::completedAutomaticallyPartial, today);
  measured.progressValue = 1.25;  // a quarter from elsewhere
  record(water, {measured});
  auto all = entry(water, Type::completedManuallyFull, today);
  all.progressValue = 2.0;
  EXPECT_EQ(sampleFor(water, all)->quantity(), (qz::QZHKQuantity{1.75, qz::QZHKUnit::litre}))
      << "what was written for the parts goes with them, what was measured stays";

  TaskEntity& calm = addMeasured(HealthType::mindfulMinutes, 10.0, TypeUnit::durationMinutes);
  auto timed = entry(calm, Type::completedManuallyFull, today);
  timed.timerSummary = TimedTaskEntry{.start = timed.startDate, .finish = timed.endDate, .duration = 90.0};
  const auto session = sampleFor(calm, timed);
  ASSERT_TRUE(session);
  EXPECT_EQ(session->end - session->start, std::chrono::seconds(90));
  EXPECT_EQ(session->start, timed.startDate) << "not on the day before";
  timed.endDate = at("2024-01-31T00:02:00Z");
  EXPECT_EQ(sampleFor(calm, timed)->end, timed.endDate);
  timed.timerSummary->duration = 30 * 3600.0;
  const auto longest = sampleFor(calm, timed);
  EXPECT_EQ(longest->start, timed.startDate);
  EXPECT_EQ(longest->end, at("2024-02-01T00:00:00Z"));
  auto expired = entry(calm, Type::completedManuallyFull, today);
  expired.progressPct.reset();
  expired.timerDidExpire = true;
  const auto whole = sampleFor(calm, expired).value();
  EXPECT_EQ(whole.end - whole.start, std::chrono::minutes(10)) << "all of the target";

  const auto requests = context_->fetchAll<HealthKitRequestEntity>().size();
  TaskEntity& steps = addMeasured(HealthType::runOrWalk, 8000, TypeUnit::steps);
  (void)sampleFor(steps, entry(steps, Type::completedManuallyFull, today));
  EXPECT_EQ(context_->fetchAll<HealthKitRequestEntity>().size(), requests) << "it is only read";
  (void)sampleFor(water, entry(water, Type::skippedManuallyFull, today));
  EXPECT_EQ(context_->fetchAll<HealthKitRequestEntity>().size(), requests - 1)
      << "what was not written goes with its entry";
}

TEST_F(RecorderEffects, AProvisionalRowSaysSo) {
  TaskEntity& task = addTask();
  auto data = entry(task, Type::completedManuallyFull, today);
  data.isTemporaryRecord = true;
  record(task, {data});
  const auto row = context_->findLogEntry(data.uniqueId.text());
  EXPECT_EQ(row->cloudStatus, "TMP");
  EXPECT_EQ(row->cloudStatusDate, clock_->now());
  data.isTemporaryRecord = false;
  record(task, {data});
  EXPECT_FALSE(context_->findLogEntry(data.uniqueId.text())->cloudStatus) << "it has become final";
}

}  // namespace
}  // namespace habitra
