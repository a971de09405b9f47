#include <gtest/gtest.h>
#include <HabitraApp/Application.h>
#include <HabitraModel/DataManager.h>
#include <HabitraModel/Mapping/AutomaticTypeMapping.h>
#include <HabitraModel/Tasks/Recording/HealthWriteRequest.h>
#include <Support/SettableClock.h>
#include <Support/TemporaryFolder.h>

#include <chrono>
#include <memory>
#include <string>

namespace {

using habitra::Marked;
using habitra::TaskLogEntryType;
using Kind = habitra::CompletionStatus::Status::Kind;
using std::chrono::days;
using std::chrono::hours;

/// An application over a store of its own; midday of 31 January 2024, UTC.
class MarkingTests : public testing::Test {
 protected:
  /// Adds a habit to avoid, which no front end can make yet.
  void addToAvoid(const std::string& title) {
    application_.add(title);
    const auto context = manager().context();
    context->beginUnit();
    context->find<habitra::TaskEntity>("title", title)->isNegative = true;
    context->save({.author = habitra::Author::app});
  }

  [[nodiscard]] std::size_t rowsInLog(const std::string& title) {
    const auto context = manager().context();
    return context->fetchLogEntries(context->find<habitra::TaskEntity>("title", title)->objectID).size();
  }

  Marked done(const std::string& title, std::optional<qz::YYYYMMDD> day = {}) {
    return application_.done({title}, day).at(0);
  }
  Marked skip(const std::string& title, std::optional<qz::YYYYMMDD> day = {}) {
    return application_.skip({title}, day).at(0);
  }

  TemporaryFolder folder_;
  std::shared_ptr<SettableClock> clock_ =
      std::make_shared<SettableClock>(qz::Moment(std::chrono::sys_days(std::chrono::January / 31 / 2024) + hours(12)));
  habitra::Application application_{{.home = folder_ / "home", .clock = clock_, .timeZone = qz::TimeZone::utc()}};

  habitra::DataManager manager() { return {habitra::DataManager::storeLocation(folder_ / "home"), clock_}; }
};

TEST_F(MarkingTests, aHabitToAvoidIsConfirmedOnce) {
  addToAvoid("Sweets");
  EXPECT_EQ(done("Sweets").outcome, Marked::Outcome::recorded) << "clean, but nobody has said so";
  const std::size_t rows = rowsInLog("Sweets");
  EXPECT_EQ(done("Sweets").outcome, Marked::Outcome::already);
  EXPECT_EQ(rowsInLog("Sweets"), rows);
  EXPECT_EQ(skip("Sweets").outcome, Marked::Outcome::recorded);
  EXPECT_EQ(skip("Sweets").outcome, Marked::Outcome::already);
  EXPECT_EQ(done("Sweets").outcome, Marked::Outcome::recorded);
  application_.undo("Sweets", {});
  EXPECT_EQ(done("Sweets").outcome, Marked::Outcome::recorded) << "what was taken back can be said again";

  clock_->advance(days(2));
  const Marked past = done("Sweets", qz::YYYYMMDD(2024, 1, 31));
  EXPECT_EQ(past.outcome, Marked::Outcome::already);
  ASSERT_TRUE(past.pastDay);
  EXPECT_EQ(past.pastDay->status->status.kind(), Kind::negativeComplete);
  EXPECT_EQ(done("Sweets", qz::YYYYMMDD(2024, 2, 1)).outcome, Marked::Outcome::recorded);
}

TEST_F(MarkingTests, aPastDayIsJudgedByItself) {
  application_.add("Read");
  clock_->advance(days(2));  // the two days before are missed
  const qz::YYYYMMDD missed(2024, 2, 1);
  done("Read");
  const Marked past = done("Read", missed);
  EXPECT_EQ(past.outcome, Marked::Outcome::recorded) << "today is done, that day was not";
  ASSERT_TRUE(past.pastDay);
  EXPECT_EQ(past.pastDay->day, missed);
  EXPECT_EQ(past.pastDay->status->status.kind(), Kind::positiveComplete);
  EXPECT_EQ(past.habit.streak.current, 2);
  EXPECT_EQ(past.habit.lastMissed, qz::YYYYMMDD(2024, 1, 31));

  EXPECT_EQ(done("Read", missed).outcome, Marked::Outcome::already);
  EXPECT_EQ(skip("Read", missed).pastDay->status->status.kind(), Kind::positiveSkip);
  EXPECT_EQ(done("Read", qz::YYYYMMDD(2024, 2, 2)).pastDay.has_value(), false) << "its today, by name";
  const Marked beforeAll = done("Read", qz::YYYYMMDD(2024, 1, 30));
  EXPECT_EQ(beforeAll.outcome, Marked::Outcome::recorded);
  EXPECT_EQ(beforeAll.habit.streak.current, 1);
}

TEST_F(MarkingTests, whatTookPlaceOnAPastDayIsToldOfThatDay) {
  using namespace habitra;
  application_.add("Meditate");
  const auto context = manager().context();
  context->beginUnit();
  AutomaticTaskType calm = AutomaticTaskType::ofNewTask(
      AutomaticTaskType::TaskType::healthKit(HealthType::mindfulMinutes), TaskFrequencyPeriodType::day);
  calm.quantity = 10.0;
  calm.unit = TypeUnit::durationMinutes;
  setAutomaticType(*context->find<TaskEntity>("title", "Meditate"), calm);
  context->save({.author = Author::app});
  clock_->advance(days(2));
  done("Meditate", qz::YYYYMMDD(2024, 2, 1));
  context->refresh();
  const auto requests = context->fetchAll<HealthKitRequestEntity>();
  ASSERT_EQ(requests.size(), 1u);
  const auto told = HealthWriteRequest::of(*requests.front());
  ASSERT_TRUE(told);
  const qz::Moment noon = clock_->now() - days(1);
  EXPECT_EQ(told->sample.end, noon);
  EXPECT_EQ(told->sample.start, noon - std::chrono::minutes(10));
}

TEST_F(MarkingTests, aDayThatHasNotComeIsAnErrorAndRecordsNothing) {
  application_.add("Read");
  try {
    done("Read", qz::YYYYMMDD(2030, 1, 1));
    FAIL();
  } catch (const qz::Error& error) {
    EXPECT_STREQ(error.what(), "2030-01-01 has not come yet for 'Read'");
  }
  clock_->set(qz::Moment(hours(12)));
  EXPECT_THROW(done("Read"), qz::Error) << "a clock that fell back to 1970";
  EXPECT_EQ(rowsInLog("Read"), 0u);
}

TEST_F(MarkingTests, historyGoesThoughNobodyObserves) {
  for (int i = 0; i < 3; ++i) application_.add("Habit " + std::to_string(i));
  const auto context = manager().context();
  for (int i = 0; i < 4; ++i) {
    ++context->find<habitra::TaskEntity>("title", "Habit 0")->displayOrder;
    context->save({.author = habitra::Author::app});
  }
  for (int i = 0; i < 200; ++i) {
    context->find<habitra::TaskEntity>("title", "Habit 1")->displayOrder = static_cast<std::int16_t>(100 + i);
    context->save({.author = habitra::Author::app, .command = "move"});
  }
  clock_->advance(days(8));
  habitra::Application(
      {.home = folder_ / "home", .clock = clock_, .timeZone = qz::TimeZone::utc(), .timeIsGiven = true})
      .process();
  context->refresh();
  EXPECT_EQ(context->oldestKeptSequence(), 1) << "that time need not have come";
  application_.processIfDue();
  context->refresh();
  EXPECT_EQ(context->oldestKeptSequence(), 8) << "undo reaches 200 commands";
}

}  // namespace
