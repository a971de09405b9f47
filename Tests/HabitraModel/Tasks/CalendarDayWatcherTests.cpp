#include <HabitraModel/Tasks/Processing/CalendarDayWatcher.h>
#include <QZDateTime/ISO8601.h>
#include <Support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <future>
#include <stdexcept>
#include <string_view>
#include <thread>

namespace habitra {
namespace {

qz::Moment at(std::string_view text) { return qz::momentFromISO8601(text).value(); }

qz::HHMMSS time(std::int64_t hour, std::int64_t minute = 0) { return qz::HHMMSS(hour, minute, 0); }

TaskCalendar calendar(std::string_view zone, qz::HHMMSS startOfDay) {
  return {startOfDay, qz::TimeZone::fromIdentifier(zone).value()};
}

TEST(NextStartOfDay, FollowsTheWallClock) {
  const TaskCalendar evening = calendar("UTC", time(20));
  EXPECT_EQ(nextStartOfDay(evening, at("2024-01-31T19:59:59Z")), at("2024-01-31T20:00:00Z")) << "the 1st begins";
  EXPECT_EQ(nextStartOfDay(evening, at("2024-01-31T20:00:00Z")), at("2024-02-01T20:00:00Z"));
  const TaskCalendar night = calendar("Europe/Berlin", time(2, 30));
  EXPECT_EQ(nextStartOfDay(night, at("2024-03-30T12:00:00Z")), at("2024-03-31T01:00:00Z")) << "02:30 is jumped over";
  EXPECT_EQ(nextStartOfDay(calendar("Pacific/Apia", time(0)), at("2011-12-29T20:00:00Z")), at("2011-12-30T10:00:00Z"))
      << "the 30th was left out";
}

/// Days that begin in an hour that is lived twice, and in one that is not there.
TEST(NextStartOfDay, IsWhenTheDayChanges) {
  for (const TaskCalendar& any :
       {calendar("Europe/Berlin", time(2, 30)), calendar("Europe/Berlin", time(3)),
        calendar("America/New_York", time(1, 30)), calendar("Australia/Lord_Howe", time(1, 45))}) {
    for (const std::string_view from : {"2024-10-26T10:00:00Z", "2024-03-30T10:00:00Z", "2024-11-02T10:00:00Z",
                                        "2024-03-09T10:00:00Z", "2024-04-06T04:00:00Z", "2024-10-05T04:00:00Z"}) {
      for (qz::Moment now = at(from); now < at(from) + std::chrono::hours(36); now += std::chrono::minutes(7)) {
        const qz::Moment next = nextStartOfDay(any, now);
        ASSERT_GT(next, now);
        ASSERT_EQ(any.day(next), any.day(next - std::chrono::microseconds(1)).nextDay());
        ASSERT_EQ(any.day(now).nextDay(), any.day(next)) << qz::iso8601(now);
      }
    }
  }
}

TEST(NextStartOfDay, IsTheEarliestOfAllTasks) {
  const TaskCalendars calendars(qz::TimeZone::utc(), time(3));
  TaskEntity late;
  late.startOfDayValue = 90'000;  // 01:00, counted modulo a day
  TaskEntity tokyo;
  tokyo.currentTimeZoneOverride = "Asia/Tokyo";
  const qz::Moment now = at("2024-01-31T12:00:00Z");
  EXPECT_EQ(nextStartOfDay(calendars, {}, now), at("2024-02-01T03:00:00Z"));
  EXPECT_EQ(nextStartOfDay(calendars, {&late}, now), at("2024-02-01T01:00:00Z"));
  EXPECT_EQ(nextStartOfDay(calendars, {&late, &tokyo}, now), at("2024-01-31T18:00:00Z"));
}

/// A watcher, and what it did.
class CalendarDayWatcherTest : public testing::Test {
 protected:
  static constexpr std::chrono::hours never{24 * 365 * 100};

  std::unique_ptr<CalendarDayWatcher> watcher(CalendarDayWatcher::Handler handler) {
    return std::make_unique<CalendarDayWatcher>(
        clock_,
        [this](qz::Moment now) {
          ++asked_;
          asked_.notify_all();
          return now + due_.load();
        },
        std::move(handler), folder_.path());
  }
  void waitUntilAsked(int times) {
    for (int asked = asked_; asked < times; asked = asked_) asked_.wait(asked);
  }

  TemporaryFolder folder_;
  std::shared_ptr<const qz::Clock> clock_ = std::make_shared<qz::SystemClock>();
  std::atomic<std::chrono::microseconds> due_ = std::chrono::microseconds(never);
  std::atomic<int> asked_ = 0;
};

TEST_F(CalendarDayWatcherTest, ADayThatBeginsIsToldAndTheNextIsWaitedFor) {
  due_ = std::chrono::microseconds(1);
  std::promise<void> told;
  std::atomic<int> calls = 0;
  const auto days = watcher([&](qz::Moment now) {
    EXPECT_LE(now, clock_->now());
    if (++calls == 1) throw std::runtime_error("a handler that fails is called again");
    if (calls < 3) return;
    due_ = never;
    told.set_value();
  });
  EXPECT_EQ(asked_, 0) << "nothing is started before it is asked for";
  days->start();
  days->start();
  told.get_future().wait();
  waitUntilAsked(4);
  days->stop();
  EXPECT_EQ(calls, 3);
  EXPECT_EQ(asked_, 4) << "each time anew";
}

TEST_F(CalendarDayWatcherTest, AnotherZoneIsToldAndAnotherStartOfDayAskedFor) {
  std::promise<void> told;
  const auto days = watcher([&](qz::Moment) { told.set_value(); });
  days->start();
  waitUntilAsked(1);
  days->startOfDayMayHaveChanged();
  waitUntilAsked(2);
  std::ofstream(folder_ / "resolv.conf") << "nothing about zones\n";
  std::filesystem::create_symlink("/usr/share/zoneinfo/Asia/Tokyo", folder_ / "localtime");
  told.get_future().wait();
  waitUntilAsked(3);
  days->stop();
  EXPECT_EQ(asked_, 3);
}

TEST_F(CalendarDayWatcherTest, StopsWhateverItWaitsFor) {
  for (int round = 0; round < 20; ++round) {
    const auto days = watcher([](qz::Moment) {});
    days->stop();
    const int before = asked_;
    days->start();
    if (round % 2 == 0) waitUntilAsked(before + 1);
    days->stop();
    days->start();
  }
}

}  // namespace
}  // namespace habitra
