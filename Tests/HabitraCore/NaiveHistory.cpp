#include "NaiveHistory.h"
#include "NaiveHistoryJudged.h"
#include "NaiveHistoryProgress.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace habitra {

namespace {

using Kind = NaivePeriod::Kind;
using Span = TaskRecentHistory::PreviousSuccessType;

std::int64_t number(const std::optional<qz::YYYYMMDD>& day) { return day ? day->intValue() : 0; }

/// The first day of a span that ends today.
std::optional<qz::YYYYMMDD> firstDayOf(Span span, const qz::YYYYMMDD& today) {
  qz::YYYYMM month = today.yyyymm();
  switch (span) {
    case Span::last7: return today.add(-6);
    case Span::last30: return today.add(-29);
    case Span::pastMonth: month = month.add(-1); break;
    case Span::pastYear: month = month.add(-12); break;
    case Span::allTime: return std::nullopt;
  }
  const qz::YYYYMMDD firstOfMonth(month.y(), month.m(), 1);
  const std::int64_t length = firstOfMonth.numberOfDaysRemainingThisMonth(true);
  return firstOfMonth.add(std::min(today.d(), length) - 1).nextDay();
}

std::string text(Span span, double share, std::int64_t samples) {
  std::ostringstream text;
  text << ' ' << caseName(span) << ' ' << share << " of " << samples;
  return text.str();
}

std::string text(const CompletionStatus::Status& status) {
  std::string text(caseName(status.kind()));
  if (status.skipMode()) text += '(' + std::string(rawValue(*status.skipMode())) + ')';
  return text;
}

std::string text(PeriodVerdict verdict) {
  switch (verdict) {
    case PeriodVerdict::notJudged: return "";
    case PeriodVerdict::failure: return " failure";
    case PeriodVerdict::success: return " success";
  }
  return "";
}

/// An amount stands instead of the count.
std::string text(std::int64_t units, std::int64_t expected, const std::optional<double>& amount) {
  std::ostringstream text;
  text << ' ' << (amount ? *amount : static_cast<double>(units)) << (amount ? " of " : "/") << expected;
  return text.str();
}

/// As judged by the day, by the week or fortnight, by the month, by the year.
std::pair<Span, Span> spansOf(const TaskRules& rules) {
  switch (rules.frequency.measurementDuration()) {
    case TaskFrequencyPeriodType::day: return {Span::last7, Span::last30};
    case TaskFrequencyPeriodType::week:
    case TaskFrequencyPeriodType::fortnight: return {Span::pastMonth, Span::pastYear};
    case TaskFrequencyPeriodType::month: return {Span::pastYear, Span::allTime};
    case TaskFrequencyPeriodType::year: break;
  }
  return {Span::allTime, Span::allTime};
}

/// The counting period of today, and its completed days so far.
std::string text(const qz::YYYYMMDD& from, const qz::YYYYMMDD& to, std::int64_t completed) {
  return " of " + std::to_string(from.intValue()) + ".." + std::to_string(to.intValue()) + ' ' +
         std::to_string(completed);
}

NaiveNumbers numbersOf(const PeriodReason& reason) {
  NaiveNumbers numbers{.completed = reason.completed,
                       .wanted = reason.wanted,
                       .available = reason.available,
                       .required = reason.required,
                       .stillPossible = reason.stillPossible,
                       .allowance = reason.allowance,
                       .allowanceLeft = reason.allowanceLeft,
                       .countedFrom = reason.countedFrom,
                       .daysSince = reason.daysSince};
  if (reason.countingPeriod) numbers.countingFrom = reason.countingPeriod->startDate;
  if (reason.countingPeriod) numbers.countingTo = reason.countingPeriod->finishDate;
  return numbers;
}

}  // namespace

CompletionStatus::Status NaiveHistory::status(const NaivePeriod& period) const {
  using Status = CompletionStatus::Status;
  using Mode = TaskFrequency::SkipMode;
  Mode mode = period.isDue ? Mode::willMissWithoutIndicator : Mode::willSkipWithoutIndicator;
  if (due_.dependsOnLog()) mode = period.isDue ? Mode::willMissWithIndicator : Mode::willSkipWithIndicator;
  if (period.wasMended) mode = Mode::willMissWithoutIndicator;
  switch (period.kind) {
    case Kind::positiveIncomplete: return Status::positiveIncomplete(mode);
    case Kind::negativeComplete: return Status::negativeComplete(mode);
    case Kind::positiveComplete: return Status::positiveComplete();
    case Kind::positiveMiss: return Status::positiveMiss();
    case Kind::positiveSkip: return Status::positiveSkip();
    case Kind::negativeMiss: return Status::negativeMiss();
    case Kind::negativeAllowedMiss: return Status::negativeAllowedMiss();
  }
  return Status::positiveSkip();
}

std::string NaiveHistory::success(Span span) const {
  std::int64_t judged = 0;
  std::int64_t succeeded = 0;
  for (const NaivePeriod& period : periods_) {
    const std::optional<qz::YYYYMMDD> first = firstDayOf(span, scope_.today);
    const qz::YYYYMMDD lastDay = period.isOpen ? scope_.today : period.to;
    if (period.verdict == PeriodVerdict::notJudged || (first && lastDay < *first)) continue;
    ++judged;
    if (period.verdict == PeriodVerdict::success) ++succeeded;
  }
  return text(span, judged == 0 ? 0.0 : static_cast<double>(succeeded) / static_cast<double>(judged), judged);
}

std::string NaiveHistory::line(const NaivePeriod& period) const {
  std::ostringstream line;
  line << period.from.intValue() << ".." << period.to.intValue() << (period.isOpen ? " open" : "")
       << (period.isDue ? " due" : "") << (due_.isPausedSomeDay(period) ? " paused" : "")
       << (period.missIsAllowed ? " allowed " : " ") << text(status(period))
       << text(period.progress.units, expectedUnits(rules_), period.progress.amount) << ' ' << period.streak.current
       << '/' << period.streak.best << text(period.verdict) << (period.holds(isFull) ? " full" : "");
  if (period.fillIn) line << " fill " << caseName(*period.fillIn);
  line << period.numbers.text();
  return line.str();
}

std::string NaiveHistory::figures() const {
  const NaivePeriod& open = periods_.back();
  const auto [shortTerm, longTerm] = spansOf(rules_);
  NaiveProgress progress = open.progress;
  std::ostringstream line;
  line << streak_.current << '/' << streak_.best << ' ' << text(status(open)) << ' ' << open.from.intValue() << ".."
       << open.to.intValue() << (open.isDue ? " due" : "") << (open.missIsAllowed ? " allowed" : "") << " completed "
       << number(lastCompleted_) << " missed " << number(lastMissed_) << " skipped " << number(lastSkipped_)
       << success(shortTerm) << success(longTerm) << " progress " << NaiveShare(rules_, progress).valueWithTimer()
       << " on " << scope_.today.intValue();
  if (open.isDay() && open.numbers.countingFrom && !rules_.isNegative) {
    const std::int64_t today = open.kind == Kind::positiveComplete ? 1 : 0;
    line << text(*open.numbers.countingFrom, *open.numbers.countingTo, *open.numbers.completed + today);
  }
  if (rules_.frequency.dayMode == TaskFrequency::DayMode::dayInterval && !rules_.isNegative) {
    std::optional<qz::YYYYMMDD> last;
    for (const NaivePeriod& period : periods_)
      if (period.kind == Kind::positiveComplete && !period.isOpen) last = period.countsOn();
    if (last) line << " last " << last->intValue();
  }
  return line.str();
}

std::vector<std::string> naiveHistory(const TaskRules& rules, const HistoryScope& scope,
                                      std::span<const LoggedEntry> log) {
  const NaiveHistory history(rules, scope, log);
  std::vector<std::string> lines;
  for (const NaivePeriod& period : history.periods()) lines.push_back(history.line(period));
  lines.push_back(history.figures());
  return lines;
}

std::string lineOf(const WalkedPeriod& walked) {
  std::ostringstream line;
  line << walked.from << ".." << walked.to << (walked.isOpen ? " open" : "") << (walked.isDue ? " due" : "")
       << (walked.isPaused ? " paused" : "") << (walked.missIsAllowed ? " allowed " : " ") << text(walked.status)
       << text(walked.progress.numUnits, walked.expectedUnits, walked.progress.amount) << ' ' << walked.streak.current
       << '/' << walked.streak.best << text(walked.verdict) << (walked.hasFull ? " full" : "");
  if (walked.fillIn) line << " fill " << caseName(*walked.fillIn);
  line << numbersOf(walked.reason()).text();
  return line.str();
}

std::string lineOf(const TaskFigures& figures) {
  std::ostringstream line;
  line << figures.streak.current << '/' << figures.streak.best << ' ' << text(figures.completionStatus.status) << ' '
       << figures.period.startDate.intValue() << ".." << figures.period.finishDate.intValue()
       << (figures.isDueToday ? " due" : "") << (figures.missIsAllowed ? " allowed" : "") << " completed "
       << number(figures.lastCompleted) << " missed " << number(figures.lastMissed) << " skipped "
       << number(figures.lastSkipped);
  for (const auto& success : {figures.shortTerm, figures.longTerm})
    line << text(success.type, success.successPct, success.numSamples);
  line << " progress " << figures.progress << " on " << figures.progressDate.intValue();
  const bool isDay = figures.period.startDate == figures.period.finishDate;
  if (const auto& days = figures.daysInPeriod; days && isDay && !days->isNegative)
    line << text(days->fromDate, days->toDate, days->numUniqueCompletions);
  if (const auto& last = figures.dayInterval.periodOfLastCompletionBeforeToday)
    line << " last " << last->finishDate.intValue();
  return line.str();
}

}  // namespace habitra
