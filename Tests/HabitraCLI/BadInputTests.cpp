#include "Program.h"

#include <algorithm>
#include <string>
#include <vector>

namespace {

class BadInputTests : public Program {
 protected:
  static constexpr const char* header =
      "task_id,title,icon,entry_type,entry_date,entry_timestamp,quantity,page,notes\n";

  /// The run fails with this code and one line on standard error that holds each of these texts.
  void expectRefused(const std::vector<std::string>& words, int exitCode, const std::vector<std::string>& texts) {
    const Outcome outcome = run(words);
    EXPECT_EQ(outcome.exitCode, exitCode) << outcome;
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(outcome.err.starts_with("habitra: ")) << outcome;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome;
    for (const std::string& text : texts)
      EXPECT_NE(outcome.err.find(text), std::string::npos) << text << "\n" << outcome;
  }
};

TEST_F(BadInputTests, isRefusedInOneLineAndChangesNothing) {
  ASSERT_EQ(run({"add", "Read ten pages"}).exitCode, 0);
  ASSERT_EQ(run({"add", "Read the news"}).exitCode, 0);
  ASSERT_EQ(run({"done", "Read the"}).exitCode, 0);
  const auto before = homeContents();

  // What cannot be understood: 2.
  expectRefused({"lst"}, 2, {"unknown command 'lst'", "'list'", "habitra --help"});
  expectRefused({"list", "--jsn"}, 2, {"unknown option '--jsn'", "'--json'", "habitra list --help"});
  expectRefused({"list", "--time-zone", "Mars/Base"}, 2, {"'Mars/Base'"});
  expectRefused({"list", "--now", "soon"}, 2, {"'soon'"});
  expectRefused({"list", "--home", ""}, 2, {"'--home'"});
  expectRefused({"undo", "Read the", "--date", "2024-02-30"}, 2, {"'2024-02-30'", "habitra undo --help"});
  expectRefused({"undo", "Read the", "--date", "soon"}, 2, {"'soon'"});
  expectRefused({"done", "Read the", "--date", "2024-02-30"}, 2, {"'2024-02-30'", "habitra done --help"});
  expectRefused({"import", "a.csv", "--strategy", "all"}, 2, {"'all'", "merge, overwrite, skip or new"});
  expectRefused({"done"}, 2, {"TASK", "habitra done --help"});
  expectRefused({"done", "read t"}, 2, {"'Read ten pages'", "'Read the news'"});
  expectRefused({"done", "Raed ten pages"}, 2, {"'Raed ten pages'", "'Read ten pages'", "habitra done --help"});
  expectRefused({"done", "Read the", "a\nb\x1b[2J"}, 2, {"a\uFFFDb\uFFFD[2J"});

  // What cannot be done: 1.
  expectRefused({"undo", "Read ten"}, 1, {});
  expectRefused({"undo", "Read the", "--date", "2024-02-01"}, 1, {});
  expectRefused({"done", "Read ten", "--date", "2030-01-01"}, 1, {"2030-01-01 has not come yet for 'Read ten pages'"});
  expectRefused({"skip", "Read ten", "--date", "2024-02-01"}, 1, {"2024-02-01 has not come yet for 'Read ten pages'"});
  expectRefused({"add", ""}, 1, {});
  expectRefused({"add", "a\nb"}, 1, {});
  expectRefused({"export", folder_ / "no/such/folder.csv"}, 1, {"folder.csv"});
  EXPECT_EQ(homeContents(), before);
}

TEST_F(BadInputTests, filesThatAreNoHistory) {
  ASSERT_EQ(run({"add", "Read"}).exitCode, 0);
  const auto before = homeContents();
  const std::string row = "946D21F1-5D7C-5E6A-A309-E01FAC24628A,Walk,,completed_manually,";
  expectRefused({"import", folder_ / "missing.csv"}, 1, {"missing.csv"});
  expectRefused({"import", folder_.path()}, 1, {folder_.path()});
  expectRefused({"import", write("binary.csv", std::string("\x7f"
                                                           "ELF\0\1\2\xff\xfe",
                                                           9))},
                1, {"binary.csv"});
  expectRefused({"import", write("header.csv", "name,date\nWalk,20240101\n")}, 1, {"header.csv"});
  expectRefused({"import", write("day.csv", header + row + "20240229,,,,\n" + row + "20240230,,,,\n")}, 1,
                {"day.csv", "3", "20240230"});
  input_ = header + row + "tomorrow,,,,\n";
  expectRefused({"import", "-"}, 1, {"standard input", "2", "tomorrow"});
  EXPECT_EQ(homeContents(), before);
}

TEST_F(BadInputTests, outputThatCannotBeWritten) {
  ASSERT_EQ(run({"add", "Read"}).exitCode, 0);
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"list"}, {"today", "--json"}, {"export", "-"}, {"--help"}, {"--version"}}) {
    output_ = Output::full;
    expectRefused(words, 1, {"No space left on device"});
    output_ = Output::none;
    EXPECT_EQ(run(words).exitCode, 1);
    output_ = Output::closedPipe;
    EXPECT_EQ(run(words), says(""));
  }
  output_ = Output::none;
  EXPECT_EQ(run({"done", "Read"}).exitCode, 1);
  output_ = Output::caught;
  EXPECT_EQ(run({"list"}).exitCode, 0) << "the store was not written over";
}

}  // namespace
