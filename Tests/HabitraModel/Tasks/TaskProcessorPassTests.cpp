#include <HabitraModel/Tasks/Processing/LastProcessedDates.h>
#include <HabitraModel/Tasks/Processing/TaskClaim.h>
#include <Support/TemporaryFolder.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>

#include "TaskWorld.h"

namespace habitra {
namespace {

using Type = TaskLogEntryType;
using qz::YYYYMMDD;
using Lifetime = TaskProcessor::Lifetime;
constexpr YYYYMMDD today(2024, 1, 31);

/// The processor as a process uses it that stays.
class Passes : public TaskWorld {
 protected:
  /// Asks for a pass and gives what came of it.
  TaskProcessorReport pass() {
    TaskProcessorReport report;
    processor_.processAllTasks([&](const TaskProcessorReport& made) { report = made; });
    finish();
    return report;
  }
  void finish() {
    processor_.waitForPasses();
    mainQueue_.drain();
  }
  /// Another day, so that each pass has something to do.
  void makeDue() { clock_->advance(std::chrono::hours(24)); }

  LastProcessedDates dates_{manager_.standardDefaults()};
};

TEST_F(Passes, TheFirstRunsAtOnceInTheViewAndLaterOnesInAContextOfTheirOwn) {
  TaskEntity& task = addTask();
  bool completed = false;
  processor_.applicationDidFinishLaunching(Lifetime::command,
                                           [&](const TaskProcessorReport& report) { completed = report.changed == 1; });
  EXPECT_EQ(dates_.read(), (LastProcessedDates::Dates{{*task.uniqueId, clock_->now()}})) << "nobody had to wait";
  EXPECT_FALSE(completed) << "completions arrive on the main queue";
  mainQueue_.drain();
  EXPECT_TRUE(completed);

  makeDue();
  const auto before = task.lastProcessedDate;
  processor_.processAllTasks();
  processor_.waitForPasses();
  EXPECT_EQ(task.lastProcessedDate, before) << "the view has not looked";
  mainQueue_.drain();
  (void)context_->fetchAll<TaskEntity>();
  EXPECT_EQ(task.lastProcessedDate, clock_->now());
  EXPECT_EQ(log(task), (std::vector<std::string>{"20240131 missedAutomaticallyFull"}));
  EXPECT_EQ(receivers_.widgets.reloads, 2);
}

TEST_F(Passes, ActivationsWithinASecondAreOneUnlessTheClockWasSetBack) {
  addTask();
  processor_.applicationDidFinishLaunching(Lifetime::command);
  const auto passesAt = [&](qz::Moment now) {
    makeDue();
    const int before = receivers_.widgets.reloads;
    processor_.applicationDidBecomeActive(now);
    finish();
    return receivers_.widgets.reloads - before;
  };
  const qz::Moment first = clock_->now();
  EXPECT_EQ(passesAt(first), 1);
  EXPECT_EQ(passesAt(first + std::chrono::milliseconds(400)), 0);
  EXPECT_EQ(passesAt(first + std::chrono::seconds(1)), 0);
  EXPECT_EQ(passesAt(first + std::chrono::microseconds(1'000'001)), 1);
  EXPECT_EQ(passesAt(first - std::chrono::hours(24)), 1);
}

TEST_F(Passes, NoneRunsDuringMaintenanceAndOneAfterIt) {
  const TemporaryFolder folder;  // a store in memory ends with maintenance
  DataManager manager(DataManager::storeLocation(folder / "home"), clock_);
  const auto context = manager.context();
  TaskEntity& task = context->insert(newlyMadeTask("Read", qz::DayOfWeek::monday, clock_->now(), "UTC"));
  const auto sequence = context->save({}).sequence;
  TaskProcessor processor({.dataManager = manager,
                           .mainQueue = mainQueue_,
                           .receivers = receivers_.all(),
                           .calendars = environment().calendars,
                           .viewContext = [&] { return context.get(); }});
  std::optional<TaskProcessorReport> report;
  manager.performMaintenance([&] {
    processor.processAllTasks([&](const TaskProcessorReport& made) { report = made; });
    mainQueue_.drain();
    EXPECT_EQ(processor.processTasks({*qz::UniqueID::fromText(*task.uniqueId)}, {}).tasks, 0u);
    context->refresh();
    EXPECT_EQ(context->sequence(), sequence);
  });
  EXPECT_EQ(report, TaskProcessorReport{});
  processor.waitForPasses();
  context->refresh();
  (void)context->fetchAll<TaskEntity>();
  EXPECT_EQ(task.lastProcessedDate, clock_->now());
}

TEST_F(Passes, WaitForBulkDataUpdatesToEndAndAreOneThen) {
  TaskEntity& task = addTask();
  processor_.applicationDidFinishLaunching(Lifetime::command);
  finish();
  makeDue();
  int completed = 0;
  {
    const TaskProcessor::BulkDataUpdate outer(processor_);
    {
      const TaskProcessor::BulkDataUpdate inner(processor_);
      for (int asked = 0; asked < 2; ++asked)
        processor_.processAllTasks([&](const TaskProcessorReport& report) { completed += int(report.changed); });
    }
    finish();
    EXPECT_EQ(completed, 0);
    EXPECT_TRUE(log(task).empty());
  }
  finish();
  EXPECT_EQ(completed, 2) << "both hear of the one pass";
  EXPECT_EQ(receivers_.widgets.reloads, 2);
}

TEST_F(Passes, ATaskThatFailsStopsNoOther) {
  TaskEntity& taken = addTask("Taken");
  TaskEntity& free = addTask("Free");
  makeDue();
  const auto claim = TaskClaim::make(context_->storeIdentifier(), taken.objectID);
  ASSERT_TRUE(claim);
  const TaskProcessorReport report = pass();
  EXPECT_EQ(report.tasks, 1u);
  EXPECT_EQ(report.failure, nullptr) << "whoever has it processes it";
  EXPECT_TRUE(log(taken).empty());
  EXPECT_EQ(log(free).size(), 1u);
  context_->beginUnit();
  processor_.process(*context_, taken, clock_->now());
  EXPECT_FALSE(context_->hasChanges());
  context_->rollback();
}

TEST_F(Passes, KeepTheDatesOfTasksThatAreThere) {
  TaskEntity& task = addTask();
  dates_.merge({{"GONE", clock_->now()}});
  pass();
  EXPECT_EQ(dates_.read(), (LastProcessedDates::Dates{{*task.uniqueId, clock_->now()}}));
  const auto values = manager_.standardDefaults().values();
  const auto sequence = context_->sequence();
  clock_->advance(std::chrono::hours(2));
  EXPECT_EQ(pass().changed, 0u);
  EXPECT_EQ(manager_.standardDefaults().values(), values);
  context_->refresh();
  EXPECT_EQ(context_->sequence(), sequence);
  EXPECT_EQ(receivers_.widgets.reloads, 1);
}

TEST_F(Passes, GoOverTheTasksThatAreAskedFor) {
  TaskEntity& one = addTask("One");
  TaskEntity& other = addTask("Other");
  makeDue();
  const auto unknown = qz::UniqueID::generate(clock_->now());
  EXPECT_EQ(processor_.processTasks({*qz::UniqueID::fromText(*one.uniqueId), unknown}, {}).filledIn, 1u);
  context_->refresh();
  EXPECT_EQ(log(one).size(), 1u);
  EXPECT_TRUE(log(other).empty());
}

TEST_F(Passes, OfTimersRunWhenTheyAreDueInWhateverProcessAsksThen) {
  TaskEntity& task = addTask();
  TaskEntity& other = addTask("Other");
  makeDue();
  const auto id = *qz::UniqueID::fromText(*task.uniqueId);
  const qz::Moment due = clock_->now() + std::chrono::minutes(20);
  processor_.scheduleTimerFinished(id, due + std::chrono::hours(1));
  processor_.scheduleTimerFinished(id, due);
  KeptBackgroundTasks kept(manager_.standardDefaults());
  EXPECT_EQ(kept.nextDue(), due) << "the later word counts";
  processor_.runDueBackgroundTasks(clock_->now());
  EXPECT_TRUE(log(task).empty());
  clock_->advance(std::chrono::minutes(20));
  processor_.runDueBackgroundTasks(clock_->now());
  context_->refresh();
  EXPECT_EQ(log(task).size(), 1u);
  EXPECT_TRUE(log(other).empty());
  EXPECT_EQ(kept.nextDue(), std::nullopt);

  kept.submit({.identifier = TaskProcessor::refreshIdentifier, .earliestBeginDate = clock_->now()});
  processor_.runDueBackgroundTasks(clock_->now());
  finish();
  context_->refresh();
  EXPECT_EQ(log(other).size(), 1u);
}

/// A program whose defaults lie in a file.
class PassesOfAHome : public testing::Test {
 protected:
  struct Program : TestProgram {
    explicit Program(const std::filesystem::path& home)
        : TestProgram(at("2024-01-31T12:00:00Z"), DataManager::storeLocation(home)) {}
    TaskProcessor& processor() { return processor_; }
  };
  const TemporaryFolder folder;
  Program program{folder / "home"};
};

TEST_F(PassesOfAHome, TryAgainLaterToTakeWhatIsDueButCannotBeTaken) {
  TaskProcessor& processor = program.processor();
  const qz::Moment due = at("2024-01-31T12:00:00Z");
  processor.scheduleTimerFinished(qz::UniqueID::generate(due), due);
  const std::filesystem::path inTheWay = folder / "home" / (std::string(KeyValueDefaults::standardFileName) + ".new");
  std::filesystem::create_directory(inTheWay);
  for (const qz::Moment now : {due + std::chrono::seconds(5), due + std::chrono::seconds(70)}) {
    processor.runDueBackgroundTasks(now);
    EXPECT_EQ(processor.nextBackgroundTask(), now + std::chrono::minutes(1));
  }
  std::filesystem::remove(inTheWay);
  processor.runDueBackgroundTasks(due + std::chrono::seconds(130));
  EXPECT_EQ(processor.nextBackgroundTask(), std::nullopt);
  processor.scheduleTimerFinished(qz::UniqueID::generate(due), due);
  EXPECT_EQ(processor.nextBackgroundTask(), due);
}

TEST_F(PassesOfAHome, GoOnWhereWhatIsDueCannotBeRead) {
  program.processor().scheduleTimerFinished(qz::UniqueID::generate(at("2024-01-31T12:00:00Z")),
                                            at("2024-01-31T12:00:00Z"));
  EXPECT_TRUE(program.processor().nextBackgroundTask());
  std::ofstream(folder / "home" / KeyValueDefaults::standardFileName) << "damaged";
  EXPECT_EQ(program.processor().nextBackgroundTask(), std::nullopt);
  EXPECT_NO_THROW(program.processor().runDueBackgroundTasks(at("2024-01-31T13:00:00Z")));
}

TEST_F(Passes, GoOnOnceAClockFarAheadHasBeenOutlived) {
  TaskEntity& task = addTask();
  record(task, Type::completedManuallyFull, today);
  pass();
  const qz::Moment right = clock_->now();
  clock_->set(at("2038-01-19T03:14:07Z"));
  addTask("From the future");
  clock_->set(right);
  for (int day = 1; day <= 3; ++day) {
    makeDue();
    EXPECT_EQ(pass().tasks, day < 3 ? 0u : 4u) << day;
    addTask(std::to_string(day));
  }
  clock_->set(at("1970-01-01T00:00:00Z"));
  record(task, Type::completedManuallyFull, today);
  EXPECT_EQ(pass().tasks, 0u) << "one odd day says nothing against all the others";
}

/// A front end records while passes run.
TEST_F(Passes, DisturbNobodyWhoRecordsMeanwhile) {
  std::vector<TaskEntity*> tasks;
  for (int number = 0; number < 4; ++number) tasks.push_back(&addTask(std::to_string(number)));
  processor_.applicationDidFinishLaunching(Lifetime::command);
  for (int day = 0; day < 10; ++day) {
    for (TaskEntity* task : tasks) {
      processor_.calendarDayChanged();
      context_->refresh();
      context_->beginUnit();
      processor_.process(*context_, *task, clock_->now());
      record(*task, Type::completedManuallyFull, today.add(day));
    }
    finish();
    makeDue();
  }
  EXPECT_EQ(pass().failure, nullptr);
  context_->refresh();
  for (TaskEntity* task : tasks) {
    EXPECT_EQ(log(*task).size(), 10u);
    EXPECT_EQ(figures(*task).activeStreak, 10);
  }
}

}  // namespace
}  // namespace habitra
