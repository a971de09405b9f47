#include <HabitraModel/Store/RowCoding.h>
#include <HabitraModel/Store/StoreContextParts.h>
#include <QZKit/Trap.h>

#include <fmt/format.h>

namespace habitra {

StoreContext::Parts::Parts(std::shared_ptr<Store> store)
    : unit(std::move(store)),
      history(unit.connection()),
      checkpoints(unit.connection()),
      light(unit.connection(),
            "SELECT objectID, entryDate, entryPeriodFrom, entryPeriodTo, entryPeriodType, entryType, progress, "
            "progressTotal FROM TaskLogEntryEntity WHERE task=? AND entryDate BETWEEN ? AND ? "
            "ORDER BY entryDate, objectID"),
      earliest(unit.connection(),
               "SELECT entryDate FROM TaskLogEntryEntity WHERE task=? AND entryDate>0 ORDER BY entryDate LIMIT 1"),
      newest(unit.connection(),
             "SELECT entryDate FROM TaskLogEntryEntity WHERE task=? AND entryDate>0 ORDER BY entryDate DESC LIMIT 1") {}

EntityTable& StoreContext::Parts::table(const EntityDescription& entity) {
  const auto found = tables.find(entity.number);
  if (found != tables.end()) return found->second;
  return tables.try_emplace(entity.number, unit.connection(), entity).first->second;
}

void StoreContext::Parts::beginView() {
  if (unit.beginView())
    registry.refresh([this](const EntityDescription& entity) -> EntityTable& { return table(entity); });
}

void StoreContext::Parts::beginUnit() {
  if (unit.isWriting()) return;
  counts = {};
  if (unit.begin()) registry.refresh([this](const EntityDescription& entity) -> EntityTable& { return table(entity); });
}

void StoreContext::Parts::rollback() {
  unit.rollback();
  registry.rollback();
  checkpoints.forgetChanges();
  counts = {};
  hasCheckpoints = false;
  keepsBefore = false;
}

bool StoreContext::Parts::hasPendingObjects() {
  if (registry.hasUnwritten()) return true;
  for (auto& [id, entry] : registry.entries())
    if (!entry.changes().isEmpty()) return true;
  return false;
}

void StoreContext::Parts::flush() {
  for (auto& [id, entry] : registry.entries()) {
    if (!entry.isWritten) {
      writeInsertion(entry);
    } else if (const AttributeSet changes = entry.changes(); !changes.isEmpty()) {
      if (entry.hasConflict)
        throw StoreError(StoreError::Kind::conflict,
                         fmt::format("row {} of {} was changed by another program at the same time; try again",
                                     rawValue(id), entry.entity->name));
      writeUpdate(entry, changes);
    }
  }
}

void StoreContext::Parts::flushIfNeeded() {
  if (hasPendingObjects()) writing([this] { flush(); });
}

void StoreContext::Parts::beginSearch() {
  if (unit.isWriting())
    flushIfNeeded();
  else
    beginView();
}

std::vector<void*> StoreContext::Parts::objects(const EntityTable& rowTable, Statement& rows, bool onlyFirst) {
  std::vector<void*> found;
  while (rows.step()) {
    const ObjectRegistry::Entry& entry = registry.adopt(rowTable, rows);
    if (entry.isGone) continue;
    found.push_back(entry.live.get());
    if (onlyFirst) break;
  }
  return found;
}

void StoreContext::Parts::flushInsertions() {
  if (!registry.hasUnwritten()) return;
  for (auto& [id, entry] : registry.entries())
    if (!entry.isWritten) writeInsertion(entry);
}

void StoreContext::Parts::writeInsertion(ObjectRegistry::Entry& entry) {
  EntityTable& rows = table(*entry.entity);
  entry.checksum = rowChecksum(*entry.entity, entry.live.get());
  rows.insert(entry.live.get(), entry.checksum);
  history.recordInsertion(unit.nextSequence(), rows, entry.live.get());
  entry.stored.assign(entry.live.get());
  entry.isWritten = true;
  registry.noteWritten();
  ++counts.inserted;
}

void StoreContext::Parts::writeUpdate(ObjectRegistry::Entry& entry, AttributeSet changes) {
  EntityTable& rows = table(*entry.entity);
  entry.rememberBegun();
  // A row that did not match its checksum before must not match it now: writing does not heal what it has not seen.
  const std::int64_t damage = entry.checksum ^ rowChecksum(*entry.entity, entry.stored.get());
  entry.checksum = rowChecksum(*entry.entity, entry.live.get()) ^ damage;
  rows.update(rows.key(entry.stored.get()), changes, entry.live.get(), entry.checksum);
  history.recordUpdate(unit.nextSequence(), rows, entry.stored.get(), entry.live.get(), changes);
  keepsBefore = true;
  entry.stored.assign(entry.live.get());
  ++counts.updated;
}

void StoreContext::Parts::writeRemoval(ObjectRegistry::Entry& entry) {
  EntityTable& rows = table(*entry.entity);
  entry.rememberBegun();
  rows.erase(rows.key(entry.stored.get()));
  history.recordRemoval(unit.nextSequence(), rows, entry.stored.get());
  keepsBefore = true;
  entry.isGone = true;
  ++counts.removed;
}

void StoreContext::Parts::remove(ObjectRegistry::Entry& entry) {
  if (entry.isGone) return;
  for (const HeldRelationship& held : relationshipsTo(*entry.entity)) applyDeleteRule(held, entry.live.objectID());
  writeRemoval(entry);
}

void StoreContext::Parts::applyDeleteRule(const HeldRelationship& held, ObjectID target) {
  if (held.holder->layout == Layout::byTaskAndDay) {
    std::vector<LogKey> keys;
    {
      auto rows = light.use();
      EntityTable::bindDays(*rows, target, firstDay, lastDay);
      while (rows->step())
        keys.push_back({target, static_cast<std::int32_t>(rows->integer(1)), ObjectID{rows->integer(0)}});
    }
    for (const LogKey& key : keys) removeLogEntry(key);
    return;
  }
  EntityTable& rowTable = table(*held.holder);
  auto rows = rowTable.where(held.attribute->name).use();
  rows->bind(1, rawValue(target));
  for (void* related : objects(rowTable, *rows, false)) {
    ObjectRegistry::Entry& entry = registry.entry(*held.holder, related);
    if (held.attribute->relationship.whenTargetIsRemoved == DeleteRule::cascade) {
      remove(entry);
    } else {
      *static_cast<ObjectID*>(held.attribute->field(related)) = ObjectID::none;
      writeUpdate(entry, entry.changes());
    }
  }
}

std::deque<StoreContext::Parts::LogHolder>& StoreContext::Parts::holdersOfLogEntries() {
  if (logHolders.empty())
    for (const HeldRelationship& held : relationshipsTo(TaskLogEntryEntity::description()))
      logHolders.push_back({held, Query(unit.connection(), fmt::format("SELECT 1 FROM {} WHERE {}=? LIMIT 1",
                                                                       held.holder->name, held.attribute->name))});
  return logHolders;
}

void StoreContext::Parts::flushWhatLeadsToTheLog() {
  flushInsertions();
  // Without its table the context has no objects of an entity.
  for (const LogHolder& holder : holdersOfLogEntries())
    if (tables.contains(holder.held.holder->number)) return flush();
}

std::int64_t StoreContext::Parts::findStoredLogEntry(const LogKey& key) {
  qz::require(readingLog == 0, "the log is changed while it is read");
  const auto checksum = table(TaskLogEntryEntity::description()).find(key, &logBuffer);
  if (!checksum)
    throw StoreError(StoreError::Kind::conflict,
                     fmt::format("entry {} of the log has been moved or removed", rawValue(key.objectID)));
  return *checksum;
}

void StoreContext::Parts::removeLogEntry(const LogKey& key) {
  findStoredLogEntry(key);
  EntityTable& rows = table(TaskLogEntryEntity::description());
  rows.erase(key);
  history.recordRemoval(unit.nextSequence(), rows, &logBuffer);
  keepsBefore = true;
  checkpoints.noteChange(logBuffer);
  ++counts.removed;
  for (LogHolder& holder : holdersOfLogEntries()) {
    auto any = holder.any.use();
    any->bind(1, rawValue(key.objectID));
    if (any->step()) applyDeleteRule(holder.held, key.objectID);
  }
}

std::optional<TaskLogEntryEntity> StoreContext::Parts::firstLogEntry(Statement& rows) {
  std::optional<TaskLogEntryEntity> entry;
  if (rows.step()) table(TaskLogEntryEntity::description()).load(rows, &entry.emplace());
  return entry;
}

void StoreContext::Parts::writeNewLogEntry() {
  EntityTable& rows = table(TaskLogEntryEntity::description());
  rows.insert(&newEntry, rowChecksum(rows.entity(), &newEntry));
  history.recordInsertion(unit.nextSequence(), rows, &newEntry);
  checkpoints.noteChange(newEntry);
  ++counts.inserted;
}

const EntityTable& StoreContext::Parts::requireFree(const EntityDescription& entity, const LogKey& key) {
  qz::require(unit.hasGiven(key.objectID), "a row is put back under a number that was never given");
  EntityTable& rows = table(entity);
  OwnedObject present(entity);
  if (rows.find(key, present.get()))
    throw StoreError(StoreError::Kind::conflict,
                     fmt::format("row {} of {} is there and cannot be put back", rawValue(key.objectID), entity.name));
  return rows;
}

}  // namespace habitra
