#include <QZDateTime/CodedForm.h>
#include <QZDateTime/DaysOfWeek.h>
#include <QZDateTime/DecodingError.h>
#include <QZDateTime/HHMMSS.h>
#include <QZDateTime/YYYYMMDD.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>

#include "QZDateTime/Printing.h"

namespace qz {
namespace {

using nlohmann::json;

/// The message with which `text` fails to be a T; empty when it does not fail.
template <typename T>
std::string failure(const std::string& text, T value) {
  try {
    json::parse(text).get_to(value);
  } catch (const DecodingError& error) {
    return error.what();
  }
  return {};
}

template <typename T>
void expectCoded(const T& value, const std::string& text, T into) {
  EXPECT_EQ(json(value).dump(), text);
  json::parse(text).get_to(into);
  EXPECT_TRUE(into == value) << text;
}

TEST(Coding, FormsAreThoseOfTheStore) {
  expectCoded(YYYYMMDD(2024, 1, 31), "20240131", YYYYMMDD());
  expectCoded(YYYYMMDD(2023, 2, 30), "20230230", YYYYMMDD());
  expectCoded(YYYYMM(2024, 1), "202401", YYYYMM(1, 1));
  expectCoded(HHMMSS(8, 15, 3), R"({"h":8,"m":15,"s":3})", HHMMSS());
  expectCoded(DayOfWeek(DayOfWeek::saturday), "6", DayOfWeek(DayOfWeek::sunday));
  expectCoded(DaysOfWeek{DayOfWeek::sunday, DayOfWeek::saturday}, "65", DaysOfWeek());
  const YYYYMMDD day(2024, 1, 31);
  expectCoded(YYYYMMDD::Range{day, day}, R"({"maxDate":20240131,"minDate":20240131})", YYYYMMDD::Range());
  expectCoded(YYYYMMDD::Range::from(day), R"({"minDate":20240131})", YYYYMMDD::Range::to(day));
  expectCoded(YYYYMMDD::Range(), "{}", YYYYMMDD::Range::to(day));
  EXPECT_EQ(json::parse(R"({"minDate":null,"maxDate":20240131})").get<YYYYMMDD::Range>(), YYYYMMDD::Range::to(day));
}

TEST(Coding, MembersAreReadStrictly) {
  const auto complaint = [](auto read) -> std::string {
    try {
      (void)read();
    } catch (const DecodingError& error) {
      return error.what();
    }
    return {};
  };
  const json object = json::parse(R"({"whole":-3,"big":18446744073709551615,"part":1.9,"even":2.0,"yes":true,"no":null,
                                      "text":"7","list":[1]})");
  EXPECT_EQ(coded_form::wholeNumber(object, "whole"), -3);
  EXPECT_EQ(coded_form::number(object, "whole"), -3.0);
  EXPECT_EQ(coded_form::number(object, "part"), 1.9);
  EXPECT_EQ(coded_form::list(object, "list").size(), 1u);
  for (const char* key : {"big", "part", "even", "yes", "text", "list"})
    EXPECT_EQ(complaint([&] { return coded_form::wholeNumber(object, key); }),
              "Unable to read \"" + std::string(key) + "\" from " + object[key].dump());
  for (const char* key : {"yes", "text", "list"})
    EXPECT_NE(complaint([&] { return coded_form::number(object, key); }), "") << key;
  EXPECT_EQ(complaint([&] { return coded_form::list(object, "whole"); }), "Unable to read \"whole\" from -3");
  for (const char* key : {"no", "absent"})
    EXPECT_EQ(complaint([&] { return coded_form::number(object, key); }),
              "Unable to read \"" + std::string(key) + "\": missing");
  EXPECT_EQ(complaint([&] { return coded_form::wholeNumber(object["list"], "0"); }), "Unable to read \"0\": missing");
  EXPECT_EQ(complaint([&] {
              return coded_form::number({{"x", std::nan("")}}, "x");
            }),
            "Unable to read \"x\" from null");
}

TEST(Coding, WhatIsFoundIsQuotedBriefly) {
  const std::string deep = std::string(100'000, '[') + std::string(100'000, ']');
  EXPECT_EQ(failure(deep, YYYYMMDD()), "Unable to create YYYYMMDD from a list of lists");
  EXPECT_EQ(coded_form::text(json{{"a", {1, 2}}}), "{\"a\":[1,2]}");
  EXPECT_EQ(coded_form::text(std::string(9000, 'b')).size(), 203u);
  EXPECT_EQ(coded_form::text(std::string(198, 'a') + "\u00e4" + std::string(9000, 'b')).size(), 202u)
      << "not cut inside a character";
}

TEST(Coding, WhatCannotBeFailsWithItsMessage) {
  EXPECT_EQ(failure("0", YYYYMMDD()), "Unable to create YYYYMMDD from 0");
  EXPECT_EQ(failure("-20240131", YYYYMMDD()), "Unable to create YYYYMMDD from -20240131");
  EXPECT_EQ(failure("20240131.5", YYYYMMDD()), "Unable to create YYYYMMDD from 20240131.5");
  EXPECT_EQ(failure("18446744073709551615", YYYYMMDD()), "Unable to create YYYYMMDD from 18446744073709551615");
  EXPECT_EQ(failure("\"2024\"", YYYYMMDD()), "Unable to create YYYYMMDD from \"2024\"");
  EXPECT_EQ(failure(R"({"minDate":0})", YYYYMMDD::Range()), "Unable to create YYYYMMDD from 0");
  EXPECT_EQ(failure("null", YYYYMMDD::Range()), "Unable to create YYYYMMDD.Range");
  for (const char* text : {"0", "202413", "-1", "null", "2024.01"})
    EXPECT_EQ(failure(text, YYYYMM(1, 1)), "Unable to create YYYYMM") << text;
  for (const char* text : {R"({"h":24,"m":0,"s":0})", R"({"h":0,"m":60,"s":0})", R"({"h":0,"m":0,"s":-1})",
                           R"({"h":0,"m":0})", R"({"h":"0","m":0,"s":0})", "[]", "3600"})
    EXPECT_EQ(failure(text, HHMMSS()), "Unable to create HHMMSS") << text;
  EXPECT_EQ(failure("7", DayOfWeek(DayOfWeek::sunday)), "Unable to create DayOfWeek");
  EXPECT_EQ(failure("128", DaysOfWeek()), "Unable to create DaysOfWeek");
}

}  // namespace
}  // namespace qz
