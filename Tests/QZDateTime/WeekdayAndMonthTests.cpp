#include <QZDateTime/DayOfWeek.h>
#include <QZDateTime/DaysOfWeek.h>
#include <QZDateTime/YYYYMM.h>
#include <QZDateTime/YYYYMMDD.h>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <limits>

#include "QZDateTime/Generators.h"
#include "QZDateTime/Printing.h"

namespace qz {
namespace {

constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();

TEST(DayOfWeek, GoesRoundTheWeek) {
  const DayOfWeek sunday = DayOfWeek::sunday;
  EXPECT_EQ(sunday.add(-1), DayOfWeek::saturday);
  EXPECT_EQ(sunday.add(14), DayOfWeek::sunday);
  EXPECT_EQ(DayOfWeek(DayOfWeek::saturday).next(), DayOfWeek::sunday);
  EXPECT_EQ(sunday.previous(), DayOfWeek::saturday);
  EXPECT_EQ(sunday.add(highest), DayOfWeek::sunday);  // 2^63 - 1 is a multiple of 7
  EXPECT_EQ(sunday.add(lowest), DayOfWeek::saturday);
  for (const std::int64_t none : {std::int64_t{7}, std::int64_t{-1}, std::int64_t{256}, highest})
    EXPECT_FALSE(DayOfWeek::fromRawValue(none));
  EXPECT_FALSE(CalendarDayOfWeek::fromRawValue(0));
  EXPECT_FALSE(CalendarDayOfWeek::fromRawValue(8));
  for (std::int64_t raw = 0; raw < 7; ++raw) {
    const DayOfWeek day = *DayOfWeek::fromRawValue(raw);
    EXPECT_EQ(day.rawValue(), raw);
    EXPECT_EQ(CalendarDayOfWeek(day).rawValue(), raw + 1);
    EXPECT_EQ(CalendarDayOfWeek(day).day(), day);
    const auto& row = DayOfWeek::every(day);
    for (std::size_t i = 0; i < 7; ++i) EXPECT_EQ(row.at(i), day.add(static_cast<std::int64_t>(i)));
    EXPECT_EQ(DayOfWeek::days(row), DayOfWeek::every());
  }
}

TEST(DaysOfWeek, IsASetOfBits) {
  EXPECT_EQ(DaysOfWeek::fromRawValue(127), DayOfWeek::every());
  EXPECT_EQ(DayOfWeek::every().count(), 7);
  EXPECT_EQ(DaysOfWeek::fromRawValue(65)->days(), (std::vector<DayOfWeek>{DayOfWeek::sunday, DayOfWeek::saturday}));
  EXPECT_FALSE(DaysOfWeek::fromRawValue(128));
  EXPECT_FALSE(DaysOfWeek::fromRawValue(-1));
  for (std::int64_t raw = 0; raw < 128; ++raw) {
    const DaysOfWeek set = *DaysOfWeek::fromRawValue(raw);
    EXPECT_EQ(set.rawValue(), raw);
    EXPECT_EQ(DayOfWeek::days(set.days()), set);
    for (const DayOfWeek day : DayOfWeek::every()) EXPECT_EQ(set.contains(day), (raw & 1 << day.rawValue()) != 0);
  }
  DaysOfWeek set = DaysOfWeek::monday | DaysOfWeek::friday;
  set.remove(DayOfWeek::monday);
  set.remove(DayOfWeek::tuesday);
  EXPECT_EQ(set, DaysOfWeek::friday);
  EXPECT_TRUE((set & DaysOfWeek::saturday).isEmpty());
  EXPECT_EQ(DaysOfWeek::saturday.rawValue(), 64);
}

RC_GTEST_PROP(Months, FollowEachOtherAndHoldTheirDays, ()) {
  const YYYYMMDD day = anyDay();
  const YYYYMM month = day.yyyymm();
  RC_ASSERT(month.firstDay() <= day);
  RC_ASSERT(day <= month.lastDay());
  RC_ASSERT(month.lastDay().nextDay() == month.nextMonth().firstDay());
  RC_ASSERT(month.firstDay().distance(month.lastDay(), true) == month.numberOfDays());
  RC_ASSERT(month.nextMonth().previousMonth() == month);
  RC_ASSERT(day.numberOfDaysRemainingThisMonth(true) == month.numberOfDays() - day.d() + 1);
  RC_ASSERT(day.numberOfDaysRemainingThisYear(false) == day.distance(month.lastMonthOfYear().lastDay()));
  RC_ASSERT(month.firstMonthOfYear().distance(month.lastMonthOfYear(), true) == 12);
  const std::int64_t numMonths = between(-100'000, 100'000);
  RC_ASSERT(month.distance(month.add(numMonths)) == numMonths);
  RC_ASSERT((month.add(numMonths) < month) == (numMonths < 0));
}

RC_GTEST_PROP(Months, GridOfWeeksIsFilledWithBlanks, ()) {
  const YYYYMM month = anyDay().yyyymm();
  const DayOfWeek first = anyWeekday();
  const std::int64_t before = month.numberOfDaysInWeekBeforeMonthStarts(first);
  const std::int64_t after = month.numberOfDaysInWeekAfterMonthEnds(first);
  RC_ASSERT(before >= 0 && before <= 6 && after >= 0 && after <= 6);
  RC_ASSERT((before + month.numberOfDays() + after) % 7 == 0);
  RC_ASSERT(month.firstDay().dayOfWeek() == first.add(before));
}

TEST(Months, EdgesOfTheIntegerForm) {
  EXPECT_EQ(YYYYMM::fromRawValue(202'401), YYYYMM(2024, 1));
  EXPECT_EQ(YYYYMM(2024, 1).rawValue(), 202'401);
  for (const std::int64_t none :
       {std::int64_t{0}, std::int64_t{-202'401}, std::int64_t{202'400}, std::int64_t{202'413}})
    EXPECT_FALSE(YYYYMM::fromRawValue(none));
  EXPECT_EQ(YYYYMM(1900, 2).numberOfDays(), 28);
  EXPECT_EQ(YYYYMM(2000, 2).numberOfDays(), 29);
  for (int pass = 0; pass < 2; ++pass) {  // computed, then remembered; two months of the same integer form apart
    EXPECT_EQ(YYYYMM(2023, 14).numberOfDays(), 29);
    EXPECT_EQ(YYYYMM(2022, 114).numberOfDays(), 30);
    EXPECT_EQ(YYYYMM(2024, -10).numberOfDays(), 28);
  }
  EXPECT_EQ(YYYYMM(2023, 14).lastDay(), YYYYMMDD(2024, 2, 29));
  EXPECT_EQ(YYYYMM(2024, 0).firstDay(), YYYYMMDD(2023, 12, 1));
  EXPECT_EQ(YYYYMM(33, 4).debugDescription(), "0033-04");
}

TEST(MonthsDeathTest, OverflowStopsTheProgram) {
  EXPECT_DEATH((void)YYYYMM(highest, 1).intValue(), "overflow in a multiplication");
  EXPECT_DEATH((void)YYYYMM(highest, 12).nextMonth(), "overflow");
  EXPECT_DEATH((void)YYYYMM(2024, 12).add(highest), "overflow in an addition");
}

}  // namespace
}  // namespace qz
