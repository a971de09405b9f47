#include <QZDateTime/Calendar.h>
#include <QZDateTime/ISO8601.h>
#include <QZDateTime/QZDateTimeCache.h>
#include <QZDateTime/YYYYMMDD.h>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstdlib>
#include <ctime>

#include "QZDateTime/Generators.h"
#include "QZDateTime/Printing.h"

namespace qz {
namespace {

TimeZone zone(std::string_view identifier) { return TimeZone::fromIdentifier(identifier).value(); }

Moment moment(std::string_view text) { return momentFromISO8601(text).value(); }

/// Another implementation that reads the same zone files: the C library's. It works through the process's TZ, which is
/// put back at the end.
class LibraryClock {
 public:
  explicit LibraryClock(const std::string& identifier) : before_(std::getenv("TZ") ? std::getenv("TZ") : "UTC") {
    set(":" + identifier);
  }
  ~LibraryClock() { set(before_); }
  LibraryClock(const LibraryClock&) = delete;
  LibraryClock& operator=(const LibraryClock&) = delete;

  [[nodiscard]] static std::tm wall(std::time_t seconds) {
    std::tm result{};
    localtime_r(&seconds, &result);
    return result;
  }

  /// The day of a moment by the C library's arithmetic.
  [[nodiscard]] static YYYYMMDD day(std::time_t seconds, const HHMMSS& startOfDay) {
    std::tm date = wall(seconds);
    const std::int64_t time = date.tm_hour * 3600 + date.tm_min * 60 + date.tm_sec;
    const bool startsInTheMorning = startOfDay.intValue() <= 43'200;
    if (startsInTheMorning && time < startOfDay.intValue()) --date.tm_mday;
    if (!startsInTheMorning && time >= startOfDay.intValue()) ++date.tm_mday;
    timegm(&date);  // puts a day 0 or 32 right
    return YYYYMMDD(date.tm_year + 1900, date.tm_mon + 1, date.tm_mday);
  }

 private:
  static void set(const std::string& value) {
    setenv("TZ", value.c_str(), 1);
    tzset();
  }

  std::string before_;
};

std::string anyZone() {
  return *rc::gen::elementOf(std::vector<std::string>{
      "Europe/Berlin", "America/New_York", "America/Sao_Paulo", "Africa/Cairo", "Africa/Casablanca", "Africa/Monrovia",
      "Asia/Kathmandu", "Asia/Tehran", "Australia/Lord_Howe", "America/St_Johns", "Pacific/Apia", "Pacific/Auckland",
      "Pacific/Kwajalein", "Antarctica/Troll", "Asia/Gaza", "Etc/GMT+12", "UTC"});
}

/// Mostly of the years that people live in and zone files list, often far outside: around 2400 to 2500, where the lists
/// of changes that are derived from the files end; around 9000; and back to the year 1.
std::int64_t anySeconds() {
  return *rc::gen::weightedOneOf<std::int64_t>({
      {4, rc::gen::inRange<std::int64_t>(-2'500'000'000, 4'500'000'000)},
      {2, rc::gen::inRange<std::int64_t>(13'500'000'000, 16'800'000'000)},
      {1, rc::gen::inRange<std::int64_t>(220'000'000'000, 225'000'000'000)},
      {1, rc::gen::inRange<std::int64_t>(-62'000'000'000, -2'500'000'000)},
  });
}

RC_GTEST_PROP(DayOfAMoment, IsWhatTheWallClockSays, ()) {
  const std::string identifier = anyZone();
  const TimeZone timeZone = zone(identifier);
  const LibraryClock clock(identifier);
  const HHMMSS startOfDay = *rc::gen::oneOf(rc::gen::just(HHMMSS::midnight), rc::gen::exec(anyTime));
  const std::int64_t base = anySeconds();
  // A run of moments through some days, so that cached answers serve neighbours.
  for (std::int64_t seconds = base; seconds < base + 400'000; seconds += 4999) {
    const Moment date(std::chrono::seconds{seconds});
    const YYYYMMDD expected = LibraryClock::day(seconds, startOfDay);
    RC_ASSERT(YYYYMMDD::calculateUncached(startOfDay, date, timeZone) == expected);
    RC_ASSERT(YYYYMMDD(startOfDay, date, timeZone) == expected);
    // Up to the last microsecond of the second it is the same day.
    RC_ASSERT(YYYYMMDD::today(startOfDay, timeZone, date + std::chrono::microseconds(999'999)) == expected);
    const std::tm wall = LibraryClock::wall(seconds);
    RC_ASSERT(HHMMSS::now(timeZone, date) == HHMMSS(wall.tm_hour, wall.tm_min, wall.tm_sec));
    RC_ASSERT(timeZone.offset(date).count() == wall.tm_gmtoff);
  }
}

RC_GTEST_PROP(DateAt, IsTheFirstMomentAtWhichClocksShowTheTimeOrHaveJumpedOverIt, ()) {
  const std::string identifier = anyZone();
  const LibraryClock clock(identifier);
  const YYYYMMDD day = YYYYMMDD::fromDayNumber(anySeconds() / 86'400);
  const HHMMSS time = anyTime();
  const std::int64_t target = day.dayNumber() * 86'400 + time.intValue();
  const auto local = [](std::int64_t seconds) { return seconds + LibraryClock::wall(seconds).tm_gmtoff; };
  // Between two moments of which clocks show less and more, bisect for the place where they pass the target; then look
  // an hour-long autumn back for the same time shown earlier.
  std::int64_t low = target - 2 * 86'400;
  std::int64_t high = target + 2 * 86'400;
  while (high - low > 1) {
    const std::int64_t middle = low + (high - low) / 2;
    (local(middle) < target ? low : high) = middle;
  }
  std::int64_t expected = high;
  for (const std::int64_t back : {1200, 1800, 2670, 3600, 7200, 86'400})
    if (local(high - back) == target) expected = std::min(expected, high - back);
  RC_ASSERT(day.dateAt(time, zone(identifier)) == Moment(std::chrono::seconds{expected}));
}

RC_GTEST_PROP(DateAt, LiesOnItsDayWhereverClocksDoNotJump, ()) {
  const TimeZone timeZone = zone("Europe/Berlin");
  const YYYYMMDD day = YYYYMMDD::fromDayNumber(between(4000, 40'000));
  const HHMMSS startOfDay = anyTime();
  const HHMMSS time =
      *rc::gen::suchThat(rc::gen::exec(anyTime), [](const HHMMSS& t) { return t.h() < 1 || t.h() > 3; });
  RC_PRE(startOfDay.h() < 1 || startOfDay.h() > 3);
  const Moment date = day.dateAt(startOfDay, time.h(), time.m(), time.s(), timeZone);
  RC_ASSERT(YYYYMMDD(startOfDay, date, timeZone) == day);
  RC_ASSERT(HHMMSS::now(timeZone, date) == time);
  const Moment beginning = day.beginning(startOfDay, timeZone);
  RC_ASSERT(YYYYMMDD(startOfDay, beginning, timeZone) == day);
  RC_ASSERT(YYYYMMDD(startOfDay, beginning - Moment::duration(1), timeZone) == day.previousDay());
}

RC_GTEST_PROP(DayOfAMoment, IsTheSameFromTheCacheThroughSummerAndWinter, ()) {
  const TimeZone timeZone = zone(anyZone());
  const std::int64_t base = *rc::gen::oneOf(
      rc::gen::exec(anySeconds), rc::gen::exec([] { return between(-9'000'000'000'000, 9'000'000'000'000); }));
  const Moment first{std::chrono::seconds(base)};
  // Days begin at that time of day, so that an offset that is an hour off shows.
  const HHMMSS startOfDay = HHMMSS::now(timeZone, first);
  for (int day = 0; day < 800; day += 9) {
    for (const int ticks : {0, -1}) {
      const Moment date = first + std::chrono::days(day) + Moment::duration(ticks);
      RC_ASSERT(YYYYMMDD::calculateCached(startOfDay, date, timeZone) ==
                YYYYMMDD::calculateUncached(startOfDay, date, timeZone));
    }
  }
}

TEST(DayOfAMoment, RulesGoOnBehindTheLastChangeThatIsListed) {
  const TimeZone berlin = zone("Europe/Berlin");
  for (const int year : {2199, 2200, 2437, 2438, 2474, 2837, 9999, 60'000}) {
    for (const auto& [month, offset] : {std::pair{7, 2}, std::pair{1, 1}, std::pair{6, 2}, std::pair{12, 1}}) {
      const YYYYMMDD day(year, month, 15);
      const Moment midnight = Moment(std::chrono::days(day.dayNumber())) - std::chrono::hours(offset);
      EXPECT_EQ(YYYYMMDD(HHMMSS(), midnight, berlin), day);
      EXPECT_EQ(YYYYMMDD(HHMMSS(), midnight - Moment::duration(1), berlin), day.previousDay());
    }
  }
}

TEST(DayOfAMoment, StartsOfDayOnBothSidesOfMidday) {
  struct Case {
    HHMMSS startOfDay;
    const char* moment;
    std::int64_t day;
  };
  const TimeZone berlin = zone("Europe/Berlin");
  for (const Case& c :
       {Case{{3, 0}, "2024-01-05T01:30:00+01:00", 20'240'104},
        Case{{3, 0}, "2024-01-05T02:59:59.999999+01:00", 20'240'104},
        Case{{3, 0}, "2024-01-05T03:00:00+01:00", 20'240'105}, Case{{20, 0}, "2024-01-04T19:59:59+01:00", 20'240'104},
        Case{{20, 0}, "2024-01-04T20:00:00+01:00", 20'240'105}, Case{{12, 0}, "2024-01-05T11:59:59+01:00", 20'240'104},
        Case{{12, 0}, "2024-01-05T12:00:00+01:00", 20'240'105},
        Case{{12, 0, 1}, "2024-01-05T12:00:00+01:00", 20'240'105},
        Case{{12, 0, 1}, "2024-01-05T12:00:01+01:00", 20'240'106},
        Case{{3, 0}, "2024-03-01T00:00:00+01:00", 20'240'229},
        Case{{23, 59, 59}, "2023-12-31T23:59:59+01:00", 20'240'101},
        Case{{0, 0}, "2024-03-31T00:00:00+01:00", 20'240'331}, Case{{2, 30}, "2024-03-31T03:00:00+02:00", 20'240'331},
        Case{{2, 30}, "2024-10-27T02:15:00+01:00", 20'241'026}}) {
    EXPECT_EQ(YYYYMMDD(c.startOfDay, moment(c.moment), berlin).rawValue(), c.day) << c.moment;
    EXPECT_EQ(YYYYMMDD::calculateUncached(c.startOfDay, moment(c.moment), berlin).rawValue(), c.day) << c.moment;
  }
}

TEST(DayOfAMoment, TheSpansKeptForAZoneBeginExactlyWhereClocksChange) {
  const TimeZone berlin = zone("Europe/Berlin");
  const Moment change = moment("2024-03-31T01:00:00Z");
  for (const std::int64_t ticks : {0, 1, -1, 999'999, -1'000'000}) {
    QZDateTimeCache::shared().evictAll();
    // The first look-up fills the span; the others, a winter and a summer midnight, must not be served by a wrong one.
    EXPECT_EQ(YYYYMMDD(HHMMSS(), change + Moment::duration(ticks), berlin), YYYYMMDD(2024, 3, 31));
    EXPECT_EQ(YYYYMMDD(HHMMSS(), moment("2024-02-01T23:00:00Z"), berlin), YYYYMMDD(2024, 2, 2));
    EXPECT_EQ(YYYYMMDD(HHMMSS(), moment("2024-02-01T22:59:59.999999Z"), berlin), YYYYMMDD(2024, 2, 1));
    EXPECT_EQ(YYYYMMDD(HHMMSS(), moment("2024-04-01T22:00:00Z"), berlin), YYYYMMDD(2024, 4, 2));
    EXPECT_EQ(YYYYMMDD(HHMMSS(), moment("2024-04-01T21:59:59.999999Z"), berlin), YYYYMMDD(2024, 4, 1));
  }
}

TEST(DateAt, DaysThatBeginOddly) {
  struct Case {
    const char* zone;
    YYYYMMDD day;
    HHMMSS time;
    const char* expected;
  };
  for (const Case& c : {
           Case{"Pacific/Apia", {2011, 12, 29}, {0, 0}, "2011-12-29T00:00:00-10:00"},
           Case{"Pacific/Apia", {2011, 12, 30}, {0, 0}, "2011-12-31T00:00:00+14:00"},  // the day that never was
           Case{"Pacific/Apia", {2011, 12, 30}, {15, 0}, "2011-12-31T00:00:00+14:00"},
           Case{"Pacific/Apia", {2011, 12, 31}, {0, 0}, "2011-12-31T00:00:00+14:00"},
           Case{"America/Sao_Paulo", {2018, 11, 4}, {0, 0}, "2018-11-04T01:00:00-02:00"},  // no midnight
           Case{"America/Sao_Paulo", {2018, 2, 18}, {0, 0}, "2018-02-18T00:00:00-03:00"},  // after 23:00 came twice
           Case{"America/Sao_Paulo", {2018, 2, 17}, {23, 30}, "2018-02-17T23:30:00-02:00"},
           Case{"Africa/Cairo", {2023, 4, 28}, {0, 0}, "2023-04-28T01:00:00+03:00"},
           Case{"Africa/Cairo", {2023, 4, 28}, {0, 30}, "2023-04-28T01:00:00+03:00"},
           Case{"Australia/Lord_Howe", {2024, 10, 6}, {2, 15}, "2024-10-06T02:30:00+11:00"},  // 30 minutes forward
           Case{"Australia/Lord_Howe", {2024, 4, 7}, {1, 45}, "2024-04-07T01:45:00+11:00"},   // and back
           Case{"Europe/Berlin", {2024, 3, 31}, {2, 30}, "2024-03-31T03:00:00+02:00"},
           Case{"Europe/Berlin", {2024, 10, 27}, {2, 30}, "2024-10-27T02:30:00+02:00"},
           Case{"UTC", {9999, 12, 31}, {23, 59, 59}, "9999-12-31T23:59:59Z"},
           Case{"UTC", {1, 1, 1}, {0, 0}, "0001-01-01T00:00:00Z"},
           Case{"UTC", {2023, 2, 30}, {6, 0}, "2023-03-02T06:00:00Z"},
       }) {
    for (int pass = 0; pass < 2; ++pass)  // computed, then remembered
      EXPECT_EQ(iso8601(c.day.dateAt(c.time, zone(c.zone))), iso8601(moment(c.expected))) << c.zone << " " << c.day;
  }
  const YYYYMMDD far(200'000, 6, 1);
  EXPECT_EQ(YYYYMMDD(HHMMSS(), far.startOfDay(zone("Europe/Berlin")), zone("Europe/Berlin")), far);
}

TEST(DateAt, TheDayBeginsOnTheDateBeforeWhenItsStartIsAfterMidday) {
  const TimeZone tokyo = zone("Asia/Tokyo");
  const YYYYMMDD day(2024, 1, 5);
  EXPECT_EQ(day.dateAt(HHMMSS(20, 0), tokyo), moment("2024-01-05T20:00:00+09:00"));
  EXPECT_EQ(day.beginning(HHMMSS(20, 0), tokyo), moment("2024-01-04T20:00:00+09:00"));
  EXPECT_EQ(day.dateAt(HHMMSS(20, 0), 21, 0, 0, tokyo), moment("2024-01-04T21:00:00+09:00"));
  EXPECT_EQ(day.dateAt(HHMMSS(20, 0), 19, 0, 0, tokyo), moment("2024-01-05T19:00:00+09:00"));
  EXPECT_EQ(day.beginning(HHMMSS(3, 0), tokyo), moment("2024-01-05T03:00:00+09:00"));
  EXPECT_EQ(day.dateAt(HHMMSS(3, 0), 1, 30, 0, tokyo), moment("2024-01-06T01:30:00+09:00"));
  EXPECT_EQ(day.beginning(HHMMSS::midday, tokyo), moment("2024-01-05T12:00:00+09:00"));
}

TEST(DayOfAMoment, WorksToBothEndsOfTime) {
  for (const char* name : {"UTC", "Pacific/Apia", "America/New_York"}) {
    for (const Moment date : {Moment::min(), Moment::max(), Moment(std::chrono::microseconds(-1))}) {
      for (const HHMMSS& startOfDay : {HHMMSS(), HHMMSS(3, 0), HHMMSS(20, 0)})
        EXPECT_EQ(YYYYMMDD(startOfDay, date, zone(name)), YYYYMMDD::calculateUncached(startOfDay, date, zone(name)));
    }
  }
  EXPECT_EQ(YYYYMMDD(HHMMSS(), Moment(std::chrono::microseconds(-1)), TimeZone::utc()), YYYYMMDD(1969, 12, 31));
}

TEST(Zones, UnknownNamesAndPathsAreNoZones) {
  for (const char* name : {"", "Mars/Olympus", "../zoneinfo/UTC", "Europe/../UTC", "/usr/share/zoneinfo/UTC",
                           "/etc/passwd", "localtime", "posixrules", "right/UTC", "posix/UTC", "Europe", "Europe/",
                           "europe/berlin", "tzdata.zi", "Fixed/UTC+01:00:00", ":UTC", "UTC ", "Europe/Berlin\n"})
    EXPECT_FALSE(TimeZone::fromIdentifier(name)) << name;
  EXPECT_FALSE(TimeZone::fromIdentifier(std::string_view("UTC\0", 4)));
  EXPECT_EQ(zone("Europe/Berlin").identifier(), "Europe/Berlin");
  EXPECT_EQ(zone("Europe/Berlin"), zone("Europe/Berlin"));
  EXPECT_NE(zone("Asia/Calcutta"), zone("Asia/Kolkata"));
  EXPECT_EQ(zone("UTC"), TimeZone::utc());
}

TEST(Zones, TheCurrentOneIsThatOfTheEnvironment) {
  {
    const LibraryClock clock("Asia/Kathmandu");  // sets TZ to ":Asia/Kathmandu"
    EXPECT_EQ(TimeZone::current().identifier(), "Asia/Kathmandu");
  }
  const LibraryClock clock("/usr/share/zoneinfo/Europe/Paris");
  EXPECT_EQ(TimeZone::current().identifier(), "Europe/Paris");
}

}  // namespace
}  // namespace qz
