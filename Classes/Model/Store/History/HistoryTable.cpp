#include <HabitraModel/Store/Engine/RowCoding.h>
#include <HabitraModel/Store/History/HistoryTable.h>
#include <HabitraModel/Store/StoreError.h>

#include <fmt/format.h>

#include <utility>

namespace habitra {

namespace {

StoredChange describe(std::int64_t sequence, const EntityTable& table, const void* object, ChangeKind kind) {
  const LogKey key = table.key(object);
  return {.sequence = sequence,
          .entity = table.entity().number,
          .object = key.objectID,
          .kind = kind,
          .task = key.task,
          .day = key.entryDate};
}

/// Refuses a row that says what no change can say.
void checkChange(Statement& row) {
  const std::int64_t number = row.integer(1);
  const EntityDescription* const entity =
      std::in_range<std::uint8_t>(number) ? entityWithNumber(static_cast<EntityNumber>(number)) : nullptr;
  const std::int64_t kind = row.integer(3);
  std::string_view fault;
  if (entity == nullptr)
    fault = "names an entity that this version does not have";
  else if (row.integer(2) <= 0)
    fault = "names no object";
  else if (kind < 1 || kind > 3)
    fault = "is of no known kind";
  else if ((static_cast<std::uint64_t>(row.integer(4)) & ~allAttributes(*entity).bits()) != 0)
    fault = "names an attribute that this version does not have";
  else if (!std::in_range<std::int32_t>(row.integer(6)))
    fault = "names no day";
  if (!fault.empty())
    throw StoreError(StoreError::Kind::damaged, fmt::format("a change of transaction {} {}", row.integer(0), fault));
}

template <typename T>
void bindOptional(Statement& statement, int parameter, const std::optional<T>& value) {
  if (value)
    statement.bind(parameter, *value);
  else
    statement.bindNull(parameter);
}

/// An object as it was when the transaction began: `later`, an object after an earlier change of it in the same
/// transaction, with that change taken back.
OwnedObject asItBegan(const EntityDescription& entity, const StoredChange& earlier, const void* later) {
  OwnedObject object(entity, later);
  restoreBefore(earlier, entity, object.get());
  return object;
}

}  // namespace

HistoryTable::HistoryTable(Connection& connection)
    : insertTransaction_(connection, "INSERT INTO habitra_transaction VALUES (?, ?, ?, ?, ?, ?, ?)"),
      dropBefore_(connection,
                  "UPDATE habitra_change SET before=NULL WHERE sequence=?1 AND before IS NOT NULL "
                  "AND NOT (entity=?2 AND kind=?3)"),
      transactions_(connection,
                    "SELECT sequence, author, writer, moment, command, undoes, backup FROM habitra_transaction "
                    "WHERE sequence>? ORDER BY sequence LIMIT ?"),
      commands_(connection,
                "SELECT sequence, author, writer, moment, command, undoes, backup FROM habitra_transaction "
                "WHERE command IS NOT NULL AND sequence>=? ORDER BY sequence DESC"),
      nthCommand_(connection,
                  "SELECT sequence FROM habitra_transaction WHERE command IS NOT NULL AND undoes IS NULL "
                  "ORDER BY sequence DESC LIMIT 1 OFFSET ?"),
      oldestCommand_(connection,
                     "SELECT sequence FROM habitra_transaction WHERE command IS NOT NULL ORDER BY sequence LIMIT 1"),
      oldest_(connection, "SELECT sequence FROM habitra_transaction ORDER BY sequence LIMIT 1"),
      changes_(connection,
               "SELECT sequence, entity, object, kind, attributes, task, day, before FROM habitra_change "
               "WHERE sequence=? ORDER BY entity, object"),
      changesOfEntity_(connection,
                       "SELECT c.sequence, c.entity, c.object, c.kind, c.attributes, c.task, c.day, c.before "
                       "FROM habitra_transaction t CROSS JOIN habitra_change c ON c.sequence=t.sequence AND c.entity=? "
                       "WHERE t.sequence>? AND t.sequence<=? ORDER BY t.sequence, c.object"),
      change_(connection,
              "SELECT sequence, entity, object, kind, attributes, task, day, before FROM habitra_change "
              "WHERE sequence=? AND entity=? AND object=?"),
      writeChange_(connection, "INSERT OR REPLACE INTO habitra_change VALUES (?, ?, ?, ?, ?, ?, ?, ?)"),
      eraseChange_(connection, "DELETE FROM habitra_change WHERE sequence=? AND entity=? AND object=?") {}

HistoryTable::Recorded HistoryTable::recordInsertion(std::int64_t sequence, const EntityTable& table,
                                                     const void* object) {
  StoredChange change = describe(sequence, table, object, ChangeKind::insertion);
  change.attributes = attributesWithValues(table.entity(), object);
  write(change);
  return {std::nullopt, ChangeKind::insertion};
}

HistoryTable::Recorded HistoryTable::recordUpdate(std::int64_t sequence, const EntityTable& table, const void* before,
                                                  const void* object, AttributeSet changed) {
  StoredChange change = describe(sequence, table, object, ChangeKind::update);
  change.attributes = changed;
  const auto earlier = find(sequence, change.entity, change.object);
  if (earlier && earlier->kind == ChangeKind::insertion) {
    recordInsertion(sequence, table, object);
    return {ChangeKind::insertion, ChangeKind::insertion};
  }
  Bytes encoded;
  if (earlier) {
    const OwnedObject began = asItBegan(table.entity(), *earlier, before);
    change.attributes = differences(table.entity(), began.get(), object);
    // What was changed and changed back was never changed for anybody.
    if (change.attributes.isEmpty()) {
      erase(*earlier);
      return {earlier->kind, std::nullopt};
    }
    encodeAttributes(table.entity(), began.get(), change.attributes, encoded);
  } else {
    encodeAttributes(table.entity(), before, change.attributes, encoded);
  }
  change.before = std::move(encoded);
  write(change);
  return {earlier ? std::optional(earlier->kind) : std::nullopt, ChangeKind::update};
}

HistoryTable::Recorded HistoryTable::recordRemoval(std::int64_t sequence, const EntityTable& table,
                                                   const void* before) {
  StoredChange change = describe(sequence, table, before, ChangeKind::removal);
  const auto earlier = find(sequence, change.entity, change.object);
  // What came and went within one transaction was never there for anybody.
  if (earlier && earlier->kind == ChangeKind::insertion) {
    erase(*earlier);
    return {ChangeKind::insertion, std::nullopt};
  }
  const AttributeSet all = allAttributes(table.entity());
  Bytes encoded;
  change.attributes =
      earlier ? encodeAttributes(table.entity(), asItBegan(table.entity(), *earlier, before).get(), all, encoded)
              : encodeAttributes(table.entity(), before, all, encoded);
  change.before = std::move(encoded);
  write(change);
  return {earlier ? std::optional(earlier->kind) : std::nullopt, ChangeKind::removal};
}

void HistoryTable::writeTransaction(const StoredTransaction& transaction) {
  auto statement = insertTransaction_.use();
  statement->bind(1, transaction.sequence);
  statement->bind(2, transaction.author);
  statement->bind(3, transaction.writer);
  statement->bind(4, std::int64_t{transaction.moment.time_since_epoch().count()});
  bindOptional(*statement, 5, transaction.command);
  bindOptional(*statement, 6, transaction.undoes);
  bindOptional(*statement, 7, transaction.backup);
  statement->step();
}

void HistoryTable::dropBefore(std::int64_t sequence) {
  auto statement = dropBefore_.use();
  statement->bind(1, sequence);
  statement->bind(2, static_cast<std::int64_t>(EntityNumber::healthKitRequest));
  statement->bind(3, static_cast<std::int64_t>(ChangeKind::removal));
  statement->step();
}

void HistoryTable::readTransactions(std::int64_t afterSequence, std::int64_t limit,
                                    const std::function<void(const StoredTransaction&)>& sink) {
  auto statement = transactions_.use();
  statement->bind(1, afterSequence);
  statement->bind(2, limit);
  while (statement->step()) sink(loadTransaction(*statement));
}

void HistoryTable::readCommands(std::int64_t limit, const std::function<void(const StoredTransaction&)>& sink) {
  const auto first = firstCommand(limit);
  if (!first) return;
  auto statement = commands_.use();
  statement->bind(1, *first);
  while (statement->step()) sink(loadTransaction(*statement));
}

std::optional<std::int64_t> HistoryTable::firstCommand(std::int64_t count) {
  auto nth = nthCommand_.use();
  nth->bind(1, count - 1);
  if (nth->step()) return nth->integer(0);
  auto oldest = oldestCommand_.use();
  return oldest->step() ? std::optional(oldest->integer(0)) : std::nullopt;
}

StoredTransaction HistoryTable::loadTransaction(Statement& statement) {
  const auto text = [&statement](int column) -> std::optional<std::string> {
    if (statement.isNull(column)) return std::nullopt;
    return std::string(statement.text(column));
  };
  return {.sequence = statement.integer(0),
          .author = std::string(statement.text(1)),
          .writer = std::string(statement.text(2)),
          .moment = qz::Moment(std::chrono::microseconds(statement.integer(3))),
          .command = text(4),
          .undoes = statement.isNull(5) ? std::nullopt : std::optional(statement.integer(5)),
          .backup = text(6)};
}

void HistoryTable::readChanges(std::int64_t sequence, const std::function<void(const StoredChange&)>& sink) {
  auto statement = changes_.use();
  statement->bind(1, sequence);
  while (statement->step()) sink(load(*statement));
}

void HistoryTable::readChanges(EntityNumber entity, std::int64_t after, std::int64_t last,
                               const std::function<void(const StoredChange&)>& sink) {
  auto statement = changesOfEntity_.use();
  statement->bind(1, static_cast<std::int64_t>(entity));
  statement->bind(2, after);
  statement->bind(3, last);
  while (statement->step()) sink(load(*statement));
}

std::optional<std::int64_t> HistoryTable::oldestSequence() {
  auto statement = oldest_.use();
  return statement->step() ? std::optional(statement->integer(0)) : std::nullopt;
}

std::optional<StoredChange> HistoryTable::find(std::int64_t sequence, EntityNumber entity, ObjectID object) {
  auto statement = change_.use();
  statement->bind(1, sequence);
  statement->bind(2, static_cast<std::int64_t>(entity));
  statement->bind(3, rawValue(object));
  if (!statement->step()) return std::nullopt;
  return load(*statement);
}

StoredChange HistoryTable::load(Statement& statement) {
  checkChange(statement);
  StoredChange change{.sequence = statement.integer(0),
                      .entity = static_cast<EntityNumber>(statement.integer(1)),
                      .object = ObjectID{statement.integer(2)},
                      .kind = static_cast<ChangeKind>(statement.integer(3)),
                      .attributes = AttributeSet(static_cast<std::uint64_t>(statement.integer(4))),
                      .task = ObjectID{statement.integer(5)},
                      .day = static_cast<std::int32_t>(statement.integer(6))};
  if (!statement.isNull(7)) change.before = statement.bytes(7);
  return change;
}

void HistoryTable::write(const StoredChange& change) {
  auto statement = writeChange_.use();
  statement->bind(1, change.sequence);
  statement->bind(2, static_cast<std::int64_t>(change.entity));
  statement->bind(3, rawValue(change.object));
  statement->bind(4, static_cast<std::int64_t>(change.kind));
  statement->bind(5, static_cast<std::int64_t>(change.attributes.bits()));
  statement->bind(6, rawValue(change.task));
  statement->bind(7, std::int64_t{change.day});
  bindOptional(*statement, 8, change.before);
  statement->step();
}

void HistoryTable::erase(const StoredChange& change) {
  auto statement = eraseChange_.use();
  statement->bind(1, change.sequence);
  statement->bind(2, static_cast<std::int64_t>(change.entity));
  statement->bind(3, rawValue(change.object));
  statement->step();
}

bool restoreBefore(const StoredChange& change, const EntityDescription& entity, void* object) {
  if (!change.before || change.kind == ChangeKind::insertion) return false;
  entity.objectID(object) = change.object;
  const AttributeSet which = change.kind == ChangeKind::removal ? allAttributes(entity) : change.attributes;
  if (!decodeAttributes(entity, *change.before, which, object))
    throw StoreError(StoreError::Kind::damaged, "the history of the store is damaged");
  return true;
}

}  // namespace habitra
