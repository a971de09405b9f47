#include "HistoryTestsGenerated.h"

#include <HabitraCore/RawValue.h>
#include <rapidcheck.h>

#include <algorithm>
#include <ostream>

namespace habitra {

namespace {

using Mode = TaskFrequency::DayMode;
using Period = TaskFrequencyPeriodType;
using T = TaskLogEntryType;

template <typename E>
E some() {
  return RawValueTable<E>::rows[*rc::gen::inRange<std::size_t>(0, RawValueTable<E>::rows.size())].value;
}

bool oneIn(int n) { return *rc::gen::inRange(0, n) == 0; }

std::int64_t someNumber(std::int64_t from, std::int64_t to) { return *rc::gen::inRange(from, to + 1); }

std::int64_t longest(const TaskFrequency& frequency) {
  if (frequency.dayMode == Mode::numberOfDaysInYear) return 300;
  switch (frequency.measurementDuration()) {
    case Period::day: return 120;
    case Period::week:
    case Period::fortnight: return 500;
    case Period::month: return 900;
    case Period::year: break;
  }
  return 1500;
}

TaskRules someRules() {
  TaskRules rules{
      .frequency = someFrequency(),
      .isNegative = *rc::gen::arbitrary<bool>(),
      .firstDayOfWeek = *rc::gen::element(qz::DayOfWeek::sunday, qz::DayOfWeek::monday, qz::DayOfWeek::saturday),
      .measure = someMeasure()};
  if (oneIn(3)) rules.referenceDate = qz::YYYYMMDD(2023, 11, 1).add(someNumber(0, 200));
  return rules;
}

/// The days, with a leap day and an end of a year often among them.
HistoryScope someScope(const TaskRules& rules) {
  const qz::YYYYMMDD created = qz::YYYYMMDD(2023, 11, 1).add(someNumber(0, 150));
  const std::int64_t length = someNumber(0, longest(rules.frequency));
  HistoryScope scope{.created = created, .today = created.add(length), .fillFrom = created};
  if (oneIn(2)) scope.fillFrom = created.add(someNumber(0, length));
  return scope;
}

std::vector<TaskPause> somePauses(const HistoryScope& scope) {
  std::vector<TaskPause> pauses;
  for (std::int64_t count = someNumber(0, 2); count > 0; --count) {
    TaskPause pause{.from = scope.created.add(someNumber(-10, scope.created.distance(scope.today) + 10))};
    if (!oneIn(10)) pause.to = pause.from.add(someNumber(-1, oneIn(2) ? 4 : 40));
    pauses.push_back(pause);
  }
  return pauses;
}

void store(LoggedEntry& entry, const qz::YYYYMMDD& from, const qz::YYYYMMDD& to) {
  entry.periodFrom = integer(from);
  entry.periodTo = integer(to);
}

/// Mostly the frequency's own period; else one of another kind, any span about the day, or none that can be used.
void storeSomePeriod(LoggedEntry& entry, const TaskRules& rules, const qz::YYYYMMDD& day) {
  const auto storePeriod = [&](Period type) {
    entry.periodType = type;
    store(entry, firstDate(type, day, rules.firstDayOfWeek, rules.referenceDate),
          lastDate(type, day, rules.firstDayOfWeek, rules.referenceDate));
  };
  storePeriod(rules.frequency.measurementDuration());
  switch (someNumber(0, 15)) {
    case 11: storePeriod(Period::day); break;
    case 12: storePeriod(*rc::gen::element(Period::week, Period::fortnight, Period::month)); break;
    case 13: store(entry, day.add(-someNumber(0, 12)), day.add(someNumber(0, 12))); break;
    case 14: store(entry, qz::YYYYMMDD::emptyValue, qz::YYYYMMDD::emptyValue); break;
    case 15: store(entry, oneIn(2) ? day.nextDay() : qz::YYYYMMDD(2023, 2, 30), day); break;
    default: break;
  }
}

void putInOrder(std::vector<LoggedEntry>& log) {
  std::ranges::stable_sort(log, [](const LoggedEntry& a, const LoggedEntry& b) {
    return a.entryDate != b.entryDate ? a.entryDate < b.entryDate : a.order < b.order;
  });
}

/// The first day of a history is not after an entry that marks it.
void includeEntries(HistoryScope& scope, const std::vector<LoggedEntry>& log) {
  for (const LoggedEntry& entry : log) {
    const qz::YYYYMMDD day = qz::YYYYMMDD::fromRawValue(entry.entryDate).value();
    if (day.exists() && marksHistory(entry.entryType)) scope.created = std::min(scope.created, day);
  }
}

/// Rings are never counted by hand.
void reportSomeProgress(LoggedEntry& entry, const TaskMeasure& measure) {
  if (measure.kind == TaskMeasure::Kind::byHand) return;
  entry.progress = *rc::gen::element(0.25, 0.5, 1.0);
  if (measure.kind == TaskMeasure::Kind::rings) return;
  entry.progressTotal = *rc::gen::element(0.0, 1.0, 2.5, 4.0, 7.0);
  if (oneIn(2)) entry.progress = 0.0;
}

LoggedEntry madeEntry(const History& history, std::size_t number) {
  const HistoryScope& scope = history.scope;
  const qz::YYYYMMDD day = scope.created.add(someNumber(-3, scope.created.distance(scope.today) + 2));
  LoggedEntry entry{.order = someNumber(0, 9) * 1000 + static_cast<std::int64_t>(number), .entryDate = integer(day)};
  entry.entryType = some<T>();
  if (oneIn(2)) {
    entry.entryType = *rc::gen::element(T::completedManuallyFull, T::completedManuallyPartial, T::skippedManuallyFull,
                                        T::missedManuallyFull, T::missedManuallyPartial);
  }
  storeSomePeriod(entry, history.rules, day);
  reportSomeProgress(entry, history.rules.measure);
  entry.isAhead = day > scope.today && oneIn(2);
  if (oneIn(40)) entry.entryDate = *rc::gen::element(20230230, 20231100, 20231232, 20231399, 20240230);
  return entry;
}

History madeHistory() {
  History history{.rules = someRules()};
  history.scope = someScope(history.rules);
  history.rules.pauses = somePauses(history.scope);
  for (std::int64_t count = someNumber(0, 60); count > 0; --count)
    history.log.push_back(madeEntry(history, history.log.size()));
  putInOrder(history.log);
  includeEntries(history.scope, history.log);
  return history;
}

History madeRecordedHistory() {
  History history{.rules = someRules()};
  history.scope = someScope(history.rules);
  history.scope.fillFrom = history.scope.created;
  history.rules.pauses = somePauses(history.scope);
  const bool isNegative = history.rules.isNegative;
  for (qz::YYYYMMDD day = history.scope.created; day <= history.scope.today; day = day.nextDay()) {
    const DatedPeriod period =
        history.rules.frequency.period(day, history.rules.firstDayOfWeek, history.rules.referenceDate);
    LoggedEntry entry{.entryDate = integer(day), .periodType = period.period.periodType};
    store(entry, period.period.startDate, period.period.finishDate);
    const auto write = [&](T type) {
      entry.order = static_cast<std::int64_t>(history.log.size());
      entry.entryType = type;
      history.log.push_back(entry);
    };
    if (const bool isFresh = history.log.empty() || history.log.back().periodFrom != entry.periodFrom;
        isFresh && oneIn(4)) {
      write(*rc::gen::element(T::completedManuallyFull, T::skippedManuallyFull, T::missedManuallyFull));
      day = period.period.finishDate;
    } else {
      for (std::int64_t count = someNumber(-2, 2); count > 0; --count)
        write(isNegative ? T::missedManuallyPartial : T::completedManuallyPartial);
    }
    day = day.add(someNumber(0, longest(history.rules.frequency) / 25));
  }
  return history;
}

}  // namespace

std::int32_t integer(const qz::YYYYMMDD& day) { return static_cast<std::int32_t>(day.intValue()); }

TaskFrequency someFrequency() {
  TaskFrequency frequency{.dayMode = some<Mode>(), .numPartialCompletions = someNumber(1, 3)};
  switch (frequency.dayMode) {
    case Mode::specificDaysOfWeek:
      frequency.days = qz::DaysOfWeek::fromRawValue(*rc::gen::inRange(1, 128)).value();
      break;
    case Mode::specificDaysOfMonth:
      frequency.daysOfMonth = DaysOfMonth::day(someNumber(1, 31)) | DaysOfMonth::lastDay(someNumber(0, 7)) |
                              DaysOfMonth(*rc::gen::arbitrary<std::int64_t>());
      break;
    case Mode::dayInterval: frequency.dayInterval = *rc::gen::element(2, 3, 4, 7, 30); break;
    case Mode::numberOfDaysInWeek: frequency.numCompletions = someNumber(1, 7); break;
    case Mode::numberOfDaysInFortnight: frequency.numCompletions = someNumber(1, 14); break;
    case Mode::numberOfDaysInMonth: frequency.numCompletions = *rc::gen::element(1, 3, 10, 25, 28, 31); break;
    case Mode::numberOfDaysInYear: frequency.numCompletions = *rc::gen::element(1, 20, 300, 340, 360, 366); break;
    case Mode::aggregateOverWeek:
    case Mode::aggregateOverFortnight:
    case Mode::aggregateOverMonth:
    case Mode::aggregateOverYear: frequency.numCompletions = someNumber(1, 3); break;
  }
  // Stored counts can be anything.
  if (oneIn(20)) frequency.numCompletions = *rc::gen::element(-1, 0, 40);
  if (oneIn(20)) frequency.numPartialCompletions = *rc::gen::element(-1, 0);
  return frequency;
}

TaskMeasure someMeasure() {
  TaskMeasure measure;
  if (!oneIn(3)) return measure;
  measure.kind = *rc::gen::element(TaskMeasure::Kind::quantity, TaskMeasure::Kind::timed, TaskMeasure::Kind::rings);
  if (measure.kind != TaskMeasure::Kind::rings) measure.target = *rc::gen::element(6.0, 2.5, 0.0);
  return measure;
}

History someHistory() { return *rc::gen::resize(rc::kNominalSize, rc::gen::exec(madeHistory)); }

LoggedEntry someEntry(const History& history) {
  return *rc::gen::resize(rc::kNominalSize, rc::gen::exec([&] { return madeEntry(history, history.log.size()); }));
}

History someRecordedHistory() { return *rc::gen::resize(rc::kNominalSize, rc::gen::exec(madeRecordedHistory)); }

void History::write(const std::vector<FillIn>& fillIns) {
  for (const FillIn& fillIn : fillIns) {
    LoggedEntry entry{.order = 100'000 + static_cast<std::int64_t>(log.size()),
                      .entryDate = integer(fillIn.period.finishDate),
                      .entryType = fillIn.entryType,
                      .periodType = fillIn.period.periodType};
    store(entry, fillIn.period.startDate, fillIn.period.finishDate);
    log.push_back(entry);
  }
  putInOrder(log);
}

std::ostream& operator<<(std::ostream& out, const History& history) {
  const TaskRules& rules = history.rules;
  out << caseName(rules.frequency.dayMode) << (rules.isNegative ? " to avoid" : " to do") << " weekdays "
      << rules.frequency.days.rawValue() << " days of month " << rules.frequency.daysOfMonth.rawValue() << " partial "
      << rules.frequency.numPartialCompletions << " completions " << rules.frequency.numCompletions << " interval "
      << rules.frequency.dayInterval << " first day " << rules.firstDayOfWeek.rawValue() << " reference "
      << rules.referenceDate.value_or(qz::YYYYMMDD::emptyValue).intValue() << " measure "
      << static_cast<int>(rules.measure.kind) << ' ' << rules.measure.target;
  for (const TaskPause& pause : rules.pauses)
    out << "\npause " << pause.from.intValue() << ".." << (pause.to ? pause.to->intValue() : 0);
  out << "\ncreated " << history.scope.created.intValue() << " today " << history.scope.today.intValue()
      << " fill from " << history.scope.fillFrom.intValue();
  for (const LoggedEntry& entry : history.log)
    out << '\n'
        << entry.entryDate << ' ' << caseName(entry.entryType) << " of " << entry.periodFrom << ".." << entry.periodTo
        << " #" << entry.order << ' ' << entry.progress << ' ' << entry.progressTotal
        << (entry.isAhead ? " ahead" : "");
  return out << '\n';
}

}  // namespace habitra
