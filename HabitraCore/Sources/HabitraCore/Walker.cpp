#include <HabitraCore/DayForms.h>
#include <HabitraCore/Walker.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace habitra {

namespace {

using Status = CompletionStatus::Status;
using SkipMode = TaskFrequency::SkipMode;
using Success = TaskRecentHistory::PreviousDaysSuccess;
using SuccessType = TaskRecentHistory::PreviousSuccessType;

constexpr std::int32_t endOfTime = std::numeric_limits<std::int32_t>::max();

SkipMode skipMode(bool isDue, bool dependsOnLog) {
  if (isDue) return dependsOnLog ? SkipMode::willMissWithIndicator : SkipMode::willMissWithoutIndicator;
  return dependsOnLog ? SkipMode::willSkipWithIndicator : SkipMode::willSkipWithoutIndicator;
}

/// Whether a stored longer period lacks the first days of a whole one, since another one has them.
bool isPartOfItsType(const PeriodJudging& judging) {
  if (judging.isSingleDay()) return false;
  if (judging.type == TaskFrequencyPeriodType::month) return judging.from % 100 != 1;
  if (judging.type == TaskFrequencyPeriodType::year) return judging.from % 10'000 != 101;
  return numberOf(judging.to) - numberOf(judging.from) + 1 < nominalLength(judging.type);
}

/// The first day of a span, in integer form; of all time the first there is.
std::int32_t firstDayOf(SuccessType span, const qz::YYYYMMDD& today) {
  const auto first = firstDay(span, today);
  return first ? intForm(*first) : std::numeric_limits<std::int32_t>::min();
}

}  // namespace

Walker::Walker(const TaskRules& rules, const HistoryScope& scope, std::span<const LoggedEntry> entries,
               const PeriodVisitor& visit)
    : rules_(rules),
      scope_(scope),
      visit_(visit),
      created_(intForm(std::min(scope.created, scope.today))),
      today_(intForm(scope.today)),
      fillFrom_(intForm(scope.fillFrom)),
      captureAfter_(scope.checkpointDay ? intForm(std::min(*scope.checkpointDay, scope.today.previousDay()))
                                        : endOfTime),
      cursor_(std::min(scope.created, scope.today)),
      due_(rules, std::min(scope.created, scope.today)),
      pauses_(rules.pauses),
      progress_(rules.measure, rules.frequency.numPartialCompletionsPerPeriod()),
      next_(entries.data()),
      end_(entries.data() + entries.size()),
      periodEntries_(next_) {
  const SuccessSpans spans = successSpans(rules.frequency);
  shortTerm_.from = firstDayOf(spans.shortTerm, scope.today);
  longTerm_.from = firstDayOf(spans.longTerm, scope.today);
  if (!visit_ && due_.measuresDays()) findPlainDays();
}

void Walker::goOnFrom(const HistoryCheckpoint& checkpoint) {
  state_ = checkpoint;
  due_.goOnFrom(checkpoint.counts, dayOf(checkpoint.closedThrough));
  cursor_.moveTo(dayOf(checkpoint.closedThrough).nextDay());
}

HistoryResult Walker::run() {
  if (rules_.isNegative) {
    pass<true>();
  } else {
    pass<false>();
  }
  fillInFigures();
  return std::move(result_);
}

template <bool isNegative>
void Walker::pass() {
  while (true) {
    while (next_ != end_ && next_->periodTo < cursor_.day()) ++next_;
    if (!isNegative && passCompletedDays()) continue;
    PeriodJudging judging = nextPeriod();
    if (judging.to > captureAfter_) [[unlikely]]
      capture();
    const LoggedEntry* const first = next_;
    while (next_ != end_ && next_->periodFrom <= judging.to) ++next_;
    judging.entries = {first, next_};
    judge<isNegative>(judging);
    if (judging.to >= today_) return;
    state_.closedThrough = judging.to;
    moveBeyond(judging);
  }
}

/// Days up to which neither the shares of success nor a checkpoint look at single periods.
void Walker::findPlainDays() {
  const std::int32_t today = numberOf(today_);
  plainThrough_ = std::min(today, numberOf(longTerm_.from)) - 1;
  if (captureAfter_ != endOfTime) plainThrough_ = std::min(*plainThrough_, numberOf(captureAfter_));
}

/// To do: passes days in a row, up to the end of a month, of which each has nothing but one full completion. They come
/// to what judging each would come to; most days of most histories are of this kind. False when the next day is not.
bool Walker::passCompletedDays() {
  if (next_ == end_ || next_->periodFrom != cursor_.day()) return false;
  if (!plainThrough_ || cursor_.number() > *plainThrough_) return false;
  due_.enter(cursor_);
  if (pauses_.contains(cursor_.number())) return false;
  const std::int32_t last = std::min(
      {*plainThrough_, due_.periodEnd(), pauses_.nextFirst() - 1, cursor_.number() + cursor_.numDaysLeftOfMonth()});
  const LoggedEntry* entry = next_;
  const LoggedEntry* const stop = entry + std::min<std::ptrdiff_t>(last - cursor_.number() + 1, end_ - entry);
  std::int32_t day = cursor_.day();
  while (entry != stop && entry->periodFrom == day && entry->periodTo == day && isCompletedFull(entry->entryType)) {
    ++entry;
    ++day;
  }
  if (entry != next_ && entry != end_ && entry->periodFrom < day) {
    // The last of them has more entries than this one.
    --entry;
    --day;
  }
  const std::int32_t numDays = day - cursor_.day();
  if (numDays == 0) return false;
  state_.streak.increment(numDays);
  state_.numJudged += numDays;
  state_.numSucceeded += numDays;
  state_.lastCompleted = entry[-1].entryDate;
  state_.closedThrough = day - 1;
  due_.countCompleted(cursor_.number() + numDays - 1, numDays);
  next_ = entry;
  cursor_.advance(numDays);
  return true;
}

/// The period that holds the cursor: a stored one, else that of the frequency.
PeriodJudging Walker::nextPeriod() {
  PeriodJudging judging;
  judging.from = cursor_.day();
  judging.to = cursor_.day();
  judging.number = cursor_.number();
  if (next_ != end_ && next_->periodFrom <= cursor_.day()) {
    judging.from = next_->periodFrom;
    judging.to = next_->periodTo;
    judging.type = next_->periodType;
    judging.isShortened = isPartOfItsType(judging);
  } else if (!due_.measuresDays()) {
    cutLongerPeriod(judging);
  }
  return judging;
}

/// The part of the frequency's longer period that stored periods leave.
void Walker::cutLongerPeriod(PeriodJudging& judging) const {
  const DatedPeriod whole = rules_.frequency.period(cursor_.date(), rules_.firstDayOfWeek, rules_.referenceDate);
  const std::int32_t start = intForm(whole.period.startDate);
  const std::int32_t finish = intForm(whole.period.finishDate);
  judging.type = whole.period.periodType;
  if (start > state_.closedThrough) judging.from = start;
  judging.to = finish;
  if (next_ != end_ && next_->periodFrom <= finish) judging.to = intForm(dayOf(next_->periodFrom).previousDay());
  judging.isShortened = judging.from != start || judging.to != finish;
}

template <bool isNegative>
void Walker::judge(PeriodJudging& judging) {
  const bool isOpen = judging.to >= today_;
  begin<isNegative>(judging);
  for (const LoggedEntry& entry : judging.entries) {
    progress_.take(entry);
    judging.apply<isNegative>(entry.entryType, entry.entryDate, progress_, state_.streak);
  }
  const std::optional<TaskLogEntryType> filled = isOpen ? std::nullopt : fillIn<isNegative>(judging);
  if (!isOpen) close<isNegative>(judging);
  // A day that was skipped by hand is none of those that were there to be used; only its entries tell.
  if (!isNegative && judging.isSkippedByHand() && judging.isSingleDay() && !judging.isPaused)
    judging.isDue = due_.isDue<isNegative>(cursor_, true);
  const PeriodVerdict verdict = note(judging, isOpen);
  sample(judging, verdict);
  if (isOpen || filled || visit_) report(judging, isOpen, verdict, filled);
  if (due_.dependsOnLog()) count<isNegative>(judging, verdict, isOpen);
}

template <bool isNegative>
void Walker::begin(PeriodJudging& judging) {
  if (judging.isSingleDay()) [[likely]] {
    enterCountingPeriod(cursor_, judging.entries.data());
    judging.isPaused = pauses_.contains(judging.number);
    judging.isDue = !judging.isPaused && due_.isDue<isNegative>(cursor_, false);
    if constexpr (isNegative) judging.missIsAllowed = due_.hasRoom(judging.number, judging.isDue);
  } else {
    const std::int32_t first = numberOf(judging.from);
    const std::int32_t last = numberOf(judging.to);
    const std::int32_t numPaused = pauses_.count(first, last);
    judging.isPaused = numPaused > 0;
    judging.isCut = judging.from < created_;
    judging.isDue = !judging.isCut && !judging.isShortened && numPaused <= last - first;
  }
  const SkipMode mode = skipMode(judging.isDue, due_.dependsOnLog());
  judging.status = isNegative ? Status::negativeComplete(mode) : Status::positiveIncomplete(mode);
  progress_.begin();
}

/// Moves the rule on to a day, and keeps where the entries of its counting period begin.
void Walker::enterCountingPeriod(const DayCursor& day, const LoggedEntry* entries) {
  const std::int32_t before = due_.periodStart();
  due_.enter(day);
  if (due_.periodStart() != before) periodEntries_ = entries;
}

template <bool isNegative>
std::optional<TaskLogEntryType> Walker::fillIn(PeriodJudging& judging) {
  if (judging.lastFull || judging.to < fillFrom_) return std::nullopt;
  const std::optional<TaskLogEntryType> missing = judging.missingEntry<isNegative>();
  if (missing) judging.apply<isNegative>(*missing, judging.to, progress_, state_.streak);
  return missing;
}

/// What waits for the end of a period: a task to avoid that was kept clean gains its one.
template <bool isNegative>
void Walker::close(PeriodJudging& judging) {
  if constexpr (isNegative) {
    if (judging.isCounted || !judging.mayBeClean()) return;
    if (!judging.isDue && judging.completionHeld == 0) return;
    state_.streak.increment();
    judging.isCounted = true;
  }
}

/// Keeps the days of the newest completion, miss and skip, and says how the period is judged.
PeriodVerdict Walker::note(const PeriodJudging& judging, bool isOpen) {
  switch (judging.status.kind()) {
    case Status::Kind::positiveComplete: state_.lastCompleted = judging.decidedOn; return PeriodVerdict::success;
    case Status::Kind::positiveMiss:
    case Status::Kind::negativeMiss: state_.lastMissed = judging.decidedOn; return PeriodVerdict::failure;
    case Status::Kind::positiveSkip: state_.lastSkipped = judging.skippedOn; return PeriodVerdict::notJudged;
    case Status::Kind::positiveIncomplete:
    case Status::Kind::negativeAllowedMiss: return PeriodVerdict::notJudged;
    case Status::Kind::negativeComplete: break;
  }
  // An open period of a task to avoid is decided only by an entry that says so.
  if (judging.isCounted || (isOpen && judging.completionHeld != 0 && judging.mayBeClean())) {
    state_.lastCompleted = judging.completionHeld != 0 ? judging.completionHeld : judging.to;
    return PeriodVerdict::success;
  }
  if (judging.hasSkip) state_.lastSkipped = judging.skippedOn;
  return PeriodVerdict::notJudged;
}

/// Tells the rule what came of the period, for the days after it.
template <bool isNegative>
void Walker::count(const PeriodJudging& judging, PeriodVerdict verdict, bool isOpen) {
  if (!judging.isSingleDay()) {
    if (!isOpen) countLongerPeriod(judging);
    return;
  }
  if (verdict == PeriodVerdict::success) due_.countCompleted(judging.number);
  if constexpr (isNegative) {
    if (judging.status.isFailed()) due_.countFailed(judging.number);
  } else {
    if (judging.isPaused || judging.isSkippedByHand()) due_.countUnavailable(1);
  }
}

/// A longer period from before the task was judged by the day: it is one completed or failed day, that of the entry
/// which made it so; if it was skipped by hand, none of its days was there to be used.
void Walker::countLongerPeriod(const PeriodJudging& judging) {
  const DayCursor lastDay(dayOf(judging.to));
  enterCountingPeriod(lastDay, judging.entries.data());
  const std::int32_t first = numberOf(judging.from);
  const std::int32_t decided = judging.decidedOn == 0 ? first : numberOf(judging.decidedOn);
  const std::int32_t day = std::clamp(decided, first, lastDay.number());
  if (judging.isComplete()) due_.countCompleted(day);
  if (judging.status.isFailed()) due_.countFailed(day);
  const std::int32_t counted = std::max({first, due_.periodStart(), numberOf(created_)});
  if (counted > lastDay.number()) return;
  due_.countUnavailable(judging.isSkippedByHand() ? lastDay.number() - counted + 1
                                                  : pauses_.count(counted, lastDay.number()));
}

void Walker::sample(const PeriodJudging& judging, PeriodVerdict verdict) {
  if (verdict == PeriodVerdict::notJudged) return;
  ++state_.numJudged;
  if (verdict == PeriodVerdict::success) ++state_.numSucceeded;
  const std::int32_t lastDay = std::min(judging.to, today_);
  longTerm_.take(lastDay, verdict);
  shortTerm_.take(lastDay, verdict);
}

void Walker::report(const PeriodJudging& judging, bool isOpen, PeriodVerdict verdict,
                    std::optional<TaskLogEntryType> fillIn) {
  const WalkedPeriod walked{.from = judging.from,
                            .to = judging.to,
                            .progressDay = std::min(judging.to, today_),
                            .periodType = judging.type,
                            .status = judging.status,
                            .progress = progress_.made(),
                            .expectedUnits = progress_.expectedUnits(),
                            .streak = state_.streak,
                            .verdict = verdict,
                            .isDue = judging.isDue,
                            .isPaused = judging.isPaused,
                            .isOpen = isOpen,
                            .hasFull = judging.lastFull.has_value(),
                            .hasSkip = judging.hasSkip,
                            .missIsAllowed = judging.missIsAllowed,
                            .fillIn = fillIn,
                            .entries = judging.entries,
                            .source = {.rules = &rules_,
                                       .due = &due_,
                                       .countedEntries = {periodEntries_, judging.entries.data()},
                                       .isCut = judging.isCut,
                                       .isShortened = judging.isShortened,
                                       .isUnavailable = judging.isPaused || judging.isSkippedByHand(),
                                       .number = judging.number}};
  if (fillIn) result_.fillIns.push_back({.period = walked.period(), .entryType = *fillIn});
  if (isOpen) {
    current_ = walked;
    completedBeforeToday_ = due_.lastCompleted();
  }
  if (visit_) visit_(walked);
}

void Walker::moveBeyond(const PeriodJudging& judging) {
  if (judging.to == cursor_.day()) [[likely]] {
    cursor_.next();
  } else {
    cursor_.moveTo(dayOf(judging.to).nextDay());
  }
}

void Walker::capture() {
  captureAfter_ = endOfTime;
  if (plainThrough_) findPlainDays();
  // Whoever resumes reads the entries of later days only; none of an earlier one may then be missing.
  const auto reachesAhead = [&](const LoggedEntry& entry) { return entry.entryDate <= state_.closedThrough; };
  if (state_.closedThrough == 0 || std::any_of(next_, end_, reachesAhead)) return;
  state_.counts = due_.counts();
  result_.checkpoint = state_;
  result_.checkpoint->created = intForm(scope_.created);
  result_.checkpoint->fingerprint = fingerprint(rules_, scope_.created);
}

void Walker::fillInFigures() {
  const SuccessSpans spans = successSpans(rules_.frequency);
  const auto success = [&](SuccessType type, SuccessSample sample) {
    if (type == SuccessType::allTime) sample = {.judged = state_.numJudged, .succeeded = state_.numSucceeded};
    const double share =
        sample.judged == 0 ? 0.0 : static_cast<double>(sample.succeeded) / static_cast<double>(sample.judged);
    return Success{.type = type, .numSamples = sample.judged, .successPct = share};
  };
  TaskFigures& figures = result_.figures;
  figures.streak = state_.streak;
  figures.completionStatus = current_.completionStatus();
  figures.period = current_.period();
  figures.isDueToday = current_.isDue;
  figures.missIsAllowed = current_.missIsAllowed;
  figures.lastCompleted = qz::YYYYMMDD::fromRawValue(state_.lastCompleted);
  figures.lastMissed = qz::YYYYMMDD::fromRawValue(state_.lastMissed);
  figures.lastSkipped = qz::YYYYMMDD::fromRawValue(state_.lastSkipped);
  figures.shortTerm = success(spans.shortTerm, shortTerm_);
  figures.longTerm = success(spans.longTerm, longTerm_);
  figures.progress = figures.completionStatus.codableProgress.progressShare();
  figures.progressDate = scope_.today;
  figures.isProgressTracked = progress_.expectedUnits() > 1 || rules_.measure.kind != TaskMeasure::Kind::byHand;
  fillInCounts();
}

void Walker::fillInCounts() {
  TaskFigures& figures = result_.figures;
  if (due_.countsDays()) {
    due_.enter(DayCursor(scope_.today));
    figures.daysInPeriod = {.firstDayOfWeek = rules_.firstDayOfWeek,
                            .numUniqueCompletions = due_.completedDays(),
                            .taskCreatedDate = scope_.created,
                            .isNegative = rules_.isNegative,
                            .fromDate = dayOfNumber(due_.periodStart()),
                            .toDate = dayOfNumber(due_.periodEnd())};
  }
  if (rules_.frequency.dayMode == TaskFrequency::DayMode::dayInterval && !rules_.isNegative && completedBeforeToday_) {
    const qz::YYYYMMDD day = dayOfNumber(*completedBeforeToday_);
    figures.dayInterval.periodOfLastCompletionBeforeToday =
        rules_.frequency.period(day, rules_.firstDayOfWeek, rules_.referenceDate).period;
  }
}

}  // namespace habitra
