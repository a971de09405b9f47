#include <gtest/gtest.h>
#include <HabitraCore/RawValue.h>
#include <HabitraModel/Mapping/LogEntryMapping.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Tasks/Processing/LogWalk.h>
#include <rapidcheck/gtest.h>
#include <Support/SettableClock.h>

#include <array>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace habitra {
namespace {

using Type = TaskLogEntryType;

const qz::YYYYMMDD created(2012, 1, 15);

TaskRules someRules() {
  TaskRules rules{.frequency = TaskFrequency::everyDay(), .firstDayOfWeek = qz::DayOfWeek::monday};
  const auto& modes = RawValueTable<TaskFrequency::DayMode>::rows;
  rules.frequency.dayMode = modes[*rc::gen::inRange<std::size_t>(0, modes.size())].value;
  rules.frequency.daysOfMonth = DaysOfMonth::day1 | DaysOfMonth::day15;
  rules.frequency.numPartialCompletions = *rc::gen::inRange(1, 3);
  if (rules.frequency.isCountedDays() || rules.frequency.isAggregate())
    rules.frequency.numCompletions = *rc::gen::inRange(1, 5);
  if (rules.frequency.dayMode == TaskFrequency::DayMode::dayInterval)
    rules.frequency.dayInterval = *rc::gen::inRange(2, 9);
  rules.isNegative = *rc::gen::arbitrary<bool>();
  return rules;
}

/// Entries as they were recorded, among them those of other days and of periods of an earlier frequency.
std::vector<TaskLogEntryEntity> someLog(const TaskRules& rules, std::int64_t days, std::uint32_t seed) {
  constexpr std::array types{Type::completedManuallyFull,
                             Type::completedManuallyFull,
                             Type::completedManuallyPartial,
                             Type::skippedManuallyFull,
                             Type::missedManuallyFull,
                             Type::missedManuallyPartial,
                             Type::allowableMissManuallyFull,
                             Type::unknown,
                             Type::timerManual};
  std::mt19937 random(seed);
  const auto below = [&random](std::uint32_t n) { return static_cast<std::int64_t>(random() % n); };
  std::vector<TaskLogEntryEntity> log;
  for (std::int64_t day = below(4); day <= days; day += below(6)) {
    const qz::YYYYMMDD date = created.add(day);
    auto type = rules.frequency.measurementDuration();
    if (below(60) == 0) type = below(2) == 0 ? TaskFrequencyPeriodType::month : TaskFrequencyPeriodType::day;
    const qz::YYYYMMDD counted = below(200) == 0 ? date.add(below(40) - 20) : date;
    TaskLogEntryEntity entry;
    setEntry(entry, types[static_cast<std::size_t>(below(types.size()))],
             DatedPeriod(counted, type, rules.firstDayOfWeek), 0.0, 0.0);
    entry.entryDate = storedDay(date);
    log.push_back(entry);
  }
  return log;
}

/// What a visitor is told of a period.
std::string drawn(const WalkedPeriod& period) {
  std::string text = std::to_string(period.from) + "-" + std::to_string(period.to) + (period.isOpen ? " open" : "") +
                     (period.missIsAllowed ? " may fail" : "") + " " + std::to_string(period.expectedUnits);
  for (const LoggedEntry& entry : period.entries) text += " " + std::to_string(entry.order);
  return text;
}

RC_GTEST_PROP(LogWalk, InPartsComesToWhatOneWalkComesTo, ()) {
  const TaskRules rules = someRules();
  const std::int64_t days = *rc::gen::inRange(100, 1'800);
  HistoryScope scope{
      .created = created, .today = created.add(days), .fillFrom = created.add(*rc::gen::inRange(0, 900))};
  scope.checkpointDay = firstSampledDay(rules.frequency, scope.today).value_or(scope.today).add(-11);

  StoreContext context(Store::inMemory(std::make_shared<SettableClock>(qz::Moment())));
  const ObjectID task = context.insert(TaskEntity{}).objectID;
  for (TaskLogEntryEntity& entry : someLog(rules, days, *rc::gen::arbitrary<std::uint32_t>())) {
    entry.task = task;
    context.insertLogEntry(entry);
  }
  std::vector<LoggedEntry> entries;
  context.readLog(task, StoreContext::firstDay, storedDay(scope.today),
                  [&](const LogRow& row) { entries.push_back(loggedEntry(row)); });

  const TaskCalendar calendar{qz::HHMMSS::midnight, qz::TimeZone::utc()};
  const std::int64_t part = *rc::gen::inRange(30, 700);
  LogWalk walk(context, task, rules, calendar, storedDay(scope.today), {}, part);
  const HistoryResult whole = HistoryWalk(rules, scope).walk(entries);
  const HistoryResult inParts = walk.run(scope, std::nullopt);
  RC_ASSERT(inParts.figures == whole.figures);
  RC_ASSERT(inParts.fillIns == whole.fillIns);
  // Where one can be resumed from, it is the same one.
  if (whole.checkpoint && inParts.checkpoint)
    RC_ASSERT(inParts.checkpoint->closedThrough == whole.checkpoint->closedThrough);
  std::vector<std::string> ofWhole;
  std::vector<std::string> ofParts;
  (void)HistoryWalk(rules, scope).walk(entries, [&](const WalkedPeriod& period) { ofWhole.push_back(drawn(period)); });
  walk.visit(scope, std::nullopt, [&](const WalkedPeriod& period) { ofParts.push_back(drawn(period)); });
  RC_ASSERT(ofParts == ofWhole);
  if (whole.checkpoint && HistoryWalk(rules, scope).canResume(*whole.checkpoint))
    RC_ASSERT(walk.run(scope, whole.checkpoint).figures == whole.figures);
}

}  // namespace
}  // namespace habitra
