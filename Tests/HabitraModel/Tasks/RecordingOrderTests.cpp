#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <map>
#include <utility>

#include "Life.h"
#include "Story.h"

// Whoever fills in past days later ends with the same log and the same streak as whoever recorded each day on that day.
// That holds for days before the habit was made, too. Within one period the order is kept: there a later entry takes
// the place of an earlier one, and means to.
namespace habitra {
namespace {

using Diary = std::multimap<qz::YYYYMMDD, Act>;

/// The days on which the acts of a story are recorded: as soon as the habit is made, and some of them later. Those of
/// one period stay in order.
Diary diaryOf(const Story& story, const qz::YYYYMMDD& made, bool someAreLate) {
  Diary diary;
  std::map<std::int32_t, std::int64_t> delays;
  for (const Act& act : story.acts) {
    const auto [delay, isNew] = delays.try_emplace(act.periodFrom, 0);
    if (someAreLate && isNew && *rc::gen::inRange(0, 2) == 0) delay->second = *rc::gen::inRange<std::int64_t>(1, 20);
    const qz::YYYYMMDD day = std::max(dayFromStored(act.entryDate).value(), made).add(delay->second);
    diary.emplace(std::min(day, story.today), act);
  }
  return diary;
}

/// Entries of a day in one order, whatever the order of recording.
std::vector<std::string> sortedLines(Life& life) {
  std::vector<std::string> lines = life.entryLines();
  std::ranges::sort(lines);
  return lines;
}

/// Lives from the day on which the habit is made.
std::vector<std::string> live(const Story& story, const qz::YYYYMMDD& made, Life& life, const Diary& diary,
                              bool passesAlways) {
  const auto mayPass = [&] {
    if (passesAlways || *rc::gen::inRange(0, 3) == 0) life.pass();
  };
  for (qz::YYYYMMDD day = made; day <= story.today; day = day.nextDay()) {
    life.goTo(day);
    mayPass();
    const auto [from, to] = diary.equal_range(day);
    for (auto act = from; act != to; ++act) {
      life.record(act->second);
      mayPass();
    }
  }
  life.pass();
  return sortedLines(life);
}

RC_GTEST_PROP(RecordingOrder, DoesNotMatter, ()) {
  const Story story = someStory();
  const std::int64_t daysBefore = *rc::gen::inRange(0, 2) == 0 ? 0 : *rc::gen::inRange<std::int64_t>(0, 20);
  const qz::YYYYMMDD made = std::min(story.created.add(daysBefore), story.today);
  RC_LOG() << story << "made " << made.intValue() << '\n';
  Life timely(story.rules, made);
  const std::vector<std::string> expected = live(story, made, timely, diaryOf(story, made, false), true);

  const Diary diary = diaryOf(story, made, true);
  for (const auto& [day, act] : diary)
    if (storedDay(day) != act.entryDate)
      RC_LOG() << day.intValue() << ": " << caseName(act.entryType) << " for " << act.entryDate << '\n';
  Life late(story.rules, made);
  const std::vector<std::string> entries = live(story, made, late, diary, false);
  RC_ASSERT(entries == expected);
  RC_ASSERT(late.figuresLine(false) == timely.figuresLine(false));
}

}  // namespace
}  // namespace habitra
