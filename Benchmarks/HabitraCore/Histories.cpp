#include "Histories.h"

#include <HabitraCore/TaskPause.h>
#include <QZKit/Checked.h>
#include <QZKit/Trap.h>

#include <algorithm>
#include <random>
#include <utility>

namespace habitra::benchmarks {
namespace {

using Mode = TaskFrequency::DayMode;
using Type = TaskLogEntryType;

const qz::YYYYMMDD today(2026, 3, 11);  // the middle of a week, a month and a year

HistoryScope scopeOf(std::int64_t years) {
  const qz::YYYYMMDD created = qz::YYYYMMDD(today.y() - years, today.m(), today.d()).nextDay();
  return {.created = created, .today = today, .fillFrom = created};
}

std::int32_t intForm(const qz::YYYYMMDD& day) { return qz::checkedNarrow<std::int32_t>(day.intValue()); }

LoggedEntry entryFor(const DatedPeriod& period, Type type) {
  return {.entryDate = intForm(period.date),
          .periodFrom = intForm(period.period.startDate),
          .periodTo = intForm(period.period.finishDate),
          .entryType = type,
          .periodType = period.period.periodType};
}

void numberInOrder(std::vector<LoggedEntry>& log) {
  std::ranges::stable_sort(log, {}, &LoggedEntry::entryDate);
  std::int64_t order = 0;
  for (LoggedEntry& entry : log) entry.order = ++order;
}

std::int64_t nominalDays(TaskFrequencyPeriodType type) {
  switch (type) {
    case TaskFrequencyPeriodType::day: return 1;
    case TaskFrequencyPeriodType::week: return 7;
    case TaskFrequencyPeriodType::fortnight: return 14;
    case TaskFrequencyPeriodType::month: return 30;
    case TaskFrequencyPeriodType::year: return 365;
  }
  return 1;
}

/// Somebody who keeps a log day by day, before the pass has been there.
class Person {
 public:
  Person(const TaskRules& rules, std::uint64_t seed)
      : rules_(rules),
        random_(seed),
        isMeasuredByDay_(rules.frequency.measurementDuration() == TaskFrequencyPeriodType::day),
        expectedUnits_(rules.frequency.numPartialCompletionsPerPeriod()) {}

  [[nodiscard]] std::vector<LoggedEntry> keepLog(const HistoryScope& scope) {
    for (qz::YYYYMMDD day = scope.created; day <= scope.today; day = day.nextDay()) {
      const DatedPeriod period = rules_.frequency.period(day, rules_.firstDayOfWeek, rules_.referenceDate);
      if (day == period.period.startDate || day == scope.created) {
        isSettled_ = false;
        numParts_ = 0;
      }
      ++daysSinceDone_;
      const auto rests = [&](const TaskPause& pause) { return pause.contains(day); };
      if (!isSettled_ && std::ranges::none_of(rules_.pauses, rests)) live(period);
    }
    return std::move(log_);
  }

 private:
  void live(const DatedPeriod& period) {
    if (numParts_ == 0 && happens(30)) return settle(period, Type::skippedManuallyFull);
    if (rules_.isNegative) {
      happens(chanceOfSlip()) ? slip(period) : stayClean(period);
    } else if (happens(chanceOfWork(period.date))) {
      work(period);
    }
  }

  /// One completion's worth, at times a part of it.
  void work(const DatedPeriod& period) {
    daysSinceDone_ = 0;
    if (expectedUnits_ == 1) return settle(period, Type::completedManuallyFull);
    const std::int64_t whole = std::max(rules_.frequency.numPartialCompletions, std::int64_t{1});
    const std::int64_t parts = happens(900) ? whole : whole - 1;
    for (std::int64_t i = 0; i < parts; ++i) addPart(period, Type::completedManuallyPartial);
  }

  void slip(const DatedPeriod& period) {
    if (numParts_ + 1 < expectedUnits_ && happens(800)) return addPart(period, Type::missedManuallyPartial);
    log_.erase(log_.end() - numParts_, log_.end());  // a full miss takes the place of the partial ones
    settle(period, Type::missedManuallyFull);
  }

  /// Seldom worth an entry.
  void stayClean(const DatedPeriod& period) {
    if (isMeasuredByDay_ && happens(50)) settle(period, Type::completedManuallyFull);
  }

  [[nodiscard]] std::uint64_t chanceOfWork(const qz::YYYYMMDD& day) const {
    const TaskFrequency& frequency = rules_.frequency;
    constexpr std::uint64_t whenDue = 880;
    constexpr std::uint64_t whenNotDue = 30;
    switch (frequency.dayMode) {
      case Mode::specificDaysOfWeek: return frequency.days.contains(day.dayOfWeek()) ? whenDue : whenNotDue;
      case Mode::specificDaysOfMonth:
        return frequency.daysOfMonth.isDue(day.d(), day.yyyymm().numberOfDays()) ? whenDue : whenNotDue;
      case Mode::dayInterval: return daysSinceDone_ >= frequency.dayInterval ? whenDue : whenNotDue;
      default: return perMille(frequency.numCompletions, countedDays());
    }
  }

  [[nodiscard]] std::uint64_t chanceOfSlip() const {
    const TaskFrequency& frequency = rules_.frequency;
    switch (frequency.dayMode) {
      case Mode::specificDaysOfWeek:
      case Mode::specificDaysOfMonth: return 100;
      case Mode::dayInterval: return perMille(1, frequency.dayInterval);
      default: break;
    }
    return isMeasuredByDay_ ? perMille(countedDays() - frequency.numCompletions, countedDays())
                            : perMille(1, countedDays());
  }

  [[nodiscard]] std::int64_t countedDays() const {
    return nominalDays(rules_.frequency.periodTypeForCompletionCountCalculation());
  }

  [[nodiscard]] static std::uint64_t perMille(std::int64_t part, std::int64_t whole) {
    return static_cast<std::uint64_t>(1000 * part / whole);
  }

  [[nodiscard]] bool happens(std::uint64_t perMille) { return random_() % 1000 < perMille; }

  void addPart(const DatedPeriod& period, Type type) {
    log_.push_back(entryFor(period, type));
    ++numParts_;
  }

  void settle(const DatedPeriod& period, Type type) {
    log_.push_back(entryFor(period, type));
    isSettled_ = true;
  }

  const TaskRules& rules_;
  std::mt19937_64 random_;
  const bool isMeasuredByDay_;
  const std::int64_t expectedUnits_;
  std::vector<LoggedEntry> log_;
  std::int64_t daysSinceDone_ = 0;
  std::int64_t numParts_ = 0;  // partial entries of the period
  bool isSettled_ = false;     // a full entry decided the period
};

/// Whoever records a failure asks whether it is an allowed one.
void allowMisses(History& history) {
  auto next = history.log.begin();
  const auto end = history.log.end();
  const auto retype = [&](const WalkedPeriod& walked) {
    for (; next != end && next->entryDate <= walked.to; ++next) {
      if (next->entryType == Type::missedManuallyFull && walked.missIsAllowed)
        next->entryType = Type::allowableMissManuallyFull;
    }
  };
  const std::vector<LoggedEntry> asRecorded = history.log;
  static_cast<void>(HistoryWalk(history.rules, history.scope).walk(asRecorded, retype));
}

/// What the pass does with the days that were left open.
void fillIn(History& history) {
  for (const FillIn& missing : HistoryWalk(history.rules, history.scope).walk(history.log).fillIns)
    history.log.push_back(entryFor({missing.period.finishDate, missing.period}, missing.entryType));
  numberInOrder(history.log);
  qz::require(HistoryWalk(history.rules, history.scope).walk(history.log).fillIns.empty(),
              "a history is not decided after a pass");
  history.scope.fillFrom = history.scope.today;
}

}  // namespace

TaskRules usualRules(Mode mode, bool isNegative) {
  TaskFrequency frequency{.dayMode = mode};
  switch (mode) {
    case Mode::specificDaysOfWeek:
      frequency.days = qz::DaysOfWeek::monday | qz::DaysOfWeek::wednesday | qz::DaysOfWeek::friday;
      break;
    case Mode::specificDaysOfMonth:
      frequency.daysOfMonth =
          DaysOfMonth::day(1) | DaysOfMonth::day(11) | DaysOfMonth::day(21) | DaysOfMonth::lastDay();
      break;
    case Mode::dayInterval: frequency.dayInterval = 3; break;
    case Mode::numberOfDaysInWeek: frequency.numCompletions = 4; break;
    case Mode::numberOfDaysInFortnight: frequency.numCompletions = 9; break;
    case Mode::numberOfDaysInMonth: frequency.numCompletions = 20; break;
    case Mode::numberOfDaysInYear: frequency.numCompletions = 250; break;
    case Mode::aggregateOverWeek: frequency.numCompletions = 3; break;
    case Mode::aggregateOverFortnight: frequency.numCompletions = 5; break;
    case Mode::aggregateOverMonth: frequency.numCompletions = 10; break;
    case Mode::aggregateOverYear: frequency.numCompletions = 100; break;
  }
  if (mode != Mode::specificDaysOfWeek && mode != Mode::numberOfDaysInYear) frequency.numPartialCompletions = 2;
  return {.frequency = frequency, .isNegative = isNegative, .firstDayOfWeek = qz::DayOfWeek::monday};
}

History believableHistory(TaskRules rules, std::int64_t years, std::uint64_t seed) {
  for (std::int64_t y = today.y() - years; y < today.y(); ++y)
    rules.pauses.push_back({.from = qz::YYYYMMDD(y, 7, 20), .to = qz::YYYYMMDD(y, 7, 26)});
  History history{.rules = std::move(rules), .scope = scopeOf(years)};
  history.log = Person(history.rules, seed).keepLog(history.scope);
  numberInOrder(history.log);
  if (history.rules.isNegative) allowMisses(history);
  fillIn(history);
  return history;
}

History plainHistory(const TaskRules& rules, std::int64_t years) {
  History history{.rules = rules, .scope = scopeOf(years)};
  for (qz::YYYYMMDD day = history.scope.created; day <= history.scope.today; day = day.nextDay()) {
    const DatedPeriod period = rules.frequency.period(day, rules.firstDayOfWeek, rules.referenceDate);
    history.log.push_back(entryFor(period, Type::completedManuallyFull));
  }
  numberInOrder(history.log);
  history.scope.fillFrom = today;
  return history;
}

}  // namespace habitra::benchmarks
