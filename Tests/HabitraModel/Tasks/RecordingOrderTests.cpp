#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <map>
#include <utility>

#include "Life.h"
#include "Story.h"

// Whoever fills in past days later ends with the same log and the same streak as whoever recorded each day on that day.
// Within one period the order is kept: there a later entry takes the place of an earlier one, and means to.
namespace habitra {
namespace {

/// The days on which the acts of a story are recorded, some of them late; those of one period stay in order.
std::multimap<qz::YYYYMMDD, Act> someDiary(const Story& story) {
  std::multimap<qz::YYYYMMDD, Act> diary;
  std::map<std::int32_t, std::int64_t> delays;
  for (const Act& act : story.acts) {
    const auto [delay, isNew] = delays.try_emplace(act.periodFrom, 0);
    if (isNew && *rc::gen::inRange(0, 2) == 0) delay->second = *rc::gen::inRange<std::int64_t>(1, 20);
    const qz::YYYYMMDD day = dayFromStored(act.entryDate)->add(delay->second);
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

std::vector<std::string> live(const Story& story, Life& life, const std::multimap<qz::YYYYMMDD, Act>& diary,
                              bool everyPass) {
  const auto mayPass = [&] {
    if (everyPass || *rc::gen::inRange(0, 3) == 0) life.pass();
  };
  for (qz::YYYYMMDD day = story.created; day <= story.today; day = day.nextDay()) {
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
  RC_LOG() << story;
  std::multimap<qz::YYYYMMDD, Act> inTime;
  for (const Act& act : story.acts) inTime.emplace(dayFromStored(act.entryDate).value(), act);
  Life timely(story.rules, story.created);
  const std::vector<std::string> expected = live(story, timely, inTime, true);

  const auto diary = someDiary(story);
  for (const auto& [day, act] : diary)
    if (storedDay(day) != act.entryDate)
      RC_LOG() << day.intValue() << ": " << caseName(act.entryType) << " for " << act.entryDate << '\n';
  Life late(story.rules, story.created);
  const std::vector<std::string> entries = live(story, late, diary, false);
  RC_ASSERT(entries == expected);
  RC_ASSERT(late.figuresLine(false) == timely.figuresLine(false));
}

}  // namespace
}  // namespace habitra
