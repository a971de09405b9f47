#include <HabitraModel/Store/Entities/SettingEntity.h>
#include <HabitraModel/Store/StoredObjects.h>
#include <HabitraModel/Undo/DerivedRows.h>
#include <HabitraModel/Undo/LaterChanges.h>

#include <algorithm>
#include <utility>

namespace habitra {

namespace {

/// What a transaction removed, so that its undo put it back.
std::set<ObjectID> entriesRemovedBy(StoreContext& context, std::int64_t sequence) {
  std::set<ObjectID> removed;
  context.readChanges(sequence, [&removed](const StoredChange& change) {
    if (change.entity == EntityNumber::taskLogEntry && change.kind == ChangeKind::removal)
      removed.insert(change.object);
  });
  return removed;
}

/// What the object leads to.
std::set<RowID> targetsOf(const EntityDescription& entity, void* object) {
  std::set<RowID> targets;
  for (const AttributeDescription& attribute : entity.attributes) {
    if (attribute.type != StoredType::reference) continue;
    const ObjectID target = *static_cast<const ObjectID*>(attribute.field(object));
    if (target != ObjectID::none) targets.emplace(attribute.relationship.target().number, target);
  }
  return targets;
}

std::optional<std::string> nameOf(EntityNumber entity, const void* object) {
  if (entity == EntityNumber::task) return static_cast<const TaskEntity*>(object)->title;
  if (entity == EntityNumber::setting) return static_cast<const SettingEntity*>(object)->settingKey;
  return std::nullopt;
}

}  // namespace

ObjectID LaterChanges::OfCommand::task() const {
  if (change.entity == EntityNumber::task) return change.object;
  const auto task = std::ranges::find(targets, EntityNumber::task, &RowID::first);
  return task == targets.end() ? ObjectID::none : task->second;
}

LaterChanges::LaterChanges(StoreContext& context, const CommandList& commands, std::int64_t sequence, Scope scope)
    : context_(context), commands_(commands), scope_(std::move(scope)) {
  std::vector<StoredTransaction> later;
  context.readTransactions(sequence, [&later](const StoredTransaction& transaction) { later.push_back(transaction); });
  for (const StoredTransaction& transaction : later) read(transaction, commands.find(transaction.sequence));
}

void LaterChanges::read(const StoredTransaction& transaction, const CommandList::Entry* command) {
  // A command that was taken back and its undo have come to nothing.
  const bool cameToNothing = command != nullptr && !command->stands();
  std::set<ObjectID> putBack;
  if (transaction.undoes) putBack = entriesRemovedBy(context_, *transaction.undoes);
  std::vector<StoredChange> ofScope;
  context_.readChanges(transaction.sequence, [&](const StoredChange& change) {
    if (change.kind != ChangeKind::update && change.entity != EntityNumber::taskLogEntry)
      comingsAndGoings_.emplace(RowID(change.entity, change.object), change.kind);
    if (change.kind == ChangeKind::insertion && !putBack.contains(change.object))
      noteInsertion(change, cameToNothing ? nullptr : command);
    if (cameToNothing) return;
    const RowID row(change.entity, change.object);
    if (scope_.rows.contains(row)) attributes_[row] = attributes_[row] | change.attributes;
    if (command != nullptr && isOfScope(change)) ofScope.push_back(change);
  });
  if (ofScope.empty()) return;
  EarlierValues values(context_, transaction, commands_.refusal(*command));
  for (StoredChange& change : ofScope) ofCommands_.push_back(described(std::move(change), *command, values));
}

void LaterChanges::noteInsertion(const StoredChange& change, const CommandList::Entry* command) {
  const bool isEntry = change.entity == EntityNumber::taskLogEntry;
  if (isEntry && !scope_.tasks.contains(change.task)) return;
  if (command != nullptr) inserters_.emplace(RowID(change.entity, change.object), command);
  if (!isEntry) return;
  insertedEntries_.insert(change.object);
  std::int32_t& first = firstInsertedDays_.emplace(change.task, change.day).first->second;
  first = std::min(first, change.day);
}

bool LaterChanges::isOfScope(const StoredChange& change) const {
  const RowID row(change.entity, change.object);
  if (scope_.rows.contains(row) || scope_.targets.contains(row)) return true;
  if (change.entity == EntityNumber::taskLogEntry) return scope_.tasks.contains(change.task);
  if (change.entity == EntityNumber::setting) return true;
  if (change.entity == EntityNumber::task && scope_.tasks.contains(change.object)) return true;
  if (change.kind == ChangeKind::removal || scope_.inserted.empty()) return false;
  // It may lead to a row that was added.
  return std::ranges::any_of(entityWithNumber(change.entity)->attributes, [](const AttributeDescription& attribute) {
    return attribute.type == StoredType::reference;
  });
}

auto LaterChanges::described(StoredChange change, const CommandList::Entry& command, EarlierValues& values)
    -> OfCommand {
  OfCommand later{.command = &command, .change = std::move(change)};
  later.isDerived = isDerived(context_, later.change, values);
  if (later.change.entity == EntityNumber::taskLogEntry) {
    if (later.change.task != ObjectID::none) later.targets.emplace(EntityNumber::task, later.change.task);
  } else {
    const EntityDescription& entity = *entityWithNumber(later.change.entity);
    OwnedObject before(entity);
    void* object = StoredObjects(context_).find(entity, later.change.object);
    if (object == nullptr && values.readIfKnown(later.change, entity, before.get())) object = before.get();
    if (object != nullptr) {
      later.targets = targetsOf(entity, object);
      later.name = nameOf(entity.number, object);
    }
  }
  later.change.before.reset();
  return later;
}

const CommandList::Entry* LaterChanges::inserter(const RowID& row) const {
  const auto found = inserters_.find(row);
  return found == inserters_.end() ? nullptr : found->second;
}

AttributeSet LaterChanges::attributes(const RowID& row) const {
  const auto found = attributes_.find(row);
  return found == attributes_.end() ? AttributeSet() : found->second;
}

bool LaterChanges::hasComeLater(const RowID& object) const {
  const auto first = comingsAndGoings_.find(object);
  return first != comingsAndGoings_.end() && first->second == ChangeKind::insertion;
}

std::int32_t LaterChanges::firstInsertedDay(ObjectID task) const {
  const auto found = firstInsertedDays_.find(task);
  return found == firstInsertedDays_.end() ? StoreContext::lastDay : found->second;
}

}  // namespace habitra
