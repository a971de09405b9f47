#include <gtest/gtest.h>
#include <HabitraCLI/TimeArguments.h>
#include <HabitraCLI/UsageError.h>
#include <QZDateTime/ISO8601.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using habitra::dayFromArgument;
using habitra::momentFromArgument;
using habitra::UsageError;

TEST(TimeArgumentsTests, readsDays) {
  const auto today = [] { return qz::YYYYMMDD(2024, 3, 1); };
  const std::vector<std::pair<std::string, std::int64_t>> days{
      {"2024-01-31", 20240131}, {"20240229", 20240229}, {"today", 20240301}, {"yesterday", 20240229},
      {"-0", 20240301},         {"-2", 20240228},       {"-366", 20230301},  {"0001-01-01", 10101},
  };
  for (const auto& [text, day] : days) EXPECT_EQ(dayFromArgument(text, today).intValue(), day) << text;
  for (const std::string text :
       {"", "-", "+1", "2", "--2", "-2x", "-9999999", "-99999999999999999999", "tomorrow", "2024-1-31", "2024-02-30",
        "20230229", "2024-13-01", "00000101", "2024-01-31 ", "2024/01/31", "202401310"})
    EXPECT_THROW(static_cast<void>(dayFromArgument(text, today)), UsageError) << text;
}

TEST(TimeArgumentsTests, readsMomentsInTheZoneInForce) {
  const qz::TimeZone berlin = habitra::timeZoneFromArgument("Europe/Berlin");
  const std::vector<std::pair<std::string, std::string>> moments{
      {"2024-01-31T08:15:00Z", "2024-01-31T08:15:00Z"},
      {"2024-01-31T08:15:00+05:30", "2024-01-31T02:45:00Z"},
      {"2024-01-31T08:15:00", "2024-01-31T07:15:00Z"},
      {"2024-07-31 08:15:00.25", "2024-07-31T06:15:00.25Z"},
      {"2024-07-31T08:15", "2024-07-31T06:15:00Z"},
      {"2024-03-31T02:30:00", "2024-03-31T01:00:00Z"},  // clocks jump from 2 to 3
      {"2024-10-27T02:30:00", "2024-10-27T00:30:00Z"},  // twice: the first
      {"2024-07-31", "2024-07-31T10:00:00Z"},
      {"20240131", "2024-01-31T11:00:00Z"},
  };
  for (const auto& [text, moment] : moments) EXPECT_EQ(qz::iso8601(momentFromArgument(text, berlin)), moment) << text;
  for (const std::string text : {"", "now", "2024-02-30", "2024-02-30T08:15:00Z", "2024-01-31T24:00:00", "2024-01-31T",
                                 "2024-01-31T08", "2024-01-31T08:15:00+25:00", "0000-06-01T00:00:00Z", "0000-06-01"})
    EXPECT_THROW(static_cast<void>(momentFromArgument(text, berlin)), UsageError) << text;
  for (const std::string text : {"", "Mars/Base", "../../etc/passwd", "/etc/localtime"})
    EXPECT_THROW(static_cast<void>(habitra::timeZoneFromArgument(text)), UsageError) << text;
}

}  // namespace
