#include <QZDateTime/Calendar.h>
#include <QZDateTime/QZDateTimeCache.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "QZDateTime/Printing.h"

namespace qz {
namespace {

TEST(Cache, SlotsCompareWholeKeys) {
  static WordCache<4> words;
  EXPECT_FALSE(words.find(0));
  EXPECT_FALSE(words.find(WordCache<4>::noKey + 4));
  words.store(5, 50);
  words.store(-2, 0xffff'ffff);
  EXPECT_EQ(words.find(5), 50U);
  EXPECT_EQ(words.find(-2), 0xffff'ffffU);
  EXPECT_FALSE(words.find(9));  // the same slot as 5
  words.store(9, 90);
  EXPECT_FALSE(words.find(5));
  words.evict();
  EXPECT_FALSE(words.find(9));

  static ThreadCache<int, 4, struct CacheTestTag> entries;
  EXPECT_EQ(entries.find(1), nullptr);
  entries.store(1, 10);
  EXPECT_EQ(*entries.find(1), 10);
  std::thread([] { EXPECT_EQ(entries.find(1), nullptr); }).join();  // of another thread
  entries.evict();
  EXPECT_EQ(entries.find(1), nullptr);
}

TEST(Cache, PacksTheDaysThatFitAWord) {
  for (const YYYYMMDD& day : {YYYYMMDD(2024, 2, 29), YYYYMMDD(-65'536, 1, 1), YYYYMMDD(65'535, 12, 31)}) {
    ASSERT_TRUE(QZDateTimeCache::fitsWord(day)) << day;
    const auto number = static_cast<std::int32_t>(day.dayNumber());
    EXPECT_EQ(QZDateTimeCache::unpacked(QZDateTimeCache::packed(day), number).yyyymmdd, day);
  }
  for (const YYYYMMDD& day : {YYYYMMDD(65'536, 1, 1), YYYYMMDD(-65'537, 12, 31), YYYYMMDD(2023, 2, 30)})
    EXPECT_FALSE(QZDateTimeCache::fitsWord(day)) << day;
}

/// Everything that goes through the cache, over some years that share slots, against the same without it.
bool agreesWithoutCache(std::int64_t base) {
  const TimeZone timeZone = TimeZone::fromIdentifier("Europe/London").value();
  const Calendar calendar(timeZone);
  const YYYYMMDD far(5'000'000, 1, 1);
  for (std::int64_t i = 0; i < 6000; ++i) {
    const YYYYMMDD day = YYYYMMDD::fromDayNumber(base + i * 17 % 50'000);
    if (day.add(i) != day.addUsingCalendar(calendar, i)) return false;
    if (day.nextDay() != day.nextDayUsingCalendar() || day.nextDay().previousDay() != day) return false;
    if (day.yyyymm().numberOfDays() != day_number::lengthOfMonth(day.y(), day.m())) return false;
    const Moment date = day.dateAt(HHMMSS(4, 0), timeZone);
    if (date != calendar.date(day, HHMMSS(4, 0))) return false;
    if (YYYYMMDD(HHMMSS(20, 0), date, timeZone) != YYYYMMDD::calculateUncached(HHMMSS(20, 0), date, timeZone))
      return false;
    const YYYYMMDD later = far.add(i);
    if (far.distance(later) != i || later.dayOfWeek() != far.dayOfWeek().add(i)) return false;
  }
  return true;
}

TEST(Cache, ManyThreadsAndEvictionsChangeNoResult) {
  std::atomic<bool> agrees = true;
  std::atomic<int> running = 4;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&agrees, &running, i] {
      if (!agreesWithoutCache(10'000 + 4096 * i)) agrees = false;
      --running;
    });
  while (running > 0) QZDateTimeCache::shared().evictAll();
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(agrees);
  EXPECT_TRUE(agreesWithoutCache(0));
}

}  // namespace
}  // namespace qz
