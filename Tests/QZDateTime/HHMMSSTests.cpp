#include <QZDateTime/HHMMSS.h>
#include <QZDateTime/ISO8601.h>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <limits>

#include "QZDateTime/Generators.h"
#include "QZDateTime/Printing.h"

namespace qz {
namespace {

Moment moment(std::string_view text) { return momentFromISO8601(text).value(); }

std::vector<std::string> texts(const std::vector<Moment>& moments) {
  std::vector<std::string> result;
  for (const Moment date : moments) result.push_back(iso8601(date));
  return result;
}

TEST(HHMMSS, IsMadeOfSecondsOfOneDay) {
  EXPECT_EQ(HHMMSS::fromRawValue(86'399), HHMMSS(23, 59, 59));
  EXPECT_EQ(HHMMSS::fromRawValue(0), HHMMSS::midnight);
  for (const std::int64_t none : {std::int64_t{86'400}, std::int64_t{-1}, std::numeric_limits<std::int64_t>::min()})
    EXPECT_FALSE(HHMMSS::fromRawValue(none));
  for (std::int64_t s = 0; s < 86'400; s += 7) ASSERT_EQ(HHMMSS::fromRawValue(s)->rawValue(), s);
  EXPECT_LT(HHMMSS(9, 59, 59), HHMMSS(10, 0));
  EXPECT_EQ(HHMMSS(8, 5, 0).debugDescription(), "08:05:00");
}

TEST(HHMMSS, AddsRoundTheClockOrStaysInTheDay) {
  EXPECT_EQ(HHMMSS(23, 30).add(1, 0, 0, true), HHMMSS(0, 30));
  EXPECT_EQ(HHMMSS(23, 30).add(1, 0, 0, false), HHMMSS(23, 59, 59));
  EXPECT_EQ(HHMMSS(0, 30).add(-1, 0, 0, true), HHMMSS(23, 30));
  EXPECT_EQ(HHMMSS(0, 30).add(-1, 0, 0, false), HHMMSS::midnight);
  EXPECT_EQ(HHMMSS(10, 0).add(48, -90, 5, true), HHMMSS(8, 30, 5));
  EXPECT_EQ(HHMMSS(10, 0).add(-0.9, true), HHMMSS(10, 0));
  EXPECT_EQ(HHMMSS(10, 0).add(86'401.5, true), HHMMSS(10, 0, 1));
}

TEST(HHMMSS, IsWithinHoursTheShortWayRound) {
  EXPECT_TRUE(HHMMSS(23, 30).isWithin(1, HHMMSS(0, 15), false));
  EXPECT_TRUE(HHMMSS(0, 15).isWithin(1, HHMMSS(23, 30), false));
  EXPECT_TRUE(HHMMSS(10, 0).isWithin(2, HHMMSS(12, 0), true));
  EXPECT_FALSE(HHMMSS(10, 0).isWithin(2, HHMMSS(12, 0), false));
  EXPECT_FALSE(HHMMSS(10, 0).isWithin(2, HHMMSS(12, 0, 1), true));
  EXPECT_FALSE(HHMMSS(10, 0).isWithin(-1, HHMMSS(10, 0), true));
  EXPECT_TRUE(HHMMSS(0, 0).isWithin(12, HHMMSS(12, 0), true));
}

TEST(HHMMSS, RoundsToTheNearestMultipleSinceMidnight) {
  using std::chrono::minutes;
  EXPECT_EQ(HHMMSS(10, 7, 29).roundToNearestInterval(minutes(15)), HHMMSS(10, 0));
  EXPECT_EQ(HHMMSS(10, 7, 30).roundToNearestInterval(minutes(15)), HHMMSS(10, 15));
  EXPECT_EQ(HHMMSS(23, 53).roundToNearestInterval(minutes(15)), HHMMSS::midnight);
  EXPECT_EQ(HHMMSS(23, 53).roundToNearestInterval(std::chrono::hours(100)), HHMMSS::midnight);
  EXPECT_EQ(HHMMSS(3, 2, 1).roundToNearestInterval(std::chrono::seconds(1)), HHMMSS(3, 2, 1));
  EXPECT_EQ(HHMMSS(3, 0).roundToNearestInterval(std::chrono::seconds::max()), HHMMSS::midnight);
}

TEST(HHMMSS, MedianOfTimesInAnyOrder) {
  EXPECT_FALSE(HHMMSS::median({}));
  const std::vector<HHMMSS> odd = {{20, 0}, {6, 0}, {7, 30}};
  EXPECT_EQ(HHMMSS::median(odd), HHMMSS(7, 30));
  const std::vector<HHMMSS> even = {{20, 0}, {6, 0}, {7, 0, 1}, {7, 0}};
  EXPECT_EQ(HHMMSS::median(even), HHMMSS(7, 0));
}

TEST(HHMMSS, OccurrencesFallOnceOnEveryDateThatAZoneHas) {
  const TimeZone berlin = TimeZone::fromIdentifier("Europe/Berlin").value();
  EXPECT_EQ(HHMMSS(8, 0).nextOccurrence(moment("2024-01-05T08:00:00+01:00"), berlin),
            moment("2024-01-06T08:00:00+01:00"));
  EXPECT_EQ(HHMMSS(8, 0).nextOccurrence(moment("2024-01-05T07:59:59.999999+01:00"), berlin),
            moment("2024-01-05T08:00:00+01:00"));
  EXPECT_EQ(texts(HHMMSS(2, 30).occurrences(moment("2024-03-30T02:30:00+01:00"), moment("2024-04-01T02:30:00+02:00"),
                                            berlin)),
            (std::vector<std::string>{"2024-03-30T01:30:00Z", "2024-03-31T01:00:00Z"}));
  EXPECT_EQ(texts(HHMMSS(2, 30).occurrences(moment("2024-10-26T12:00:00Z"), moment("2024-10-28T12:00:00Z"), berlin)),
            (std::vector<std::string>{"2024-10-27T00:30:00Z", "2024-10-28T01:30:00Z"}));
  EXPECT_TRUE(HHMMSS(8, 0).occurrences(moment("2024-01-05T08:00:00Z"), moment("2024-01-05T08:00:00Z"), berlin).empty());

  const TimeZone apia = TimeZone::fromIdentifier("Pacific/Apia").value();
  EXPECT_EQ(
      texts(HHMMSS(9, 0).occurrences(moment("2011-12-29T00:00:00-10:00"), moment("2012-01-01T00:00:00+14:00"), apia)),
      (std::vector<std::string>{"2011-12-29T19:00:00Z", "2011-12-30T19:00:00Z"}));
  // Clocks went from 23:30 on the 30th to 00:30 on the 31st; 23:45 of the 30th is the first moment after.
  const TimeZone toronto = TimeZone::fromIdentifier("America/Toronto").value();
  EXPECT_EQ(texts(HHMMSS(23, 45).occurrences(moment("1919-03-30T12:00:00Z"), moment("1919-04-01T12:00:00Z"), toronto)),
            (std::vector<std::string>{"1919-03-31T04:30:00Z", "1919-04-01T03:45:00Z"}));
}

TEST(HHMMSS, OccurrencesAtBothEndsOfTime) {
  using std::chrono::days;
  for (const char* name : {"UTC", "Pacific/Apia", "Pacific/Kiritimati"}) {
    const TimeZone zone = TimeZone::fromIdentifier(name).value();
    for (const HHMMSS& time : {HHMMSS(0, 0), HHMMSS(8, 0), HHMMSS(23, 59, 59)}) {
      for (const auto& [from, to] :
           {std::pair{Moment::min(), Moment::min() + days(20)}, std::pair{Moment::max() - days(20), Moment::max()}}) {
        const std::vector<Moment> found = time.occurrences(from, to, zone);
        EXPECT_GE(found.size(), 16u) << name;
        for (const Moment date : found) EXPECT_TRUE(from <= date && date < to && HHMMSS::now(zone, date) == time);
      }
    }
  }
}

RC_GTEST_PROP(HHMMSS, OccurrencesOfASpanAreThoseOfItsParts, ()) {
  const TimeZone zone = TimeZone::fromIdentifier("Australia/Lord_Howe").value();
  const HHMMSS time = anyTime();
  const auto at = [](std::int64_t seconds) { return Moment(std::chrono::seconds{seconds}); };
  const std::int64_t from = between(0, 2'000'000'000);
  const std::int64_t middle = from + between(0, 2'000'000);
  const std::int64_t to = middle + between(0, 2'000'000);
  std::vector<Moment> parts = time.occurrences(at(from), at(middle), zone);
  const std::vector<Moment> rest = time.occurrences(at(middle), at(to), zone);
  parts.insert(parts.end(), rest.begin(), rest.end());
  RC_ASSERT(time.occurrences(at(from), at(to), zone) == parts);
}

TEST(HHMMSSDeathTest, BrokenPreconditionsAndOverflowStopTheProgram) {
  constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
  EXPECT_DEATH((void)HHMMSS(24, 0, 0), "not a time of day");
  EXPECT_DEATH((void)HHMMSS(0, -1, 0), "not a time of day");
  EXPECT_DEATH((void)HHMMSS(1, 0).add(highest / 3600, 0, 0, true).add(0, 0, highest, true), "overflow");
  EXPECT_DEATH((void)HHMMSS(1, 0).add(highest, 0, 0, false), "overflow");
  EXPECT_DEATH((void)HHMMSS(1, 0).add(std::numeric_limits<double>::quiet_NaN(), true), "not a count");
  EXPECT_DEATH((void)HHMMSS(1, 0).add(1e300, true), "not a count");
  EXPECT_DEATH((void)HHMMSS(1, 0).isWithin(highest, HHMMSS(), true), "overflow");
  EXPECT_DEATH((void)HHMMSS(1, 0).roundToNearestInterval(std::chrono::seconds(0)), "interval");
}

}  // namespace
}  // namespace qz
