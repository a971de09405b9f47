#include <HabitraModel/PersistentHistoryFetcher.h>
#include <HabitraModel/Store/History/HistoryTrimming.h>

#include "StoreFixture.h"

namespace habitra {
namespace {

using std::chrono::days;

class HistoryTrimmingTest : public StoreTest {
 protected:
  std::int64_t save(std::optional<std::string> command = std::nullopt) {
    TaskEntity* task = context_->find<TaskEntity>("title", "Walk");
    if (task == nullptr) task = &context_->insert(titled("Walk"));
    ++task->bestStreak;
    return context_->save({.command = std::move(command)}).sequence;
  }
  void save(int count, const std::optional<std::string>& command = std::nullopt) {
    for (int i = 0; i < count; ++i) save(command);
  }
  HistoryReader reader(std::int64_t sequence) {
    return {.token = {context_->storeIdentifier(), sequence}, .lastRead = clock_->now()};
  }
  HistoryTrimming::Report trim(const std::vector<HistoryReader>& readers, HistoryTrimming::Limits limits = {}) {
    return HistoryTrimming::trim(*context_, readers, clock_->now(), limits);
  }
  [[nodiscard]] std::string counts() const {
    return runSQL(file(),
                  "SELECT (SELECT count(*) FROM habitra_transaction), (SELECT count(*) FROM habitra_change), "
                  "(SELECT count(before) FROM habitra_change)")
        .at(0);
  }

  std::unique_ptr<StoreContext> context_ = open();
};

TEST_F(HistoryTrimmingTest, ATransactionGoesWhenItIsReadOldAndOutOfReach) {
  save(10);
  EXPECT_EQ(trim({}), HistoryTrimming::Report{}) << "too young";
  clock_->advance(days(7));
  EXPECT_EQ(trim({}), HistoryTrimming::Report{}) << "a week, and not more";
  clock_->advance(std::chrono::seconds(1));
  save(1);

  const auto before = context_->sequence();
  EXPECT_EQ(trim({reader(9), reader(4)}), (HistoryTrimming::Report{.transactions = 4, .changes = 4}));
  HistoryReader ofAnotherStore = reader(5);
  ofAnotherStore.token.storeIdentifier = "another";
  HistoryReader forgotten = reader(6);
  forgotten.lastRead -= days(91);
  EXPECT_EQ(trim({ofAnotherStore, forgotten, reader(7)}).transactions, 3);
  EXPECT_EQ(trim({}).transactions, 3) << "the eleventh is young";
  EXPECT_EQ(counts(), "1|1|0");
  EXPECT_EQ(context_->sequence(), before) << "leaves no history of its own";
  EXPECT_TRUE(PersistentHistoryFetcher(*context_).fetch({context_->storeIdentifier(), 9}).everythingChanged);
  EXPECT_FALSE(PersistentHistoryFetcher(*context_).fetch({context_->storeIdentifier(), 10}).everythingChanged);

  clock_->advance(days(8));
  EXPECT_EQ(trim({}).transactions, 1);
  EXPECT_EQ(counts(), "0|0|0");
  EXPECT_EQ(save(), 12) << "numbers are never given twice";
}

TEST_F(HistoryTrimmingTest, WhatUndoReachesStays) {
  save(3);
  save(1, "first");
  save(2);
  save(198, "command");
  clock_->advance(days(30));
  EXPECT_EQ(trim({}).transactions, 3) << "the first of 199 commands is in reach";
  EXPECT_EQ(counts(), "201|201|199");
  save(1, "the two hundredth");
  EXPECT_EQ(trim({}), HistoryTrimming::Report{});
  save(1, "one more");
  EXPECT_EQ(trim({}), (HistoryTrimming::Report{.transactions = 3, .changes = 3}));
  EXPECT_EQ(counts(), "200|200|200");
}

TEST_F(HistoryTrimmingTest, ValuesBeforeGoWithTheReachOfUndoHoweverYoung) {
  save(1);
  save(270, "command");
  EXPECT_EQ(trim({reader(1)}).valuesBefore, 64) << "in parts";
  EXPECT_EQ(trim({reader(1)}), (HistoryTrimming::Report{.valuesBefore = 6}));
  EXPECT_EQ(trim({reader(1)}), HistoryTrimming::Report{});
  EXPECT_EQ(counts(), "271|271|200");
  EXPECT_EQ(runSQL(file(), "SELECT min(sequence) FROM habitra_change WHERE before IS NOT NULL").at(0), "72");
}

TEST_F(HistoryTrimmingTest, OneCallDoesABoundedPartAndLeavesNoHoles) {
  save(1);
  const ObjectID task = context_->find<TaskEntity>("title", "Walk")->objectID;
  for (int i = 0; i < 50; ++i) context_->insertLogEntry(entryOn(task, 20240101 + i));
  context_->save({});
  save(10);
  clock_->advance(days(8));
  const HistoryTrimming::Limits limits{.transactions = 4, .changes = 20};
  EXPECT_EQ(trim({}, limits), (HistoryTrimming::Report{.transactions = 4, .changes = 20}));
  const auto history = PersistentHistoryFetcher(*context_).fetch({context_->storeIdentifier(), 4});
  ASSERT_EQ(history.transactions.size(), 8U);
  for (const auto& read : history.transactions) EXPECT_EQ(read.changes.size(), 1U);
  context_->refresh();
  EXPECT_EQ(trim({}, limits).transactions, 4);
  EXPECT_EQ(trim({}, limits).transactions, 4);
  EXPECT_EQ(trim({}, limits), (HistoryTrimming::Report{.changes = 1}));
  EXPECT_EQ(trim({}, limits), HistoryTrimming::Report{});
  EXPECT_EQ(counts(), "0|0|0");
  EXPECT_EQ(runSQL(file(), "PRAGMA integrity_check"), std::vector<std::string>{"ok"});
}

TEST_F(HistoryTrimmingTest, ProgramsThatEndSoonTrimOnceADay) {
  save(700);
  const auto defaults = KeyValueDefaults::inMemory();
  const auto trimmed = [&] { return HistoryTrimming::trimDaily(*context_, *defaults, clock_->now()).transactions; };
  EXPECT_EQ(trimmed(), 0);
  EXPECT_TRUE(defaults->keys().empty()) << "nothing is kept while nothing is old";
  clock_->advance(days(8));
  setHistoryReader(*defaults, Author::widget, reader(600));
  EXPECT_EQ(trimmed(), 600) << "more than one step, and only what was read";
  setHistoryReader(*defaults, Author::widget, reader(650));
  clock_->advance(std::chrono::hours(23));
  EXPECT_EQ(trimmed(), 0) << "tomorrow";
  clock_->advance(std::chrono::hours(1));
  EXPECT_EQ(trimmed(), 50);
  clock_->advance(-days(1));
  setHistoryReader(*defaults, Author::widget, reader(690));
  EXPECT_EQ(trimmed(), 40) << "a clock that was wrong holds nothing up";
}

TEST_F(HistoryTrimmingTest, WhoeverReadsMeanwhileKeepsTheView) {
  save(5);
  clock_->advance(days(8));
  const auto reading = open();
  EXPECT_EQ(reading->sequence(), 5);
  EXPECT_EQ(trim({}).transactions, 5);
  EXPECT_EQ(PersistentHistoryFetcher(*reading).fetch().transactions.size(), 5U);
  reading->refresh();
  EXPECT_TRUE(PersistentHistoryFetcher(*reading).fetch().everythingChanged);
  context_->insert(titled("Run"));
  EXPECT_DEATH(trim({}), "in the midst of a unit");
}

}  // namespace
}  // namespace habitra
