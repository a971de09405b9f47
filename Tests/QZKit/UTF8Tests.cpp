#include <gtest/gtest.h>
#include <QZKit/UTF8.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using qz::utf8::firstCharacter;
using qz::utf8::firstInvalidByte;
using qz::utf8::repaired;

TEST(UTF8Tests, ReadsOneCharacterAfterTheOther) {
  for (const auto& [text, value] : std::vector<std::pair<std::string, char32_t>>{
           {"a", U'a'}, {"\xC3\xA9", U'\u00E9'}, {"\xE2\x82\xAC", U'\u20AC'}, {"\xF0\x9F\x8F\x83", U'\U0001F3C3'}}) {
    const auto character = firstCharacter(text + "x");
    ASSERT_TRUE(character) << text;
    EXPECT_EQ(character->value, value) << text;
    EXPECT_EQ(character->length, text.size()) << text;
  }
  EXPECT_FALSE(firstCharacter("\xE2\x82"));
}

TEST(UTF8Tests, RepairsByteByByte) {
  EXPECT_EQ(repaired("caf\xC3\xA9 ok"), "caf\xC3\xA9 ok");
  EXPECT_EQ(repaired(std::string("a\0b\xE2\x82", 5)), "a\uFFFDb\uFFFD\uFFFD");
}

TEST(UTF8Tests, RefusesWhatIsNotWellFormed) {
  for (const char* good : {"", "plain", "é", "€", "🏃", "\xF4\x8F\xBF\xBF", "seven bytes and é"}) {
    EXPECT_EQ(firstInvalidByte(good), std::nullopt) << good;
  }
  const std::vector<std::pair<std::string, std::size_t>> bad{{"\x80", 0},
                                                             {"12345678\xC3", 8},
                                                             {"\xC0\xAF", 0},
                                                             {"\xE0\x80\xAF", 0},
                                                             {"\xED\xA0\x80", 0},
                                                             {"\xF4\x90\x80\x80", 0},
                                                             {"é\xFE", 2},
                                                             {"\xF0\x9F\x8F"
                                                              "x",
                                                              0}};
  for (const auto& [text, at] : bad) EXPECT_EQ(firstInvalidByte(text), at) << text;
}

TEST(UTF8Tests, MessagesStayOnOneLine) {
  EXPECT_EQ(qz::utf8::quoted("a\n\x1B[31m\xFF\u202E\u0085"), "\"a\\n\\x1B[31m\\xFF\\u202E\\u0085\"");
  EXPECT_EQ(qz::utf8::quoted("say \"a\\b\""), "\"say \\\"a\\\\b\\\"\"");
  EXPECT_EQ(qz::utf8::quoted(std::string(41, 'x')), "\"" + std::string(40, 'x') + "...\"");
  EXPECT_EQ(qz::utf8::quoted(std::string(40, 'x')), "\"" + std::string(40, 'x') + "\"");
}

}  // namespace
