#include <HabitraCore/RawValue.h>
#include <HabitraCore/TaskLogEntryType.h>
#include <HabitraModel/Store/Entities/HealthKitRequestEntity.h>
#include <HabitraModel/Store/Entities/TaskTimerEntity.h>
#include <HabitraModel/Tasks/AlikeRows.h>
#include <HabitraModel/Tasks/LogUnion.h>
#include <QZKit/UniqueID.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace habitra {
namespace {

using Entries = std::vector<TaskLogEntryEntity>;

/// What an entry says: of which day and type it is, when it was made, and how much it reports. How much the system has
/// measured does not count: it goes on measuring, and then one entry says two things.
auto content(const TaskLogEntryEntity& entry) {
  const auto type = fromRawValue<TaskLogEntryType>(entry.entryType);
  const bool isMeasured = type && isAutomatic(*type);
  std::optional<std::int64_t> second;
  if (entry.createdTimestamp)
    second = std::chrono::floor<std::chrono::seconds>(*entry.createdTimestamp).time_since_epoch().count();
  return std::tuple(entry.entryDate, entry.entryType, second, isMeasured ? 0 : entry.progress,
                    isMeasured ? 0 : entry.progressTotal);
}

/// The entries of a task without those that it has twice; these are removed.
Entries withoutDoubles(StoreContext& context, const TaskEntity& task, DoubleRows& done) {
  Entries entries;
  std::multimap<std::string, std::size_t> places;  // in `entries`, by identifier
  for (TaskLogEntryEntity& entry : context.fetchLogEntries(task.objectID)) {
    if (entry.uniqueId) {
      const auto [first, last] = places.equal_range(*entry.uniqueId);
      const auto older =
          std::find_if(first, last, [&](const auto& place) { return areAlike(entries[place.second], entry); });
      if (older != last) {
        leadRequestsOver(context, entry.objectID, entries[older->second].objectID);
        context.removeLogEntry(entry.key());
        ++done.united;
        continue;
      }
      places.emplace(*entry.uniqueId, entries.size());
    }
    entries.push_back(std::move(entry));
  }
  return entries;
}

/// Finds for each entry of one log its partner in the other, one to one.
class Partners {
 public:
  Partners(const Entries& wanted, const Entries& kept)
      : wanted_(wanted), kept_(kept), partnerOf_(wanted.size()), isTaken_(kept.size()) {
    pair([](const TaskLogEntryEntity& entry) {
      return entry.uniqueId ? std::optional(std::pair(*entry.uniqueId, content(entry))) : std::nullopt;
    });
    pair([](const TaskLogEntryEntity& entry) { return std::optional(content(entry)); });
  }

  /// The partner of the wanted entry at `index`, or null.
  [[nodiscard]] const TaskLogEntryEntity* of(std::size_t index) const {
    return partnerOf_[index] ? &kept_[*partnerOf_[index]] : nullptr;
  }

 private:
  template <typename KeyOf>
  void pair(KeyOf keyOf) {
    std::multimap<typename std::invoke_result_t<KeyOf, const TaskLogEntryEntity&>::value_type, std::size_t> free;
    for (std::size_t i = 0; i < kept_.size(); ++i)
      if (const auto key = keyOf(kept_[i]); key && !isTaken_[i]) free.emplace(*key, i);
    for (std::size_t i = 0; i < wanted_.size(); ++i) {
      const auto key = keyOf(wanted_[i]);
      const auto found = key && !partnerOf_[i] ? free.find(*key) : free.end();
      if (found == free.end()) continue;
      partnerOf_[i] = found->second;
      isTaken_[found->second] = true;
      free.erase(found);
    }
  }

  const Entries& wanted_;
  const Entries& kept_;
  std::vector<std::optional<std::size_t>> partnerOf_;
  std::vector<bool> isTaken_;
};

/// The entries of one task for one period, of those types that can stand against each other.
struct PeriodEntries {
  Entries automatic;  ///< written by the system, full or partial
  bool hasPersonsFull = false;
  bool hasAutomaticFull = false;
  bool hasAutomaticCompletion = false;
};

using Period = std::tuple<std::int32_t, std::int32_t>;

std::map<Period, PeriodEntries> byPeriod(const Entries& entries) {
  std::map<Period, PeriodEntries> periods;
  for (const TaskLogEntryEntity& entry : entries) {
    const auto type = fromRawValue<TaskLogEntryType>(entry.entryType);
    if (!type || !marksHistory(*type)) continue;
    const bool hasPeriod = entry.entryPeriodFrom > 0 && entry.entryPeriodTo > 0;
    PeriodEntries& period = periods[hasPeriod ? Period(entry.entryPeriodFrom, entry.entryPeriodTo)
                                              : Period(entry.entryDate, entry.entryDate)];
    if (isAutomatic(*type)) {
      period.automatic.push_back(entry);
      period.hasAutomaticFull |= isFull(*type);
      period.hasAutomaticCompletion |= isCompletedFull(*type);
    } else {
      period.hasPersonsFull |= isFull(*type);
    }
  }
  return periods;
}

/// Whether the automatic entries of one side give way to what the other has for the same period.
bool giveWay(const PeriodEntries& own, const PeriodEntries& others, bool othersAreOlder) {
  if (own.hasPersonsFull || others.hasPersonsFull) return others.hasPersonsFull && !own.hasPersonsFull;
  if (!own.hasAutomaticFull || !others.hasAutomaticFull) return false;
  if (own.hasAutomaticCompletion != others.hasAutomaticCompletion) return others.hasAutomaticCompletion;
  return othersAreOlder;
}

void removeContradicted(StoreContext& context, const Entries& kept, const Entries& added) {
  const auto keptPeriods = byPeriod(kept);
  for (const auto& [bounds, addedPeriod] : byPeriod(added)) {
    const auto keptPeriod = keptPeriods.find(bounds);
    if (keptPeriod == keptPeriods.end()) continue;
    const PeriodEntries* loser = nullptr;
    if (giveWay(addedPeriod, keptPeriod->second, true))
      loser = &addedPeriod;
    else if (giveWay(keptPeriod->second, addedPeriod, false))
      loser = &keptPeriod->second;
    if (loser == nullptr) continue;
    for (const TaskLogEntryEntity& entry : loser->automatic) context.removeLogEntry(entry.key());
  }
}

}  // namespace

void leadRequestsOver(StoreContext& context, ObjectID from, ObjectID to) {
  const auto present = context.fetchRelated<HealthKitRequestEntity>("taskLogEntry", to);
  for (HealthKitRequestEntity* request : context.fetchRelated<HealthKitRequestEntity>("taskLogEntry", from)) {
    const bool isThere = std::ranges::any_of(present, [&](const HealthKitRequestEntity* other) {
      return std::tie(other->created, other->data, other->status, other->statusDate, other->type) ==
             std::tie(request->created, request->data, request->status, request->statusDate, request->type);
    });
    if (!isThere) request->taskLogEntry = to;
  }
}

void renameEntryOfTimers(StoreContext& context, ObjectID task, std::string_view from, std::string_view to) {
  for (TaskTimerEntity* timer : context.fetchRelated<TaskTimerEntity>("task", task))
    if (timer->entryId == from) timer->entryId = to;
}

DoubleRows uniteLogs(StoreContext& context, const TaskEntity& survivor, const TaskEntity& other) {
  DoubleRows done;
  const Entries kept = withoutDoubles(context, survivor, done);
  const Entries wanted = withoutDoubles(context, other, done);
  const Partners partners(wanted, kept);
  std::set<std::optional<std::string>> keptIdentifiers;
  for (const TaskLogEntryEntity& entry : kept) keptIdentifiers.insert(entry.uniqueId);
  Entries added;
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    if (const TaskLogEntryEntity* partner = partners.of(i)) {
      leadRequestsOver(context, wanted[i].objectID, partner->objectID);
      if (wanted[i].uniqueId && partner->uniqueId && wanted[i].uniqueId != partner->uniqueId)
        renameEntryOfTimers(context, other.objectID, *wanted[i].uniqueId, *partner->uniqueId);
    } else {
      TaskLogEntryEntity& entry = added.emplace_back(wanted[i]);
      entry.task = survivor.objectID;
      if (entry.uniqueId && keptIdentifiers.contains(entry.uniqueId)) {
        entry.uniqueId = qz::UniqueID::generate(context.store().clock().now()).text();
        renameEntryOfTimers(context, other.objectID, *wanted[i].uniqueId, *entry.uniqueId);
        ++done.renamed;
      }
      context.updateLogEntry(wanted[i].key(), entry);
    }
  }
  removeContradicted(context, kept, added);
  return done;
}

}  // namespace habitra
