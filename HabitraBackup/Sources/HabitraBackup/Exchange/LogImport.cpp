#include <HabitraBackup/Exchange/LogImport.h>
#include <HabitraCore/FutureEntries.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>

#include <algorithm>
#include <string>

namespace habitra {
namespace {

void takeDetails(TaskLogEntryEntity& row, const HabitraJSONBackupTaskEntryDetails& details) {
  if (details.createdTimeZone) row.createdTimeZone = details.createdTimeZone;
  row.cloudStatus = details.cloudStatus;
  row.cloudStatusDate = details.cloudStatusDate;
}

}  // namespace

LogImport::LogImport(StoreContext& context, const TaskEntity& task, TaskCalendar calendar, qz::Moment now,
                     const EntryIdentifiers& identifiers)
    : context_(context),
      task_(task.objectID),
      calendar_(std::move(calendar)),
      now_(now),
      today_(calendar_.day(now)),
      identifiers_(identifiers),
      rules_(rulesOf(context, task)) {}

void LogImport::follow(std::span<const TaskTimerEntity> timers) {
  for (const TaskTimerEntity& timer : timers) {
    if (const auto id = timer.entryId ? qz::UniqueID::fromText(*timer.entryId) : std::nullopt)
      followed_.try_emplace(*id);
  }
}

ImportReport::Entries LogImport::merge(std::span<const HabitraJSONBackupTaskEntry> entries) {
  const std::vector<LogCandidate> stored = candidates();
  const LogPartners partners(entries, stored);
  canGiveWay_ = !stored.empty();
  ImportReport::Entries counts;
  for (std::size_t index = 0; index < entries.size(); ++index) {
    if (const auto partner = partners.ofWanted(index)) {
      noteIdentifier(entries[index], stored[*partner].uniqueId);
      ++counts.left;
    } else if (liesAfterToday(entries[index])) {
      ++counts.afterToday;
    } else {
      add(entries[index]);
      ++counts.added;
    }
  }
  for (std::size_t index = 0; index < stored.size(); ++index) {
    if (partners.isTaken(index) || !givesWay(stored[index])) continue;
    context_.removeLogEntry(stored[index].key);
    ++counts.removed;
  }
  return counts;
}

ImportReport::Entries LogImport::overwrite(std::span<const HabitraJSONBackupTaskEntry> entries) {
  const std::vector<LogCandidate> stored = candidates();
  const LogPartners partners(entries, stored);
  ImportReport::Entries counts;
  for (std::size_t index = 0; index < stored.size(); ++index) {
    if (partners.isTaken(index)) continue;
    context_.removeLogEntry(stored[index].key);
    ++counts.removed;
  }
  for (std::size_t index = 0; index < entries.size(); ++index) {
    const auto partner = partners.ofWanted(index);
    if (partner) noteIdentifier(entries[index], stored[*partner].uniqueId);
    if (!partner && liesAfterToday(entries[index])) {
      ++counts.afterToday;
    } else if (!partner) {
      add(entries[index]);
      ++counts.added;
    } else if (update(stored[*partner].key, entries[index])) {
      ++counts.changed;
    } else {
      ++counts.left;
    }
  }
  return counts;
}

std::vector<LogCandidate> LogImport::candidates() const {
  std::vector<LogCandidate> result;
  context_.readLogEntries(task_, StoreContext::firstDay, StoreContext::lastDay,
                          [&result](const TaskLogEntryEntity& entry) {
                            LogCandidate candidate;
                            candidate.key = entry.key();
                            if (entry.uniqueId) candidate.uniqueId = qz::UniqueID::fromText(*entry.uniqueId);
                            candidate.createdTimestamp = entry.createdTimestamp;
                            candidate.periodFrom = entry.entryPeriodFrom;
                            candidate.periodTo = entry.entryPeriodTo;
                            candidate.entryType = entry.entryType;
                            result.push_back(candidate);
                          });
  return result;
}

void LogImport::add(const HabitraJSONBackupTaskEntry& entry) {
  const Period itsPeriod = period(entry);
  TaskLogEntryEntity row;
  row.task = task_;
  row.entryType = rawValue(entry.entryType);
  row.entryDate = entry.entryDate.intValue();
  std::tie(row.entryPeriodFrom, row.entryPeriodTo) = itsPeriod.bounds;
  row.entryPeriodType = itsPeriod.type;
  row.progress = entry.progress.value_or(0.0);
  row.progressTotal = entry.progressTotal.value_or(0.0);
  row.createdTimestamp = entry.createdTimestamp ? *entry.createdTimestamp : calendar_.beginning(entry.entryDate);
  if (entry.details) takeDetails(row, *entry.details);
  if (!row.createdTimeZone) row.createdTimeZone = calendar_.timeZone.identifier();
  // An identifier that another entry bears already is that one's; this entry gets a new one.
  if (entry.uniqueId && identifiers_.isFree(*entry.uniqueId)) {
    row.uniqueId = entry.uniqueId->text();
    noteIdentifier(entry, entry.uniqueId);
  } else if (entry.uniqueId && !followed_.empty()) {
    const auto id = qz::UniqueID::generate(context_.store().clock().now());
    row.uniqueId = id.text();
    noteIdentifier(entry, id);
  }
  context_.insertLogEntry(row);

  if (isFull(entry.entryType) && canGiveWay_) decidedPeriods_.insert(itsPeriod.bounds);
  if (marksHistory(entry.entryType)) {
    earliestAdded_ = std::min<qz::YYYYMMDD>(earliestAdded_.value_or(entry.entryDate), entry.entryDate);
  }
}

void LogImport::noteIdentifier(const HabitraJSONBackupTaskEntry& entry, const std::optional<qz::UniqueID>& stored) {
  if (followed_.empty() || !entry.uniqueId || !stored) return;
  const auto found = followed_.find(*entry.uniqueId);
  // Of two entries with the same identifier the first one is meant.
  if (found != followed_.end() && !found->second) found->second = stored->text();
}

bool LogImport::update(const LogKey& key, const HabitraJSONBackupTaskEntry& entry) {
  auto row = context_.findLogEntry(key);
  if (!row) return false;
  const TaskLogEntryEntity before = *row;
  const Period itsPeriod = period(entry);
  row->entryType = rawValue(entry.entryType);
  row->entryDate = entry.entryDate.intValue();
  std::tie(row->entryPeriodFrom, row->entryPeriodTo) = itsPeriod.bounds;
  row->entryPeriodType = itsPeriod.type;
  if (entry.progress) row->progress = *entry.progress;
  if (entry.progressTotal) row->progressTotal = *entry.progressTotal;
  if (entry.details) takeDetails(*row, *entry.details);
  if (entry.createdTimestamp) row->createdTimestamp = entry.createdTimestamp;
  if (*row == before) return false;
  context_.updateLogEntry(key, *row);
  if (marksHistory(entry.entryType)) {
    earliestAdded_ = std::min<qz::YYYYMMDD>(earliestAdded_.value_or(entry.entryDate), entry.entryDate);
  }
  return true;
}

LogImport::Period LogImport::periodByFrequency(qz::YYYYMMDD day) const {
  if (!rules_) return {};
  const TaskFrequencyPeriod found = rules_->frequency.period(day, rules_->firstDayOfWeek, rules_->referenceDate).period;
  return {{storedDay(found.startDate), storedDay(found.finishDate)}, std::string(rawValue(found.periodType))};
}

LogImport::Period LogImport::period(const HabitraJSONBackupTaskEntry& entry) const {
  if (!entry.entryPeriodFrom || !entry.entryPeriodTo || !entry.entryPeriodType) {
    return periodByFrequency(entry.entryDate);
  }
  return {{entry.entryPeriodFrom->intValue(), entry.entryPeriodTo->intValue()},
          std::string(rawValue(*entry.entryPeriodType))};
}

bool LogImport::givesWay(const LogCandidate& stored) const {
  const auto type = fromRawValue<TaskLogEntryType>(stored.entryType);
  if (decidedPeriods_.empty() || !type || !isAutomatic(*type) || isTimer(*type)) return false;
  PeriodBounds bounds{stored.periodFrom, stored.periodTo};
  if (stored.periodFrom == 0) {
    const auto day = dayFromStored(stored.key.entryDate);
    if (!day) return false;
    bounds = periodByFrequency(*day).bounds;
  }
  return decidedPeriods_.contains(bounds);
}

bool LogImport::liesAfterToday(const HabitraJSONBackupTaskEntry& entry) const {
  if (entry.entryDate.intValue() <= today_.intValue()) return false;
  EntryRecording recording{.entryDate = entry.entryDate.intValue(), .createdTimestamp = entry.createdTimestamp};
  if (entry.details && entry.details->createdTimeZone) recording.createdTimeZone = *entry.details->createdTimeZone;
  return liesInFuture(recording, today_, calendar_.startOfDay, now_);
}

}  // namespace habitra
