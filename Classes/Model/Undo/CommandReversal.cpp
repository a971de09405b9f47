#include <HabitraModel/Settings/Settings.h>
#include <HabitraModel/Store/Engine/RowCoding.h>
#include <HabitraModel/Store/Entities/SettingEntity.h>
#include <HabitraModel/Undo/CommandReversal.h>
#include <HabitraModel/Undo/DerivedRows.h>
#include <HabitraModel/Undo/UndoObstacles.h>

#include <algorithm>
#include <utility>

namespace habitra {

CommandReversal::CommandReversal(StoreContext& context, const TaskCalendars& calendars, const CommandList& commands,
                                 const CommandList::Entry& target)
    : context_(context), objects_(context), calendars_(calendars), commands_(commands), target_(target) {}

UndoStack::Undone CommandReversal::run() {
  readTouched();
  later_.emplace(context_, commands_, target_.transaction.sequence, scope());
  UndoObstacles(context_, calendars_, commands_, target_, *later_, touched_).check();

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
    const RowID row = touched_.back().row();
    rows_.insert(row);
    if (change.kind == ChangeKind::insertion) inserted_.insert(row);
    if (change.kind == ChangeKind::removal) removed_.insert(row);
  });
  for (TouchedRow& touched : touched_) readEarlier(touched, values);
}

void CommandReversal::readEarlier(TouchedRow& touched, EarlierValues& values) {
  const auto present = touched.isEntry() ? context_.findLogEntry(touched.change.object) : std::nullopt;
  if (!touched.wasInserted()) {
    touched.earlier.emplace(*touched.entity);
    // An update keeps only what it changed; the rest is as it is now.
    if (present) touched.earlier->assign(&*present);
    const void* const object = touched.isEntry() ? nullptr : objects_.find(*touched.entity, touched.change.object);
    if (object != nullptr) touched.earlier->assign(object);
    values.read(touched.change, *touched.entity, touched.earlier->get());
  }
  touched.isDerived = touched.isEntry() ? (present || touched.earlier) && (!present || isDerived(*present)) &&
                                              (!touched.earlier || isDerived(touched.earlierEntry()))
                                        : isDerived(context_, touched.change, values);
  touched.change.before.reset();
}

LaterChanges::Scope CommandReversal::scope() {
  LaterChanges::Scope scope{.rows = rows_};
  for (const TouchedRow& touched : touched_) {
    if (touched.wasInserted() && !touched.isDerived) scope.inserted.insert(touched.row());
    if (touched.change.entity == EntityNumber::task) scope.tasks.insert(touched.change.object);
    if (touched.change.entity == EntityNumber::setting) scope.tasks.merge(tasksOfSetting(touched));
    if (touched.isEntry()) {
      scope.tasks.insert(touched.change.task);
      // A deduplication may have led it over to another task.
      if (const auto present = context_.findLogEntry(touched.change.object)) scope.tasks.insert(present->task);
    }
    if (!touched.earlier) continue;
    for (const AttributeDescription& attribute : touched.entity->attributes) {
      if (attribute.type != StoredType::reference) continue;
      const ObjectID target = *static_cast<const ObjectID*>(attribute.field(touched.earlier->get()));
      if (target == ObjectID::none) continue;
      scope.targets.emplace(attribute.relationship.target().number, target);
      if (touched.isEntry()) scope.tasks.insert(target);
    }
  }
  return scope;
}

std::set<ObjectID> CommandReversal::tasksOfSetting(const TouchedRow& touched) {
  std::set<ObjectID> tasks;
  const void* const object =
      touched.earlier ? touched.earlier->get() : objects_.find(*touched.entity, touched.change.object);
  const auto* const setting = static_cast<const SettingEntity*>(object);
  if (setting == nullptr || !setting->settingKey) return tasks;
  for (const TaskEntity* task : context_.fetchAll<TaskEntity>())
    if (isRuleOf(*setting->settingKey, *task)) tasks.insert(task->objectID);
  return tasks;
}

AttributeSet CommandReversal::toRestore(const TouchedRow& touched) const {
  if (touched.wasRemoved()) return allAttributes(*touched.entity);
  std::uint64_t kept = later_->attributes(touched.row()).bits();
  // How far a task was processed follows from its log.
  if (touched.change.entity == EntityNumber::task)
    kept |= std::uint64_t{1} << TaskEntity::description().position("lastProcessedDate").value();
  return AttributeSet(touched.change.attributes.bits() & ~kept);
}

void CommandReversal::restore(const TouchedRow& touched, void* object) const {
  assignAttributes(*touched.entity, toRestore(touched), object, touched.earlier->get());
}

void CommandReversal::putBackObjects() {
  for (const TouchedRow& touched : touched_) {
    if (touched.change.entity == EntityNumber::setting)
      for (const ObjectID task : tasksOfSetting(touched)) rewind_->noteRules(task);
    if (!touched.isEntry() && touched.earlier && !touched.isLeftOut) putBackObject(touched);
  }
}

void CommandReversal::putBackObject(const TouchedRow& touched) {
  const ObjectID id = touched.change.object;
  const bool isTask = touched.change.entity == EntityNumber::task;
  void* const present = objects_.find(*touched.entity, id);
  if (touched.wasRemoved()) {
    if (present == nullptr) objects_.reinsert(*touched.entity, touched.earlier->get());
    if (isTask) rewind_->noteTask(id);
  } else if (present != nullptr) {
    restore(touched, present);
    const bool hasNewRules = (toRestore(touched).bits() & attributesOfRules().bits()) != 0;
    if (isTask && hasNewRules) rewind_->noteRules(id);
  }
}

void CommandReversal::putBackEntries() {
  for (const TouchedRow& touched : touched_) {
    if (!touched.isEntry() || touched.isLeftOut) continue;
    switch (touched.change.kind) {
      case ChangeKind::insertion: takeOutEntry(touched); break;
      case ChangeKind::removal: putBackEntry(touched); break;
      case ChangeKind::update: changeBackEntry(touched); break;
    }
  }
}

void CommandReversal::takeOutEntry(const TouchedRow& touched) {
  const auto present = context_.findLogEntry(touched.change.object);
  // What was added with its task goes with it.
  if (!present || inserted_.contains({EntityNumber::task, present->task})) return;
  if (touched.isDerived) return rewind_->noteFilledIn(*present);
  rewind_->noteEntry(*present);
  context_.removeLogEntry(present->key());
}

void CommandReversal::putBackEntry(const TouchedRow& touched) {
  if (context_.findLogEntry(touched.change.object)) return;
  const TaskLogEntryEntity& earlier = touched.earlierEntry();
  // Entries that went with their task come back with it.
  const bool comesWithTask = removed_.contains({EntityNumber::task, earlier.task});
  if (touched.isDerived && !comesWithTask) return rewind_->noteFilledInBefore(earlier);
  if (!touched.isDerived) rewind_->noteEntry(earlier);
  context_.reinsertLogEntry(earlier);
}

void CommandReversal::changeBackEntry(const TouchedRow& touched) {
  const auto present = context_.findLogEntry(touched.change.object);
  if (!present) return;
  TaskLogEntryEntity restored = *present;
  restore(touched, &restored);
  rewind_->noteEntry(*present);
  rewind_->noteEntry(restored);
  context_.updateLogEntry(present->key(), restored);
}

void CommandReversal::removeInserted() {
  const std::set<RowID> putBack = rowsThatTheTargetPutBack();
  for (const TouchedRow& touched : touched_) {
    if (!touched.wasInserted() || touched.isEntry()) continue;
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
