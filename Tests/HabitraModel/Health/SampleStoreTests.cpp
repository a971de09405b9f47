#include "SampleFixture.h"

#include <QZHealthKit/QZHKStatisticsCalculation.h>
#include <rapidcheck/gtest.h>
#include <Support/ChildProcess.h>
#include <Support/OrdinaryRights.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <fstream>

#include "../Store/StoreFixture.h"

namespace habitra {
namespace {

using namespace qz;
using T = QZHKObjectType;
using U = QZHKUnit;
using O = QZHKStatisticsOption;
using Reason = QZHealthStoreError::Reason;
using Samples = std::vector<QZHKSample>;
using Reaches = std::vector<QZHKChanges::Reach>;

bool comesBefore(const QZHKSample& a, const QZHKSample& b) {
  return std::tie(a.start, a.identifier) < std::tie(b.start, b.identifier);
}

TEST_F(SampleStoreTest, WhatIsSavedIsReadBackByOthers) {
  QZHKSample run =
      sample(1, T::workout, 0, 30,
             QZHKWorkout{QZHKWorkoutActivityType::running, QZHKQuantity{300, U::kilocalorie}, std::nullopt});
  run.device = "Watch 3";
  run.task = identifier(77);
  QZHKSample other =
      sample(2, T::workout, 0, 20, QZHKWorkout{QZHKWorkoutActivityType::yoga, {}, QZHKQuantity{0, U::mile}});
  const Samples written{run, other, sample(3, T::sleepAnalysis, -600, -60, QZHKSleepValue::rem, "Böse \"Quelle\""),
                        sample(4, T::flossingEvent, 5, 5),
                        sample(5, T::bodyTemperature, 6, 6, QZHKQuantity{-0.1, U::degreeCelsius})};
  save(written);
  const SampleStore store = open();
  EXPECT_EQ(store.samples(all(T::workout)), (Samples{run, other}));
  for (const std::size_t at : {2U, 3U, 4U}) EXPECT_EQ(store.samples(all(written[at].objectType)), Samples{written[at]});
  QZHKSampleQuery ofTask = all(T::workout);
  ofTask.predicate.task = identifier(77);
  EXPECT_EQ(store.samples(ofTask), Samples{run});
  EXPECT_TRUE(store.isHealthDataAvailable());
}

RC_GTEST_PROP(SampleStoreProperty, AnswersAsIfItLookedAtEverySample, ()) {
  const auto store = SampleStore::inMemory();
  std::uint32_t number = 0;
  const auto one = [&number] {
    const auto start = *rc::gen::inRange<std::int64_t>(-40 * 1440, 4 * 1440);
    const auto length = *rc::gen::element<std::int64_t>(0, 1, 15, 59, 60, 61, 1440, 31 * 1440);
    return steps(++number, start, start + length, *rc::gen::inRange(0, 9));
  };
  Samples samples = *rc::gen::container<Samples>(rc::gen::exec(one));
  store->save(samples);
  const auto from = *rc::gen::inRange<std::int64_t>(-1440, 4 * 1440);
  const QZHKSampleQuery query{.objectType = T::stepCount,
                              .span = {minute(from), minute(from + *rc::gen::element<std::int64_t>(0, 1, 90, 1440))},
                              .predicate = {}};
  const QZHKStatisticsQuery figures{.samples = query, .unit = U::count, .options = {O::cumulativeSum, O::duration}};
  std::sort(samples.begin(), samples.end(), comesBefore);
  QZHKStatisticsCalculation calculation(figures);
  for (const QZHKSample& sample : samples) calculation.add(sample);
  std::erase_if(samples, [&](const QZHKSample& sample) { return !query.matches(sample); });
  RC_ASSERT(store->samples(query) == samples);
  RC_ASSERT(store->statistics(figures) == calculation.figures());
}

TEST_F(SampleStoreTest, TellsOverWhichTimeChangesReach) {
  const auto reach = [](std::int64_t from, std::int64_t to) { return QZHKChanges::Reach{minute(from), minute(to)}; };
  SampleStore store = open();
  EXPECT_EQ(store.changesSince(0), QZHKChanges{});
  save(store, {steps(1, 100, 105), steps(2, -5000, -4990),
               sample(3, T::activeEnergyGoal, 7, 7, QZHKQuantity{400, U::kilocalorie})});
  const QZHKChanges first = store.changesSince(0);
  EXPECT_EQ(first.reaches.at(T::stepCount), (Reaches{reach(-5000, -4990), reach(100, 105)})) << "days lie between";
  EXPECT_EQ(first.vagueReaches,
            (std::map<T, QZHKChanges::Reach>{{T::activitySummary, {minute(7), latestSampleMoment}}}));
  save(store, {steps(1, 100, 105)});
  EXPECT_EQ(store.changesSince(0), first) << "nothing new";

  store.remove(std::vector{identifier(2)});
  const QZHKChanges second = open().changesSince(first.newest);
  EXPECT_EQ(second.reaches, (std::map<T, Reaches>{{T::stepCount, {reach(-5000, -4990)}}}));
  EXPECT_EQ(second.vagueReaches, (std::map<T, QZHKChanges::Reach>{}));
  save(store, {steps(4, 110, 120)});
  EXPECT_EQ(store.changesSince(second.newest).reaches.at(T::stepCount), Reaches{reach(110, 120)});
  EXPECT_EQ(store.changesSince(0).reaches.at(T::stepCount), (Reaches{reach(-5000, -4990), reach(100, 120)}));
}

TEST_F(SampleStoreTest, TellsOnlySoManyChangesApart) {
  constexpr std::int64_t twoDays = 2880;
  constexpr std::int64_t apart = 2048;
  SampleStore store = open();
  save(store, {steps(1, 0, 5)});
  const std::int64_t first = store.changesSince(0).newest;
  Samples years;
  for (std::int64_t number = 1; number <= apart + 10; ++number)
    years.push_back(steps(static_cast<std::uint32_t>(number + 1), number * twoDays, number * twoDays + 5));
  save(store, years);
  const QZHKChanges all = store.changesSince(first);
  EXPECT_EQ(all.reaches.at(T::stepCount).size(), std::size_t{apart});
  EXPECT_EQ(all.reaches.at(T::stepCount).front().earliest, minute(11 * twoDays));
  EXPECT_EQ(all.vagueReaches.at(T::stepCount), (QZHKChanges::Reach{minute(0), minute(10 * twoDays + 5)}))
      << "more than it was";
  EXPECT_EQ(store.changesSince(999'999), all) << "of another store";
  EXPECT_EQ(store.changesSince(all.newest).numbers, (std::map<T, std::int64_t>{}));
}

TEST_F(SampleStoreTest, NumbersOfChangesAreThoseOfOneStore) {
  SampleStore store = open();
  EXPECT_EQ(store.changesSince(0).store, std::nullopt) << "there is none yet";
  save(store, {steps(1, 0, 5)});
  const auto first = store.changesSince(0);
  ASSERT_TRUE(first.store);
  EXPECT_EQ(open().changesSince(0), first);
  store.remove(std::vector{identifier(44)});
  save(store, {steps(1, 0, 5)});
  EXPECT_EQ(store.changesSince(0), first) << "nothing has come or gone";
  EXPECT_EQ(store.known(std::vector{identifier(1), identifier(44)}), std::set{identifier(1)});
  save(store, {steps(2, 5, 9), sample(3, T::workout, 0, 5, QZHKWorkout{QZHKWorkoutActivityType::yoga, {}, {}})});
  EXPECT_EQ(store.changesSince(0).numbers, (std::map<T, std::int64_t>{{T::stepCount, 2}, {T::workout, 1}}));
  EXPECT_NE(SampleStore::inMemory()->changesSince(0).store, SampleStore::inMemory()->changesSince(0).store);

  runSQL(file(), "DROP TABLE SampleStore");  // as it was made before it could say which it is
  EXPECT_EQ(open().changesSince(0).store, std::nullopt);
  save({steps(4, 9, 12)});
  const auto named = open().changesSince(0);
  EXPECT_NE(named.store, std::nullopt);
  EXPECT_NE(named.store, first.store);
  store.remove(std::vector{identifier(1), identifier(2), identifier(3), identifier(4)});
  EXPECT_TRUE(store.isHealthDataAvailable()) << "it had some";
  EXPECT_EQ(open().changesSince(0).store, named.store);
}

TEST_F(SampleStoreTest, AWriteCountsOnceAndIsWholeOrNotAtAll) {
  SampleStore store = open();
  save(store, {steps(1, 0, 5), steps(2, 5, 9)});
  QZHKSample changed = steps(1, 0, 5, 999);
  save(store, {changed, steps(3, 9, 12)});
  EXPECT_EQ(store.samples(all(T::stepCount)), (Samples{steps(1, 0, 5), steps(2, 5, 9), steps(3, 9, 12)}));

  EXPECT_EQ(failureOf([&] {
              save(store, {steps(4, 0, 1), steps(5, 0, 1, -1)});
            }),
            std::pair(Reason::invalidSample, std::string("stepCount cannot be below zero")));
  EXPECT_THROW(store.saveEach([](const SampleStore::Sink& sink) {
    sink(steps(6, 0, 1));
    throw std::out_of_range("the source has ended early");
  }),
               std::out_of_range);
  EXPECT_EQ(store.samples(all(T::stepCount)).size(), 3U);

  const std::vector removed{identifier(1), identifier(2), identifier(44)};
  store.remove(removed);
  EXPECT_EQ(store.samples(all(T::stepCount)), Samples{steps(3, 9, 12)});
  const auto saved = store.saveEach([&](const SampleStore::Sink& sink) {
    sink(changed);
    sink(changed);
    sink(steps(3, 9, 12));
  });
  EXPECT_EQ(saved.added, 1U);
  EXPECT_EQ(saved.left, 2U);
  EXPECT_EQ(store.samples(all(T::stepCount)).front(), changed);
}

TEST_F(SampleStoreTest, WhereThereIsNothingReadingMakesNothing) {
  SampleStore store = open();
  const QZHKSpan day{minute(0), minute(1440)};
  EXPECT_FALSE(store.isHealthDataAvailable());
  EXPECT_TRUE(store.samples(all(T::stepCount)).empty());
  EXPECT_EQ(store.activitySummary(day), std::nullopt);
  const QZHKStatisticsQuery query{.samples = all(T::bodyMass), .unit = U::gram, .options = {O::mostRecent}};
  EXPECT_EQ(store.statistics(query), (QZHKStatistics{.unit = U::gram}));
  store.remove(std::vector{identifier(1)});
  save(store, {});
  EXPECT_FALSE(std::filesystem::exists(home()));
  save(store, {steps(1, 0, 1)});
  EXPECT_TRUE(store.isHealthDataAvailable()) << "what came later is seen";
  EXPECT_EQ(failureOf([&] {
              (void)store.statistics({.samples = all(T::bodyMass), .unit = U::litre, .options = {O::mostRecent}});
            }),
            std::pair(Reason::invalidQuery, std::string("bodyMass is not measured in L")));
}

TEST_F(SampleStoreTest, RingsAreSumsOfTheDayAndTheNewestGoals) {
  const auto goal = [](std::uint32_t number, T type, std::int64_t start, double amount, U unit) {
    return sample(number, type, start, start, QZHKQuantity{amount, unit});
  };
  SampleStore store = open();
  save(store,
       {goal(1, T::activeEnergyGoal, -90'000, 300, U::kilocalorie),
        goal(3, T::activeEnergyGoal, 900, 400, U::kilocalorie), goal(2, T::activeEnergyGoal, 900, 350, U::kilocalorie),
        goal(4, T::activeEnergyGoal, 1440, 999, U::kilocalorie), goal(5, T::standGoal, -5000, 12, U::count)});
  const QZHKSpan day{minute(0), minute(1440)};
  EXPECT_EQ(store.activitySummary(day), std::nullopt) << "goals alone are no day";
  save(store,
       {sample(6, T::activeEnergyBurned, -30, 30, QZHKQuantity{418.4, U::kilojoule}), sample(7, T::standHour, 60, 120),
        sample(8, T::rollHour, 120, 180), sample(9, T::rollHour, 180, 240), sample(10, T::standHour, 1400, 1460)});
  const QZHKActivitySummary expected{.day = day, .move = {50, 400}, .exercise = {0, 0}, .stand = {2, 12}};
  EXPECT_EQ(store.activitySummary(day), expected);
  EXPECT_EQ(store.activitySummary({minute(1440), minute(2880)}), std::nullopt);
}

TEST_F(SampleStoreTest, TheFilesAreTheOwnersAlone) {
  const mode_t mask = ::umask(0);
  save({steps(1, 0, 1)});
  ::umask(mask);
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(home())) {
    struct stat status {};
    ASSERT_EQ(::stat(entry.path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U) << entry.path();
    EXPECT_TRUE(entry.path().filename().string().starts_with("Habitra-Health.")) << entry.path();
    ++count;
  }
  EXPECT_GE(count, 3U);
}

TEST_F(SampleStoreTest, WhatCannotBeReadIsSaidAndLeftAlone) {
  save({steps(1, 0, 1), steps(2, 0, 1)});
  const auto complaint = [this] {
    SampleStore store = open();
    EXPECT_FALSE(store.isHealthDataAvailable());
    const auto written = failureOf([&] { save(store, {steps(3, 0, 1)}); });
    const auto read = failureOf([&] { (void)store.samples(all(T::stepCount)); });
    EXPECT_EQ(written, read);
    EXPECT_EQ(read.first, Reason::storage);
    return read.second;
  };
  const std::string name = file().string();
  runSQL(file(), "PRAGMA user_version=2");
  EXPECT_EQ(complaint(), name + " was made by a newer version of Habitra; bring Habitra up to date to open it");
  runSQL(file(), "PRAGMA application_id=5");
  EXPECT_EQ(complaint(), name + " is not a Habitra store; move it away, or choose another home with HABITRA_HOME");
  runSQL(file(), "PRAGMA user_version=1; PRAGMA application_id=" + std::to_string(SampleStore::applicationID));
  for (const std::string damage : {"unit='yard'", "amount=-1", "amount=NULL", "origin=9", "endDate=startDate-1"}) {
    runSQL(file(), "BEGIN; CREATE TABLE Kept AS SELECT * FROM Sample; UPDATE Sample SET " + damage + "; COMMIT");
    const auto read = failureOf([this] { (void)open().samples(all(T::stepCount)); });
    EXPECT_EQ(read.first, Reason::storage);
    EXPECT_TRUE(read.second.starts_with(name + " is damaged: a sample ")) << read.second;
    runSQL(file(), "DELETE FROM Sample; INSERT INTO Sample SELECT * FROM Kept; DROP TABLE Kept");
  }
  EXPECT_EQ(countOfSteps(), 2U);
}

TEST_F(SampleStoreTest, WhereNothingMayBeWrittenSamplesAreRead) {
  save({steps(1, 0, 1)});
  ChildProcess other([this](const ChildProcess::Talk&) {
    keepOrdinaryRights();
    std::filesystem::permissions(home(), std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    SampleStore store = open();
    if (store.samples(all(T::stepCount)).size() != 1) throw std::runtime_error("the sample is not read");
    const auto [reason, message] = failureOf([&] { save(store, {steps(2, 0, 1)}); });
    if (!message.starts_with(file().string() + " can be read but not written")) throw std::runtime_error(message);
  });
  EXPECT_TRUE(other.end());
  std::filesystem::permissions(home(), std::filesystem::perms::owner_all);
}

TEST_F(SampleStoreTest, AFullDiskLosesNothingThatWasSaved) {
  save({steps(1, 0, 1)});
  ChildProcess other([this](const ChildProcess::Talk&) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{1 << 20, 1 << 20};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    SampleStore store = open();
    const auto [reason, message] = failureOf([&store] {
      store.saveEach([](const SampleStore::Sink& sink) {
        for (std::uint32_t number = 2; number < 50'000; ++number) sink(steps(number, number, number));
      });
    });
    if (reason != Reason::storage) throw std::runtime_error(message);
    if (store.samples(all(T::stepCount)).size() != 1) throw std::runtime_error("part of it was written");
  });
  EXPECT_TRUE(other.end());
  save({steps(2, 0, 1)});
  EXPECT_EQ(countOfSteps(), 2U);
}

TEST_F(SampleStoreTest, ProgramsThatWriteAtTheSameTimeLoseNothing) {
  constexpr std::uint32_t each = 100;
  const auto write = [this](std::uint32_t first) {
    SampleStore store = open();
    for (std::uint32_t number = first; number < first + each; ++number) save(store, {steps(number, number, number)});
  };
  ChildProcess other([&](const ChildProcess::Talk&) { write(1000); });
  write(1);
  EXPECT_TRUE(other.end());
  EXPECT_EQ(countOfSteps(), 2 * each);
}

}  // namespace
}  // namespace habitra
