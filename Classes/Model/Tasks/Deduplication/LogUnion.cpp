#include <HabitraModel/Mapping/LogEntryMapping.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Store/Entities/HealthKitRequestEntity.h>
#include <HabitraModel/Store/Entities/TaskTimerEntity.h>
#include <HabitraModel/Tasks/Deduplication/LogUnion.h>
#include <HabitraModel/Tasks/Recording/FailureRetyping.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <QZDateTime/HHMMSS.h>
#include <QZDateTime/TimeZone.h>

#include <algorithm>
#include <chrono>
#include <initializer_list>
#include <iterator>
#include <map>
#include <set>
#include <tuple>
#include <utility>

namespace habitra {
namespace {

using Entries = std::vector<UnitedEntry>;

/// All that an entry says; where two say different things under one identifier, the greater one stays. A part of a
/// failure is less than all else: that it is the last one, and so the failure, not every log has to know.
auto statement(const TaskLogEntryEntity& entry) {
  const TaskLogEntryType type = entryTypeFromStored(entry.entryType);
  return std::tuple_cat(
      std::tuple(type != TaskLogEntryType::missedManuallyPartial),
      std::tie(entry.progressTotal, entry.progress, entry.createdTimestamp, entry.entryDate, entry.entryType,
               entry.entryPeriodFrom, entry.entryPeriodTo, entry.entryPeriodType, entry.createdTimeZone));
}

/// Day, type, second of creation and amounts.
using Content = std::tuple<std::int32_t, std::int16_t, std::int64_t, double, double>;

/// By what entries with different identifiers are known to be one; none while the moment of creation is not known.
std::optional<Content> content(const TaskLogEntryEntity& entry) {
  if (!entry.createdTimestamp) return std::nullopt;
  return Content(entry.entryDate, entry.entryType,
                 std::chrono::floor<std::chrono::seconds>(*entry.createdTimestamp).time_since_epoch().count(),
                 entry.progressTotal, entry.progress);
}

/// How far a request to the health store has come.
int progressOf(const HealthKitRequestEntity& request) {
  if (request.status == "done") return 2;
  return request.status == "failed" ? 1 : 0;
}

/// Leads the requests of one entry over to another. What both have asked for is one request, as far as it has come.
void leadRequestsOver(StoreContext& context, ObjectID from, ObjectID to) {
  std::vector<HealthKitRequestEntity*> present = context.fetchRelated<HealthKitRequestEntity>("taskLogEntry", to);
  for (HealthKitRequestEntity* request : context.fetchRelated<HealthKitRequestEntity>("taskLogEntry", from)) {
    const auto same = std::ranges::find_if(present, [&](const HealthKitRequestEntity* other) {
      return std::tie(other->created, other->data, other->type) ==
             std::tie(request->created, request->data, request->type);
    });
    if (same == present.end()) {
      request->taskLogEntry = to;
      present.push_back(request);
    } else if (std::pair(progressOf(**same), (*same)->statusDate) <
               std::pair(progressOf(*request), request->statusDate)) {
      (*same)->status = request->status;
      (*same)->statusDate = request->statusDate;
    }
  }
}

/// The log that several become.
class UnitedLog {
 public:
  UnitedLog(StoreContext& context, ObjectID survivor) : context_(context), survivor_(survivor) {}

  /// Leads the entries of a task over; those with an identifier that is there already are one with it. Gives how many
  /// were double within the log of this task.
  std::size_t add(ObjectID task) {
    std::set<std::string> own;
    std::size_t doubles = 0;
    for (const TaskLogEntryEntity& row : context_.fetchLogEntries(task)) {
      UnitedEntry entry{.entry = row, .rows = {{task, row.objectID}}, .firstDay = row.entryDate};
      const auto [place, isNew] =
          row.uniqueId ? places_.emplace(*row.uniqueId, entries_.size()) : std::pair(places_.end(), true);
      if (row.uniqueId && !own.insert(*row.uniqueId).second) ++doubles;
      if (!isNew) {
        uniteSameEntries(context_, entries_[place->second], entry);
        continue;
      }
      entry.entry.task = survivor_;
      context_.updateLogEntry(row.key(), entry.entry);
      entries_.push_back(std::move(entry));
    }
    return doubles;
  }

  /// Makes one of the entries with the same content that come from different logs, one to one: that which was made
  /// first stays. Gives what the others are called now.
  RenamedEntries uniteAlike() {
    std::ranges::sort(entries_, {}, [](const UnitedEntry& united) {
      return std::pair(!united.entry.uniqueId.has_value(), creation(united.entry));
    });
    RenamedEntries renamed;
    std::map<Content, Entries> present;
    Entries withoutContent;
    for (UnitedEntry& entry : entries_) {
      const auto key = content(entry.entry);
      Entries& alike = key ? present[*key] : withoutContent;
      const auto first =
          key ? std::ranges::find_if(alike, [&](const UnitedEntry& kept) { return !share(kept, entry); }) : alike.end();
      if (first == alike.end()) {
        alike.push_back(std::move(entry));
        continue;
      }
      if (entry.entry.uniqueId) renamed.emplace(*entry.entry.uniqueId, *first->entry.uniqueId);
      leadRequestsOver(context_, entry.entry.objectID, first->entry.objectID);
      context_.removeLogEntry(entry.entry.key());
      first->rows.merge(entry.rows);
    }
    entries_ = std::move(withoutContent);
    for (auto& [key, alike] : present) std::ranges::move(alike, std::back_inserter(entries_));
    return renamed;
  }

  /// Gives the entries away.
  [[nodiscard]] Entries take() { return std::move(entries_); }

 private:
  static bool share(const UnitedEntry& a, const UnitedEntry& b) {
    return std::ranges::any_of(a.rows, [&](const auto& row) { return b.rows.contains(row.first); });
  }

  StoreContext& context_;
  const ObjectID survivor_;
  Entries entries_;
  std::map<std::string, std::size_t> places_;  // in `entries_`, by identifier
};

/// Lets the next pass begin before a day. The first moment of no day, wherever it begins, lies two days before.
void judgeAnewFrom(TaskEntity& task, std::int32_t day) {
  const auto changed = existingDayFromStored(day);
  if (!changed || !task.lastProcessedDate) return;
  const qz::Moment before = changed->add(-2).beginning(qz::HHMMSS::midnight, qz::TimeZone::utc());
  task.lastProcessedDate = std::min(*task.lastProcessedDate, before);
}

/// A failure that only another log knew of takes up room that later ones had.
void retypeFailuresFrom(StoreContext& context, const TaskEntity& task, std::int32_t day) {
  const auto rules = rulesOf(context, task);
  if (!rules || !rules->isNegative) return;
  std::set<qz::YYYYMMDD> failed;
  context.readLog(task.objectID, day, StoreContext::lastDay, [&](const LogRow& row) {
    const TaskLogEntryType type = entryTypeFromStored(row.entryType);
    const auto date = existingDayFromStored(row.entryDate);
    if (date && (isMissedFullOrPartial(type) || isAllowableMissFull(type))) failed.insert(*date);
  });
  retypeFailures(context, task, *rules, failed);
}

}  // namespace

void uniteSameEntries(StoreContext& context, UnitedEntry& kept, const UnitedEntry& other) {
  TaskLogEntryEntity said = statement(other.entry) > statement(kept.entry) ? other.entry : kept.entry;
  std::map<ObjectID, ObjectID> rows;  // what another log said is news to it
  for (const UnitedEntry* entry : std::initializer_list<const UnitedEntry*>{&kept, &other})
    if (statement(entry->entry) == statement(said)) rows.insert(entry->rows.begin(), entry->rows.end());

  const LogKey key = kept.entry.key();
  said.objectID = kept.entry.objectID;
  said.task = kept.entry.task;
  said.uniqueId = kept.entry.uniqueId;
  leadRequestsOver(context, other.entry.objectID, kept.entry.objectID);
  context.removeLogEntry(other.entry.key());
  context.updateLogEntry(key, said);
  kept = {.entry = std::move(said), .rows = std::move(rows), .firstDay = std::min(kept.firstDay, other.firstDay)};
}

void renameEntriesOfTimers(StoreContext& context, ObjectID task, const RenamedEntries& renamed) {
  if (renamed.empty()) return;
  for (TaskTimerEntity* timer : context.fetchRelated<TaskTimerEntity>("task", task)) {
    const auto found = timer->entryId ? renamed.find(*timer->entryId) : renamed.end();
    if (found != renamed.end()) timer->entryId = found->second;
  }
}

std::size_t uniteLogs(StoreContext& context, TaskEntity& survivor, const std::vector<TaskEntity*>& others) {
  UnitedLog united(context, survivor.objectID);
  std::size_t doubles = united.add(survivor.objectID);
  for (const TaskEntity* other : others) {
    doubles += united.add(other->objectID);
    // None is earlier than any moment: then all of it is looked at again.
    survivor.lastProcessedDate = std::min(survivor.lastProcessedDate, other->lastProcessedDate);
  }
  const RenamedEntries renamed = united.uniteAlike();
  renameEntriesOfTimers(context, survivor.objectID, renamed);
  for (const TaskEntity* other : others) renameEntriesOfTimers(context, other->objectID, renamed);
  if (const auto day = removeContradictions(context, survivor, others.size() + 1, united.take())) {
    judgeAnewFrom(survivor, *day);
    retypeFailuresFrom(context, survivor, *day);
  }
  return doubles;
}

}  // namespace habitra
