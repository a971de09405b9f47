#include <HabitraCore/TaskLogEntryChoice.h>
#include <HabitraModel/Store/Field.h>
#include <HabitraModel/Store/RowCoding.h>
#include <HabitraModel/Undo/CommandReversal.h>
#include <HabitraModel/Undo/DerivedRows.h>
#include <HabitraModel/Undo/EarlierValues.h>

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <utility>

namespace habitra {

namespace {

bool isEntryOfLog(const EntityDescription& entity) { return entity.layout == Layout::byTaskAndDay; }

/// The period that an entry counts for, or its day.
std::pair<std::int32_t, std::int32_t> periodOf(const TaskLogEntryEntity& entry) {
  return {entry.entryPeriodFrom > 0 ? entry.entryPeriodFrom : entry.entryDate,
          entry.entryPeriodTo > 0 ? entry.entryPeriodTo : entry.entryDate};
}

const TaskLogEntryEntity& asEntry(const OwnedObject& object) {
  return *static_cast<const TaskLogEntryEntity*>(object.get());
}

/// Whether both count for one period, and one would have replaced the other.
bool excludeEachOther(const TaskLogEntryEntity& a, const TaskLogEntryEntity& b) {
  const auto typeOfA = fromRawValue<TaskLogEntryType>(a.entryType);
  const auto typeOfB = fromRawValue<TaskLogEntryType>(b.entryType);
  const auto [fromA, toA] = periodOf(a);
  const auto [fromB, toB] = periodOf(b);
  return a.task == b.task && fromA <= toB && fromB <= toA && typeOfA && typeOfB &&
         (supersedes(*typeOfA, *typeOfB) || supersedes(*typeOfB, *typeOfA));
}

}  // namespace

CommandReversal::CommandReversal(StoreContext& context, const TaskCalendars& calendars, const CommandList& commands,
                                 const CommandList::Entry& target)
    : context_(context), objects_(context), target_(target), commands_(commands), calendars_(calendars) {}

UndoStack::Undone CommandReversal::run() {
  readTouched();
  later_.emplace(context_, commands_, target_.transaction.sequence, rows_);
  refuseWhatOthersTouched();
  refuseWhatOthersBuiltUpon();
  refuseWhatOthersRecordedInstead();
  for (Touched& touched : touched_) checkReferences(touched);

  rewind_.emplace(context_, calendars_, *later_, target_.transaction.moment);
  putBackObjects();
  putBackEntries();
  std::vector<UndoStack::TouchedTask> tasks = rewind_->apply();
  removeInserted();
  std::erase_if(tasks, [this](const auto& touched) { return context_.find<TaskEntity>(touched.task) == nullptr; });
  return {.command = target_.command(), .tasks = std::move(tasks)};
}

void CommandReversal::readTouched() {
  EarlierValues values(context_, target_.transaction, commands_.refusal(target_));
  context_.readChanges(target_.transaction.sequence, [&](const StoredChange& change) {
    touched_.push_back({.change = change, .entity = entityWithNumber(change.entity), .earlier = std::nullopt});
    rows_.insert(touched_.back().row());
    if (change.kind == ChangeKind::removal) removed_.insert(touched_.back().row());
  });
  for (Touched& touched : touched_) {
    if (touched.change.kind != ChangeKind::insertion) {
      touched.earlier.emplace(*touched.entity);
      if (isEntryOfLog(*touched.entity)) {
        // An update keeps only what it changed; the rest is as it is now.
        if (const auto present = context_.findLogEntry(touched.change.object)) touched.earlier->assign(&*present);
      }
      values.read(touched.change, *touched.entity, touched.earlier->get());
      touched.change.before.reset();
    }
    if (isEntryOfLog(*touched.entity)) {
      const auto present = context_.findLogEntry(touched.change.object);
      touched.isDerived = (present || touched.earlier) && (!present || isDerived(*present)) &&
                          (!touched.earlier || isDerived(asEntry(*touched.earlier)));
    } else {
      touched.isDerived = isDerived(context_, touched.change);
    }
  }
}

void CommandReversal::refuseWhatOthersTouched() {
  std::set<RowID> own;
  for (const Touched& touched : touched_)
    if (!touched.isDerived) own.insert(touched.row());
  for (const LaterChanges::OfCommand& later : later_->ofCommands())
    if (own.contains({later.change.entity, later.change.object}) && !isDerived(context_, later.change)) refuse(later);
}

void CommandReversal::refuseWhatOthersBuiltUpon() {
  std::set<RowID> inserted;
  for (const Touched& touched : touched_)
    if (touched.change.kind == ChangeKind::insertion && !touched.isDerived) inserted.insert(touched.row());
  if (inserted.empty()) return;
  for (const LaterChanges::OfCommand& later : later_->ofCommands()) {
    if (later.change.kind == ChangeKind::removal || isDerived(context_, later.change)) continue;
    for (const RowID& target : targetsOf(later.change))
      if (inserted.contains(target)) refuse(later);
  }
}

void CommandReversal::refuseWhatOthersRecordedInstead() {
  std::map<ObjectID, std::vector<const Touched*>> comingBack;
  for (const Touched& touched : touched_)
    if (isEntryOfLog(*touched.entity) && !touched.isDerived && comesBack(touched))
      comingBack[asEntry(*touched.earlier).task].push_back(&touched);
  if (comingBack.empty()) return;
  for (const LaterChanges::OfCommand& later : later_->ofCommands()) {
    if (later.change.entity != EntityNumber::taskLogEntry) continue;
    const auto entries = comingBack.find(later.change.task);
    if (entries == comingBack.end()) continue;
    const auto other = context_.findLogEntry(later.change.object);
    if (!other || isDerived(*other)) continue;
    for (const Touched* touched : entries->second)
      if (touched->change.object != other->objectID && excludeEachOther(asEntry(*touched->earlier), *other))
        refuse(later);
  }
}

bool CommandReversal::comesBack(const Touched& touched) {
  if (touched.change.kind == ChangeKind::removal) return true;
  if (touched.change.kind == ChangeKind::insertion) return false;
  // One that was changed comes back to where it was, or as what it was.
  const auto present = context_.findLogEntry(touched.change.object);
  const TaskLogEntryEntity& earlier = asEntry(*touched.earlier);
  return present && (present->task != earlier.task || periodOf(*present) != periodOf(earlier) ||
                     present->entryType != earlier.entryType);
}

void CommandReversal::checkReferences(Touched& touched) {
  if (!touched.earlier) return;
  const AttributeSet restored = toRestore(touched);
  for (std::size_t i = 0; i < touched.entity->attributes.size(); ++i) {
    const AttributeDescription& attribute = touched.entity->attributes[i];
    if (attribute.type != StoredType::reference || !restored.contains(i)) continue;
    ObjectID& target = *static_cast<ObjectID*>(attribute.field(touched.earlier->get()));
    const EntityDescription& entity = attribute.relationship.target();
    if (target == ObjectID::none || willBeThere(entity, target)) continue;
    for (const LaterChanges::OfCommand& later : later_->ofCommands())
      if (later.change.kind == ChangeKind::removal &&
          RowID(later.change.entity, later.change.object) == RowID(entity.number, target))
        refuse(later);
    // No person removed it, so no person's doing is lost with what led to it.
    if (attribute.relationship.whenTargetIsRemoved == DeleteRule::cascade) touched.isLeftOut = true;
    target = ObjectID::none;
  }
}

bool CommandReversal::willBeThere(const EntityDescription& entity, ObjectID id) {
  if (removed_.contains({entity.number, id})) return true;
  return isEntryOfLog(entity) ? context_.findLogEntry(id).has_value() : objects_.find(entity, id) != nullptr;
}

void CommandReversal::refuse(const LaterChanges::OfCommand& obstacle) {
  UndoStack::Error::Obstacle found{.command = obstacle.command->command(), .habit = habitOf(obstacle.change)};
  const std::string day = calendars_.ofDevice().day(found.command.moment).debugDescription();
  std::string message = fmt::format("{}: '{}' of {} came later and changed the same", commands_.refusal(target_),
                                    found.command.text, day);
  if (found.habit) message += fmt::format(" of '{}'", *found.habit);
  throw UndoStack::Error(UndoStack::Error::Reason::inTheWay, message + "; undo that first", std::move(found));
}

std::optional<std::string> CommandReversal::habitOf(const StoredChange& change) {
  const ObjectID id = taskOf(change);
  if (id == ObjectID::none) return std::nullopt;
  if (const TaskEntity* task = context_.find<TaskEntity>(id)) return task->title;
  // A habit that is gone bears its last title in the history of its removal.
  for (const LaterChanges::OfCommand& later : later_->ofCommands()) {
    TaskEntity task;
    if (later.change.entity == EntityNumber::task && later.change.object == id &&
        later.change.kind == ChangeKind::removal && restoreBefore(later.change, task))
      return task.title;
  }
  return std::nullopt;
}

ObjectID CommandReversal::taskOf(const StoredChange& change) {
  if (change.entity == EntityNumber::task) return change.object;
  for (const RowID& target : targetsOf(change))
    if (target.first == EntityNumber::task) return target.second;
  return ObjectID::none;
}

std::set<RowID> CommandReversal::targetsOf(const StoredChange& change) {
  if (change.entity == EntityNumber::taskLogEntry) return {{EntityNumber::task, change.task}};
  const EntityDescription& entity = *entityWithNumber(change.entity);
  OwnedObject before(entity);
  const void* object = objects_.find(entity, change.object);
  if (object == nullptr && restoreBefore(change, entity, before.get())) object = before.get();
  std::set<RowID> targets;
  if (object == nullptr) return targets;
  for (const AttributeDescription& attribute : entity.attributes) {
    if (attribute.type != StoredType::reference) continue;
    const ObjectID target = *static_cast<const ObjectID*>(attribute.field(const_cast<void*>(object)));
    if (target != ObjectID::none) targets.insert({attribute.relationship.target().number, target});
  }
  return targets;
}

AttributeSet CommandReversal::toRestore(const Touched& touched) const {
  if (touched.change.kind == ChangeKind::removal) return allAttributes(*touched.entity);
  std::uint64_t kept = later_->attributes(touched.row()).bits();
  // How far a task was processed follows from its log.
  if (touched.change.entity == EntityNumber::task)
    kept |= std::uint64_t{1} << TaskEntity::description().position("lastProcessedDate").value();
  return AttributeSet(touched.change.attributes.bits() & ~kept);
}

void CommandReversal::restore(const Touched& touched, void* object) const {
  assignAttributes(*touched.entity, toRestore(touched), object, touched.earlier->get());
}

void CommandReversal::putBackObjects() {
  for (Touched& touched : touched_) {
    if (isEntryOfLog(*touched.entity) || !touched.earlier || touched.isLeftOut) continue;
    const EntityDescription& entity = *touched.entity;
    const ObjectID id = touched.change.object;
    void* const present = objects_.find(entity, id);
    if (touched.change.kind == ChangeKind::removal) {
      if (present == nullptr) objects_.reinsert(entity, touched.earlier->get());
      if (entity.number == EntityNumber::task) rewind_->noteTask(id);
    } else if (present != nullptr) {
      restore(touched, present);
      const bool hasNewRules = (toRestore(touched).bits() & attributesOfRules().bits()) != 0;
      if (entity.number == EntityNumber::task && hasNewRules) rewind_->noteRules(id);
    }
  }
}

void CommandReversal::putBackEntries() {
  for (Touched& touched : touched_)
    if (isEntryOfLog(*touched.entity) && !touched.isLeftOut) putBackEntry(touched);
}

void CommandReversal::putBackEntry(Touched& touched) {
  const auto present = context_.findLogEntry(touched.change.object);
  switch (touched.change.kind) {
    case ChangeKind::insertion:
      if (!present) return;
      if (touched.isDerived) return rewind_->noteFilledIn(*present);
      rewind_->noteEntry(*present);
      context_.removeLogEntry(present->key());
      return;
    case ChangeKind::removal: {
      const TaskLogEntryEntity& earlier = asEntry(*touched.earlier);
      if (present) return;
      // Entries that went with their task come back with it.
      const bool comesWithTask = removed_.contains({EntityNumber::task, earlier.task});
      if (touched.isDerived && !comesWithTask) return rewind_->noteFilledInBefore(earlier);
      if (!touched.isDerived) rewind_->noteEntry(earlier);
      context_.reinsertLogEntry(earlier);
      return;
    }
    case ChangeKind::update: {
      if (!present) return;
      TaskLogEntryEntity restored = *present;
      restore(touched, &restored);
      rewind_->noteEntry(*present);
      rewind_->noteEntry(restored);
      context_.updateLogEntry(present->key(), restored);
      return;
    }
  }
}

void CommandReversal::removeInserted() {
  const std::set<RowID> putBack = rowsThatTheTargetPutBack();
  for (const Touched& touched : touched_) {
    if (touched.change.kind != ChangeKind::insertion || isEntryOfLog(*touched.entity)) continue;
    // Temporal data go with their task; without it they are worked out anew, but they stay one row.
    if (isDerived(touched.change.entity) && !putBack.contains(touched.row())) continue;
    if (void* const present = objects_.find(*touched.entity, touched.change.object))
      objects_.remove(*touched.entity, present);
  }
}

std::set<RowID> CommandReversal::rowsThatTheTargetPutBack() {
  std::set<RowID> putBack;
  if (!target_.transaction.undoes) return putBack;
  context_.readChanges(*target_.transaction.undoes, [&](const StoredChange& change) {
    const RowID row(change.entity, change.object);
    if (change.kind == ChangeKind::removal && rows_.contains(row)) putBack.insert(row);
  });
  return putBack;
}

}  // namespace habitra
