#include "NaiveHistory.h"

#include <QZDateTime/YYYYMM.h>

#include <algorithm>
#include <sstream>

namespace habitra {

namespace {

using T = TaskLogEntryType;

std::int64_t number(const std::optional<qz::YYYYMMDD>& day) { return day ? day->intValue() : 0; }

struct NaivePeriod {
  qz::YYYYMMDD from;
  qz::YYYYMMDD to;
  std::vector<LoggedEntry> entries;
  bool isDue = false;
  std::string status;
  std::int64_t units = 0;
  std::optional<T> fillIn;
  bool gained = false;  ///< to avoid: the streak has its one for this period
};

class NaiveHistory {
 public:
  NaiveHistory(const TaskRules& rules, const HistoryScope& scope, std::span<const LoggedEntry> log)
      : rules_(rules), scope_(scope), log_(log.begin(), log.end()) {
    std::erase_if(log_, [&](const LoggedEntry& entry) { return entry.entryDate > scope.today.intValue(); });
  }

  std::vector<std::string> lines() {
    std::vector<std::string> result;
    for (qz::YYYYMMDD day = scope_.created; day <= scope_.today;) {
      const NaivePeriod period = judged(periodOf(day));
      result.push_back(line(period));
      day = period.to.add(1);
    }
    result.push_back(figures());
    return result;
  }

 private:
  static bool hasPeriod(const LoggedEntry& entry) { return entry.periodFrom > 0; }

  NaivePeriod periodOf(const qz::YYYYMMDD& day) const {
    NaivePeriod period{.from = day, .to = day};
    for (const LoggedEntry& entry : log_) {
      if (hasPeriod(entry) && entry.periodFrom <= day.intValue() && day.intValue() <= entry.periodTo) {
        period.from = qz::YYYYMMDD::fromRawValue(entry.periodFrom).value();
        period.to = qz::YYYYMMDD::fromRawValue(entry.periodTo).value();
      }
    }
    for (const LoggedEntry& entry : log_) {
      const bool counts =
          hasPeriod(entry) ? entry.periodFrom == period.from.intValue() : entry.entryDate == period.from.intValue();
      if (counts) period.entries.push_back(entry);
    }
    std::ranges::stable_sort(period.entries, {}, &LoggedEntry::order);
    return period;
  }

  bool beganEarly(const NaivePeriod& period) const { return period.from < scope_.created; }

  bool due(const NaivePeriod& period) const {
    if (period.from != period.to) return !beganEarly(period);
    if (rules_.frequency.dayMode == TaskFrequency::DayMode::specificDaysOfWeek)
      return rules_.frequency.days.contains(period.from.dayOfWeek());
    const std::int64_t bits = rules_.frequency.daysOfMonth.rawValue();
    const std::int64_t left = period.from.numberOfDaysRemainingThisMonth(false);
    return (bits & DaysOfMonth::day(period.from.d()).rawValue()) != 0 ||
           (left <= 7 && (bits & DaysOfMonth::lastDay(left).rawValue()) != 0);
  }

  bool reached(const NaivePeriod& period) const { return period.units >= rules_.frequency.numPartialCompletions; }
  bool holds(const NaivePeriod& period, bool (*is)(T)) const {
    return std::ranges::any_of(period.entries, [&](const LoggedEntry& entry) { return is(entry.entryType); });
  }

  void won(NaivePeriod& period) {
    best_ = std::max(best_, ++current_);
    period.gained = true;
  }

  void applyToDo(NaivePeriod& period, T type) {
    const bool wasReached = reached(period);
    if (isCompletedFull(type)) period.units = std::max(period.units, rules_.frequency.numPartialCompletions);
    if (isCompletedPartial(type) && !wasReached) ++period.units;
    if (isCompletedFull(type) || (isCompletedPartial(type) && !wasReached && reached(period))) {
      if (period.status != "positiveComplete") won(period);
      period.status = "positiveComplete";
    }
    if (isSkipped(type)) period.status = "positiveSkip";
    if (isMissedFull(type)) {
      current_ = 0;
      period.status = "positiveMiss";
    }
  }

  void applyToAvoid(NaivePeriod& period, T type) {
    const bool wasReached = reached(period);
    if (isCompletedFull(type) && period.status != "negativeComplete") {
      period.units = 0;
      period.status = "negativeComplete";
      won(period);
    }
    if (isAllowableMissFull(type) || isMissedFull(type))
      period.units = std::max(period.units, rules_.frequency.numPartialCompletions);
    if (isAllowableMissFull(type)) period.status = "negativeAllowedMiss";
    if (isMissedFullOrPartial(type) && isPartial(type)) ++period.units;
    if (isMissedFull(type) || (isMissedFullOrPartial(type) && !wasReached && reached(period))) {
      current_ = 0;
      period.status = "negativeMiss";
    }
  }

  void apply(NaivePeriod& period, const LoggedEntry& entry) {
    const std::string before = period.status;
    if (rules_.isNegative) {
      applyToAvoid(period, entry.entryType);
    } else {
      applyToDo(period, entry.entryType);
    }
    if (period.status != before) changedOn_ = entry.entryDate;
  }

  NaivePeriod judged(NaivePeriod period) {
    period.isDue = due(period);
    period.status = rules_.isNegative ? "negativeComplete" : "positiveIncomplete";
    const bool isOpen = period.to >= scope_.today;
    for (const LoggedEntry& entry : period.entries) apply(period, entry);
    if (!isOpen && period.to >= scope_.fillFrom && !holds(period, isFull)) fill(period);
    const bool mayGain =
        !holds(period, isSkipped) && !beganEarly(period) && (period.isDue || holds(period, isCompletedFull));
    if (!isOpen && period.status == "negativeComplete" && !period.gained && mayGain) won(period);
    note(period, isOpen, mayGain);
    return period;
  }

  void fill(NaivePeriod& period) {
    if (rules_.isNegative) {
      if (period.status == "negativeMiss")
        period.fillIn = T::missedAutomaticallyFull;
      else if (!period.isDue && !beganEarly(period))
        period.fillIn = T::skippedAutomaticallyFull;
    } else if (period.status != "positiveComplete") {
      period.fillIn = period.isDue ? T::missedAutomaticallyFull : T::skippedAutomaticallyFull;
    }
    if (!period.fillIn) return;
    period.entries.push_back(
        {.entryDate = static_cast<std::int32_t>(period.to.intValue()), .entryType = *period.fillIn});
    apply(period, period.entries.back());
  }

  std::int64_t dayOfLast(const NaivePeriod& period, bool (*is)(T)) const {
    std::int64_t day = 0;
    for (const LoggedEntry& entry : period.entries)
      if (is(entry.entryType)) day = entry.entryDate;
    return day;
  }

  void note(const NaivePeriod& period, bool isOpen, bool mayGain) {
    const bool isClean = period.status == "negativeComplete";
    const bool keptOpen = isOpen && isClean && mayGain && holds(period, isCompletedFull);
    const bool success = period.status == "positiveComplete" || (isClean && period.gained) || keptOpen;
    const bool failure = period.status == "positiveMiss" || period.status == "negativeMiss";
    if (failure) lastMissed_ = changedOn_;
    if (period.status == "positiveComplete") lastCompleted_ = changedOn_;
    if (isClean && success)
      lastCompleted_ = holds(period, isCompletedFull) ? dayOfLast(period, isCompletedFull) : period.to.intValue();
    if (period.status == "positiveSkip" || (isClean && !success && holds(period, isSkipped)))
      lastSkipped_ = dayOfLast(period, isSkipped);
    const qz::YYYYMMDD lastDay = std::min(period.to, scope_.today);
    for (std::size_t span = 0; span < 2; ++span) {
      if (!(success || failure) || lastDay.distance(scope_.today) >= (span == 0 ? 7 : 30)) continue;
      ++judged_[span];
      succeeded_[span] += success ? 1 : 0;
    }
  }

  std::string line(const NaivePeriod& period) const {
    std::ostringstream line;
    line << period.from.intValue() << ".." << period.to.intValue() << (period.isDue ? " due " : " ") << period.status
         << ' ' << period.units << ' ' << current_ << '/' << best_;
    if (period.fillIn) line << " fill " << caseName(*period.fillIn);
    return line.str();
  }

  std::string figures() const {
    std::ostringstream line;
    line << current_ << '/' << best_ << " completed " << lastCompleted_ << " missed " << lastMissed_ << " skipped "
         << lastSkipped_;
    for (std::size_t span = 0; span < 2; ++span) {
      const double share = judged_[span] == 0 ? 0.0 : static_cast<double>(succeeded_[span]) / judged_[span];
      line << ' ' << share << " of " << judged_[span];
    }
    return line.str();
  }

  const TaskRules& rules_;
  const HistoryScope& scope_;
  std::vector<LoggedEntry> log_;
  std::int64_t current_ = 0;
  std::int64_t best_ = 0;
  std::int64_t changedOn_ = 0;
  std::int64_t lastCompleted_ = 0;
  std::int64_t lastMissed_ = 0;
  std::int64_t lastSkipped_ = 0;
  int judged_[2] = {};
  int succeeded_[2] = {};
};

}  // namespace

std::vector<std::string> naiveHistory(const TaskRules& rules, const HistoryScope& scope,
                                      std::span<const LoggedEntry> log) {
  return NaiveHistory(rules, scope, log).lines();
}

std::string lineOf(const WalkedPeriod& walked) {
  std::ostringstream line;
  line << walked.from << ".." << walked.to << (walked.isDue ? " due " : " ") << caseName(walked.status.kind()) << ' '
       << walked.numUnits << ' ' << walked.streak.current << '/' << walked.streak.best;
  if (walked.fillIn) line << " fill " << caseName(*walked.fillIn);
  return line.str();
}

std::string lineOf(const TaskFigures& figures) {
  std::ostringstream line;
  line << figures.streak.current << '/' << figures.streak.best << " completed " << number(figures.lastCompleted)
       << " missed " << number(figures.lastMissed) << " skipped " << number(figures.lastSkipped);
  for (const auto& success : {figures.shortTerm, figures.longTerm})
    line << ' ' << success.successPct << " of " << success.numSamples;
  return line.str();
}

}  // namespace habitra
