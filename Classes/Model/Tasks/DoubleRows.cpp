#include <HabitraModel/Settings/StoreSettings.h>
#include <HabitraModel/Store/Entities/TaskCategoryEntity.h>
#include <HabitraModel/Store/Entities/TaskCategoryLink.h>
#include <HabitraModel/Store/Entities/TaskCounterEntity.h>
#include <HabitraModel/Store/Entities/TaskNoteEntity.h>
#include <HabitraModel/Store/Entities/TaskNotificationRemindersEntity.h>
#include <HabitraModel/Store/Entities/TaskTimerEntity.h>
#include <HabitraModel/Tasks/AlikeRows.h>
#include <HabitraModel/Tasks/DoubleRows.h>
#include <HabitraModel/Tasks/LogUnion.h>
#include <HabitraModel/Tasks/RowOfTask.h>
#include <QZKit/UniqueID.h>

#include <algorithm>
#include <array>
#include <set>
#include <string>
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
      const auto older = std::ranges::find_if(kept, [&](const T* candidate) { return areAlike(*candidate, *row); });
      if (older != kept.end()) {
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

void resolveEntries(StoreContext& context, DoubleRows& done) {
  for (const std::string& uniqueId : context.repeatedTexts<TaskLogEntryEntity>("uniqueId")) {
    std::vector<TaskLogEntryEntity> kept;
    for (TaskLogEntryEntity& entry : context.fetchLogEntries(uniqueId)) {
      const auto older =
          std::ranges::find_if(kept, [&](const TaskLogEntryEntity& candidate) { return areAlike(candidate, entry); });
      if (older != kept.end()) {
        leadRequestsOver(context, entry.objectID, older->objectID);
        context.removeLogEntry(entry.key());
        ++done.united;
        continue;
      }
      if (!kept.empty()) {
        entry.uniqueId = newIdentifier(context);
        context.updateLogEntry(entry.key(), entry);
        // Timers of a task name the entry of that task.
        if (std::ranges::find(kept, entry.task, &TaskLogEntryEntity::task) == kept.end())
          renameEntryOfTimers(context, entry.task, uniqueId, *entry.uniqueId);
        ++done.renamed;
      }
      kept.push_back(std::move(entry));
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
    done.united += StoreSettings(context).removeRowsThatDoNotCount(key);
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
  uniteRelated<TaskCounterEntity>(context, survivor.objectID, other.objectID);
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
