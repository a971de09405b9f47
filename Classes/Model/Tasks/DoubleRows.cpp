#include <HabitraModel/Store/Entities/TaskCategoryEntity.h>
#include <HabitraModel/Store/Entities/TaskCategoryLink.h>
#include <HabitraModel/Store/Entities/TaskCounterEntity.h>
#include <HabitraModel/Store/Entities/TaskNoteEntity.h>
#include <HabitraModel/Store/Entities/TaskNotificationRemindersEntity.h>
#include <HabitraModel/Store/Entities/TaskTimerEntity.h>
#include <HabitraModel/Store/RowCoding.h>
#include <HabitraModel/Tasks/DoubleRows.h>
#include <HabitraModel/Tasks/LogUnion.h>
#include <QZKit/UniqueID.h>

#include <algorithm>
#include <array>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace habitra {
namespace {

/// What does not make a row another: its identifier, which is asked about, and its state towards the cloud.
constexpr std::array<std::string_view, 3> besideContent{"uniqueId", "cloudStatus", "cloudStatusDate"};
/// The same for rows of two tasks that become one.
constexpr std::array<std::string_view, 2> besideContentAndTask{"uniqueId", "task"};

/// Whether two rows differ in nothing but these attributes.
template <typename T>
bool areAlike(const T& a, const T& b, std::span<const std::string_view> ignored) {
  const EntityDescription& entity = T::description();
  const AttributeSet different = differences(entity, &a, &b);
  for (std::size_t i = 0; i < entity.attributes.size(); ++i)
    if (different.contains(i) && std::ranges::find(ignored, entity.attributes[i].name) == ignored.end()) return false;
  return true;
}

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
      const auto older =
          std::ranges::find_if(kept, [&](const T* candidate) { return areAlike(*candidate, *row, besideContent); });
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
      const auto older = std::ranges::find_if(
          kept, [&](const TaskLogEntryEntity& candidate) { return areAlike(candidate, entry, besideContent); });
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

}  // namespace

void uniteRelatedRows(StoreContext& context, const TaskEntity& survivor, const TaskEntity& other) {
  uniteRelated<TaskNoteEntity>(context, survivor.objectID, other.objectID);
  uniteRelated<TaskCounterEntity>(context, survivor.objectID, other.objectID);
  uniteRelated<TaskTimerEntity>(context, survivor.objectID, other.objectID);
  uniteRelated<TaskNotificationRemindersEntity>(context, survivor.objectID, other.objectID);
  uniteRelated<TaskCategoryLink>(context, survivor.objectID, other.objectID);
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
  return done;
}

}  // namespace habitra
