#include <gtest/gtest.h>
#include <HabitraCLI/CommandParser.h>
#include <HabitraCLI/Commands/Commands.h>
#include <HabitraCLI/UsageError.h>

#include <string>
#include <vector>

namespace {

using habitra::allCommands;
using habitra::parseCommandLine;
using habitra::ParsedLine;
using habitra::UsageError;
using Words = std::vector<std::string>;

ParsedLine parse(const Words& words) { return parseCommandLine(words, allCommands()); }

std::string refusal(const Words& words) {
  try {
    static_cast<void>(parse(words));
  } catch (const UsageError& error) {
    return error.what();
  }
  return "understood";
}

TEST(CommandParserTests, aVerbOfTwoWordsIsOneVerb) {
  const ParsedLine line = parse({"health", "--json", "import", "list", "--home", "/h"});
  ASSERT_EQ(line.command, &habitra::healthImportCommand);
  EXPECT_EQ(line.arguments.words, Words{"list"});
  EXPECT_TRUE(line.global.json);
  EXPECT_EQ(line.global.home, "/h");
  EXPECT_EQ(refusal({"health"}), "unknown command 'health', did you mean 'health import'?");
  EXPECT_EQ(refusal({"health", "list"}), "unknown command 'health list', did you mean 'health import'?");
  EXPECT_EQ(refusal({"health", "import"}), "'health import' needs a FILE");
  EXPECT_EQ(parse({"done", "health", "import"}).arguments.words, (Words{"health", "import"}));
}

TEST(CommandParserTests, takesGlobalOptionsBeforeAndAfterTheVerb) {
  for (const Words& words :
       {Words{"--home", "/h", "--json", "--now=2024-01-31", "undo", "Read", "--date", "-2"},
        Words{"undo", "--date", "-2", "--home=/h", "Read", "--now", "2024-01-31", "--json"},
        Words{"--home", "/other", "undo", "Read", "--date=-2", "--home", "/h", "--json", "--now", "2024-01-31"}}) {
    const ParsedLine line = parse(words);
    ASSERT_NE(line.command, nullptr);
    EXPECT_EQ(line.command->verb, "undo");
    EXPECT_EQ(line.global.home, "/h");
    EXPECT_EQ(line.global.now, "2024-01-31");
    EXPECT_EQ(line.global.timeZone, std::nullopt);
    EXPECT_TRUE(line.global.json);
    EXPECT_FALSE(line.global.verbose);
    EXPECT_EQ(line.arguments.words, Words{"Read"});
    EXPECT_EQ(line.arguments.option("--date"), "-2");
  }
}

TEST(CommandParserTests, keepsWordsAsTheyAreWritten) {
  for (const Words& words : {Words{"list", "today"}, Words{"[a,b]", "{}", "%%"}, Words{"a=b", "", " ", "-5"},
                             Words{"add"}, Words{"Läufe", "\xF0\x9F\x8F\x83"}}) {
    Words line = words;
    line.insert(line.begin(), "add");
    EXPECT_EQ(parse(line).arguments.words, words);
  }
  EXPECT_EQ(parse({"add", "C", "++", "--", "++", "x"}).arguments.words, (Words{"C", "++", "++", "x"}));
  EXPECT_EQ(parse({"--home", "++", "list"}).global.home, "++");
  EXPECT_EQ(parse({"add", "--", "-x", "--json"}).arguments.words, (Words{"-x", "--json"}));
  EXPECT_EQ(parse({"import", "-"}).arguments.words, Words{"-"});
  EXPECT_EQ(parse({"--json"}).command, nullptr);
  EXPECT_TRUE(parse({"done", "--help"}).global.help);
  EXPECT_TRUE(parse({"--help", "done"}).global.help);
  EXPECT_TRUE(parse({"-h"}).global.help);
}

TEST(CommandParserTests, refusesWithTheNearestName) {
  EXPECT_EQ(refusal({"lst"}), "unknown command 'lst', did you mean 'list'?");
  EXPECT_EQ(refusal({"xyzzy"}), "unknown command 'xyzzy'");
  EXPECT_EQ(refusal({"++"}), "unknown command '++'");
  EXPECT_EQ(refusal({"list", "--jsn"}), "unknown option '--jsn', did you mean '--json'?");
  EXPECT_EQ(refusal({"undo", "Read", "--dat=-2"}), "unknown option '--dat', did you mean '--date'?");
  EXPECT_EQ(refusal({"list", "--date", "-2"}), "unknown option '--date'");
  EXPECT_EQ(refusal({"list", "Read"}), "'list' takes no 'Read'");
  EXPECT_EQ(refusal({"done"}), "'done' needs a TASK");
  EXPECT_EQ(refusal({"export"}), "'export' needs a FILE");
  EXPECT_EQ(refusal({"undo", "Read", "ten"}),
            "'undo' takes one TASK, 'ten' is too much (quote a name that has blanks)");
  EXPECT_EQ(refusal({"list", "--home"}), "option '--home' needs a value, DIR");
  EXPECT_EQ(refusal({"--home=", "list"}), "option '--home' needs a value, DIR");
  EXPECT_EQ(refusal({"undo", "Read", "--date"}), "option '--date' needs a value, DAY");
  EXPECT_EQ(refusal({"list", "--json=no"}), "option '--json' takes no value");
}

}  // namespace
