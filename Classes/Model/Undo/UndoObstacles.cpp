#include <HabitraCore/FollowingEntries.h>
#include <HabitraCore/TaskLogEntryChoice.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Store/Entities/SettingEntity.h>
#include <HabitraModel/Store/Entities/TaskCategoryLink.h>
#include <HabitraModel/Tasks/Recording/FilledInEntries.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <HabitraModel/Undo/DerivedRows.h>
#include <HabitraModel/Undo/LoggedPeriod.h>
#include <HabitraModel/Undo/UndoObstacles.h>

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <utility>

namespace habitra {

namespace {

/// Whether both count for one period, and one would have replaced the other.
bool excludeEachOther(const TaskLogEntryEntity& a, const TaskLogEntryEntity& b) {
  const auto typeOfA = fromRawValue<TaskLogEntryType>(a.entryType);
  const auto typeOfB = fromRawValue<TaskLogEntryType>(b.entryType);
  return a.task == b.task && LoggedPeriod::of(a).overlaps(LoggedPeriod::of(b)) && typeOfA && typeOfB &&
         (supersedes(*typeOfA, *typeOfB) || supersedes(*typeOfB, *typeOfA));
}

bool isFailure(const TaskLogEntryEntity& entry) {
  const auto type = fromRawValue<TaskLogEntryType>(entry.entryType);
  return type && (isMissedFull(*type) || isAllowableMissFull(*type));
}

bool changesRecording(const StoredChange& change) {
  return change.entity == EntityNumber::task && change.kind == ChangeKind::update &&
         (change.attributes.bits() & attributesOfRecording().bits()) != 0;
}

}  // namespace

void UndoObstacles::check() {
  refuseRowsTouchedAgain();
  refuseWhatIsBuiltUpon();
  refuseWhatWasRecordedInstead();
  refuseWhatWasRecordedByOtherRules();
  refuseWhatWasSealed();
  refuseFailuresThatFollow();
  for (const TouchedRow& touched : touched_)
    if (touched.wasRemoved()) comingBack_.insert(touched.row());
  for (TouchedRow& touched : touched_) {
    checkDouble(touched);
    checkReplaced(touched);
    checkReferences(touched);
    // What leads to it comes later, in the order of entities.
    if (touched.isLeftOut) comingBack_.erase(touched.row());
  }
  refuseWhatIsGone();
}

void UndoObstacles::refuseRowsTouchedAgain() {
  std::set<RowID> own;
  for (const TouchedRow& touched : touched_)
    if (!touched.isDerived) own.insert(touched.row());
  for (const LaterChanges::OfCommand& later : later_.ofCommands())
    if (own.contains(later.row()) && !later.isDerived) refuse(later);
}

void UndoObstacles::refuseWhatIsBuiltUpon() {
  std::set<RowID> inserted;
  for (const TouchedRow& touched : touched_)
    if (touched.wasInserted() && !touched.isDerived) inserted.insert(touched.row());
  for (const LaterChanges::OfCommand& later : later_.ofCommands()) {
    if (later.change.kind == ChangeKind::removal || later.isDerived) continue;
    if (std::ranges::any_of(later.targets, [&](const RowID& target) { return inserted.contains(target); }))
      refuse(later);
  }
}

void UndoObstacles::refuseWhatWasRecordedInstead() {
  std::map<ObjectID, std::vector<const TouchedRow*>> comingBack;
  for (const TouchedRow& touched : touched_)
    if (touched.isEntry() && !touched.isDerived && comesBack(touched))
      comingBack[touched.earlierEntry().task].push_back(&touched);
  for (const LaterChanges::OfCommand& later : later_.ofCommands()) {
    if (later.change.entity != EntityNumber::taskLogEntry || later.isDerived) continue;
    const auto entries = comingBack.find(later.change.task);
    if (entries == comingBack.end()) continue;
    const auto other = context_.findLogEntry(later.change.object);
    if (!other) continue;
    for (const TouchedRow* touched : entries->second)
      if (touched->change.object != other->objectID && excludeEachOther(touched->earlierEntry(), *other)) refuse(later);
  }
}

bool UndoObstacles::comesBack(const TouchedRow& touched) {
  if (touched.change.kind != ChangeKind::update) return touched.wasRemoved();
  // One that was changed comes back to where it was, or as what it was.
  const auto present = context_.findLogEntry(touched.change.object);
  const TaskLogEntryEntity& earlier = touched.earlierEntry();
  return present && (present->task != earlier.task || present->entryType != earlier.entryType ||
                     LoggedPeriod::of(*present) != LoggedPeriod::of(earlier));
}

void UndoObstacles::checkDouble(TouchedRow& touched) {
  if (!touched.wasRemoved() || (touched.isEntry() && touched.isDerived)) return;
  refuseSettingGivenAgain(touched);
  for (const ObjectID id : doublesOf(touched)) {
    const RowID other(touched.entity->number, id);
    const CommandList::Entry* const command = later_.inserter(other);
    if (command != nullptr && !touched.isDerived) refuse(*command, taskOf(touched));
    // What bears one identifier is told apart by deduplication.
    if (touched.entity->position("uniqueId")) continue;
    // Two rows for one pair say no more than one. Others that were double before are so again.
    touched.isLeftOut |= touched.entity->number == EntityNumber::taskCategoryLink || later_.hasComeLater(other);
  }
}

void UndoObstacles::refuseSettingGivenAgain(const TouchedRow& touched) {
  if (touched.entity->number != EntityNumber::setting) return;
  const auto& key = static_cast<const SettingEntity*>(touched.earlier->get())->settingKey;
  for (const LaterChanges::OfCommand& later : later_.ofCommands())
    if (key && later.change.entity == EntityNumber::setting && later.name == key) refuse(later);
}

void UndoObstacles::checkReplaced(TouchedRow& touched) {
  if (!touched.isEntry() || !touched.wasRemoved() || touched.isDerived) return;
  const TaskLogEntryEntity& earlier = touched.earlierEntry();
  const auto type = fromRawValue<TaskLogEntryType>(earlier.entryType);
  const LoggedPeriod period = LoggedPeriod::of(earlier);
  context_.readLog(earlier.task, period.from, period.to, [&](const LogRow& row) {
    const auto other = fromRawValue<TaskLogEntryType>(row.entryType);
    // What a pass has filled in since goes when the entry is back.
    if (!type || !other || isFilledIn(row)) return;
    touched.isLeftOut |= later_.hasInserted(row.objectID) && supersedes(*other, *type);
  });
}

ObjectID UndoObstacles::taskOf(const TouchedRow& touched) {
  if (touched.entity->number == EntityNumber::task) return touched.change.object;
  const auto position = touched.entity->position("task");
  return position ? *static_cast<const ObjectID*>(touched.entity->attributes[*position].field(touched.earlier->get()))
                  : ObjectID::none;
}

std::vector<ObjectID> UndoObstacles::doublesOf(const TouchedRow& touched) {
  const EntityDescription& entity = *touched.entity;
  std::vector<ObjectID> doubles;
  if (entity.number == EntityNumber::taskCategoryLink) {
    const auto& earlier = *static_cast<const TaskCategoryLink*>(touched.earlier->get());
    for (const TaskCategoryLink* link : context_.fetchRelated<TaskCategoryLink>("task", earlier.task))
      if (link->category == earlier.category) doubles.push_back(link->objectID);
  } else if (touched.isEntry()) {
    if (const auto& uniqueId = touched.earlierEntry().uniqueId)
      for (const TaskLogEntryEntity& entry : context_.fetchLogEntries(*uniqueId)) doubles.push_back(entry.objectID);
  } else {
    for (const AttributeDescription& attribute : entity.attributes)
      for (void* object : alikeBy(touched, attribute)) doubles.push_back(entity.objectID(object));
  }
  std::erase(doubles, touched.change.object);
  return doubles;
}

std::vector<void*> UndoObstacles::alikeBy(const TouchedRow& touched, const AttributeDescription& attribute) {
  const void* const field = attribute.field(touched.earlier->get());
  if (attribute.name == "uniqueId" || attribute.name == "settingKey") {
    const auto& text = *static_cast<const std::optional<std::string>*>(field);
    return text ? objects_.fetch(*touched.entity, attribute.name, *text) : std::vector<void*>();
  }
  // Of what leads to one row from the other side there is one.
  if (attribute.type != StoredType::reference || attribute.relationship.inverseIsToMany) return {};
  const ObjectID target = *static_cast<const ObjectID*>(field);
  return target == ObjectID::none ? std::vector<void*>()
                                  : objects_.fetchRelated(*touched.entity, attribute.name, target);
}

void UndoObstacles::checkReferences(TouchedRow& touched) {
  if (!touched.earlier) return;
  const bool comesWhole = touched.wasRemoved();
  const std::uint64_t kept = later_.attributes(touched.row()).bits();
  for (std::size_t i = 0; i < touched.entity->attributes.size(); ++i) {
    const AttributeDescription& attribute = touched.entity->attributes[i];
    const bool isRestored = comesWhole || (touched.change.attributes.contains(i) && !AttributeSet(kept).contains(i));
    if (attribute.type != StoredType::reference || !isRestored) continue;
    ObjectID& target = *static_cast<ObjectID*>(attribute.field(touched.earlier->get()));
    const EntityDescription& entity = attribute.relationship.target();
    if (target == ObjectID::none || willBeThere(entity, target)) continue;
    for (const LaterChanges::OfCommand& later : later_.ofCommands())
      if (later.change.kind == ChangeKind::removal && later.row() == RowID(entity.number, target)) refuse(later);
    // No person removed it. What it had goes with it, also what would have to come back.
    if (attribute.relationship.whenTargetIsRemoved == DeleteRule::cascade) {
      touched.isLeftOut = true;
      orphans_.insert(touched.row());
    }
    target = ObjectID::none;
  }
}

void UndoObstacles::refuseWhatIsGone() {
  bool hasOwn = false;
  for (const TouchedRow& touched : touched_) {
    if (touched.isDerived) continue;
    if (!isGone(touched)) return;
    hasOwn = true;
  }
  if (!hasOwn) return;
  throw UndoStack::Error(
      UndoStack::Error::Reason::rowsGone,
      fmt::format("{}: what it was about is gone; a program has removed it or united it with another",
                  commands_.refusal(target_)));
}

bool UndoObstacles::isGone(const TouchedRow& touched) {
  if (orphans_.contains(touched.row())) return true;
  if (touched.wasRemoved()) return false;
  if (!touched.wasInserted()) return !isThere(*touched.entity, touched.change.object);
  // What was added and is not there any more is as it should be, as long as it has not become part of something else.
  const ObjectID task = touched.entity->number == EntityNumber::task ? touched.change.object : touched.change.task;
  return task != ObjectID::none && !isThere(*touched.entity, touched.change.object) &&
         !isThere(TaskEntity::description(), task);
}

bool UndoObstacles::willBeThere(const EntityDescription& entity, ObjectID id) {
  return isThere(entity, id) || comingBack_.contains({entity.number, id});
}

bool UndoObstacles::isThere(const EntityDescription& entity, ObjectID id) {
  const bool isEntry = entity.number == EntityNumber::taskLogEntry;
  return isEntry ? context_.findLogEntry(id).has_value() : objects_.find(entity, id) != nullptr;
}

void UndoObstacles::refuseWhatWasRecordedByOtherRules() {
  std::set<ObjectID> tasks;
  for (const TouchedRow& touched : touched_)
    if (changesRecording(touched.change)) tasks.insert(touched.change.object);
  for (const LaterChanges::OfCommand& later : later_.ofCommands())
    if (later.change.entity == EntityNumber::taskLogEntry && !later.isDerived && tasks.contains(later.change.task))
      refuse(later);
}

void UndoObstacles::refuseWhatWasSealed() {
  // A command that changes the rules of a task seals or re-stamps entries by those that it had.
  std::set<std::pair<const CommandList::Entry*, ObjectID>> edits;
  for (const LaterChanges::OfCommand& later : later_.ofCommands())
    if (changesRecording(later.change)) edits.emplace(later.command, later.change.object);
  if (edits.empty()) return;
  const auto entries = touchedEntries();
  for (const LaterChanges::OfCommand& later : later_.ofCommands()) {
    const auto own = entries.find(later.change.task);
    if (later.change.entity != EntityNumber::taskLogEntry || later.isDerived || own == entries.end() ||
        !edits.contains({later.command, later.change.task}))
      continue;
    const auto present = context_.findLogEntry(later.change.object);
    const LoggedPeriod period = present ? LoggedPeriod::of(*present) : LoggedPeriod{later.change.day, later.change.day};
    for (const TaskLogEntryEntity& entry : own->second)
      if (LoggedPeriod::of(entry).overlaps(period)) refuse(later);
  }
}

void UndoObstacles::refuseFailuresThatFollow() {
  if (later_.ofCommands().empty()) return;
  for (const auto& [id, entries] : touchedEntries()) {
    const TaskEntity* const task = context_.find<TaskEntity>(id);
    const auto rules = task != nullptr && task->isNegative ? rulesOf(context_, *task) : std::nullopt;
    if (!rules) continue;
    for (const TaskLogEntryEntity& entry : entries) {
      const auto day = judgedDay(entry.entryDate);
      const auto following = day && isFailure(entry) ? followingDays(*rules, *day) : std::nullopt;
      if (!following) continue;
      const LoggedPeriod days{storedDay(following->first),
                              following->last ? storedDay(*following->last) : StoreContext::lastDay};
      for (const LaterChanges::OfCommand& later : later_.ofCommands()) {
        if (later.change.entity != EntityNumber::taskLogEntry || later.isDerived || later.change.task != id) continue;
        const auto present = context_.findLogEntry(later.change.object);
        if (present && isFailure(*present) && days.overlaps(LoggedPeriod::of(*present))) refuse(later);
      }
    }
  }
}

std::map<ObjectID, std::vector<TaskLogEntryEntity>> UndoObstacles::touchedEntries() {
  std::map<ObjectID, std::vector<TaskLogEntryEntity>> entries;
  for (const TouchedRow& touched : touched_) {
    if (!touched.isEntry() || touched.isDerived) continue;
    for (TaskLogEntryEntity& form : formsOf(touched)) entries[form.task].push_back(std::move(form));
  }
  return entries;
}

std::vector<TaskLogEntryEntity> UndoObstacles::formsOf(const TouchedRow& touched) {
  std::vector<TaskLogEntryEntity> forms;
  if (touched.earlier) forms.push_back(touched.earlierEntry());
  if (!touched.wasRemoved())
    if (auto present = context_.findLogEntry(touched.change.object)) forms.push_back(*std::move(present));
  return forms;
}

void UndoObstacles::refuse(const LaterChanges::OfCommand& obstacle) { refuse(*obstacle.command, obstacle.task()); }

void UndoObstacles::refuse(const CommandList::Entry& command, ObjectID task) {
  UndoStack::Error::Obstacle found{.command = command.command(), .habit = titleOf(task)};
  const std::string day = calendars_.ofDevice().day(found.command.moment).debugDescription();
  std::string message = fmt::format("{}: '{}' of {} came later and changed the same", commands_.refusal(target_),
                                    found.command.text, day);
  if (found.habit) message += fmt::format(" of '{}'", *found.habit);
  throw UndoStack::Error(UndoStack::Error::Reason::inTheWay, message + "; undo that first", std::move(found));
}

std::optional<std::string> UndoObstacles::titleOf(ObjectID id) {
  if (id == ObjectID::none) return std::nullopt;
  if (const TaskEntity* task = context_.find<TaskEntity>(id)) return task->title;
  // A habit that is gone bears its last title in the history of its removal.
  for (const LaterChanges::OfCommand& later : later_.ofCommands())
    if (later.row() == RowID(EntityNumber::task, id) && later.name) return later.name;
  for (const TouchedRow& touched : touched_)
    if (touched.row() == RowID(EntityNumber::task, id) && touched.earlier)
      return static_cast<const TaskEntity*>(touched.earlier->get())->title;
  return std::nullopt;
}

}  // namespace habitra
