#include <QZDateTime/ISO8601.h>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "QZDateTime/Generators.h"

namespace qz {
namespace {

TEST(ISO8601, ReadsEveryDateTimeOfTheStandard) {
  struct Case {
    const char* text;
    const char* same;
  };
  for (const Case& c :
       {Case{"2024-01-31t08:15:00z", "2024-01-31T08:15:00Z"}, Case{"2024-01-31 08:15:00Z", "2024-01-31T08:15:00Z"},
        Case{"2024-01-31T08:15:00.5000+05:45", "2024-01-31T02:30:00.5Z"},
        Case{"2024-01-01T00:30:00+23:59", "2023-12-31T00:31:00Z"},
        Case{"2024-01-31T08:15:00-00:00", "2024-01-31T08:15:00Z"},
        Case{"2024-01-31T08:15:00.12345678901234567890Z", "2024-01-31T08:15:00.123456Z"},
        Case{"2016-12-31T23:59:60Z", "2017-01-01T00:00:00Z"},
        Case{"2017-01-01T05:29:60.25+05:30", "2017-01-01T00:00:00.25Z"},
        Case{"0000-02-29T00:00:00Z", "0000-02-29T00:00:00Z"},
        Case{"1969-12-31T23:59:59.999999Z", "1969-12-31T23:59:59.999999Z"}}) {
    const auto date = momentFromISO8601(c.text);
    ASSERT_TRUE(date) << c.text;
    EXPECT_EQ(iso8601(*date), c.same) << c.text;
  }
}

TEST(ISO8601, RefusesEverythingElse) {
  const std::string good = "2024-01-31T08:15:00.5+01:00";
  for (std::size_t length = 0; length < good.size(); ++length)
    EXPECT_FALSE(momentFromISO8601(std::string_view(good).substr(0, length))) << length;
  for (const char* text : {"2023-02-29T00:00:00Z",      "2024-04-31T00:00:00Z",
                           "2024-00-10T00:00:00Z",      "2024-13-10T00:00:00Z",
                           "2024-01-00T00:00:00Z",      "2024-01-31T24:00:00Z",
                           "2024-01-31T08:60:00Z",      "2024-01-31T08:15:61Z",
                           "2024-01-31T08:15:60Z",      "2024-01-31T08:15:00",
                           "2024-01-31T08:15:00.Z",     "2024-01-31T08:15:00,5Z",
                           "2024-01-31T08:15:00+24:00", "2024-01-31T08:15:00+01:60",
                           "2024-01-31T08:15:00+0100",  "2024-1-31T08:15:00Z",
                           " 2024-01-31T08:15:00Z",     "2024-01-31T08:15:00Z ",
                           "2024-01-31_08:15:00Z",      "+024-01-31T08:15:00Z",
                           "2024-01-31T08:15:00ZZ",     "2024-01-31",
                           "20240131T081500Z",          "-2024-01-31T08:15:00Z"})
    EXPECT_FALSE(momentFromISO8601(text)) << text;
  EXPECT_FALSE(momentFromISO8601(std::string_view("2024-01-31T08:15:00Z\0", 21)));
}

RC_GTEST_PROP(ISO8601, WritesWhatItReads, ()) {
  const std::int64_t second = between(-62'167'219'200, 253'402'300'799);  // years 0 to 9999
  const std::int64_t fraction = *rc::gen::element<std::int64_t>(0, 1, 10, 500'000, 999'999, 123'000);
  const Moment date = Moment(std::chrono::seconds{second}) + std::chrono::microseconds(fraction);
  RC_ASSERT(momentFromISO8601(iso8601(date)) == date);
  RC_ASSERT(momentFromISO8601(iso8601WholeSeconds(date)) == Moment(std::chrono::seconds{second}));
}

TEST(ISO8601, WritesToBothEndsOfTime) {
  EXPECT_EQ(iso8601(Moment::max()), "294247-01-10T04:00:54.775807Z");
  EXPECT_EQ(iso8601WholeSeconds(Moment::min()), "-290308-12-21T19:59:05Z");
  EXPECT_EQ(iso8601WholeSeconds(Moment(std::chrono::microseconds(-1))), "1969-12-31T23:59:59Z");
}

}  // namespace
}  // namespace qz
