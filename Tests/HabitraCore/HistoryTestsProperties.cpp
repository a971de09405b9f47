#include "HistoryTestsGenerated.h"
#include "NaiveHistory.h"

#include <gtest/gtest.h>
#include <HabitraCore/HistoryWalk.h>
#include <HabitraCore/PeriodReason.h>
#include <rapidcheck/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace habitra {
namespace {

/// The days of a period and its status.
std::string statusLine(const WalkedPeriod& walked) {
  return std::to_string(walked.from) + ".." + std::to_string(walked.to) + ' ' +
         std::string(caseName(walked.status.kind()));
}

std::vector<std::string> statuses(const History& history) {
  std::vector<std::string> lines;
  static_cast<void>(
      history.walk().walk(history.log, [&](const WalkedPeriod& walked) { lines.push_back(statusLine(walked)); }));
  return lines;
}

void agree(const History& history) {
  std::vector<std::string> lines;
  const HistoryResult result =
      history.walk().walk(history.log, [&](const WalkedPeriod& walked) { lines.push_back(lineOf(walked)); });
  lines.push_back(lineOf(result.figures));
  const std::vector<std::string> expected = naiveHistory(history.rules, history.scope, history.log);
  for (std::size_t i = 0; i < std::min(lines.size(), expected.size()); ++i) RC_ASSERT(lines[i] == expected[i]);
  RC_ASSERT(lines.size() == expected.size());
  RC_ASSERT(history.result().figures == result.figures);
}

// The rules have many corners: several histories a run.
RC_GTEST_PROP(Histories, AgreeWithTheRulesReadOneDayAtATime, ()) {
  for (int count = 0; count < 8; ++count) agree(someHistory());
}

/// Of the entries those that a walk resumed after a day has to be given.
std::vector<LoggedEntry> entriesAfter(const std::vector<LoggedEntry>& log, std::int32_t closedThrough) {
  std::vector<LoggedEntry> rest;
  for (const LoggedEntry& entry : log)
    if (std::max(entry.periodFrom, entry.entryDate) > closedThrough) rest.push_back(entry);
  return rest;
}

RC_GTEST_PROP(Histories, ResumedFromACheckpointAreTheWholeOnes, ()) {
  History history = someHistory();
  const std::int64_t length = history.scope.created.distance(history.scope.today);
  // As a store would ask: the days before the last ones were filled in.
  if (*rc::gen::inRange(0, 4) != 0)
    history.scope.fillFrom = std::max(history.scope.created, history.scope.today.add(-*rc::gen::inRange(0, 8)));
  for (int tries = 0; tries < 8; ++tries) {
    history.scope.checkpointDay = history.scope.created.add(*rc::gen::inRange<std::int64_t>(-5, length + 5));
    const HistoryWalk walk = history.walk();
    const HistoryResult whole = walk.walk(history.log);
    if (!whole.checkpoint) continue;
    const HistoryCheckpoint& checkpoint = *whole.checkpoint;
    const auto closed = qz::YYYYMMDD::fromRawValue(checkpoint.closedThrough).value();
    RC_ASSERT(closed <= *history.scope.checkpointDay && closed < history.scope.today);
    const auto [shortTerm, longTerm] = successSpans(history.rules.frequency);
    const auto liesBefore = [&](TaskRecentHistory::PreviousSuccessType span) {
      const auto first = firstDay(span, history.scope.today);
      return !first || closed < *first;
    };
    RC_ASSERT(walk.canResume(checkpoint) ==
              (closed < history.scope.fillFrom && liesBefore(shortTerm) && liesBefore(longTerm)));
    if (!walk.canResume(checkpoint)) continue;
    const HistoryResult resumed = walk.resume(checkpoint, entriesAfter(history.log, checkpoint.closedThrough));
    RC_ASSERT(lineOf(resumed.figures) == lineOf(whole.figures));
    RC_ASSERT(resumed.figures == whole.figures);
    RC_ASSERT(resumed.fillIns == whole.fillIns);
    RC_ASSERT(resumed.checkpoint == whole.checkpoint);
    RC_ASSERT(walk.resume(checkpoint, history.log).figures == whole.figures);
  }
}

RC_GTEST_PROP(Histories, VisitTheSamePeriodsFromACheckpointOn, ()) {
  History history = someHistory();
  history.scope.fillFrom = history.scope.today;
  history.scope.checkpointDay = history.scope.created.add(
      *rc::gen::inRange<std::int64_t>(0, history.scope.created.distance(history.scope.today) + 1));
  std::vector<std::pair<std::int32_t, std::string>> whole;
  const HistoryWalk walk = history.walk();
  const auto checkpoint =
      walk.walk(history.log, [&](const WalkedPeriod& walked) { whole.emplace_back(walked.from, lineOf(walked)); })
          .checkpoint;
  if (!checkpoint || !walk.canResume(*checkpoint)) return;
  std::erase_if(whole, [&](const auto& line) { return line.first <= checkpoint->closedThrough; });
  std::vector<std::pair<std::int32_t, std::string>> resumed;
  static_cast<void>(
      walk.resume(*checkpoint, entriesAfter(history.log, checkpoint->closedThrough),
                  [&](const WalkedPeriod& walked) { resumed.emplace_back(walked.from, lineOf(walked)); }));
  RC_ASSERT(resumed == whole);
}

RC_GTEST_PROP(Histories, AreNotChangedBeforeTheCountingPeriodOfANewEntry, ()) {
  History history = someHistory();
  LoggedEntry entry = someEntry(history);
  entry.entryDate = std::max(entry.entryDate, integer(history.scope.created));
  RC_LOG() << entry.entryDate << " new: " << caseName(entry.entryType);
  const auto day = qz::YYYYMMDD::fromRawValue(entry.entryDate).value();
  const DatedPeriod period =
      history.rules.frequency.period(day, history.rules.firstDayOfWeek, history.rules.referenceDate);
  entry.periodFrom = integer(period.period.startDate);
  entry.periodTo = integer(period.period.finishDate);
  const std::int32_t countingFrom =
      integer(firstDate(history.rules.frequency.periodTypeForCompletionCountCalculation(), period.period.startDate,
                        history.rules.firstDayOfWeek, history.rules.referenceDate));
  const auto earlierLines = [&] {
    std::vector<std::string> lines;
    static_cast<void>(history.walk().walk(history.log, [&](const WalkedPeriod& walked) {
      if (walked.to < countingFrom) lines.push_back(lineOf(walked));
    }));
    return lines;
  };
  const std::vector<std::string> before = earlierLines();
  history.log.push_back(entry);
  std::ranges::stable_sort(history.log, {}, &LoggedEntry::entryDate);
  RC_ASSERT(earlierLines() == before);
}

RC_GTEST_PROP(Histories, StayAsTheyAreWhenTheirFillInsAreWritten, ()) {
  History history = someHistory();
  history.scope.checkpointDay = history.scope.today.add(-10);
  const HistoryResult before = history.result();
  const std::vector<std::string> statusesBefore = statuses(history);
  history.write(before.fillIns);
  const HistoryResult after = history.result();
  RC_ASSERT(after.fillIns.empty());
  RC_ASSERT(lineOf(after.figures) == lineOf(before.figures));
  RC_ASSERT(after.figures == before.figures);
  RC_ASSERT(after.checkpoint == before.checkpoint);
  RC_ASSERT(statuses(history) == statusesBefore);
}

RC_GTEST_PROP(Histories, KeepTheirPastThroughAChangeOfFrequency, ()) {
  History history = someRecordedHistory();
  history.write(history.result().fillIns);
  const TaskFigures before = history.result().figures;
  const std::vector<std::string> statusesBefore = statuses(history);
  history.write(history.walk().seals(history.log));
  RC_ASSERT(lineOf(history.result().figures) == lineOf(before));
  RC_ASSERT(statuses(history) == statusesBefore);
  RC_ASSERT(history.walk().seals(history.log).empty());

  // What was judged has a full entry now and stays; a clean day that was not judged may yet fail by its parts.
  std::vector<std::string> decided;
  static_cast<void>(history.walk().walk(history.log, [&](const WalkedPeriod& walked) {
    const bool isJudged = walked.verdict != PeriodVerdict::notJudged;
    RC_ASSERT(walked.isOpen || !isJudged || walked.hasFull);
    if (!walked.isOpen && walked.hasFull && (isJudged || !history.rules.isNegative))
      decided.push_back(statusLine(walked));
  }));
  history.rules.frequency = someFrequency();
  history.rules.measure = someMeasure();
  RC_LOG() << "then: " << history;
  const std::vector<std::string> changed = statuses(history);
  for (const std::string& period : decided) RC_ASSERT(std::ranges::count(changed, period) == 1);
}

RC_GTEST_PROP(Histories, GiveReasonsThatAreTheSameWhenAskedForOneDay, ()) {
  const History history = someHistory();
  std::vector<PeriodReason> reasons;
  static_cast<void>(
      history.walk().walk(history.log, [&](const WalkedPeriod& walked) { reasons.push_back(walked.reason()); }));
  const PeriodReason& reason = reasons[*rc::gen::inRange<std::size_t>(0, reasons.size())];
  RC_ASSERT(history.walk().why(std::min(reason.period.finishDate, history.scope.today), history.log) == reason);
  RC_ASSERT(nlohmann::json::parse(nlohmann::json(reason).dump()).get<PeriodReason>() == reason);
}

}  // namespace
}  // namespace habitra
