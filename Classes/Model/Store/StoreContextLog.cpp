#include <HabitraModel/Store/Engine/RowCoding.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Store/StoreContextParts.h>
#include <QZKit/Trap.h>
#include <QZKit/UniqueID.h>

#include <fmt/format.h>
#include <sqlite3.h>

#include <cmath>
#include <type_traits>
#include <utility>

// The log, its checkpoints and the history: what a context reads and writes as values.
namespace habitra {

namespace {

/// Counts the reads that are under way.
class Reading {
 public:
  explicit Reading(int& count) : count_(count) { ++count_; }
  ~Reading() { --count_; }
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;

 private:
  int& count_;
};

/// The day that a query for a day and its row finds.
std::optional<std::int32_t> onlyDay(Query& query, ObjectID task, const EntityTable& log) {
  auto statement = query.use();
  statement->bind(1, rawValue(task));
  if (!statement->step()) return std::nullopt;
  const std::int64_t day = statement->integer(0);
  if (!std::in_range<std::int32_t>(day)) log.refuse(ObjectID{statement->integer(1)}, "entryDate");
  return static_cast<std::int32_t>(day);
}

}  // namespace

void StoreContext::readLog(ObjectID task, std::int32_t from, std::int32_t to, RowSink<LogRow> row) {
  parts_->beginView();
  const Reading reading(parts_->readingLog);
  auto statement = parts_->light.use();
  EntityTable::bindLogDays(*statement, task, from, to);
  // Straight from the engine: whoever rebuilds years of figures waits for nothing else.
  sqlite3_stmt* const handle = statement->handle();
  bool isSound = true;
  const auto integer = [handle, &isSound]<typename T>(int column, std::type_identity<T>) {
    const std::int64_t raw = sqlite3_column_int64(handle, column);
    isSound &= std::in_range<T>(raw);
    return static_cast<T>(raw);
  };
  const auto real = [handle, &isSound](int column) {
    const double value = sqlite3_column_double(handle, column);
    isSound &= std::isfinite(value);
    return value;
  };
  constexpr std::type_identity<std::int32_t> day;
  while (statement->step()) {
    const auto* letters = reinterpret_cast<const char*>(sqlite3_column_text(handle, 4));
    const auto count = letters == nullptr ? 0U : static_cast<std::size_t>(sqlite3_column_bytes(handle, 4));
    const LogRow found{.objectID = ObjectID{sqlite3_column_int64(handle, 0)},
                       .entryDate = integer(1, day),
                       .entryPeriodFrom = integer(2, day),
                       .entryPeriodTo = integer(3, day),
                       .entryPeriodType = std::string_view(letters == nullptr ? "" : letters, count),
                       .entryType = integer(5, std::type_identity<std::int16_t>{}),
                       .progress = real(6),
                       .progressTotal = real(7)};
    if (!isSound) parts_->table(TaskLogEntryEntity::description()).refuse(found.objectID);
    row(found);
  }
}

void StoreContext::readLogEntries(ObjectID task, std::int32_t from, std::int32_t to,
                                  RowSink<TaskLogEntryEntity> entry) {
  parts_->beginView();
  const Reading reading(parts_->readingLog);
  EntityTable& table = parts_->table(TaskLogEntryEntity::description());
  auto statement = table.betweenDays("task").use();
  EntityTable::bindLogDays(*statement, task, from, to);
  TaskLogEntryEntity row;
  while (statement->step()) {
    table.load(*statement, &row);
    entry(row);
  }
}

std::vector<TaskLogEntryEntity> StoreContext::fetchLogEntries(ObjectID task, std::int32_t from, std::int32_t to) {
  parts_->beginView();
  EntityTable& table = parts_->table(TaskLogEntryEntity::description());
  auto statement = table.betweenDays("task").use();
  EntityTable::bindLogDays(*statement, task, from, to);
  std::vector<TaskLogEntryEntity> entries;
  while (statement->step()) table.load(*statement, &entries.emplace_back());
  return entries;
}

std::vector<TaskLogEntryEntity> StoreContext::fetchLogEntries(std::string_view uniqueId) {
  parts_->beginView();
  EntityTable& table = parts_->table(TaskLogEntryEntity::description());
  auto rows = table.where("uniqueId").use();
  rows->bind(1, uniqueId);
  std::vector<TaskLogEntryEntity> entries;
  while (rows->step()) table.load(*rows, &entries.emplace_back());
  return entries;
}

std::optional<TaskLogEntryEntity> StoreContext::findLogEntry(std::string_view uniqueId) {
  parts_->beginView();
  auto rows = parts_->table(TaskLogEntryEntity::description()).where("uniqueId").use();
  rows->bind(1, uniqueId);
  return parts_->firstLogEntry(*rows);
}

std::optional<TaskLogEntryEntity> StoreContext::findLogEntry(const LogKey& key) {
  parts_->beginView();
  std::optional<TaskLogEntryEntity> entry(std::in_place);
  if (!parts_->table(TaskLogEntryEntity::description()).find(key, &*entry)) entry.reset();
  return entry;
}

std::optional<TaskLogEntryEntity> StoreContext::findLogEntry(ObjectID id) {
  parts_->beginView();
  auto rows = parts_->table(TaskLogEntryEntity::description()).where("objectID").use();
  rows->bind(1, rawValue(id));
  return parts_->firstLogEntry(*rows);
}

std::optional<std::int32_t> StoreContext::earliestEntryDay(ObjectID task) {
  parts_->beginView();
  return onlyDay(parts_->earliest, task, parts_->table(TaskLogEntryEntity::description()));
}

std::optional<std::int32_t> StoreContext::newestEntryDay(ObjectID task) {
  parts_->beginView();
  return onlyDay(parts_->newest, task, parts_->table(TaskLogEntryEntity::description()));
}

ObjectID StoreContext::insertLogEntry(const TaskLogEntryEntity& entry) {
  return parts_->writing([&] {
    qz::require(parts_->readingLog == 0, "the log is changed while it is read");
    parts_->flushInsertions();
    TaskLogEntryEntity& added = parts_->newEntry;
    added = entry;
    added.objectID = parts_->unit.nextObjectID();
    if (!added.uniqueId) added.uniqueId = qz::UniqueID::generate(store().clock().now()).text();
    parts_->writeNewLogEntry();
    return added.objectID;
  });
}

void StoreContext::reinsertLogEntry(const TaskLogEntryEntity& entry) {
  parts_->writing([&] {
    qz::require(parts_->readingLog == 0, "the log is changed while it is read");
    const EntityTable& table = parts_->requireFree(TaskLogEntryEntity::description(), entry.key());
    qz::require(!parts_->history.hasChange(parts_->unit.nextSequence(), table.entity().number, entry.objectID),
                "an entry of the log is put back by the unit that changed it");
    parts_->flushInsertions();
    parts_->newEntry = entry;
    parts_->writeNewLogEntry();
  });
}

void StoreContext::updateLogEntry(const LogKey& key, const TaskLogEntryEntity& entry) {
  parts_->writing([&] {
    const std::int64_t checksum = parts_->findStoredLogEntry(key);
    parts_->flushInsertions();
    EntityTable& table = parts_->table(TaskLogEntryEntity::description());
    const TaskLogEntryEntity& stored = parts_->logBuffer;
    TaskLogEntryEntity& updated = parts_->newEntry;
    updated = entry;
    updated.objectID = key.objectID;
    const AttributeSet changes = differences(table.entity(), &stored, &updated);
    if (changes.isEmpty()) return;
    // Damage that was there stays visible, as with objects.
    const std::int64_t damage = checksum ^ rowChecksum(table.entity(), &stored);
    table.update(key, changes, &updated, rowChecksum(table.entity(), &updated) ^ damage);
    parts_->count(parts_->history.recordUpdate(parts_->unit.nextSequence(), table, &stored, &updated, changes));
    parts_->keepsBefore = true;
    parts_->checkpoints.noteChange(stored);
    parts_->checkpoints.noteChange(updated);
  });
}

void StoreContext::removeLogEntry(const LogKey& key) {
  parts_->writing([&] {
    parts_->flushWhatLeadsToTheLog();
    parts_->removeLogEntry(key);
  });
}

std::optional<Checkpoint> StoreContext::checkpoint(ObjectID task) {
  parts_->beginView();
  if (parts_->unit.isWriting()) parts_->checkpoints.applyChanges();
  return parts_->checkpoints.read(task);
}

void StoreContext::setCheckpoint(ObjectID task, const Checkpoint& checkpoint) {
  parts_->writing([&] {
    parts_->flushInsertions();
    parts_->checkpoints.applyChanges();
    parts_->checkpoints.write(task, checkpoint);
    parts_->hasOwnRows = true;
  });
}

void StoreContext::putInOutbox(OutboxLink link, ObjectID task, qz::Moment due) {
  parts_->writing([&] {
    parts_->flushInsertions();
    parts_->outbox.put(link, task, due);
    parts_->hasOwnRows = true;
  });
}

std::vector<OutboxItem> StoreContext::outbox(OutboxLink link) {
  parts_->beginView();
  return parts_->outbox.read(link);
}

void StoreContext::removeFromOutbox(OutboxLink link, const OutboxItem& item) {
  parts_->writing([&] {
    parts_->outbox.remove(link, item);
    parts_->hasOwnRows = true;
  });
}

std::optional<std::string> StoreContext::healthAnchor(ObjectID task) {
  parts_->beginView();
  return parts_->healthAnchors.read(task);
}

void StoreContext::setHealthAnchor(ObjectID task, std::string_view anchor) {
  parts_->writing([&] {
    parts_->flushInsertions();
    parts_->healthAnchors.write(task, anchor);
    parts_->hasOwnRows = true;
  });
}

void StoreContext::removeHealthAnchor(ObjectID task) {
  if (!healthAnchor(task)) return;
  parts_->writing([&] {
    parts_->healthAnchors.remove(task);
    parts_->hasOwnRows = true;
  });
}

void StoreContext::readTransactions(std::int64_t afterSequence, RowSink<StoredTransaction> transaction,
                                    std::int64_t limit) {
  parts_->beginView();
  parts_->history.readTransactions(afterSequence, limit, transaction);
}

void StoreContext::readCommands(RowSink<StoredTransaction> transaction, std::int64_t limit) {
  parts_->beginView();
  parts_->history.readCommands(limit, transaction);
}

void StoreContext::readChanges(std::int64_t sequence, RowSink<StoredChange> change) {
  parts_->beginView();
  parts_->history.readChanges(sequence, change);
}

void StoreContext::readChanges(EntityNumber entity, std::int64_t after, std::int64_t last,
                               RowSink<StoredChange> change) {
  parts_->beginView();
  parts_->history.readChanges(entity, after, last, change);
}

std::int64_t StoreContext::oldestKeptSequence() {
  parts_->beginView();
  return parts_->history.oldestSequence().value_or(parts_->unit.nextSequence());
}

}  // namespace habitra
