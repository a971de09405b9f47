#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "HabitraCore/Scenario.h"
#include "Life.h"
#include "Story.h"

// Lives recorded and processed day by day in a store, a pass before and after each record, are judged as one pass at
// their end would judge them, and as the walk over what was recorded does that knows no store.
//
// "What was recorded" is not always what a scenario draws: of two entries of which one supersedes the other a recorder
// keeps one, and it decides itself which failures are allowed. Passes that began before the first entry fill in from
// the creation day on, a single one at the end from the first entry on. And what was kept under an earlier frequency
// was judged under it: it stands in the log when the passes begin.
namespace habitra {
namespace {

/// Tells a story; with `daily`, a pass before and after each record, and after each day a look at the stored figures.
template <typename Look>
void tell(const Story& story, Life& life, RecordedLog& recorded, bool daily, const Look& look) {
  auto act = story.acts.begin();
  for (qz::YYYYMMDD day = story.created; day <= story.today; day = day.nextDay()) {
    const bool processes = daily && day >= story.passesBegin;
    life.goTo(day);
    if (processes) life.pass();
    for (; act != story.acts.end() && act->entryDate == storedDay(day); ++act) {
      life.record(*act);
      recorded.record(*act);
      if (processes) life.pass();
    }
    if (processes) look(day);
  }
  life.pass();
}

/// What a life in a store comes to, against the walk without one; empty when they agree.
std::string difference(const Story& story, Life& life, const RecordedLog& recorded, bool isFilledFromCreation) {
  const HistoryWalk walk = recorded.walk(story.today, isFilledFromCreation);
  const TaskFigures figures = walk.walk(recorded.entries()).figures;
  const std::string stored = life.figuresLine(figures.isProgressTracked);
  const std::vector<std::string> expected = statusLines(walk, recorded.entries());
  const std::vector<LoggedEntry> entries = life.entries();
  const std::vector<std::string> lines = statusLines(walk, entries);
  for (std::size_t i = 0; i < std::max(lines.size(), expected.size()); ++i) {
    const std::string line = i < lines.size() ? lines[i] : "nothing";
    const std::string wanted = i < expected.size() ? expected[i] : "nothing";
    if (line != wanted) return line + " instead of " + wanted;
  }
  if (!walk.walk(entries).fillIns.empty()) return "something is left to fill in";
  return stored == figuresLine(figures) ? "" : stored + " instead of " + figuresLine(figures);
}

/// The same of both ways to tell a story.
std::string differences(const Story& story) {
  std::string found;
  const bool isFilledFromCreation = story.passesBegin == story.created;
  Life daily(story.rules, story.created);
  if (daily.rules() != story.rules) return "the store keeps other rules";
  RecordedLog recorded(story.rules, story.created);
  tell(story, daily, recorded, true, [&](const qz::YYYYMMDD& day) {
    const TaskFigures figures = recorded.walk(day, isFilledFromCreation).walk(recorded.entries()).figures;
    const std::string stored = daily.figuresLine(figures.isProgressTracked);
    if (found.empty() && stored != figuresLine(figures))
      found = day.debugDescription() + ": " + stored + " instead of " + figuresLine(figures);
  });
  if (!found.empty()) return found;
  if (found = difference(story, daily, recorded, isFilledFromCreation); !found.empty()) return "day by day: " + found;

  Life atOnce(story.rules, story.created);
  RecordedLog again(story.rules, story.created);
  tell(story, atOnce, again, false, [](const qz::YYYYMMDD&) {});
  if (found = difference(story, atOnce, again, false); !found.empty()) return "at once: " + found;
  const HistoryScope scope = again.scope(story.today, false);
  const bool isTheSame = !isFilledFromCreation || scope.fillFrom == scope.created;
  return !isTheSame || daily.entryLines() == atOnce.entryLines() ? "" : "other entries day by day than at once";
}

Story storyOf(const Scenario& scenario) {
  Story story{.rules = scenario.rules,
              .created = scenario.scope.created,
              .today = scenario.scope.today,
              .acts = scenario.log,
              .passesBegin = scenario.scope.created};
  for (const Act& act : story.acts) {
    const auto day = dayFromStored(act.entryDate).value();
    const Act own = actOn(story.rules, day, act.entryType);
    if (own.periodFrom != act.periodFrom || own.periodTo != act.periodTo)
      story.passesBegin = std::max(story.passesBegin, dayFromStored(act.periodTo)->nextDay());
  }
  return story;
}

std::string textOf(const std::string& scenario) {
  std::ifstream file(SCENARIO_FOLDER "/" + scenario + ".txt");
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The scenarios that draw a history.
std::vector<std::string> historyNames() {
  std::vector<std::string> names;
  for (const auto& file : std::filesystem::directory_iterator(SCENARIO_FOLDER))
    if (textOf(file.path().stem()).find("\ntoday:") != std::string::npos) names.push_back(file.path().stem());
  std::ranges::sort(names);
  return names;
}

class ReplayedScenarios : public testing::TestWithParam<std::string> {};

TEST_P(ReplayedScenarios, AreJudgedAsDrawn) { EXPECT_EQ(differences(storyOf(Scenario::read(textOf(GetParam())))), ""); }

std::string testName(const testing::TestParamInfo<std::string>& scenario) {
  std::string name = scenario.param;
  std::ranges::replace(name, '-', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(, ReplayedScenarios, testing::ValuesIn(historyNames()), testName);

RC_GTEST_PROP(ReplayedLives, AreJudgedAsTheWalkJudgesThem, ()) {
  const Story story = someStory();
  RC_LOG() << story;
  RC_ASSERT(differences(story) == "");
}

}  // namespace
}  // namespace habitra
