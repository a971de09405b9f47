#include "Life.h"

#include <HabitraCore/TaskLogEntryChoice.h>
#include <HabitraModel/Mapping/LogEntryMapping.h>
#include <HabitraModel/Tasks/TaskPauses.h>

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

#include "HabitraCore/Scenario.h"

namespace habitra {
namespace {

qz::YYYYMMDD dayOf(std::int32_t stored) { return dayFromStored(stored).value(); }

qz::Moment noonOf(const qz::YYYYMMDD& day) {
  return day.beginning(qz::HHMMSS::midnight, qz::TimeZone::utc()) + std::chrono::hours(12);
}

std::optional<AutomaticTaskType> typeMeasuredBy(const TaskMeasure& measure) {
  if (measure.kind == TaskMeasure::Kind::byHand) return std::nullopt;
  if (measure.kind == TaskMeasure::Kind::rings)
    return AutomaticTaskType::ofNewTask(AutomaticTaskType::TaskType::healthKit(HealthType::activity),
                                        TaskFrequencyPeriodType::day);
  const bool isTimed = measure.kind == TaskMeasure::Kind::timed;
  auto type =
      AutomaticTaskType::ofNewTask(isTimed ? AutomaticTaskType::TaskType::timer()
                                           : AutomaticTaskType::TaskType::healthKit(HealthType::dietaryDrinkWater),
                                   TaskFrequencyPeriodType::day);
  if (isTimed)
    type.setTimerDuration(measure.target, 1);
  else
    type.quantity = measure.target;
  return type;
}

std::string lineOf(const TaskTemporalDataEntity& data, bool isProgressTracked) {
  return fmt::format("{}/{} completed {} missed {} skipped {} short {}/{} long {}/{}{}", data.activeStreak,
                     data.bestStreak, data.lastCompleted, data.lastMissed, data.lastSkipped, data.recentShortTermPct,
                     data.recentShortTermNumSamples, data.recentLongTermPct, data.recentLongTermNumSamples,
                     isProgressTracked ? fmt::format(" progress {} on {}", data.progress, data.progressDate) : "");
}

}  // namespace

Act actOn(const TaskRules& rules, const qz::YYYYMMDD& day, TaskLogEntryType type) {
  const TaskFrequencyPeriod period = rules.frequency.period(day, rules.firstDayOfWeek, rules.referenceDate).period;
  return {.entryDate = storedDay(day),
          .periodFrom = storedDay(period.startDate),
          .periodTo = storedDay(period.finishDate),
          .entryType = type,
          .periodType = period.periodType};
}

bool RecordedLog::isLastPartOfFailure(const Act& act) const {
  if (!rules_.isNegative || act.entryType != TaskLogEntryType::missedManuallyPartial) return false;
  std::vector<LoggedEntry> period;
  std::ranges::copy_if(entries_, std::back_inserter(period), [&](const LoggedEntry& old) {
    return old.periodFrom == act.periodFrom && old.periodTo == act.periodTo &&
           !supersedes(act.entryType, old.entryType);
  });
  LoggedEntry newest = act;
  newest.order = std::numeric_limits<std::int64_t>::max();
  period.insert(std::ranges::upper_bound(period, act.entryDate, {}, &LoggedEntry::entryDate), newest);
  const HistoryScope scope{
      .created = dayOf(act.periodFrom), .today = dayOf(act.periodTo), .fillFrom = dayOf(act.periodFrom)};
  return HistoryWalk(rules_, scope).walk(period).figures.completionStatus.status.isFailed();
}

void RecordedLog::record(Act act) {
  if (isLastPartOfFailure(act)) act.entryType = TaskLogEntryType::missedManuallyFull;
  std::erase_if(entries_, [&](const LoggedEntry& old) {
    return old.periodFrom == act.periodFrom && old.periodTo == act.periodTo && supersedes(act.entryType, old.entryType);
  });
  static std::int64_t order = 0;
  LoggedEntry entry = act;
  entry.order = ++order;
  entries_.insert(std::ranges::upper_bound(entries_, act.entryDate, {}, &LoggedEntry::entryDate), entry);
  for (const Retyping& retyping :
       walk(dayOf(entries_.back().entryDate), true).retypings(entries_, dayOf(act.entryDate)))
    std::ranges::find(entries_, retyping.order, &LoggedEntry::order)->entryType = retyping.entryType;
}

HistoryScope RecordedLog::scope(const qz::YYYYMMDD& today, bool isFilledFromCreation) const {
  HistoryScope::LogBeginning begins;
  if (!entries_.empty()) begins.firstEntryDay = dayOf(entries_.front().entryDate);
  const auto kept =
      std::ranges::find_if(entries_, [](const LoggedEntry& entry) { return marksHistory(entry.entryType); });
  if (kept != entries_.end()) begins.firstKeptDay = dayOf(kept->entryDate);
  HistoryScope scope = HistoryScope::of(created_, begins, std::nullopt, today);
  if (isFilledFromCreation) scope.fillFrom = scope.created;
  return scope;
}

std::vector<std::string> statusLines(const HistoryWalk& walk, std::span<const LoggedEntry> entries) {
  std::vector<std::string> lines;
  static_cast<void>(walk.walk(entries, [&](const WalkedPeriod& walked) {
    lines.push_back(fmt::format("{}..{} {} {}/{}", walked.from, walked.to, statusText(walked), walked.streak.current,
                                walked.streak.best));
  }));
  return lines;
}

std::string figuresLine(const TaskFigures& figures) {
  TaskTemporalDataEntity data;
  putFigures(data, figures);
  return lineOf(data, figures.isProgressTracked);
}

Life::Life(const TaskRules& rules, const qz::YYYYMMDD& creationDay) {
  goTo(creationDay);
  TaskEntity values = newlyMadeTask("Habit", rules.firstDayOfWeek, clock_->now(), "UTC");
  setFrequency(values, rules.frequency);
  setAutomaticType(values, typeMeasuredBy(rules.measure));
  values.isNegative = rules.isNegative;
  values.referenceDateValue = storedDay(rules.referenceDate);
  task_ = &context_->insert(values);
  setPauses(*context_, *task_, rules.pauses);
  context_->save({});
}

void Life::goTo(const qz::YYYYMMDD& day) { clock_->set(noonOf(day)); }

void Life::record(const Act& act) {
  const TaskFrequencyPeriod period{
      .periodType = act.periodType, .startDate = dayOf(act.periodFrom), .finishDate = dayOf(act.periodTo)};
  const qz::Moment start = noonOf(dayOf(act.entryDate));
  const auto error = TaskWorld::record(*task_, {{.uniqueId = qz::UniqueID::generate(clock_->now()),
                                                 .type = act.entryType,
                                                 .period = DatedPeriod(dayOf(act.entryDate), period),
                                                 .startDate = start,
                                                 .endDate = start,
                                                 .progressValue = act.progressTotal,
                                                 .progressPct = act.progress}});
  if (error) std::rethrow_exception(error);
}

void Life::pass() { process(); }

std::vector<LoggedEntry> Life::entries() {
  std::vector<LoggedEntry> entries;
  context_->readLog(task_->objectID, StoreContext::firstDay, StoreContext::lastDay,
                    [&](const LogRow& row) { entries.push_back(loggedEntry(row)); });
  return entries;
}

std::vector<std::string> Life::entryLines() {
  std::vector<std::string> lines;
  for (const LoggedEntry& entry : entries())
    lines.push_back(fmt::format("{} {} of {}..{} {} {}", entry.entryDate, caseName(entry.entryType), entry.periodFrom,
                                entry.periodTo, entry.progress, entry.progressTotal));
  return lines;
}

std::string Life::figuresLine(bool isProgressTracked) { return lineOf(figures(*task_), isProgressTracked); }

}  // namespace habitra
