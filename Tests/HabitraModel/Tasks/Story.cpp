#include "Story.h"

#include <HabitraCore/StoredFrequency.h>
#include <rapidcheck.h>

#include <ostream>

#include "HabitraCore/HistoryTestsGenerated.h"

namespace habitra {
namespace {

using T = TaskLogEntryType;

/// Long enough for a few counting periods, short enough to be lived hundreds of times.
constexpr std::int64_t longestLife = 45;
/// What a measured habit wants a period, in litres.
constexpr double target = 2.0;

std::int64_t someNumber(std::int64_t from, std::int64_t to) { return *rc::gen::inRange(from, to + 1); }
bool oneIn(std::int64_t n) { return someNumber(1, n) == 1; }

TaskRules someRules(const qz::YYYYMMDD& created) {
  TaskRules rules{
      .frequency = someFrequency(),
      .isNegative = *rc::gen::arbitrary<bool>(),
      .firstDayOfWeek = *rc::gen::element(qz::DayOfWeek::sunday, qz::DayOfWeek::monday, qz::DayOfWeek::saturday)};
  rules.frequency = frequency(stored(rules.frequency)).value();  // a store keeps only what counts
  if (oneIn(3)) rules.referenceDate = created.add(someNumber(-20, 20));
  if (oneIn(4)) rules.measure = {.kind = TaskMeasure::Kind::quantity, .target = target};
  if (oneIn(3)) {
    const qz::YYYYMMDD from = created.add(someNumber(-5, longestLife));
    rules.pauses.push_back({.from = from, .to = from.add(someNumber(0, 12))});
  }
  return rules;
}

T someType(bool isNegative) {
  static const auto toDo = rc::gen::weightedElement<T>({{6, T::completedManuallyFull},
                                                        {4, T::completedManuallyPartial},
                                                        {1, T::completedAutomaticallyFull},
                                                        {1, T::completedAutomaticallyPartial},
                                                        {2, T::skippedManuallyFull},
                                                        {1, T::missedManuallyFull},
                                                        {1, T::timerManual},
                                                        {1, T::externalHealthData},
                                                        {2, T::unknown}});
  static const auto toAvoid = rc::gen::weightedElement<T>({{5, T::missedManuallyFull},
                                                           {4, T::missedManuallyPartial},
                                                           {2, T::allowableMissManuallyFull},
                                                           {1, T::missedAutomaticallyPartial},
                                                           {2, T::completedManuallyFull},
                                                           {1, T::completedAutomaticallyFull},
                                                           {2, T::skippedManuallyFull},
                                                           {1, T::timerManual},
                                                           {2, T::unknown}});
  return *(isNegative ? toAvoid : toDo);
}

void actOnSomeDays(Story& story) {
  const T first = story.rules.isNegative ? T::missedManuallyFull : T::completedManuallyFull;
  story.acts.push_back(actOn(story.rules, story.created, first));
  const std::int32_t firstPeriodEnds = story.acts.front().periodTo;
  for (qz::YYYYMMDD day = story.created; day <= story.today; day = day.nextDay()) {
    if (storedDay(day) <= firstPeriodEnds) continue;
    for (std::int64_t count = someNumber(-2, 3); count > 0; --count) {
      Act act = actOn(story.rules, day, someType(story.rules.isNegative));
      const bool reports = story.rules.measure.kind != TaskMeasure::Kind::byHand && isPartial(act.entryType);
      if (reports && oneIn(2)) {
        act.progressTotal = *rc::gen::element(0.5, 1.0, 2.0, 2.5);
        act.progress = act.progressTotal / target;
      }
      story.acts.push_back(act);
    }
  }
}

Story madeStory() {
  const qz::YYYYMMDD created = qz::YYYYMMDD(2023, 11, 25).add(someNumber(0, 110));
  Story story{.rules = someRules(created), .created = created, .today = created.add(someNumber(0, longestLife))};
  actOnSomeDays(story);
  return story;
}

}  // namespace

Story someStory() { return *rc::gen::resize(rc::kNominalSize, rc::gen::exec(madeStory)); }

std::ostream& operator<<(std::ostream& out, const Story& story) {
  return out << History{.rules = story.rules,
                        .scope = {.created = story.created, .today = story.today, .fillFrom = story.passesBegin},
                        .log = story.acts};
}

}  // namespace habitra
