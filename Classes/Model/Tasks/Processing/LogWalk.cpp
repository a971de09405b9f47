#include <HabitraModel/Mapping/LogEntryMapping.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Tasks/Processing/LogWalk.h>

#include <algorithm>
#include <limits>
#include <span>
#include <utility>

namespace habitra {
namespace {

/// A day that the zone left out altogether (Apia had no 30 December 2011) held no moment to do anything in.
bool wasLeftOut(qz::YYYYMMDD day, const TaskCalendar& calendar) { return calendar.day(calendar.beginning(day)) != day; }

/// The skips that stand for misses of days which the zone left out.
std::vector<FillIn> skipsOfLeftOutDays(const std::vector<FillIn>& fillIns, const TaskCalendar& calendar) {
  std::vector<FillIn> skips;
  for (const FillIn& fillIn : fillIns) {
    if (fillIn.period.periodType == TaskFrequencyPeriodType::day && wasLeftOut(fillIn.period.startDate, calendar))
      skips.push_back({fillIn.period, TaskLogEntryType::skippedAutomaticallyFull});
  }
  return skips;
}

LoggedEntry entryOf(const FillIn& skip) {
  const std::int32_t day = storedDay(skip.period.startDate);
  return {.order = std::numeric_limits<std::int64_t>::max(),
          .entryDate = day,
          .periodFrom = day,
          .periodTo = day,
          .entryType = skip.entryType,
          .periodType = skip.period.periodType};
}

void putInOrder(std::vector<FillIn>& fillIns) {
  std::ranges::stable_sort(fillIns, {}, [](const FillIn& fillIn) { return fillIn.period.startDate; });
}

}  // namespace

LogWalk::LogWalk(StoreContext& context, ObjectID task, const TaskRules& rules, const TaskCalendar& calendar,
                 std::int32_t lastDay, std::vector<LoggedEntry> ahead, std::int64_t daysOfPart, LogRevision revision)
    : context_(context),
      task_(task),
      rules_(rules),
      calendar_(calendar),
      lastDay_(lastDay),
      ahead_(std::move(ahead)),
      daysOfPart_(daysOfPart),
      revision_(std::move(revision)) {}

HistoryResult LogWalk::run(const HistoryScope& scope, const std::optional<HistoryCheckpoint>& begin) {
  auto entries = walkToRest(scope, begin);
  if (!entries) entries = wholeLog(scope);
  HistoryResult result = walkLast(scope, *std::move(entries));
  result.fillIns.insert(result.fillIns.begin(), fillIns_.begin(), fillIns_.end());
  return result;
}

void LogWalk::visit(const HistoryScope& scope, const std::optional<HistoryCheckpoint>& begin,
                    const PeriodVisitor& visit) {
  // Whether parts will do is known at their end, so that they are visited when they are walked again.
  auto entries = walkToRest(scope, begin);
  if (entries && walked_ != begin) entries = walkToRest(scope, begin, visit);
  if (!entries) entries = wholeLog(scope);
  (void)walkLast(scope, *std::move(entries), visit);
}

std::optional<std::vector<LoggedEntry>> LogWalk::walkToRest(const HistoryScope& scope,
                                                            const std::optional<HistoryCheckpoint>& begin,
                                                            const PeriodVisitor& visit) {
  walked_ = begin;
  fillIns_.clear();
  if (!walkParts(scope, visit)) return std::nullopt;
  std::vector<LoggedEntry> entries = read(storedDay(scope.today));
  return reachesBack(entries) ? std::nullopt : std::optional(std::move(entries));
}

std::vector<LoggedEntry> LogWalk::wholeLog(const HistoryScope& scope) {
  walked_.reset();
  fillIns_.clear();
  return read(storedDay(scope.today));
}

bool LogWalk::walkParts(const HistoryScope& scope, const PeriodVisitor& visit) {
  if (!scope.checkpointDay) return true;
  qz::YYYYMMDD from = walked_ ? dayFromStored(walked_->closedThrough).value() : scope.created;
  for (qz::YYYYMMDD last = from.add(daysOfPart_); last < *scope.checkpointDay; last = last.add(daysOfPart_))
    if (!walkPart(scope, last, visit)) return false;
  return !walked_ || HistoryWalk(rules_, rest(scope)).canResume(*walked_);
}

bool LogWalk::walkPart(const HistoryScope& scope, qz::YYYYMMDD last, const PeriodVisitor& visit) {
  HistoryScope part = rest(scope);
  part.today = last;
  part.checkpointDay = last.previousDay();
  if (walked_ && !HistoryWalk(rules_, part).canResume(*walked_)) return true;  // goes with the next part
  std::vector<LoggedEntry> entries = read(storedDay(last));
  if (reachesBack(entries)) return false;
  const HistoryResult result = walkRest(part, entries);
  if (!result.checkpoint) return true;
  // The periods after the checkpoint are walked again with the next part.
  const auto visitClosed = [&visit, closed = result.checkpoint->closedThrough](const WalkedPeriod& period) {
    if (period.to <= closed) visit(period);
  };
  if (visit) (void)walkRest(part, std::move(entries), visitClosed);
  walked_ = result.checkpoint;
  for (const FillIn& fillIn : result.fillIns)
    if (storedDay(fillIn.period.finishDate) <= walked_->closedThrough) fillIns_.push_back(fillIn);
  return true;
}

HistoryResult LogWalk::walkRest(const HistoryScope& scope, std::vector<LoggedEntry> entries,
                                const PeriodVisitor& visit) const {
  const HistoryWalk walk(rules_, scope);
  const auto run = [&](const PeriodVisitor& visitor) {
    return walked_ ? walk.resume(*walked_, entries, visitor) : walk.walk(entries, visitor);
  };
  HistoryResult result = run({});
  const std::vector<FillIn> skips = skipsOfLeftOutDays(result.fillIns, calendar_);
  if (skips.empty() && !visit) return result;
  for (const FillIn& skip : skips) entries.push_back(entryOf(skip));
  std::ranges::stable_sort(entries, {}, &LoggedEntry::entryDate);
  result = run(visit);
  result.fillIns.insert(result.fillIns.end(), skips.begin(), skips.end());
  putInOrder(result.fillIns);
  return result;
}

HistoryResult LogWalk::walkLast(const HistoryScope& scope, std::vector<LoggedEntry> entries,
                                const PeriodVisitor& visit) const {
  entries.insert(entries.end(), ahead_.begin(), ahead_.end());
  return walkRest(rest(scope), std::move(entries), visit);
}

HistoryScope LogWalk::rest(HistoryScope scope) const {
  if (walked_) scope.fillFrom = std::max(scope.fillFrom, dayFromStored(walked_->closedThrough).value().nextDay());
  return scope;
}

std::vector<LoggedEntry> LogWalk::read(std::int32_t to) {
  std::vector<LoggedEntry> entries;
  const std::int32_t from = walked_ ? walked_->closedThrough + 1 : StoreContext::firstDay;
  const std::int32_t last = std::min(to, lastDay_);
  context_.readLog(task_, from, last, [&](const LogRow& row) { entries.push_back(loggedEntry(row)); });
  revision_.applyTo(entries, from, last);
  return entries;
}

/// A period that begins in days that were walked already was not seen by that walk.
bool LogWalk::reachesBack(const std::vector<LoggedEntry>& entries) const {
  return walked_ && std::ranges::any_of(entries, [this](const LoggedEntry& entry) {
           return entry.periodFrom > 0 && entry.periodFrom <= walked_->closedThrough;
         });
}

}  // namespace habitra
