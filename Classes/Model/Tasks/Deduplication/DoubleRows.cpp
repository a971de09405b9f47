#include <HabitraModel/Settings/Settings.h>
#include <HabitraModel/Store/Entities/TaskCategoryEntity.h>
#include <HabitraModel/Store/Entities/TaskCategoryLink.h>
#include <HabitraModel/Store/Entities/TaskCounterEntity.h>
#include <HabitraModel/Store/Entities/TaskNoteEntity.h>
#include <HabitraModel/Store/Entities/TaskNotificationRemindersEntity.h>
#include <HabitraModel/Store/Entities/TaskTimerEntity.h>
#include <HabitraModel/Tasks/Deduplication/AlikeRows.h>
#include <HabitraModel/Tasks/Deduplication/DoubleRows.h>
#include <HabitraModel/Tasks/Deduplication/LogUnion.h>
#include <HabitraModel/Tasks/RowOfTask.h>
#include <QZKit/UniqueID.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace habitra {
namespace {

/// What does not make a row another when two tasks become one.
constexpr std::array<std::string_view, 2> besideContentAndTask{"uniqueId", "task"};

std::string newIdentifier(StoreContext& context) {
  return qz::UniqueID::generate(context.store().clock().now()).text();
}

template <typename T>
void uniteRelated(StoreContext& context, ObjectID survivor, ObjectID other) {
  std::vector<T*> kept = context.fetchRelated<T>("task", survivor);
  for (T* row : context.fetchRelated<T>("task", other)) {
    const auto partner = std::ranges::find_if(
        kept, [&](const T* candidate) { return areAlike(*candidate, *row, besideContentAndTask); });
    if (partner == kept.end())
      row->task = survivor;
    else
      kept.erase(partner);  // it is the partner of one only
  }
}

/// What a counter says, to the second; none while the moment of its creation is not known.
auto content(const TaskCounterEntity& row) {
  using Content = std::tuple<std::int32_t, std::int16_t, std::chrono::sys_seconds, std::optional<std::string>>;
  if (!row.createdTimestamp) return std::optional<Content>();
  return std::optional<Content>(std::in_place, row.entryDate, row.quantity,
                                std::chrono::floor<std::chrono::seconds>(*row.createdTimestamp), row.status);
}

/// One counter of two: the larger quantity stays (no moment of change is kept), of equal ones the rest decides.
void takeOver(TaskCounterEntity& kept, const TaskCounterEntity& other) {
  const auto statement = [](auto& row) {
    return std::tie(row.quantity, row.createdTimestamp, row.entryDate, row.status);
  };
  if (statement(other) > statement(std::as_const(kept))) statement(kept) = statement(other);
  kept.uniqueId = std::min(kept.uniqueId, other.uniqueId);
}

/// One to one, those with the same identifier first, then those with the same content.
void uniteCounters(StoreContext& context, ObjectID survivor, ObjectID other) {
  std::vector<TaskCounterEntity*> kept = context.fetchRelated<TaskCounterEntity>("task", survivor);
  std::vector<TaskCounterEntity*> added = context.fetchRelated<TaskCounterEntity>("task", other);
  const auto uniteBy = [&](const auto& keyOf) {
    std::erase_if(added, [&](const TaskCounterEntity* row) {
      const auto key = keyOf(*row);
      const auto partner = std::ranges::find_if(
          kept, [&](const TaskCounterEntity* candidate) { return key && keyOf(*candidate) == key; });
      if (partner == kept.end()) return false;
      takeOver(**partner, *row);
      kept.erase(partner);
      return true;
    });
  };
  uniteBy([](const TaskCounterEntity& row) { return row.uniqueId; });
  uniteBy([](const TaskCounterEntity& row) { return content(row); });
  for (TaskCounterEntity* row : added) row->task = survivor;
}

/// Whether two rows with the same identifier are one.
template <typename T>
bool areOne(const T& a, const T& b) {
  return areAlike(a, b);
}
bool areOne(const TaskCounterEntity& a, const TaskCounterEntity& b) { return a.task == b.task; }

/// What `kept` takes over from a row that is one with it.
template <typename T>
void takeOver(T&, const T&) {}

/// Leads every row of Holder that leads to `from` to `to`.
template <typename Holder, typename Target>
void leadOver(StoreContext& context, const Target& from, const Target& to) {
  for (const HeldRelationship& held : relationshipsTo(Target::description())) {
    if (held.holder != &Holder::description()) continue;
    for (Holder* holder : context.fetchRelated<Holder>(held.attribute->name, from.objectID))
      *static_cast<ObjectID*>(held.attribute->field(holder)) = to.objectID;
  }
}

template <typename T>
void resolve(StoreContext& context, DoubleRows& done) {
  for (const std::string& uniqueId : context.repeatedTexts<T>("uniqueId")) {
    std::vector<T*> kept;
    for (T* row : context.fetch<T>("uniqueId", uniqueId)) {
      const auto older = std::ranges::find_if(kept, [&](const T* candidate) { return areOne(*candidate, *row); });
      if (older != kept.end()) {
        takeOver(**older, *row);
        leadOver<TaskEntity>(context, *row, **older);
        leadOver<TaskCategoryLink>(context, *row, **older);
        context.remove(*row);
        ++done.united;
        continue;
      }
      if (!kept.empty()) {
        row->uniqueId = newIdentifier(context);
        ++done.renamed;
      }
      kept.push_back(row);
    }
  }
}

/// An identifier is one entry of a task; entries of other tasks get identifiers of their own.
void resolveEntries(StoreContext& context, DoubleRows& done) {
  for (const std::string& uniqueId : context.repeatedTexts<TaskLogEntryEntity>("uniqueId")) {
    std::vector<UnitedEntry> kept;
    for (TaskLogEntryEntity& entry : context.fetchLogEntries(uniqueId)) {
      const auto same = std::ranges::find(kept, entry.task, [](const UnitedEntry& one) { return one.entry.task; });
      if (same != kept.end()) {
        uniteSameEntries(context, *same, {.entry = entry});
        ++done.united;
        continue;
      }
      if (!kept.empty()) {
        entry.uniqueId = newIdentifier(context);
        context.updateLogEntry(entry.key(), entry);
        // Timers of a task name the entry of that task.
        renameEntriesOfTimers(context, entry.task, {{uniqueId, *entry.uniqueId}});
        ++done.renamed;
      }
      kept.push_back({.entry = std::move(entry)});
    }
  }
}

void removeDoubleLinks(StoreContext& context, DoubleRows& done) {
  std::set<std::pair<ObjectID, ObjectID>> seen;
  for (TaskCategoryLink* link : context.fetchAll<TaskCategoryLink>()) {
    if (seen.emplace(link->task, link->category).second) continue;
    context.remove(*link);
    ++done.united;
  }
}

template <typename T>
void resolveRowsOfTasks(StoreContext& context, DoubleRows& done) {
  std::set<ObjectID> tasks;
  std::set<ObjectID> tasksWithSeveral;
  for (const T* row : context.fetchAll<T>())
    if (row->task != ObjectID::none && !tasks.insert(row->task).second) tasksWithSeveral.insert(row->task);
  for (const ObjectID task : tasksWithSeveral) done.united += removeRowsThatDoNotCount<T>(context, task);
}

void resolveSettings(StoreContext& context, DoubleRows& done) {
  for (const std::string& key : context.repeatedTexts<SettingEntity>("settingKey"))
    done.united += StoreSettings(context).removeRowsThatDoNotCount(key, &settings::isReadable);
}

/// What a task has one of goes over as well; then the one that counts stays.
template <typename T>
void uniteRowsOfTask(StoreContext& context, ObjectID survivor, ObjectID other) {
  for (T* row : context.fetchRelated<T>("task", other)) row->task = survivor;
  (void)removeRowsThatDoNotCount<T>(context, survivor);
}

}  // namespace

void uniteRelatedRows(StoreContext& context, const TaskEntity& survivor, const TaskEntity& other) {
  uniteRelated<TaskNoteEntity>(context, survivor.objectID, other.objectID);
  uniteCounters(context, survivor.objectID, other.objectID);
  uniteRelated<TaskTimerEntity>(context, survivor.objectID, other.objectID);
  uniteRelated<TaskNotificationRemindersEntity>(context, survivor.objectID, other.objectID);
  uniteRelated<TaskCategoryLink>(context, survivor.objectID, other.objectID);
  uniteRowsOfTask<TaskNotificationSettingsEntity>(context, survivor.objectID, other.objectID);
  uniteRowsOfTask<TaskTemporalDataEntity>(context, survivor.objectID, other.objectID);
  uniteRowsOfTask<TaskShareEntity>(context, survivor.objectID, other.objectID);
}

DoubleRows resolveDoubleRows(StoreContext& context) {
  DoubleRows done;
  resolve<UserProfileEntity>(context, done);
  resolve<TaskCategoryEntity>(context, done);
  resolve<TaskNoteEntity>(context, done);
  resolve<TaskCounterEntity>(context, done);
  resolve<TaskNotificationRemindersEntity>(context, done);
  resolveEntries(context, done);
  removeDoubleLinks(context, done);
  resolveRowsOfTasks<TaskNotificationSettingsEntity>(context, done);
  resolveRowsOfTasks<TaskTemporalDataEntity>(context, done);
  resolveRowsOfTasks<TaskShareEntity>(context, done);
  resolveSettings(context, done);
  return done;
}

}  // namespace habitra
