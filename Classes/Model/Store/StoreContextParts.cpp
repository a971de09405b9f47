#include <HabitraModel/Store/Engine/RowCoding.h>
#include <HabitraModel/Store/StoreContextParts.h>
#include <QZKit/Trap.h>

#include <fmt/format.h>

namespace habitra {

StoreContext::Parts::Parts(std::shared_ptr<Store> store)
    : unit(std::move(store)),
      history(unit.connection()),
      checkpoints(unit.connection()),
      outbox(unit.connection()),
      healthAnchors(unit.connection()),
      light(unit.connection(),
            "SELECT objectID, entryDate, entryPeriodFrom, entryPeriodTo, entryPeriodType, entryType, progress, "
            "progressTotal FROM TaskLogEntryEntity WHERE task=? AND entryDate BETWEEN ? AND ? "
            "ORDER BY entryDate, objectID"),
      earliest(unit.connection(),
               "SELECT entryDate, objectID FROM TaskLogEntryEntity WHERE task=? AND entryDate>0 "
               "ORDER BY entryDate LIMIT 1"),
      newest(unit.connection(),
             "SELECT entryDate, objectID FROM TaskLogEntryEntity WHERE task=? AND entryDate>0 "
             "ORDER BY entryDate DESC LIMIT 1") {}

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
  hasOwnRows = hasRows = keepsBefore = false;
  undone.reset();
}

void StoreContext::Parts::flush() {
  flushInsertions();
  registry.visit([this](ObjectRegistry::Entry& entry) { writeIfChanged(entry); });
}

void StoreContext::Parts::flushIfNeeded() {
  if (registry.hasPending()) writing([this] { flush(); });
}

void StoreContext::Parts::beginSearch(const EntityDescription& entity,
                                      std::initializer_list<std::string_view> attributes) {
  if (unit.isWriting())
    writing([&] { flushForSearch(entity, attributes); });
  else
    beginView();
}

void StoreContext::Parts::flushForSearch(const EntityDescription& entity,
                                         std::initializer_list<std::string_view> attributes) {
  for (ObjectRegistry::Entry* const entry : registry.takeUnwritten(entity)) writeInsertion(*entry);
  AttributeSet decisive;
  for (const std::string_view attribute : attributes)
    if (const auto position = entity.position(attribute)) decisive.insert(*position);
  if (decisive.isEmpty()) return;
  for (auto& [id, entry] : registry.entries(entity))
    if (entry.isChanged(decisive)) writeIfChanged(entry);
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
  for (ObjectRegistry::Entry* const entry : registry.takeUnwritten()) writeInsertion(*entry);
}

void StoreContext::Parts::writeIfChanged(ObjectRegistry::Entry& entry) {
  const AttributeSet changes = entry.changes();
  if (changes.isEmpty()) return;
  if (entry.isGone || entry.hasConflict)
    throw StoreError(
        StoreError::Kind::conflict,
        fmt::format("row {} of {} was {} by another program at the same time; try again",
                    rawValue(entry.live.objectID()), entry.entity->name, entry.isGone ? "removed" : "changed"));
  writeUpdate(entry, changes);
}

void StoreContext::Parts::count(const HistoryTable::Recorded& recorded) {
  const auto counted = [this](ChangeKind kind) -> std::int64_t& {
    switch (kind) {
      case ChangeKind::insertion: return counts.inserted;
      case ChangeKind::update: return counts.updated;
      case ChangeKind::removal: break;
    }
    return counts.removed;
  };
  hasRows = true;
  if (recorded.earlier) --counted(*recorded.earlier);
  if (recorded.now) ++counted(*recorded.now);
}

StoredTransaction StoreContext::Parts::writeTransaction(const SaveRequest& request, const SaveResult& written,
                                                        UndoBackup& backup) {
  StoredTransaction transaction{.sequence = unit.nextSequence(),
                                .author = std::string(rawValue(request.author)),
                                .writer = unit.store().writer(),
                                .moment = unit.store().clock().now(),
                                .command = request.command,
                                .undoes = request.undoes,
                                .backup = request.backup};
  const bool isBig = request.command && !request.backup && !unit.store().isInMemory() &&
                     written.inserted + written.updated + written.removed > UndoBackup::rowsOfBigCommand;
  if (isBig) transaction.backup = backup.make(transaction.sequence, unit.storeIdentifier());
  history.writeTransaction(transaction);
  if (keepsBefore && (!request.command || isBig)) history.dropBefore(transaction.sequence);
  return transaction;
}

void StoreContext::Parts::writeInsertion(ObjectRegistry::Entry& entry) {
  EntityTable& rows = table(*entry.entity);
  entry.checksum = rowChecksum(*entry.entity, entry.live.get());
  rows.insert(entry.live.get(), entry.checksum);
  count(history.recordInsertion(unit.nextSequence(), rows, entry.live.get()));
  entry.stored.assign(entry.live.get());
  entry.isWritten = true;
}

void StoreContext::Parts::writeUpdate(ObjectRegistry::Entry& entry, AttributeSet changes) {
  EntityTable& rows = table(*entry.entity);
  entry.rememberBegun();
  // A row that did not match its checksum before must not match it now: writing does not heal what it has not seen.
  const std::int64_t damage = entry.checksum ^ rowChecksum(*entry.entity, entry.stored.get());
  entry.checksum = rowChecksum(*entry.entity, entry.live.get()) ^ damage;
  rows.update(rows.key(entry.stored.get()), changes, entry.live.get(), entry.checksum);
  count(history.recordUpdate(unit.nextSequence(), rows, entry.stored.get(), entry.live.get(), changes));
  keepsBefore = true;
  entry.stored.assign(entry.live.get());
}

void StoreContext::Parts::writeRemoval(ObjectRegistry::Entry& entry) {
  EntityTable& rows = table(*entry.entity);
  entry.rememberBegun();
  rows.erase(rows.key(entry.stored.get()));
  count(history.recordRemoval(unit.nextSequence(), rows, entry.stored.get()));
  keepsBefore = true;
  entry.isGone = true;
}

void StoreContext::Parts::remove(ObjectRegistry::Entry& entry) {
  // What somebody else has removed is as it is wanted, whatever was changed here before.
  if (entry.isGone) return entry.live.assign(entry.stored.get());
  writeIfChanged(entry);
  for (const HeldRelationship& held : relationshipsTo(*entry.entity)) applyDeleteRule(held, entry.live.objectID());
  writeRemoval(entry);
}

void StoreContext::Parts::applyDeleteRule(const HeldRelationship& held, ObjectID target) {
  if (held.holder->layout == Layout::byTaskAndDay) {
    flushWhatLeadsToTheLog();
    std::vector<LogKey> keys;
    {
      auto rows = light.use();
      EntityTable::bindLogDays(*rows, target, firstDay, lastDay);
      while (rows->step())
        keys.push_back({target, static_cast<std::int32_t>(rows->integer(1)), ObjectID{rows->integer(0)}});
    }
    for (const LogKey& key : keys) removeLogEntry(key);
    return;
  }
  flushForSearch(*held.holder, {held.attribute->name});
  EntityTable& rowTable = table(*held.holder);
  auto rows = rowTable.where(held.attribute->name).use();
  rows->bind(1, rawValue(target));
  for (void* related : objects(rowTable, *rows, false)) {
    ObjectRegistry::Entry& entry = registry.entry(*held.holder, related);
    if (held.attribute->relationship.whenTargetIsRemoved == DeleteRule::cascade) {
      remove(entry);
    } else {
      *static_cast<ObjectID*>(held.attribute->field(related)) = ObjectID::none;
      writeIfChanged(entry);
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
  for (const LogHolder& holder : holdersOfLogEntries())
    flushForSearch(*holder.held.holder, {holder.held.attribute->name});
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
  count(history.recordRemoval(unit.nextSequence(), rows, &logBuffer));
  keepsBefore = true;
  checkpoints.noteChange(logBuffer);
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
  count(history.recordInsertion(unit.nextSequence(), rows, &newEntry));
  checkpoints.noteChange(newEntry);
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
