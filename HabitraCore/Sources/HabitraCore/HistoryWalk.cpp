#include <HabitraCore/DayCursor.h>
#include <HabitraCore/EntryTables.h>
#include <HabitraCore/HistoryWalk.h>
#include <HabitraCore/LoggedEntries.h>
#include <QZKit/Checked.h>
#include <QZKit/Trap.h>

#include <algorithm>
#include <limits>

namespace habitra {

namespace {

using Status = CompletionStatus::Status;
using SkipMode = TaskFrequency::SkipMode;
using Success = TaskRecentHistory::PreviousDaysSuccess;
using SuccessType = TaskRecentHistory::PreviousSuccessType;

constexpr std::int32_t never = std::numeric_limits<std::int32_t>::max();

std::int32_t intForm(const qz::YYYYMMDD& day) { return qz::checkedNarrow<std::int32_t>(day.intValue()); }

qz::YYYYMMDD dayOf(std::int32_t intForm) {
  return qz::YYYYMMDD::fromRawValue(intForm).value_or(qz::YYYYMMDD::emptyValue);
}

/// The progress of a period as the walk keeps it.
struct UnitCount {
  std::int64_t units = 0;
  std::int64_t expected = 1;

  [[nodiscard]] bool isReached() const { return units >= expected; }
  void fill() { units = std::max(units, expected); }
  void addUnit() { units = qz::checkedAdd(units, std::int64_t{1}); }
  void empty() { units = 0; }
};

enum class Verdict : std::uint8_t { notJudged, failure, success };

/// Judged periods of a span of days that ends today.
struct Sample {
  std::int32_t from = 0;
  std::int64_t judged = 0;
  std::int64_t succeeded = 0;

  void take(std::int32_t lastDay, Verdict verdict) {
    if (lastDay < from || verdict == Verdict::notJudged) return;
    ++judged;
    if (verdict == Verdict::success) ++succeeded;
  }
  [[nodiscard]] Success success(SuccessType type) const {
    const double share = judged == 0 ? 0.0 : static_cast<double>(succeeded) / static_cast<double>(judged);
    return {.type = type, .numSamples = judged, .successPct = share};
  }
};

/// A period and what its entries have come to so far.
struct Judging {
  std::int32_t from;
  std::int32_t to;
  TaskFrequencyPeriodType type;
  bool isDue = false;
  bool isCut = false;  ///< a longer period that began before the history did
  Status status = Status::positiveIncomplete(SkipMode::willMissWithoutIndicator);
  UnitCount progress;
  bool hasFull = false;
  bool hasSkip = false;
  bool isCounted = false;           ///< to avoid: the streak has counted this period
  std::int32_t decidedOn = 0;       ///< day of the entry that gave the status
  std::int32_t completionHeld = 0;  ///< to avoid: day of a full completion
  std::int32_t skippedOn = 0;
};

/// One pass. What is a template on the task's sign differs between the two families of statuses.
class Walker {
 public:
  Walker(const TaskRules& rules, const HistoryScope& scope, const PeriodVisitor& visit)
      : rules_(rules),
        scope_(scope),
        visit_(visit),
        byMonth_(rules.frequency.dayMode == TaskFrequency::DayMode::specificDaysOfMonth),
        expectedUnits_(rules.frequency.numPartialCompletionsPerPeriod()),
        created_(intForm(std::min(scope.created, scope.today))),
        today_(intForm(scope.today)),
        fillFrom_(intForm(scope.fillFrom)),
        captureAfter_(scope.checkpointDay ? intForm(std::min(*scope.checkpointDay, scope.today.previousDay())) : never),
        cursor_(std::min(scope.created, scope.today)) {
    shortTerm_.from = intForm(scope.today.add(-6));
    longTerm_.from = intForm(scope.today.add(-29));
  }

  void goOnFrom(const HistoryCheckpoint& checkpoint) {
    state_ = checkpoint;
    cursor_.moveTo(dayOf(checkpoint.closedThrough).nextDay());
  }

  HistoryResult run(std::span<const LoggedEntry> entries) {
    if (rules_.isNegative) {
      pass<true>(entries);
    } else {
      pass<false>(entries);
    }
    fillInFigures();
    return std::move(result_);
  }

 private:
  template <bool isNegative>
  void pass(std::span<const LoggedEntry> entries);
  template <bool isNegative>
  void judge(Judging& judging, std::span<const LoggedEntry> entries);
  template <bool isNegative>
  void apply(Judging& judging, TaskLogEntryType type, std::int32_t day);
  template <bool isNegative>
  [[nodiscard]] std::optional<TaskLogEntryType> missingEntry(const Judging& judging) const;
  template <bool isNegative>
  void close(Judging& judging);
  template <bool isNegative>
  Verdict note(const Judging& judging, bool isOpen);
  void report(const Judging& judging, bool isOpen, std::optional<TaskLogEntryType> fillIn);
  void capture();
  void fillInFigures();

  [[nodiscard]] bool isCursorDue() const {
    const TaskFrequency& frequency = rules_.frequency;
    return byMonth_ ? frequency.daysOfMonth.isDue(cursor_.d(), cursor_.numberOfDaysOfMonth())
                    : frequency.days.contains(cursor_.dayOfWeek());
  }

  const TaskRules& rules_;
  const HistoryScope& scope_;
  const PeriodVisitor& visit_;
  const bool byMonth_;
  const std::int64_t expectedUnits_;
  const std::int32_t created_;
  const std::int32_t today_;
  const std::int32_t fillFrom_;
  std::int32_t captureAfter_;
  DayCursor cursor_;
  HistoryCheckpoint state_;
  Sample shortTerm_;
  Sample longTerm_;
  WalkedPeriod current_;
  HistoryResult result_;
};

template <bool isNegative>
void Walker::pass(std::span<const LoggedEntry> entries) {
  const LoggedEntry* next = entries.data();
  const LoggedEntry* const end = next + entries.size();
  while (true) {
    const std::int32_t day = cursor_.day();
    while (next != end && next->periodTo < day) ++next;
    Judging judging{.from = day, .to = day, .type = TaskFrequencyPeriodType::day};
    if (next != end && next->periodFrom <= day) {
      judging.from = next->periodFrom;
      judging.to = next->periodTo;
      judging.type = next->periodType;
    }
    if (judging.to > captureAfter_) [[unlikely]]
      capture();
    const LoggedEntry* const first = next;
    while (next != end && next->periodFrom <= judging.to) ++next;
    judge<isNegative>(judging, {first, next});
    if (judging.to >= today_) return;
    state_.closedThrough = judging.to;
    if (judging.to == day) [[likely]] {
      cursor_.next();
    } else {
      cursor_.moveTo(dayOf(judging.to).nextDay());
    }
  }
}

template <bool isNegative>
void Walker::judge(Judging& judging, std::span<const LoggedEntry> entries) {
  const bool isOpen = judging.to >= today_;
  if (judging.from == judging.to) [[likely]] {
    judging.isDue = isCursorDue();
  } else {
    judging.isCut = judging.from < created_;
    judging.isDue = !judging.isCut;
  }
  const SkipMode mode = judging.isDue ? SkipMode::willMissWithoutIndicator : SkipMode::willSkipWithoutIndicator;
  judging.status = isNegative ? Status::negativeComplete(mode) : Status::positiveIncomplete(mode);
  judging.progress.expected = expectedUnits_;
  for (const LoggedEntry& entry : entries) apply<isNegative>(judging, entry.entryType, entry.entryDate);

  std::optional<TaskLogEntryType> fillIn;
  if (!isOpen) {
    if (!judging.hasFull && judging.to >= fillFrom_) fillIn = missingEntry<isNegative>(judging);
    if (fillIn) apply<isNegative>(judging, *fillIn, judging.to);
    close<isNegative>(judging);
  }
  const Verdict verdict = note<isNegative>(judging, isOpen);
  const std::int32_t lastDay = std::min(judging.to, today_);
  if (lastDay >= longTerm_.from) {
    longTerm_.take(lastDay, verdict);
    shortTerm_.take(lastDay, verdict);
  }
  if (isOpen || fillIn || visit_) report(judging, isOpen, fillIn);
}

template <bool isNegative>
void Walker::apply(Judging& judging, TaskLogEntryType type, std::int32_t day) {
  const Status::Kind before = judging.status.kind();
  const std::int64_t streakBefore = state_.streak.current;
  if constexpr (isNegative) {
    applyToNegative(judging.status, judging.progress, state_.streak, type);
    if (state_.streak.current > streakBefore) judging.isCounted = true;
    if (isCompletedFull(type)) judging.completionHeld = day;
  } else {
    applyToPositive(judging.status, judging.progress, state_.streak, type);
  }
  if (judging.status.kind() != before) judging.decidedOn = day;
  judging.hasFull |= isFull(type);
  if (isSkipped(type)) {
    judging.hasSkip = true;
    judging.skippedOn = day;
  }
}

template <bool isNegative>
std::optional<TaskLogEntryType> Walker::missingEntry(const Judging& judging) const {
  const Status::Kind kind = judging.status.kind();
  if constexpr (isNegative) {
    // Only partial misses can have failed a period without a full entry.
    if (kind == Status::Kind::negativeMiss) return TaskLogEntryType::missedAutomaticallyFull;
    if (judging.isDue || judging.isCut) return std::nullopt;
    return TaskLogEntryType::skippedAutomaticallyFull;
  } else {
    if (kind == Status::Kind::positiveComplete) return std::nullopt;
    return judging.isDue ? TaskLogEntryType::missedAutomaticallyFull : TaskLogEntryType::skippedAutomaticallyFull;
  }
}

/// What waits for the end of a period: a task to avoid that was kept clean gains its one.
template <bool isNegative>
void Walker::close(Judging& judging) {
  if constexpr (isNegative) {
    if (judging.status.kind() != Status::Kind::negativeComplete || judging.isCounted) return;
    if (judging.hasSkip || judging.isCut || (!judging.isDue && judging.completionHeld == 0)) return;
    state_.streak.increment();
    judging.isCounted = true;
  }
}

/// Keeps the days of the newest completion, miss and skip, and says how the period is judged.
template <bool isNegative>
Verdict Walker::note(const Judging& judging, bool isOpen) {
  switch (judging.status.kind()) {
    case Status::Kind::positiveComplete: state_.lastCompleted = judging.decidedOn; return Verdict::success;
    case Status::Kind::positiveMiss:
    case Status::Kind::negativeMiss: state_.lastMissed = judging.decidedOn; return Verdict::failure;
    case Status::Kind::positiveSkip: state_.lastSkipped = judging.skippedOn; return Verdict::notJudged;
    case Status::Kind::positiveIncomplete:
    case Status::Kind::negativeAllowedMiss: return Verdict::notJudged;
    case Status::Kind::negativeComplete: break;
  }
  // An open period of a task to avoid is decided only by an entry that says so.
  if (judging.isCounted || (isOpen && judging.completionHeld != 0 && !judging.hasSkip && !judging.isCut)) {
    state_.lastCompleted = judging.completionHeld != 0 ? judging.completionHeld : judging.to;
    return Verdict::success;
  }
  if (judging.hasSkip) state_.lastSkipped = judging.skippedOn;
  return Verdict::notJudged;
}

void Walker::report(const Judging& judging, bool isOpen, std::optional<TaskLogEntryType> fillIn) {
  const WalkedPeriod walked{.from = judging.from,
                            .to = judging.to,
                            .progressDay = std::min(judging.to, today_),
                            .periodType = judging.type,
                            .firstDayOfWeek = rules_.firstDayOfWeek,
                            .status = judging.status,
                            .numUnits = judging.progress.units,
                            .expectedUnits = judging.progress.expected,
                            .streak = state_.streak,
                            .isDue = judging.isDue,
                            .isOpen = isOpen,
                            .missIsAllowed = rules_.isNegative && !judging.isDue && !judging.isCut,
                            .fillIn = fillIn};
  if (fillIn) result_.fillIns.push_back({.period = walked.period(), .entryType = *fillIn});
  if (isOpen) current_ = walked;
  if (visit_) visit_(walked);
}

void Walker::capture() {
  captureAfter_ = never;
  if (state_.closedThrough == 0) return;
  result_.checkpoint = state_;
  result_.checkpoint->created = intForm(scope_.created);
  result_.checkpoint->fingerprint = fingerprint(rules_, scope_.created);
}

void Walker::fillInFigures() {
  TaskFigures& figures = result_.figures;
  figures.streak = state_.streak;
  figures.completionStatus = current_.completionStatus();
  figures.period = current_.period();
  figures.isDueToday = current_.isDue;
  figures.missIsAllowed = current_.missIsAllowed;
  figures.lastCompleted = qz::YYYYMMDD::fromRawValue(state_.lastCompleted);
  figures.lastMissed = qz::YYYYMMDD::fromRawValue(state_.lastMissed);
  figures.lastSkipped = qz::YYYYMMDD::fromRawValue(state_.lastSkipped);
  figures.shortTerm = shortTerm_.success(SuccessType::last7);
  figures.longTerm = longTerm_.success(SuccessType::last30);
  figures.progress = figures.completionStatus.codableProgress.progressShare();
  figures.progressDate = scope_.today;
  figures.isProgressTracked = expectedUnits_ > 1;
}

}  // namespace

TaskFrequencyPeriod WalkedPeriod::period() const {
  return {
      .periodType = periodType, .startDate = dayOf(from), .finishDate = dayOf(to), .firstDayOfWeek = firstDayOfWeek};
}

CompletionStatus WalkedPeriod::completionStatus() const {
  return {status, progressByHand(DatedPeriod(dayOf(progressDay), period()), expectedUnits, numUnits)};
}

bool HistoryWalk::supports(const TaskFrequency& frequency) {
  return frequency.dayMode == TaskFrequency::DayMode::specificDaysOfWeek ||
         frequency.dayMode == TaskFrequency::DayMode::specificDaysOfMonth;
}

HistoryWalk::HistoryWalk(const TaskRules& rules, const HistoryScope& scope) : rules_(rules), scope_(scope) {
  qz::require(supports(rules.frequency), "a history that cannot be judged is walked");
  qz::require(scope.created.exists() && scope.today.exists(), "a history is walked between days that do not exist");
}

bool HistoryWalk::canResume(const HistoryCheckpoint& checkpoint) const {
  const auto closedThrough = qz::YYYYMMDD::fromRawValue(checkpoint.closedThrough);
  return closedThrough && closedThrough->exists() && *closedThrough < scope_.fillFrom &&
         closedThrough->distance(scope_.today) > 30 && checkpoint.created == scope_.created.intValue() &&
         checkpoint.fingerprint == fingerprint(rules_, scope_.created);
}

HistoryResult HistoryWalk::walk(std::span<const LoggedEntry> entries, const PeriodVisitor& visit) const {
  const LoggedEntries log(entries, rules_, intForm(scope_.today));
  return Walker(rules_, scope_, visit).run(log.inOrder());
}

HistoryResult HistoryWalk::resume(const HistoryCheckpoint& checkpoint, std::span<const LoggedEntry> entries,
                                  const PeriodVisitor& visit) const {
  qz::require(canResume(checkpoint), "a walk is resumed from a checkpoint of other rules or days");
  const LoggedEntries log(entries, rules_, intForm(scope_.today));
  const auto isClosed = [&](const LoggedEntry& entry) { return entry.periodFrom <= checkpoint.closedThrough; };
  const auto first = std::ranges::partition_point(log.inOrder(), isClosed);
  Walker walker(rules_, scope_, visit);
  walker.goOnFrom(checkpoint);
  return walker.run({first, log.inOrder().end()});
}

}  // namespace habitra
