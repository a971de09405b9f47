#include <HabitraCore/FollowingEntries.h>
#include <HabitraCore/TaskLogEntryChoice.h>
#include <HabitraModel/Mapping/LogEntryMapping.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Tasks/Processing/TaskAssessment.h>
#include <HabitraModel/Tasks/Recording/FilledInEntries.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <HabitraModel/Undo/DerivedRows.h>
#include <HabitraModel/Undo/LoggedPeriod.h>
#include <HabitraModel/Undo/TaskRewind.h>

#include <algorithm>
#include <set>
#include <utility>

namespace habitra {

namespace {

bool isSamePeriod(const TaskLogEntryEntity& a, const TaskLogEntryEntity& b) {
  return LoggedPeriod::of(a) == LoggedPeriod::of(b);
}

/// The first row of the log from a day on that `isWanted`. Reads spans that grow, so that what lies near is found
/// without the rest of the log.
template <typename Predicate>
std::optional<LogKey> firstRow(StoreContext& context, ObjectID task, std::int32_t from, const Predicate& isWanted) {
  const auto newest = context.newestEntryDay(task);
  std::optional<LogKey> first;
  constexpr std::int64_t aMonth = 100;  // of days as they are stored: year, month, day
  for (std::int64_t span = aMonth; !first && newest && from <= *newest; span *= 4) {
    const auto to = static_cast<std::int32_t>(std::min<std::int64_t>(from + span, *newest));
    context.readLog(task, from, to, [&](const LogRow& row) {
      const bool isKnown = fromRawValue<TaskLogEntryType>(row.entryType).has_value();
      if (!first && isKnown && isWanted(row)) first = LogKey{task, row.entryDate, row.objectID};
    });
    if (to == StoreContext::lastDay) break;
    from = to + 1;
  }
  return first;
}

/// A day that never comes when there is no entry.
std::int32_t dayOf(const std::optional<TaskLogEntryEntity>& entry) {
  return entry ? entry->entryDate : StoreContext::lastDay;
}

}  // namespace

auto TaskRewind::touched(ObjectID task) -> Touched& {
  const auto [touched, isNew] = tasks_.try_emplace(task);
  if (isNew) touched->second.beginning = dayOf(firstEntry(task, false));
  return touched->second;
}

void TaskRewind::noteEntry(const TaskLogEntryEntity& entry) { touched(entry.task).entries.push_back(entry); }

void TaskRewind::noteFilledIn(const TaskLogEntryEntity& entry) { touched(entry.task).filledIn.push_back(entry); }

void TaskRewind::noteFilledInBefore(const TaskLogEntryEntity& entry) {
  touched(entry.task).filledInBefore.push_back(entry);
}

void TaskRewind::noteRules(ObjectID task) { touched(task).hasNewRules = true; }

void TaskRewind::noteTask(ObjectID task) { touched(task); }

std::vector<UndoStack::TouchedTask> TaskRewind::apply() {
  std::vector<UndoStack::TouchedTask> result;
  for (auto& [id, touched] : tasks_) {
    TaskEntity* const task = id == ObjectID::none ? nullptr : context_.find<TaskEntity>(id);
    if (task == nullptr) continue;
    rewind(*task, touched);
    if (isActive(*task)) result.push_back({.task = id, .day = touched.day});
  }
  return result;
}

void TaskRewind::rewind(TaskEntity& task, Touched& touched) {
  if (!isActive(task)) return putBackFilledIn(touched);
  const TaskCalendar calendar = calendars_.of(task);
  for (const TaskLogEntryEntity& entry : touched.entries) touched.takeIn(entry.entryDate);
  // The days that were open when the rules were changed, and those since, were closed by other rules.
  if (touched.hasNewRules) touched.takeIn(storedDay(calendar.day(commandMoment_)));
  for (const TaskLogEntryEntity& entry : touched.filledIn) removeEntry(entry, touched);
  const DaySpans affected = affectedDays(task, touched);
  const std::int32_t disturbed = firstDisturbedDay(task, affected);
  for (const TaskLogEntryEntity& entry : touched.filledInBefore) {
    touched.takeIn(entry.entryDate);
    if (entry.entryDate < disturbed && !isReplaced(entry)) context_.reinsertLogEntry(entry);
  }
  removeOutdated(task, affected, disturbed, touched);
  if (touched.day) fillInBeginning(*touched.day, task);
  if (touched.day && task.lastProcessedDate && calendar.day(*task.lastProcessedDate) > *touched.day)
    task.lastProcessedDate = calendar.beginning(touched.day->previousDay());
}

void TaskRewind::putBackFilledIn(Touched& touched) {
  for (const TaskLogEntryEntity& before : touched.filledInBefore) {
    for (const TaskLogEntryEntity& entry : touched.filledIn)
      if (isSamePeriod(before, entry)) context_.removeLogEntry(entry.key());
    std::erase_if(touched.filledIn, [&](const auto& entry) { return isSamePeriod(before, entry); });
    if (!isReplaced(before)) context_.reinsertLogEntry(before);
  }
}

bool TaskRewind::isReplaced(const TaskLogEntryEntity& filledIn) {
  const auto own = fromRawValue<TaskLogEntryType>(filledIn.entryType);
  const auto task = context_.find<TaskEntity>(filledIn.task);
  const bool isWorkedOutAnew = task != nullptr && isActive(*task);
  bool isReplaced = false;
  const auto look = [&](const TaskLogEntryEntity& entry) {
    const auto type = fromRawValue<TaskLogEntryType>(entry.entryType);
    if (!type || !own || !isSamePeriod(entry, filledIn)) return;
    // What a pass has filled in since goes where it is worked out anew.
    if (isFilledIn(entry)) {
      isReplaced |= !isWorkedOutAnew;
    } else {
      // A part that was there already when the period was closed stands beside what was filled in.
      isReplaced |= supersedes(*type, *own) && (isFull(*type) || entry.objectID > filledIn.objectID);
    }
  };
  const auto [from, to] = LoggedPeriod::of(filledIn);
  context_.readLogEntries(filledIn.task, from, to, look);
  return isReplaced;
}

void TaskRewind::removeOutdated(const TaskEntity& task, const DaySpans& affected, std::int32_t disturbed,
                                Touched& touched) {
  const std::optional<TaskLogEntryEntity> first = firstEntry(task.objectID, false);
  // All that was filled in since the history began on another day depends on that.
  const std::int32_t beginning = dayOf(first) == touched.beginning || haveRulesChangedSince(task)
                                     ? StoreContext::lastDay
                                     : std::min(dayOf(first), touched.beginning);
  DaySpans outdated = affected;
  outdated.add(touched.hasNewRules ? std::min(later_.firstInsertedDay(task.objectID), beginning) : beginning,
               StoreContext::lastDay);
  for (const auto& [from, to] : outdated.ends()) {
    for (const TaskLogEntryEntity& entry : context_.fetchLogEntries(task.objectID, from, to)) {
      if (!isDerived(entry)) continue;
      const bool isAffected = affected.contains(entry.entryDate);
      if (later_.hasInserted(entry.objectID) ? isAffected || touched.hasNewRules || entry.entryDate >= beginning
                                             : isAffected && entry.entryDate >= disturbed)
        removeEntry(entry, touched);
    }
  }
}

DaySpans TaskRewind::affectedDays(const TaskEntity& task, const Touched& touched) {
  DaySpans affected;
  const std::optional<TaskRules> rules = rulesOf(context_, task);
  for (const TaskLogEntryEntity& entry : touched.entries) addPeriod(entry, rules, affected);
  for (const TaskLogEntryEntity& entry : touched.filledInBefore) addPeriod(entry, rules, affected);
  if (rules && !haveRulesChangedSince(task)) addFollowingDays(task.objectID, touched, *rules, affected);
  return affected;
}

void TaskRewind::addPeriod(const TaskLogEntryEntity& entry, const std::optional<TaskRules>& rules, DaySpans& affected) {
  const auto day = judgedDay(entry.entryDate);
  if (entry.entryPeriodFrom > 0 && entry.entryPeriodFrom <= entry.entryPeriodTo) {
    affected.add(entry.entryPeriodFrom, entry.entryPeriodTo);
  } else if (day && rules) {
    const auto period = rules->frequency.period(*day, rules->firstDayOfWeek, rules->referenceDate).period;
    affected.add(storedDay(period.startDate), storedDay(period.finishDate));
  }
}

void TaskRewind::addFollowingDays(ObjectID task, const Touched& touched, const TaskRules& rules, DaySpans& affected) {
  std::set<std::int32_t> days;
  for (const TaskLogEntryEntity& entry : touched.entries) days.insert(entry.entryDate);
  for (const std::int32_t day : days)
    if (const auto following = daysFrom(task, rules, day)) affected.add(following->from, following->to);
}

std::optional<LoggedPeriod> TaskRewind::daysFrom(ObjectID task, const TaskRules& rules, std::int32_t entryDate) {
  const auto day = judgedDay(entryDate);
  const auto following = day ? followingDays(rules, *day) : std::nullopt;
  if (!following) return std::nullopt;
  LoggedPeriod days{storedDay(following->first), following->last ? storedDay(*following->last) : StoreContext::lastDay};
  if (following->endAtCompletion) {
    const auto next = firstRow(context_, task, days.from,
                               [](const LogRow& row) { return isCompletedFull(entryTypeFromStored(row.entryType)); });
    if (next) days.to = next->entryDate;
  }
  return days;
}

void TaskRewind::fillInBeginning(qz::YYYYMMDD from, const TaskEntity& task) {
  const std::optional<TaskLogEntryEntity> first = firstEntry(task.objectID, true);
  const auto day = first && later_.hasInserted(first->objectID) ? judgedDay(first->entryDate) : std::nullopt;
  if (!day || from >= *day) return;
  for (const FillIn& fillIn : fillInsBefore(context_, task, calendars_, from, *day)) {
    TaskLogEntryEntity entry;
    entry.task = task.objectID;
    entry.entryDate = storedDay(fillIn.period.finishDate);
    entry.entryPeriodFrom = storedDay(fillIn.period.startDate);
    entry.entryPeriodTo = entry.entryDate;
    entry.entryPeriodType = rawValue(fillIn.period.periodType);
    entry.entryType = rawValue(fillIn.entryType);
    entry.createdTimestamp = context_.store().clock().now();
    entry.createdTimeZone = calendars_.of(task).timeZone.identifier();
    context_.insertLogEntry(entry);
  }
}

std::optional<TaskLogEntryEntity> TaskRewind::firstEntry(ObjectID task, bool orFilledIn) {
  const auto earliest = context_.earliestEntryDay(task);
  if (!earliest) return std::nullopt;
  const auto first =
      firstRow(context_, task, *earliest, [orFilledIn](const LogRow& row) { return orFilledIn || !isFilledIn(row); });
  return first ? context_.findLogEntry(*first) : std::nullopt;
}

bool TaskRewind::haveRulesChangedSince(const TaskEntity& task) {
  return std::ranges::any_of(later_.ofCommands(), [&task](const LaterChanges::OfCommand& later) {
    if (later.change.entity == EntityNumber::setting) return later.name && isRuleOf(*later.name, task);
    return later.row() == RowID(EntityNumber::task, task.objectID) &&
           (later.change.attributes.bits() & attributesOfRules().bits()) != 0;
  });
}

std::int32_t TaskRewind::firstDisturbedDay(const TaskEntity& task, const DaySpans& affected) {
  std::set<std::int32_t> changed;
  for (const LaterChanges::OfCommand& later : later_.ofCommands()) {
    const StoredChange& change = later.change;
    if (change.entity != EntityNumber::taskLogEntry || later.isDerived) continue;
    // The log of a task that is gone may have become part of this one.
    if (change.task == task.objectID || context_.find<TaskEntity>(change.task) == nullptr) changed.insert(change.day);
  }
  const std::optional<TaskRules> rules = haveRulesChangedSince(task) ? std::nullopt : rulesOf(context_, task);
  std::int32_t first = StoreContext::lastDay;
  for (const std::int32_t day : changed) {
    if (day >= first) break;
    if (affected.contains(day)) first = day;
    const auto following = rules ? daysFrom(task.objectID, *rules, day) : std::nullopt;
    const auto disturbed = following ? affected.firstWithin(following->from, following->to) : std::nullopt;
    if (disturbed) first = std::min(first, *disturbed);
  }
  return first;
}

void TaskRewind::removeEntry(const TaskLogEntryEntity& entry, Touched& touched) {
  touched.takeIn(entry.entryDate);
  context_.removeLogEntry(entry.key());
}

void TaskRewind::Touched::takeIn(std::int32_t entryDate) {
  const auto changed = judgedDay(entryDate);
  if (changed && (!day || *changed < *day)) day = changed;
}

}  // namespace habitra
