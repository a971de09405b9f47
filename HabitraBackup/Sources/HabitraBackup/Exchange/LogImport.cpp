#include <HabitraBackup/Exchange/LogImport.h>
#include <HabitraCore/FutureEntries.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/Deduplication/EntryOrder.h>
#include <HabitraModel/Tasks/Recording/FilledInEntries.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>

#include <algorithm>
#include <iterator>
#include <string>

namespace habitra {
namespace {

void takeDetails(TaskLogEntryEntity& row, const HabitraJSONBackupTaskEntryDetails& details) {
  if (details.createdTimeZone) row.createdTimeZone = details.createdTimeZone;
  row.cloudStatus = details.cloudStatus;
  row.cloudStatusDate = details.cloudStatusDate;
}

bool wasFilledIn(TaskLogEntryType type, double progress) {
  LoggedEntry entry;
  entry.entryType = type;
  entry.progress = progress;
  return isFilledIn(entry);
}
bool wasFilledIn(const HabitraJSONBackupTaskEntry& entry) {
  return wasFilledIn(entry.entryType, entry.progress.value_or(0.0));
}
bool wasFilledIn(const LogCandidate& stored) {
  const auto type = fromRawValue<TaskLogEntryType>(stored.entryType);
  return type && wasFilledIn(*type, stored.progress);
}

/// Whether a person or data decided the whole period by it.
bool decides(const HabitraJSONBackupTaskEntry& entry) { return isFull(entry.entryType) && !wasFilledIn(entry); }

}  // namespace

LogImport::LogImport(StoreContext& context, const TaskEntity& task, TaskCalendar calendar, const Manner& manner,
                     const EntryIdentifiers& identifiers)
    : context_(context),
      task_(task.objectID),
      calendar_(std::move(calendar)),
      manner_(manner),
      today_(calendar_.day(manner.now)),
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
  const std::vector<PeriodBounds> settled = periodsWithFullEntry(stored);
  std::vector<std::size_t> added;
  ImportReport::Entries counts;
  for (std::size_t index = 0; index < entries.size(); ++index) {
    if (const auto partner = partners.ofWanted(index)) {
      noteIdentifier(entries[index], stored[*partner].uniqueId);
      ++counts.left;
    } else if (liesAfterToday(entries[index])) {
      ++counts.afterToday;
    } else if (!settled.empty() && wasFilledIn(entries[index]) &&
               std::ranges::binary_search(settled, period(entries[index]).bounds)) {
      ++counts.passedOver;
    } else {
      added.push_back(index);
    }
  }
  counts.added = added.size();
  add(entries, added, stored);
  for (std::size_t index = 0; index < stored.size(); ++index) {
    if (partners.isTaken(index) || !givesWay(stored[index])) continue;
    context_.removeLogEntry(stored[index].key);
    ++counts.removed;
  }
  putInOrder(entries, added, stored);
  return counts;
}

ImportReport::Entries LogImport::overwrite(std::span<const HabitraJSONBackupTaskEntry> entries) {
  std::vector<LogCandidate> stored = candidates();
  const LogPartners partners(entries, stored);
  std::vector<std::size_t> added;
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
      added.push_back(index);
    } else {
      ++(update(stored[*partner], entries[index]) ? counts.changed : counts.left);
    }
  }
  counts.added = added.size();
  std::size_t place = 0;
  std::erase_if(stored, [&](const LogCandidate&) { return !partners.isTaken(place++); });
  add(entries, added, stored);
  putInOrder(entries, added, stored);
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
                            candidate.progress = entry.progress;
                            result.push_back(candidate);
                          });
  return result;
}

void LogImport::add(Entries entries, std::vector<std::size_t>& added, const std::vector<LogCandidate>& stored) {
  const auto comesBeforeInLog = [&, byMoment = !manner_.isInOrderOfMaking || !stored.empty()](std::size_t a,
                                                                                              std::size_t b) {
    return comesBefore(entries[a], entries[b], byMoment);
  };
  // Mostly they are in order.
  if (std::ranges::is_sorted(added, comesBeforeInLog)) {
    for (const std::size_t index : added) add(entries[index], identify(entries[index]));
    return;
  }
  // Of entries that share an identifier the first one of the document bears it.
  std::map<std::size_t, qz::UniqueID> identifiers;
  for (const std::size_t index : added) {
    const auto identifier = identify(entries[index]);
    if (!identifier) continue;
    identifiers.emplace(index, *identifier);
    given_.insert(*identifier);
  }
  std::ranges::stable_sort(added, comesBeforeInLog);
  for (const std::size_t index : added) {
    const auto found = identifiers.find(index);
    add(entries[index], found == identifiers.end() ? std::nullopt : std::optional(found->second));
  }
}

void LogImport::add(const HabitraJSONBackupTaskEntry& entry, const std::optional<qz::UniqueID>& identifier) {
  const Period itsPeriod = period(entry);
  TaskLogEntryEntity row;
  row.task = task_;
  row.entryType = rawValue(entry.entryType);
  row.entryDate = entry.entryDate.intValue();
  std::tie(row.entryPeriodFrom, row.entryPeriodTo) = itsPeriod.bounds;
  row.entryPeriodType = itsPeriod.type;
  row.progress = entry.progress.value_or(0.0);
  row.progressTotal = entry.progressTotal.value_or(0.0);
  row.createdTimestamp = made(entry);
  if (entry.details) takeDetails(row, *entry.details);
  if (!row.createdTimeZone) row.createdTimeZone = calendar_.timeZone.identifier();
  if (identifier) row.uniqueId = identifier->text();
  const ObjectID added = context_.insertLogEntry(row);
  if (firstAdded_ == ObjectID::none) firstAdded_ = added;

  if (canGiveWay_ && decides(entry)) decidedPeriods_.insert(itsPeriod.bounds);
  if (marksHistory(entry.entryType)) {
    earliestAdded_ = std::min<qz::YYYYMMDD>(earliestAdded_.value_or(entry.entryDate), entry.entryDate);
  }
}

std::optional<qz::UniqueID> LogImport::identify(const HabitraJSONBackupTaskEntry& entry) {
  if (!entry.uniqueId) return std::nullopt;
  // An identifier that another entry bears already is that one's; this entry gets a new one.
  const bool isFree = identifiers_.isFree(*entry.uniqueId) && !given_.contains(*entry.uniqueId);
  if (!isFree && followed_.empty()) return std::nullopt;
  const qz::UniqueID identifier = isFree ? *entry.uniqueId : qz::UniqueID::generate(context_.store().clock().now());
  noteIdentifier(entry, identifier);
  return identifier;
}

qz::Moment LogImport::made(const HabitraJSONBackupTaskEntry& entry) const {
  return entry.createdTimestamp ? *entry.createdTimestamp : calendar_.beginning(entry.entryDate);
}

bool LogImport::comesBefore(const HabitraJSONBackupTaskEntry& a, const HabitraJSONBackupTaskEntry& b,
                            bool byMoment) const {
  if (a.entryDate != b.entryDate) return a.entryDate < b.entryDate;
  return byMoment && (a.createdTimestamp || b.createdTimestamp) && made(a) < made(b);
}

void LogImport::putInOrder(Entries entries, const std::vector<std::size_t>& added,
                           const std::vector<LogCandidate>& stored) {
  if (added.empty() || stored.empty()) return;
  std::vector<std::pair<PeriodBounds, Place>> kept;
  kept.reserve(stored.size());
  for (const LogCandidate& entry : stored)
    kept.push_back({bounds(entry), Place(entry.key.entryDate, entry.createdTimestamp)});
  std::ranges::sort(kept);
  std::set<PeriodBounds> periods;
  for (const std::size_t index : added) {
    const HabitraJSONBackupTaskEntry& entry = entries[index];
    const PeriodBounds itsPeriod = period(entry).bounds;
    const auto end = std::ranges::upper_bound(kept, itsPeriod, {}, &std::pair<PeriodBounds, Place>::first);
    if (end == kept.begin()) continue;
    const auto& [bounds, last] = *std::prev(end);
    if (bounds == itsPeriod && last > Place(entry.entryDate.intValue(), made(entry))) periods.insert(itsPeriod);
  }
  for (const PeriodBounds& found : periods) putInOrder(found);
}

void LogImport::putInOrder(const PeriodBounds& period) {
  const auto place = [](const TaskLogEntryEntity& row) { return Place(row.entryDate, row.createdTimestamp); };
  std::vector<TaskLogEntryEntity> kept;
  std::vector<TaskLogEntryEntity> added;
  context_.readLogEntries(task_, period.first, period.second, [&](const TaskLogEntryEntity& row) {
    if (bounds(row.entryDate, row.entryPeriodFrom, row.entryPeriodTo) == period)
      (row.objectID < firstAdded_ ? kept : added).push_back(row);
  });
  std::ranges::sort(kept, {}, &TaskLogEntryEntity::objectID);
  std::ranges::sort(added, {}, &TaskLogEntryEntity::objectID);
  std::vector<TaskLogEntryEntity> inOrder;
  auto next = added.begin();
  for (TaskLogEntryEntity& row : kept) {
    for (; next != added.end() && place(row) > place(*next); ++next) inOrder.push_back(*next);
    inOrder.push_back(std::move(row));
  }
  inOrder.insert(inOrder.end(), next, added.end());
  putRowsInOrder(context_, inOrder);
}

void LogImport::noteIdentifier(const HabitraJSONBackupTaskEntry& entry, const std::optional<qz::UniqueID>& stored) {
  if (followed_.empty() || !entry.uniqueId || !stored) return;
  const auto found = followed_.find(*entry.uniqueId);
  // Of two entries with the same identifier the first one is meant.
  if (found != followed_.end() && !found->second) found->second = stored->text();
}

bool LogImport::update(LogCandidate& stored, const HabitraJSONBackupTaskEntry& entry) {
  auto row = context_.findLogEntry(stored.key);
  if (!row) return false;
  const TaskLogEntryEntity before = *row;
  const Period itsPeriod = period(entry);
  row->entryType = rawValue(entry.entryType);
  row->entryDate = entry.entryDate.intValue();
  std::tie(row->entryPeriodFrom, row->entryPeriodTo) = itsPeriod.bounds;
  row->entryPeriodType = itsPeriod.type;
  if (entry.progress || manner_.absentIsNone) row->progress = entry.progress.value_or(0.0);
  if (entry.progressTotal || manner_.absentIsNone) row->progressTotal = entry.progressTotal.value_or(0.0);
  if (entry.details || manner_.absentIsNone)
    takeDetails(*row, entry.details ? *entry.details : HabitraJSONBackupTaskEntryDetails());
  if (entry.createdTimestamp) row->createdTimestamp = entry.createdTimestamp;
  if (*row == before) return false;
  context_.updateLogEntry(stored.key, *row);
  stored.key = row->key();
  stored.createdTimestamp = row->createdTimestamp;
  std::tie(stored.periodFrom, stored.periodTo) = itsPeriod.bounds;
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

auto LogImport::bounds(std::int32_t day, std::int32_t periodFrom, std::int32_t periodTo) const -> PeriodBounds {
  if (periodFrom != 0) return {periodFrom, periodTo};
  const auto existing = dayFromStored(day);
  return existing ? periodByFrequency(*existing).bounds : PeriodBounds();
}

auto LogImport::bounds(const LogCandidate& stored) const -> PeriodBounds {
  return bounds(stored.key.entryDate, stored.periodFrom, stored.periodTo);
}

auto LogImport::periodsWithFullEntry(const std::vector<LogCandidate>& stored) const -> std::vector<PeriodBounds> {
  std::vector<PeriodBounds> periods;
  for (const LogCandidate& entry : stored) {
    const auto type = fromRawValue<TaskLogEntryType>(entry.entryType);
    if (type && isFull(*type)) periods.push_back(bounds(entry));
  }
  std::ranges::sort(periods);
  return periods;
}

bool LogImport::givesWay(const LogCandidate& stored) const {
  return !decidedPeriods_.empty() && wasFilledIn(stored) && decidedPeriods_.contains(bounds(stored));
}

bool LogImport::liesAfterToday(const HabitraJSONBackupTaskEntry& entry) const {
  if (manner_.afterToday == EntriesAfterToday::taken || entry.entryDate.intValue() <= today_.intValue()) return false;
  EntryRecording recording{.entryDate = entry.entryDate.intValue(), .createdTimestamp = entry.createdTimestamp};
  if (entry.details && entry.details->createdTimeZone) recording.createdTimeZone = *entry.details->createdTimeZone;
  return liesInFuture(recording, today_, calendar_.startOfDay, manner_.now);
}

}  // namespace habitra
