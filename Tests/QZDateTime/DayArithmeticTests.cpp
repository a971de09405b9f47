#include <QZDateTime/Calendar.h>
#include <QZDateTime/YYYYMMDD.h>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <array>
#include <cmath>
#include <limits>

#include "QZDateTime/Generators.h"
#include "QZDateTime/Printing.h"

namespace qz {
namespace {

constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();

/// The second, slower definition: a calendar that is walked day by day, as on paper.
class PaperCalendar {
 public:
  PaperCalendar(std::int64_t y, DayOfWeek weekday) : y_(y), weekday_(weekday) {}

  void turn() {
    const bool leap = y_ % 400 == 0 || (y_ % 4 == 0 && y_ % 100 != 0);
    const std::array<int, 12> lengths = {31, leap ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    weekday_ = *DayOfWeek::fromRawValue(weekday_ == DayOfWeek::saturday ? 0 : weekday_.rawValue() + 1);
    if (++d_ <= lengths.at(static_cast<std::size_t>(m_ - 1))) return;
    d_ = 1;
    if (++m_ <= 12) return;
    m_ = 1;
    ++y_;
  }

  [[nodiscard]] YYYYMMDD day() const { return YYYYMMDD(y_, m_, d_); }
  [[nodiscard]] DayOfWeek weekday() const { return weekday_; }

 private:
  std::int64_t y_;
  std::int64_t m_ = 1;
  std::int64_t d_ = 1;
  DayOfWeek weekday_;
};

/// The number of 1 January, counted in years and their leap days.
std::int64_t newYear(std::int64_t y) {
  const auto part = [&](double length) {
    return static_cast<std::int64_t>(std::floor(static_cast<double>(y - 1) / length));
  };
  return 365 * (y - 1) + part(4) - part(100) + part(400) - 719'162;
}

/// Walks `years` years from 1 January of `y` and compares every operation.
void walk(std::int64_t y, std::int64_t years) {
  const std::int64_t number = newYear(y);
  const DayOfWeek weekday = *DayOfWeek::fromRawValue(((number + 4) % 7 + 7) % 7);  // 1970 began on a Thursday
  const YYYYMMDD first(y, 1, 1);
  const Calendar calendar(TimeZone::utc());
  YYYYMMDD stepped = first;
  PaperCalendar paper(y, weekday);
  for (std::int64_t n = 0; paper.day().y() < y + years; ++n, paper.turn(), stepped = stepped.nextDay()) {
    const YYYYMMDD day = paper.day();
    ASSERT_EQ(stepped, day);
    ASSERT_EQ(day.dayNumber(), number + n);
    ASSERT_EQ(YYYYMMDD::fromDayNumber(number + n), day);
    ASSERT_EQ(day.dayOfWeek(), paper.weekday());
    ASSERT_EQ(first.distance(day), n);
    ASSERT_EQ(first.add(n), day);
    ASSERT_EQ(first.addUsingCalendar(calendar, n), day);
    ASSERT_EQ(day.nextDay(), day.nextDayUsingCalendar());
    ASSERT_EQ(day.nextDay().previousDay(), day);
    ASSERT_TRUE(day.exists());
  }
}

TEST(DayArithmetic, AgreesWithACalendarThatIsWalkedDayByDay) {
  walk(1, 5);
  walk(1695, 420);
  walk(9998, 4);
  walk(40'000, 5);
  walk(1'000'000, 5);
  // Where days stop carrying their number, and sums stop fitting a word of the cache.
  walk(65'530, 10);
  walk(-65'540, 10);
  walk(3'997'800, 20);
  walk(3'999'999, 4);
  walk(-4'000'001, 4);
  walk(-3, 5);
}

RC_GTEST_PROP(DayArithmetic, RepeatsEvery400Years, ()) {
  const YYYYMMDD day = anyDay();
  const std::int64_t eras = between(-1'000'000'000'000, 1'000'000'000'000);
  const YYYYMMDD later(day.y() + 400 * eras, day.m(), day.d());
  RC_ASSERT(later.exists());
  RC_ASSERT(later.dayOfWeek() == day.dayOfWeek());
  RC_ASSERT(day.distance(later) == eras * 146'097);
  RC_ASSERT(later.distance(day, true) == -eras * 146'097 + 1);
  RC_ASSERT(day.add(eras * 146'097) == later);
}

RC_GTEST_PROP(DayArithmetic, AddingAndDistanceUndoEachOther, ()) {
  const YYYYMMDD day = anyDay();
  const std::int64_t numDays = *rc::gen::oneOf(rc::gen::inRange<std::int64_t>(-70, 71),
                                               rc::gen::inRange<std::int64_t>(-2'000'000'000, 2'000'000'000));
  const YYYYMMDD sum = day.add(numDays);
  RC_ASSERT(sum.exists());
  RC_ASSERT(day.distance(sum) == numDays);
  RC_ASSERT(sum.advanced(-numDays) == day);
  RC_ASSERT((sum < day) == (numDays < 0));
  RC_ASSERT(sum == day.addUsingCalendar(Calendar(TimeZone::utc()), numDays));
  RC_ASSERT(sum.previousDay().nextDay() == sum);
}

TEST(DayArithmetic, IntegerFormIsTakenAsItStands) {
  const auto day = YYYYMMDD::fromRawValue(20'240'131);
  ASSERT_TRUE(day);
  EXPECT_EQ(*day, YYYYMMDD(2024, 1, 31));
  EXPECT_EQ(day->rawValue(), 20'240'131);
  for (const std::int64_t none : {std::int64_t{0}, std::int64_t{-1}, std::int64_t{-20'240'131}, lowest})
    EXPECT_FALSE(YYYYMMDD::fromRawValue(none));
  for (const std::int64_t odd : {std::int64_t{1}, std::int64_t{99'999'999}, std::int64_t{20'230'230}, highest}) {
    EXPECT_EQ(YYYYMMDD::fromRawValue(odd)->rawValue(), odd);
    EXPECT_FALSE(YYYYMMDD::fromRawValue(odd)->exists());
  }
  EXPECT_EQ(YYYYMMDD(), YYYYMMDD::emptyValue);
  EXPECT_EQ(YYYYMMDD::emptyValue.rawValue(), 0);
  EXPECT_LT(YYYYMMDD::emptyValue, YYYYMMDD(1, 1, 1));
}

TEST(DayArithmetic, ADayThatDoesNotExistRollsOver) {
  struct Case {
    YYYYMMDD held;
    YYYYMMDD means;
  };
  for (const Case& c :
       {Case{{2023, 2, 30}, {2023, 3, 2}}, Case{{2024, 2, 30}, {2024, 3, 1}}, Case{{1900, 2, 29}, {1900, 3, 1}},
        Case{{2023, 13, 1}, {2024, 1, 1}}, Case{{2023, 0, 1}, {2022, 12, 1}}, Case{{2023, 5, 0}, {2023, 4, 30}},
        Case{{2023, -13, -1}, {2021, 10, 30}}, Case{{2023, 99, 99}, {2031, 6, 7}}}) {
    EXPECT_FALSE(c.held.exists()) << c.held;
    EXPECT_EQ(c.held.add(0), c.means) << c.held;
    EXPECT_EQ(c.held.nextDay(), c.means.nextDay()) << c.held;
    EXPECT_EQ(c.held.previousDay(), c.means.previousDay()) << c.held;
    EXPECT_EQ(c.held.dayOfWeek(), c.means.dayOfWeek()) << c.held;
    EXPECT_EQ(c.held.distance(c.means), 0) << c.held;
    EXPECT_EQ(c.held.numberOfDaysRemainingThisMonth(true), c.means.numberOfDaysRemainingThisMonth(true)) << c.held;
    EXPECT_EQ(c.held.numberOfDaysRemainingThisYear(false), c.means.numberOfDaysRemainingThisYear(false)) << c.held;
  }
}

TEST(DayArithmetic, DistanceCountsThisDayWhenAsked) {
  const YYYYMMDD monday(2024, 1, 29);
  EXPECT_EQ(monday.distance(YYYYMMDD(2024, 1, 31)), 2);
  EXPECT_EQ(monday.distance(YYYYMMDD(2024, 1, 31), true), 3);
  EXPECT_EQ(monday.distance(monday, true), 1);
  EXPECT_EQ(YYYYMMDD(2024, 3, 1).distance(YYYYMMDD(2024, 2, 28)), -2);
}

RC_GTEST_PROP(Weeks, HoldTheirDayAndBeginOnTheFirstWeekday, ()) {
  const YYYYMMDD day = anyDay();
  const DayOfWeek first = anyWeekday();
  const YYYYMMDD start = day.startOfWeek(first);
  RC_ASSERT(start.dayOfWeek() == first);
  RC_ASSERT(start <= day);
  RC_ASSERT(start.distance(day.endOfWeek(first)) == 6);
  RC_ASSERT(day.numberOfDaysRemainingThisWeek(first, false) == day.distance(start.add(6)));
  RC_ASSERT(day.numberOfDaysRemainingThisWeek(first, true) == day.distance(start.add(7)));
}

RC_GTEST_PROP(Fortnights, AreWholeWeeksAlignedToTheWeekOfTheReference, ()) {
  const YYYYMMDD day = anyDay();
  const YYYYMMDD reference = day.add(between(-3000, 3000));
  const DayOfWeek first = anyWeekday();
  const YYYYMMDD start = day.startOfFortnight(first, reference);
  RC_ASSERT(start <= day);
  RC_ASSERT(day <= start.add(13));
  RC_ASSERT(day.endOfFortnight(first, reference) == start.add(13));
  RC_ASSERT(start.distance(reference.startOfWeek(first)) % 14 == 0);
  // Every day of the block, and every day of the reference's week, gives the same block.
  RC_ASSERT(start.add(between(0, 13)).startOfFortnight(first, reference) == start);
  RC_ASSERT(day.startOfFortnight(first, reference.startOfWeek(first).add(between(0, 6))) == start);
  RC_ASSERT(day.numberOfDaysRemainingThisFortnight(first, true, reference) == day.distance(start.add(14)));
}

TEST(Fortnights, NeverOverlapAroundTheDefaultReference) {
  // 2000-01-01 was a Saturday; with weeks from Friday its week began on 1999-12-31.
  EXPECT_EQ(YYYYMMDD(2000, 1, 7).startOfFortnight(DayOfWeek::friday), YYYYMMDD(1999, 12, 31));
  EXPECT_EQ(YYYYMMDD(2000, 1, 8).startOfFortnight(DayOfWeek::friday), YYYYMMDD(1999, 12, 31));
  EXPECT_EQ(YYYYMMDD(2000, 1, 14).startOfFortnight(DayOfWeek::friday), YYYYMMDD(2000, 1, 14));
  EXPECT_EQ(YYYYMMDD(1999, 12, 30).startOfFortnight(DayOfWeek::friday), YYYYMMDD(1999, 12, 17));
}

TEST(Range, IncludesBothEndsAndIsOpenWhereOneIsAbsent) {
  const YYYYMMDD day(2024, 2, 29);
  const YYYYMMDD::Range one{day, day};
  EXPECT_TRUE(one.contains(day));
  EXPECT_FALSE(one.contains(day.nextDay()));
  EXPECT_FALSE(one.contains(day.previousDay()));
  EXPECT_TRUE(YYYYMMDD::Range::from(day).contains(day.add(1'000'000)));
  EXPECT_FALSE(YYYYMMDD::Range::from(day).contains(day.previousDay()));
  EXPECT_TRUE(YYYYMMDD::Range::to(day).contains(day.add(-1'000'000)));
  EXPECT_FALSE(YYYYMMDD::Range::to(day).contains(day.nextDay()));
}

TEST(DayDeathTest, OverflowStopsTheProgram) {
  const YYYYMMDD far(highest, 1, 1);
  EXPECT_DEATH((void)far.intValue(), "overflow in a multiplication");
  EXPECT_DEATH((void)YYYYMMDD(highest / 10'000, 99, 9999).intValue(), "overflow in a");
  EXPECT_DEATH((void)far.nextDay(), "overflow");
  EXPECT_DEATH((void)far.dayOfWeek(), "overflow");
  EXPECT_DEATH((void)YYYYMMDD(lowest, 1, 1).previousDay(), "overflow");
  EXPECT_DEATH((void)YYYYMMDD(2024, lowest, 1).dayNumber(), "overflow");
  EXPECT_DEATH((void)YYYYMMDD(2024, 1, lowest).dayNumber(), "overflow");
  EXPECT_DEATH((void)YYYYMMDD(2024, 1, 31).add(highest), "overflow");
  EXPECT_DEATH((void)YYYYMMDD(1969, 1, 1).add(lowest), "overflow");
  const YYYYMMDD early = YYYYMMDD::fromDayNumber(lowest);
  EXPECT_DEATH((void)early.distance(YYYYMMDD::fromDayNumber(highest)), "overflow in a subtraction");
  EXPECT_DEATH((void)YYYYMMDD(400'000, 1, 1).startOfDay(TimeZone::utc()), "day outside the range of a moment");
}

TEST(DayArithmetic, DebugText) {
  EXPECT_EQ(YYYYMMDD(24, 1, 2).debugDescription(), "0024-01-02");
  EXPECT_EQ(YYYYMMDD(lowest, lowest, lowest).debugDescription().size(), 62U);
}

}  // namespace
}  // namespace qz
