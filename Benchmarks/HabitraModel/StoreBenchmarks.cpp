// The store beside the bare interface of the engine that does the same to the same tables: what descriptions, identity,
// checksums, history and the writers' turn cost.

#include <HabitraModel/Store/StoreContext.h>
#include <Support/Memory.h>
#include <Support/RatioReport.h>
#include <Support/TemporaryFolder.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "BareStore.h"
#include "PassBenchmarks.h"
#include "SampleLog.h"

namespace habitra::benchmarks {
namespace {

constexpr int bulk = 100'000;
constexpr int tenYears = 3'653;
constexpr int tasks = 20;

const std::shared_ptr<const qz::Clock> theClock = std::make_shared<qz::SystemClock>();

/// A home of its own with a store of `tasks` tasks that each have `days` entries, which were recorded day by day, and a
/// setting.
class SampleStore {
 public:
  explicit SampleStore(int days) {
    StoreContext context(Store::open(file(), theClock));
    std::vector<std::vector<TaskLogEntryEntity>> logs;
    for (int i = 0; i < tasks; ++i) {
      TaskEntity values;
      values.title = "Habit " + std::to_string(i);
      task_ = context.insert(values).objectID;
      logs.push_back(sampleLog(task_, days));
    }
    for (std::size_t day = 0; day < static_cast<std::size_t>(days); ++day)
      for (const auto& log : logs) context.insertLogEntry(log[day]);
    SettingEntity setting;
    setting.settingKey = settingKey();
    setting.intValue = 1;
    context.insert(setting);
    context.save({});
  }

  [[nodiscard]] std::filesystem::path file() const { return folder_ / "home" / "Habitra-Local.sqlite"; }
  [[nodiscard]] ObjectID task() const { return task_; }
  [[nodiscard]] static std::string settingKey() { return "firstDayOfWeek"; }

 private:
  TemporaryFolder folder_;
  ObjectID task_ = ObjectID::none;
};

const SampleStore& tenYearStore() {
  static const SampleStore store(tenYears);
  return store;
}

void storeInsert(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    const SampleStore sample(0);
    const auto entries = sampleLog(sample.task(), bulk);
    auto context = std::make_unique<StoreContext>(Store::open(sample.file(), theClock));
    state.ResumeTiming();
    for (const TaskLogEntryEntity& entry : entries) context->insertLogEntry(entry);
    context->save({});
    state.PauseTiming();
    context.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * bulk);
}

void bareInsert(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    const SampleStore sample(0);
    const auto entries = sampleLog(sample.task(), bulk);
    auto bare = std::make_unique<BareStore>(sample.file());
    state.ResumeTiming();
    bare->save(entries);
    state.PauseTiming();
    bare.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * bulk);
}

void storeReadLog(benchmark::State& state) {
  StoreContext context(Store::open(tenYearStore().file(), theClock));
  for (auto _ : state) {
    std::int64_t sum = 0;
    context.readLog(tenYearStore().task(), StoreContext::firstDay, StoreContext::lastDay, [&sum](const LogRow& row) {
      sum += rawValue(row.objectID) + row.entryDate + row.entryPeriodFrom + row.entryPeriodTo +
             row.entryPeriodType.front() + row.entryType + static_cast<std::int64_t>(row.progress + row.progressTotal);
    });
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * tenYears);
}

void bareReadLog(benchmark::State& state) {
  BareStore bare(tenYearStore().file());
  for (auto _ : state) benchmark::DoNotOptimize(bare.sumOfLog(tenYearStore().task()));
  state.SetItemsProcessed(state.iterations() * tenYears);
}

void storeFetchEntries(benchmark::State& state) {
  StoreContext context(Store::open(tenYearStore().file(), theClock));
  for (auto _ : state) benchmark::DoNotOptimize(context.fetchLogEntries(tenYearStore().task()));
  state.SetItemsProcessed(state.iterations() * tenYears);
}

void bareFetchEntries(benchmark::State& state) {
  BareStore bare(tenYearStore().file());
  for (auto _ : state) benchmark::DoNotOptimize(bare.log(tenYearStore().task()));
  state.SetItemsProcessed(state.iterations() * tenYears);
}

void storeOpen(benchmark::State& state) {
  const auto& file = tenYearStore().file();
  for (auto _ : state) {
    StoreContext context(Store::openForReading(file, theClock));
    benchmark::DoNotOptimize(context.find<SettingEntity>("settingKey", SampleStore::settingKey())->intValue);
  }
  state.SetItemsProcessed(state.iterations());
}

void bareOpen(benchmark::State& state) {
  const auto& file = tenYearStore().file();
  for (auto _ : state) {
    BareStore bare(file);
    benchmark::DoNotOptimize(bare.setting(SampleStore::settingKey()));
  }
  state.SetItemsProcessed(state.iterations());
}

// Each saves into a store of its own, which both leave equally long.
void storeCommit(benchmark::State& state) {
  const SampleStore sample(365);
  const auto entries = sampleLog(sample.task(), 1);
  StoreContext context(Store::open(sample.file(), theClock));
  for (auto _ : state) {
    context.beginUnit();
    context.insertLogEntry(entries.front());
    context.save({.command = "done"});
  }
  state.SetItemsProcessed(state.iterations());
}

void bareCommit(benchmark::State& state) {
  const SampleStore sample(365);
  const auto entries = sampleLog(sample.task(), 1);
  BareStore bare(sample.file());
  for (auto _ : state) bare.save(entries);
  state.SetItemsProcessed(state.iterations());
}

/// The most that `step` holds at once beside what it was given; the engine's cache of pages is not counted.
template <typename Step>
std::int64_t peakOf(Step&& step) {
  const std::int64_t before = bytesHeld();
  (void)takePeakOfBytesHeld();
  step();
  return takePeakOfBytesHeld() - before;
}

/// Prints what fetches of three lengths hold; whether a longer one holds no more for an entry than a short one, and
/// reading values nothing that grows.
bool memoryIsProportional() {
  constexpr std::array<std::int32_t, 3> lastDays{20140131, 20141231, 20231231};
  std::array<std::int64_t, 3> reading{};
  std::array<std::int64_t, 3> fetching{};
  std::array<std::int64_t, 3> entries{};
  StoreContext context(Store::open(tenYearStore().file(), theClock));
  (void)context.fetchLogEntries(tenYearStore().task());  // statements are made once
  context.readLog(tenYearStore().task(), StoreContext::firstDay, StoreContext::lastDay, [](const LogRow&) {});
  for (std::size_t i = 0; i < lastDays.size(); ++i) {
    reading[i] =
        peakOf([&] { context.readLog(tenYearStore().task(), 0, lastDays[i], [&](const LogRow&) { ++entries[i]; }); });
    fetching[i] =
        peakOf([&] { benchmark::DoNotOptimize(context.fetchLogEntries(tenYearStore().task(), 0, lastDays[i])); });
  }
  // A list that doubles as it grows can hold thrice what is in it.
  const auto perEntry = [&](std::size_t i) { return fetching[i] / entries[i]; };
  const bool holds = reading[2] == reading[0] && perEntry(2) <= 3 * perEntry(0);
  std::printf("\n%-38s %10s %10s %10s\n", "bytes held by a fetch of", "a month", "a year", "ten years");
  std::printf("%-38s %10ld %10ld %10ld\n", "a log, read as values", reading[0], reading[1], reading[2]);
  std::printf("%-38s %10ld %10ld %10ld  %s\n", "a log, fetched as entries", fetching[0], fetching[1], fetching[2],
              holds ? "holds" : "BROKEN");
  return holds;
}

BENCHMARK(storeInsert)->Unit(benchmark::kMillisecond);
BENCHMARK(bareInsert)->Unit(benchmark::kMillisecond);
BENCHMARK(storeReadLog)->Unit(benchmark::kMicrosecond);
BENCHMARK(bareReadLog)->Unit(benchmark::kMicrosecond);
BENCHMARK(storeFetchEntries)->Unit(benchmark::kMicrosecond);
BENCHMARK(bareFetchEntries)->Unit(benchmark::kMicrosecond);
BENCHMARK(storeOpen)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(bareOpen)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(storeCommit)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(bareCommit)->Unit(benchmark::kMicrosecond)->UseRealTime();

}  // namespace
}  // namespace habitra::benchmarks

int main(int argc, char** argv) {
  std::vector<habitra::benchmarks::Ratio> ratios{
      {"100,000 entries in one save", "storeInsert", "bareInsert", 2},
      {"a ten-year log, read as values", "storeReadLog", "bareReadLog", 1.5},
      {"a ten-year log, fetched as entries", "storeFetchEntries", "bareFetchEntries", 1.5},
      {"open, read a setting, close", "storeOpen", "bareOpen", 1.5},
      {"one entry committed durably", "storeCommit", "bareCommit", 1.3}};
  for (auto& ratio : habitra::benchmarks::passRatios()) ratios.push_back(std::move(ratio));
  const int timing = habitra::benchmarks::runWithRatios(argc, argv, ratios);
  const bool memoryHolds = habitra::benchmarks::memoryIsProportional();
  return habitra::benchmarks::passMemoryIsBounded() && memoryHolds ? timing : 1;
}
