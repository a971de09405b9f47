// Recording and processing beside what cannot be saved: reading the same rows, inserting them, one durable commit.

#include "PassBenchmarks.h"

#include <HabitraCore/RawValue.h>
#include <HabitraCore/TaskLogEntryType.h>
#include <HabitraModel/DataManager.h>
#include <HabitraModel/Links/TaskLink.h>
#include <HabitraModel/Links/WidgetCenter.h>
#include <HabitraModel/Mapping/FrequencyMapping.h>
#include <HabitraModel/Mapping/LogEntryMapping.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/Processing/TaskProcessor.h>
#include <HabitraModel/Tasks/Recording/TaskLogRecorder.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <QZDateTime/ISO8601.h>
#include <QZKit/MainQueue.h>
#include <Support/Memory.h>
#include <Support/SettableClock.h>
#include <Support/TemporaryFolder.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "BareStore.h"
#include "SampleLog.h"

namespace habitra::benchmarks {
namespace {

constexpr int habits = 100;
constexpr int tenYears = 3'653;
/// The first day of the histories is 2014-01-01, the day before yesterday their last but one.
const qz::Moment firstEvening = qz::momentFromISO8601("2014-01-01T20:00:00Z").value();
qz::Moment evening(int day) { return firstEvening + std::chrono::days(day); }

class NoWidgets : public WidgetCenter {
 public:
  void reloadAllTimelines() noexcept override {}
};

/// A rule of each mode in turn that an entry a day leaves nothing to fill in for.
TaskFrequency frequencyOfHabit(int habit) {
  TaskFrequency frequency = TaskFrequency::everyDay();
  const auto& modes = RawValueTable<TaskFrequency::DayMode>::rows;
  frequency.dayMode = modes[static_cast<std::size_t>(habit) % modes.size()].value;
  frequency.daysOfMonth = DaysOfMonth::day1 | DaysOfMonth::day15;
  frequency.dayInterval = 2;
  if (frequency.isCountedDays() || frequency.isAggregate()) frequency.numCompletions = 3;
  return frequency;
}

/// Recorder and processor over a store in a file, as a front end wires them.
class Home {
 public:
  explicit Home(int days, int numHabits = habits) {
    clock_->set(evening(0));
    StoreContext& context = *context_;
    std::vector<std::vector<TaskLogEntryEntity>> logs;
    for (int habit = 0; habit < numHabits; ++habit) {
      TaskEntity values = newlyMadeTask("Habit " + std::to_string(habit), qz::DayOfWeek::monday, evening(0), "UTC");
      setFrequency(values, frequencyOfHabit(habit));
      values.isNegative = habit % 2 == 1;
      const TaskEntity& task = context.insert(values);
      logs.push_back(logOf(task, days));
    }
    for (std::size_t day = 0; day < static_cast<std::size_t>(days); ++day)
      for (const auto& log : logs) context.insertLogEntry(log[day]);
    clock_->set(evening(days));
    context.save({});
    context.forgetObjects();
  }

  TaskProcessor::Report process() { return processor_.processAllTasks(*context_, clock_->now()); }
  /// Under a calendar of another name than the pass before, whose days are the same: no cursor of that one holds.
  TaskProcessor::Report processWithoutCursors() {
    const auto& zone = calendars_.ofDevice().timeZone;
    calendars_ =
        TaskCalendars(zone == utc() ? qz::TimeZone::fromIdentifier("Etc/UTC").value() : utc(), qz::HHMMSS::midnight);
    return process();
  }

  /// Records a completion of today, from the request to its completion.
  void record() {
    TaskEntity& task = *context_->fetchAll<TaskEntity>().front();
    const qz::Moment now = clock_->now();
    const qz::YYYYMMDD day = calendars_.of(task).day(now);
    bool isCompleted = false;
    recorder_.record(task,
                     {.managedObjectContext = *context_,
                      .context = TaskModifyContext::userInitiatedFromMainApp,
                      .saveContext = true,
                      .logEntries = {{.uniqueId = qz::UniqueID::generate(now),
                                      .type = TaskLogEntryType::completedManuallyFull,
                                      .period = DatedPeriod(day, TaskFrequencyPeriodType::day, qz::DayOfWeek::monday),
                                      .startDate = now,
                                      .endDate = now,
                                      .progressPct = 1.0}},
                      .createdTimestamp = now,
                      .createdTimeZone = qz::TimeZone::utc()},
                     [&isCompleted](const std::exception_ptr& error) { isCompleted = error == nullptr; });
    mainQueue_.drain();
    if (!isCompleted) throw std::runtime_error("the benchmark's entry was not recorded");
  }
  void nextDay() { clock_->advance(std::chrono::days(1)); }

  [[nodiscard]] std::filesystem::path file() const { return folder_ / "home" / "Habitra-Local.sqlite"; }
  [[nodiscard]] StoreContext& context() { return *context_; }

 private:
  static qz::TimeZone utc() { return qz::TimeZone::utc(); }
  static std::vector<TaskLogEntryEntity> logOf(const TaskEntity& task, int days) {
    std::vector<TaskLogEntryEntity> log = sampleLog(task.objectID, days);
    const TaskRules rules = rulesWithoutPauses(task).value();
    const bool isParts = rules.frequency.isAggregate() && !task.isNegative;
    const auto type = isParts ? TaskLogEntryType::completedManuallyPartial : TaskLogEntryType::completedManuallyFull;
    for (TaskLogEntryEntity& entry : log) {
      const auto day = qz::YYYYMMDD::fromRawValue(entry.entryDate).value();
      setEntry(entry, type, rules.frequency.period(day, rules.firstDayOfWeek, rules.referenceDate), isParts ? 0.0 : 1.0,
               0.0);
    }
    return log;
  }

  TemporaryFolder folder_;
  std::shared_ptr<SettableClock> clock_ = std::make_shared<SettableClock>(firstEvening);
  DataManager manager_{DataManager::storeLocation(folder_ / "home"), clock_};
  std::unique_ptr<StoreContext> context_ = manager_.context();
  TaskCalendars calendars_{utc(), qz::HHMMSS::midnight};
  qz::MainQueue mainQueue_;
  OutboxTaskLink watch_{OutboxLink::watch};
  OutboxTaskLink sharedTasks_{OutboxLink::sharedTask};
  NoWidgets widgets_;
  TaskLogRecorder recorder_{calendars_, mainQueue_, {watch_, sharedTasks_, widgets_}};
  TaskProcessor processor_{{.dataManager = manager_,
                            .mainQueue = mainQueue_,
                            .receivers = {watch_, sharedTasks_, widgets_},
                            .calendars = [this](StoreContext&) { return calendars_; },
                            .viewContext = [this] { return context_.get(); }}};
};

Home& fullHome() {
  static Home home(tenYears);
  return home;
}

void fullPass(benchmark::State& state) {
  Home& home = fullHome();
  for (auto _ : state) {
    const auto report = home.processWithoutCursors();
    if (report.filledIn + report.removed > 0) state.SkipWithError("the histories have holes");
  }
  state.SetItemsProcessed(state.iterations() * habits * tenYears);
}

void unchangedPass(benchmark::State& state) {
  Home& home = fullHome();
  home.process();
  const auto sequence = home.context().sequence();
  for (auto _ : state) benchmark::DoNotOptimize(home.process());
  if (home.context().sequence() != sequence) state.SkipWithError("an unchanged pass wrote");
  state.SetItemsProcessed(state.iterations() * habits * tenYears);
}

void bareReadOfAll(benchmark::State& state) {
  Home& home = fullHome();
  std::vector<ObjectID> tasks;
  for (const TaskEntity* task : home.context().fetchAll<TaskEntity>()) tasks.push_back(task->objectID);
  BareStore bare(home.file());
  for (auto _ : state)
    for (const ObjectID task : tasks) benchmark::DoNotOptimize(bare.sumOfLog(task));
  state.SetItemsProcessed(state.iterations() * habits * tenYears);
}

/// Ten years of which nothing was recorded.
void filledInPass(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    auto home = std::make_unique<Home>(0, 1);
    for (int day = 0; day < tenYears; ++day) home->nextDay();
    state.ResumeTiming();
    if (home->process().filledIn != tenYears) state.SkipWithError("not every day was filled in");
    state.PauseTiming();
    home.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * tenYears);
}

void bareInsertOfFilledIn(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    auto home = std::make_unique<Home>(0, 1);
    const auto entries = sampleLog(home->context().fetchAll<TaskEntity>().front()->objectID, tenYears);
    auto bare = std::make_unique<BareStore>(home->file());
    state.ResumeTiming();
    bare->save(entries);
    state.PauseTiming();
    bare.reset();
    home.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * tenYears);
}

/// A completion a day, each on a day of its own, after a pass.
void recordOne(benchmark::State& state) {
  Home home(365, 1);
  home.process();
  for (auto _ : state) {
    home.record();
    state.PauseTiming();
    home.nextDay();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations());
}

void bareRecord(benchmark::State& state) {
  Home home(365, 1);
  const auto entries = sampleLog(home.context().fetchAll<TaskEntity>().front()->objectID, 1);
  BareStore bare(home.file());
  for (auto _ : state) {
    bare.save(entries);
    state.PauseTiming();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations());
}

BENCHMARK(fullPass)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(unchangedPass)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(bareReadOfAll)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(filledInPass)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(bareInsertOfFilledIn)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(recordOne)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(bareRecord)->Unit(benchmark::kMicrosecond)->UseRealTime();

}  // namespace

std::vector<Ratio> passRatios() {
  return {{"a full pass over 365,300 entries", "fullPass", "bareReadOfAll", 2},
          {"a pass that finds nothing to change", "unchangedPass", "fullPass", 0.1},
          {"a day filled in", "filledInPass", "bareInsertOfFilledIn", 2},
          {"one entry recorded", "recordOne", "bareRecord", 1.5}};
}

bool passMemoryIsBounded() {
  const auto peakOfPass = [](int days) {
    Home home(days, 1);
    home.process();
    const std::int64_t before = bytesHeld();
    (void)takePeakOfBytesHeld();
    home.processWithoutCursors();
    return takePeakOfBytesHeld() - before;
  };
  const std::int64_t decade = peakOfPass(tenYears);
  const std::int64_t threeDecades = peakOfPass(3 * tenYears);
  const bool holds = threeDecades <= decade + decade / 4;
  std::printf("\n%-38s %10s %10s\n", "bytes held by a pass over a habit of", "ten years", "thirty");
  std::printf("%-38s %10ld %10ld  %s\n", "one entry a day", decade, threeDecades, holds ? "holds" : "BROKEN");
  return holds;
}

}  // namespace habitra::benchmarks
