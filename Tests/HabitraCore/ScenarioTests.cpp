#include "Scenario.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace habitra {
namespace {

std::vector<std::string> scenarioNames() {
  std::vector<std::string> names;
  for (const auto& file : std::filesystem::directory_iterator(SCENARIO_FOLDER)) names.push_back(file.path().stem());
  std::ranges::sort(names);
  return names;
}

class Scenarios : public testing::TestWithParam<std::string> {};

TEST_P(Scenarios, ComesOutAsDrawn) {
  std::ifstream file(SCENARIO_FOLDER "/" + GetParam() + ".txt");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  const std::string computed = drawn(text);
  EXPECT_EQ(evened(computed), evened(text)) << "computed:\n" << computed;
}

std::string testName(const testing::TestParamInfo<std::string>& scenario) {
  std::string name = scenario.param;
  std::ranges::replace(name, '-', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(, Scenarios, testing::ValuesIn(scenarioNames()), testName);

TEST(ScenarioFiles, SayWhichLineIsWrong) {
  const auto complaint = [](const std::string& text) -> std::string {
    try {
      return drawn(text);
    } catch (const std::exception& error) {
      return error.what();
    }
  };
  const std::string settings = "due: every day\nsign: to do\ncreated: 2024-01-01\ntoday: 2024-01-05\n\n";
  EXPECT_EQ(complaint(settings + "2024-01-01 | dnoe"), "line 6: no entry is called dnoe");
  EXPECT_EQ(complaint(settings + "2024-01-01..2024-01-03 | done"), "line 6: entries of several days need 'each'");
  EXPECT_EQ(complaint(settings + "2024-01-02 | done\n2024-01-02 | done"), "line 7: not after the line before");
  EXPECT_EQ(complaint(settings + "2024-01-01..2024-01-07 week | 8:done"), "line 6: the period has no day 8");
  EXPECT_EQ(complaint("colour: red\n" + settings), "no setting is called colour");
  EXPECT_EQ(complaint("due: every 31 days\nsign: to do\n"), "no rule that can be: every 31 days");
}

}  // namespace
}  // namespace habitra
