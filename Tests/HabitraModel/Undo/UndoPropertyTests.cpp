#include <fmt/format.h>
#include <gtest/gtest.h>
#include <HabitraCore/FollowingEntries.h>
#include <HabitraModel/Mapping/FrequencyMapping.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Tasks/Processing/TaskAssessment.h>
#include <HabitraModel/Tasks/Processing/TaskProcessor.h>
#include <HabitraModel/Tasks/Processing/TaskTemporalData.h>
#include <HabitraModel/Tasks/Recording/TaskLogRecorder.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <HabitraModel/UndoStack.h>
#include <QZDateTime/ISO8601.h>
#include <QZKit/MainQueue.h>
#include <rapidcheck.h>
#include <Support/SettableClock.h>

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

// Whatever a person did and took back, all must be as if it had never been asked for.
#include "../Tasks/TestProgram.h"

namespace habitra {
namespace {

TaskFrequency everyDay(std::int64_t partialCompletions) {
  TaskFrequency frequency = TaskFrequency::everyDay();
  frequency.numPartialCompletions = partialCompletions;
  return frequency;
}

const std::array frequencies{
    everyDay(1),
    everyDay(2),
    TaskFrequency{.dayMode = TaskFrequency::DayMode::numberOfDaysInWeek, .numCompletions = 3},
    TaskFrequency{.dayMode = TaskFrequency::DayMode::numberOfDaysInMonth, .numCompletions = 20},
    TaskFrequency{.dayMode = TaskFrequency::DayMode::dayInterval, .dayInterval = 2},
    TaskFrequency{.dayMode = TaskFrequency::DayMode::dayInterval, .dayInterval = 3},
    TaskFrequency{.dayMode = TaskFrequency::DayMode::aggregateOverWeek, .numCompletions = 2},
};

struct Step {
  enum class Kind { nextDay, program, add, entry, edit, remove };
  Kind kind;
  std::size_t habit = 0;
  std::int64_t daysBack = 0;
  TaskLogEntryType type{};

  [[nodiscard]] bool isCommand() const { return kind != Kind::nextDay && kind != Kind::program; }

  friend std::ostream& operator<<(std::ostream& out, const Step& step) {
    constexpr std::array names{"next day", "program", "add", "entry", "edit", "remove"};
    return out << fmt::format("{} habit {} {} days back {}", names.at(static_cast<std::size_t>(step.kind)), step.habit,
                              step.daysBack, caseName(step.type));
  }
};

/// A person with up to three habits, a program that measures some of them, and the passes of every day.
class Life : TestProgram {
 public:
  explicit Life(std::uint64_t seed) : TestProgram(qz::momentFromISO8601("2024-01-24T12:00:00Z").value()), seed_(seed) {}

  /// Gives the transaction of a step that changed something, but for passes.
  std::optional<std::int64_t> live(const Step& step) {
    if (step.kind == Step::Kind::nextDay) {
      clock_->advance(std::chrono::days(1));
      processor_.processAllTasks(*context_, clock_->now());
      return std::nullopt;
    }
    const auto before = context_->sequence();
    context_->beginUnit();
    act(step);
    SaveRequest request;
    if (step.isCommand()) request.command = fmt::format("{}", static_cast<int>(step.kind));
    const auto sequence = context_->save(request).sequence;
    return sequence == before ? std::nullopt : std::optional(sequence);
  }

  /// Throws UndoStack::Error.
  void takeBack(std::optional<std::int64_t> sequence) {
    context_->beginUnit();
    try {
      finish(sequence ? stack_.undo(*context_, *sequence) : stack_.undo(*context_));
    } catch (const UndoStack::Error&) {
      RC_ASSERT(!context_->hasChanges());
      context_->rollback();
      throw;
    }
  }
  void putBack() { finish(stack_.redo(*context_)); }

  /// All that is to be seen of the habits.
  [[nodiscard]] std::string description() {
    std::vector<std::string> lines;
    for (std::size_t habit = 0; habit < 3; ++habit) {
      const auto* task = context_->find<TaskEntity>("title", fmt::format("Habit {}", habit));
      if (task == nullptr) continue;
      lines.push_back(fmt::format("{}: mode {}", *task->title, task->daysMode));
      describe(*task, lines);
    }
    return fmt::format("\n{}\n", fmt::join(lines, "\n"));
  }
  /// Whether the first day of a habit was unchecked and is without any entry. Passes never come back to such a day when
  /// later ones have entries, but they did while an earlier entry stood; so it tells what was taken back.
  [[nodiscard]] bool beginsWithNothing() {
    for (const TaskEntity* task : TaskProcessor::activeTasks(*context_)) {
      const std::int32_t created = storedDay(calendars_.of(*task).day(task->created.value()));
      std::optional<std::int32_t> first;
      bool isUnchecked = false;
      for (const auto& row : context_->fetchLogEntries(task->objectID)) {
        const auto type = fromRawValue<TaskLogEntryType>(row.entryType).value();
        if (!marksHistory(type)) isUnchecked = true;
        if (!first && marksHistory(type)) first = row.entryDate;
      }
      if (isUnchecked && first && *first > created) return true;
    }
    return false;
  }
  /// Whether a pass's entry stands beside another of a pass, or beside a full one, for the same period.
  [[nodiscard]] bool hasDoubles() {
    for (const TaskEntity* task : context_->fetchAll<TaskEntity>()) {
      std::map<std::pair<std::int32_t, std::int32_t>, std::pair<int, int>> periods;
      for (const auto& row : context_->fetchLogEntries(task->objectID)) {
        const auto type = fromRawValue<TaskLogEntryType>(row.entryType).value();
        auto& [full, filledIn] = periods[{row.entryPeriodFrom, row.entryPeriodTo}];
        if (isFull(type)) ++full;
        if (followsFromEarlierDays(type)) ++filledIn;
        if (filledIn > 0 && full > 1) return true;
      }
    }
    return false;
  }
  [[nodiscard]] UndoStack& stack() { return stack_; }
  [[nodiscard]] StoreContext& context() { return *context_; }

 private:
  /// Passes of the habit before and after it are in its unit.
  void act(const Step& step) {
    TaskEntity* task = context_->find<TaskEntity>("title", fmt::format("Habit {}", step.habit));
    if (step.kind == Step::Kind::add && task == nullptr) {
      task = &add(step.habit);
    } else if (task != nullptr && step.kind == Step::Kind::remove) {
      context_->remove(*task);
      task = nullptr;
    } else if (task != nullptr && step.kind == Step::Kind::edit) {
      edit(*task, frequencies.at((step.habit + seed_ + 3) % frequencies.size()));
    } else if (task != nullptr && (step.kind == Step::Kind::entry || step.kind == Step::Kind::program)) {
      processor_.process(*context_, *task, clock_->now());
      record(*task, step);
    }
    if (task != nullptr) processor_.process(*context_, *task, clock_->now());
  }

  TaskEntity& add(std::size_t habit) {
    TaskEntity values = newlyMadeTask(fmt::format("Habit {}", habit), qz::DayOfWeek::monday, clock_->now(), "UTC");
    setFrequency(values, frequencies.at((habit + seed_) % frequencies.size()));
    values.isNegative = habit == 2;
    return context_->insert(values);
  }

  /// Between days that one part completes, so that none of the past is judged otherwise.
  static void edit(TaskEntity& task, const TaskFrequency& frequency) {
    const auto needsMore = [](const TaskFrequency& each) {
      return each.isAggregate() || each.numPartialCompletions > 1;
    };
    if (needsMore(frequencyOf(task).value())) return;
    setFrequency(task, needsMore(frequency) ? everyDay(1) : frequency);
  }

  void record(TaskEntity& task, const Step& step) {
    const TaskRules rules = rulesWithoutPauses(task).value();
    const TaskCalendar calendar = calendars_.of(task);
    const bool isMeasured = step.kind == Step::Kind::program;
    const qz::YYYYMMDD day = calendar.day(clock_->now()).add(isMeasured ? 0 : -step.daysBack);
    const qz::Moment start = calendar.beginning(day);
    recorder_.recordNow(task,
                        {.managedObjectContext = *context_,
                         .context = TaskModifyContext::userInitiatedFromMainApp,
                         .saveContext = false,
                         .logEntries = {{.uniqueId = qz::UniqueID::generate(clock_->now()),
                                         .type = isMeasured ? TaskLogEntryType::completedAutomaticallyFull : step.type,
                                         .period = rules.frequency.period(day, rules.firstDayOfWeek, std::nullopt),
                                         .startDate = start,
                                         .endDate = start}},
                         .createdTimestamp = clock_->now(),
                         .createdTimeZone = qz::TimeZone::utc()});
    if (!isMeasured) removeFollowing(task, rules, day);
  }

  /// A change by a person takes back what was filled in after it by the earlier log.
  void removeFollowing(const TaskEntity& task, const TaskRules& rules, qz::YYYYMMDD day) {
    const auto following = followingDays(rules, day);
    if (!following) return;
    const auto last = following->last ? storedDay(*following->last) : StoreContext::lastDay;
    for (const auto& row : context_->fetchLogEntries(task.objectID, storedDay(following->first), last)) {
      const auto type = fromRawValue<TaskLogEntryType>(row.entryType).value();
      if (following->endAtCompletion && isCompletedFull(type)) return;
      if (followsFromEarlierDays(type)) context_->removeLogEntry(row.key());
    }
  }

  void finish(const UndoStack::Undone& undone) {
    for (const auto& touched : undone.tasks)
      processor_.process(*context_, *context_->find<TaskEntity>(touched.task), clock_->now());
    context_->save(undone.saveRequest(Author::app, "undo"));
  }

  void describe(const TaskEntity& task, std::vector<std::string>& lines) {
    auto rows = context_->fetchLogEntries(task.objectID);
    std::stable_sort(rows.begin(), rows.end(), [](const auto& a, const auto& b) {
      return std::pair(a.entryDate, a.entryPeriodFrom) < std::pair(b.entryDate, b.entryPeriodFrom);
    });
    // What a pass has filled in bears the moment of that pass, and a number and an identifier of its own.
    for (const auto& row : rows) {
      const auto type = fromRawValue<TaskLogEntryType>(row.entryType).value();
      const bool isFilledIn = followsFromEarlierDays(type);
      lines.push_back(fmt::format("  {} {} to {} {} {}", row.entryDate, row.entryPeriodFrom, row.entryPeriodTo,
                                  caseName(type), isFilledIn ? "" : qz::iso8601(*row.createdTimestamp)));
    }
    const auto* data = findTemporalData(*context_, task);
    RC_ASSERT(data != nullptr);
    lines.push_back(fmt::format("  streak {} best {} completed {} missed {} skipped {} short {}/{} long {}/{}",
                                data->activeStreak, data->bestStreak, data->lastCompleted, data->lastMissed,
                                data->lastSkipped, data->recentShortTermPct, data->recentShortTermNumSamples,
                                data->recentLongTermPct, data->recentLongTermNumSamples));
    const TaskAssessment assessment = assess(*context_, task, calendars_, clock_->now());
    RC_ASSERT(assessment.history->fillIns.empty());
    const TaskCalendar calendar = calendars_.of(task);
    lines.push_back(fmt::format("  status {} processed {}",
                                static_cast<int>(assessment.history->figures.completionStatus.status.kind()),
                                calendar.day(task.lastProcessedDate.value()).debugDescription()));
  }

  std::uint64_t seed_;
  UndoStack stack_{calendars_};
};

rc::Gen<Step> step() {
  using Type = TaskLogEntryType;
  const auto kind = rc::gen::weightedElement<Step::Kind>({{4, Step::Kind::nextDay},
                                                          {1, Step::Kind::program},
                                                          {2, Step::Kind::add},
                                                          {8, Step::Kind::entry},
                                                          {1, Step::Kind::edit},
                                                          {1, Step::Kind::remove}});
  const auto type =
      rc::gen::element(Type::completedManuallyFull, Type::completedManuallyFull, Type::completedManuallyPartial,
                       Type::skippedManuallyFull, Type::unknown, Type::missedManuallyFull);
  return rc::gen::build<Step>(
      rc::gen::set(&Step::kind, kind), rc::gen::set(&Step::habit, rc::gen::inRange<std::size_t>(0, 3)),
      rc::gen::set(&Step::daysBack, rc::gen::weightedOneOf<std::int64_t>({{3, rc::gen::just<std::int64_t>(0)},
                                                                          {3, rc::gen::inRange<std::int64_t>(1, 9)}})),
      rc::gen::set(&Step::type, type));
}

std::vector<Step> steps() {
  auto lived = *rc::gen::scale(0.3, rc::gen::container<std::vector<Step>>(step()));
  lived.insert(lived.begin(), {Step{.kind = Step::Kind::add}, Step{.kind = Step::Kind::add, .habit = 2}});
  return lived;
}

/// Two lives that differ by steps left out of one.
struct Lives {
  Life with;
  Life without;
  std::vector<std::int64_t> omitted;  ///< the commands that only the one was given

  /// Discards those in which a step that both took meant something else without what was left out.
  Lives(const std::vector<Step>& steps, std::uint64_t seed, const std::set<std::size_t>& omit)
      : with(seed), without(seed) {
    std::set<std::size_t> otherHabits;
    for (std::size_t i = 0; i < steps.size(); ++i) {
      const Step& step = steps[i];
      const auto sequence = with.live(step);
      if (omit.contains(i) && step.isCommand()) {
        if (sequence) omitted.push_back(*sequence);
        if (step.kind == Step::Kind::add || step.kind == Step::Kind::remove) otherHabits.insert(step.habit);
      } else {
        // What a program recorded of one habit goes with it, though another bears its name in the other life.
        RC_PRE(step.kind != Step::Kind::program || !otherHabits.contains(step.habit));
        RC_PRE(without.live(step).has_value() == sequence.has_value());
      }
    }
  }
};

std::uint64_t seeds() { return *rc::gen::inRange<std::uint64_t>(0, frequencies.size()); }

/// Takes the command back; discards what is refused, after a look at the refusal.
void takeBackUnlessRefused(Life& life, std::int64_t command) {
  const auto before = life.description();
  try {
    life.takeBack(command);
  } catch (const UndoStack::Error& error) {
    RC_ASSERT(error.reason() == UndoStack::Error::Reason::inTheWay);
    RC_ASSERT(error.obstacle()->command.sequence > command);
    RC_ASSERT(life.description() == before);
    RC_DISCARD("something stands in the way");
  }
}

/// Whether a habit had entries when its rules were edited: the past stays as it was judged by the earlier ones, which
/// nobody knows any more once an entry of it is gone.
bool wasEditedLater(const std::vector<Step>& steps, std::size_t entry) {
  return steps[entry].kind == Step::Kind::entry &&
         std::any_of(steps.begin() + static_cast<std::ptrdiff_t>(entry), steps.end(), [&](const Step& later) {
           return later.habit == steps[entry].habit && later.kind == Step::Kind::edit;
         });
}

TEST(UndoProperty, ACommandTakenBackWasNeverGiven) {
  int takenBack = 0;
  const bool holds = rc::check("one command, whichever", [&takenBack] {
    const auto lived = steps();
    const auto omitted = *rc::gen::inRange<std::size_t>(0, lived.size());
    const auto daysAfter = *rc::gen::inRange(0, 3);
    RC_PRE(!wasEditedLater(lived, omitted));
    Lives lives(lived, seeds(), {omitted});
    for (int day = 0; day < daysAfter; ++day)
      for (Life* each : {&lives.with, &lives.without}) each->live({.kind = Step::Kind::nextDay});
    RC_PRE(!lives.omitted.empty());
    const auto before = lives.with.description();
    takeBackUnlessRefused(lives.with, lives.omitted.front());
    RC_PRE(!lives.without.beginsWithNothing());
    ++takenBack;
    RC_ASSERT(lives.with.description() == lives.without.description());
    lives.with.putBack();
    RC_ASSERT(lives.with.description() == before);
  });
  EXPECT_TRUE(holds);
  EXPECT_GT(takenBack, 30);
}

TEST(UndoProperty, TheNewestCommandsCanAllBeTakenBackAndPutBack) {
  std::size_t takenBack = 0;
  const bool holds = rc::check("from the newest on", [&takenBack] {
    const auto lived = steps();
    const auto count = *rc::gen::inRange<std::size_t>(1, lived.size() + 1);
    std::set<std::size_t> omitted;
    for (std::size_t i = lived.size() - count; i < lived.size(); ++i) omitted.insert(i);
    Lives lives(lived, seeds(), omitted);
    const auto before = lives.with.description();
    for (std::size_t i = 0; i < lives.omitted.size(); ++i) lives.with.takeBack(std::nullopt);
    RC_PRE(!lives.without.beginsWithNothing());
    takenBack += lives.omitted.size();
    RC_ASSERT(lives.with.description() == lives.without.description());
    for (std::size_t i = 0; i < lives.omitted.size(); ++i) lives.with.putBack();
    RC_ASSERT(lives.with.description() == before);
    RC_ASSERT(!lives.with.stack().newestUndone(lives.with.context()).has_value());
  });
  EXPECT_TRUE(holds);
  EXPECT_GT(takenBack, 100U);
}

// Whatever came later, edits of the rules included.
TEST(UndoProperty, NothingIsDoubledAndNothingLeftToDo) {
  int takenBack = 0;
  const bool holds = rc::check("one command, with edits after it", [&takenBack] {
    auto lived = steps();
    const auto at = *rc::gen::inRange<std::size_t>(2, lived.size() + 1);
    lived.insert(lived.begin() + static_cast<std::ptrdiff_t>(at), {.kind = Step::Kind::edit});
    Life life(seeds());
    std::vector<std::int64_t> commands;
    for (const Step& step : lived)
      if (const auto sequence = life.live(step); sequence && step.isCommand()) commands.push_back(*sequence);
    RC_PRE(!life.hasDoubles());
    takeBackUnlessRefused(life, *rc::gen::elementOf(commands));
    ++takenBack;
    static_cast<void>(life.description());  // looks for days that are left to fill in
    RC_ASSERT(!life.hasDoubles());
    life.putBack();
    RC_ASSERT(!life.hasDoubles());
  });
  EXPECT_TRUE(holds);
  EXPECT_GT(takenBack, 30);
}

}  // namespace
}  // namespace habitra
