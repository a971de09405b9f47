#include <HabitraModel/Store/Engine/Schema.h>
#include <HabitraModel/Store/EntityDescription.h>
#include <HabitraModel/Store/Store.h>

#include <fmt/format.h>

namespace habitra {

namespace {

std::string_view columnType(StoredType type) {
  switch (type) {
    case StoredType::real: return "REAL";
    case StoredType::text: return "TEXT";
    case StoredType::bytes: return "BLOB";
    default: return "INTEGER";
  }
}

bool isPartOfLogKey(const EntityDescription& entity, const AttributeDescription& attribute) {
  return entity.layout == Layout::byTaskAndDay && (attribute.name == "task" || attribute.name == entity.dayAttribute);
}

std::string columnDefinition(const EntityDescription& entity, const AttributeDescription& attribute) {
  std::string column = fmt::format("{} {}", attribute.name, columnType(attribute.type));
  if (isPartOfLogKey(entity, attribute)) return column + " NOT NULL";
  if (attribute.type == StoredType::reference) {
    return column +
           fmt::format(" REFERENCES {}(objectID) DEFERRABLE INITIALLY DEFERRED", attribute.relationship.target().name);
  }
  return attribute.isOptional ? column : column + " NOT NULL DEFAULT 0";
}

/// An index that finds rows by the attribute. Those that a relationship leads from lie in it by their day. Fetches ask
/// with IS, and SQLite takes an index of some rows only for the comparison that it was made with.
std::string indexDefinition(const EntityDescription& entity, const AttributeDescription& attribute) {
  const bool isByDay = attribute.type == StoredType::reference && !entity.dayAttribute.empty();
  const std::string_view text = attribute.indexedText;
  const std::string rows = text.empty() ? "" : fmt::format(" WHERE {} IS '{}'", attribute.name, text);
  return fmt::format("CREATE INDEX {0}_{1} ON {0}({1}{2}{3}){4};\n", entity.name, attribute.name, isByDay ? ", " : "",
                     isByDay ? entity.dayAttribute : "", rows);
}

/// The store's own tables. History of a transaction lies together, one row per object; the newest numbers stand in
/// habitra_meta, so that they stay when history is trimmed. Commands are few among the transactions of passes, so they
/// have an index.
constexpr std::string_view ownTables = R"(
CREATE TABLE habitra_meta (
  id INTEGER PRIMARY KEY CHECK (id = 1),
  storeIdentifier TEXT NOT NULL,
  newestObjectID INTEGER NOT NULL,
  newestSequence INTEGER NOT NULL,
  newestMoment INTEGER
) STRICT;
CREATE TABLE habitra_transaction (
  sequence INTEGER PRIMARY KEY,
  author TEXT NOT NULL,
  writer TEXT NOT NULL,
  moment INTEGER NOT NULL,
  command TEXT,
  undoes INTEGER,
  backup TEXT
) STRICT;
CREATE INDEX habitra_transaction_command ON habitra_transaction(sequence) WHERE command IS NOT NULL;
CREATE TABLE habitra_change (
  sequence INTEGER NOT NULL,
  entity INTEGER NOT NULL,
  object INTEGER NOT NULL,
  kind INTEGER NOT NULL,
  attributes INTEGER NOT NULL,
  task INTEGER NOT NULL,
  day INTEGER NOT NULL,
  before BLOB,
  PRIMARY KEY (sequence, entity, object)
) STRICT, WITHOUT ROWID;
CREATE TABLE habitra_checkpoint (
  task INTEGER PRIMARY KEY REFERENCES TaskEntity(objectID) ON DELETE CASCADE,
  closedThrough INTEGER NOT NULL,
  fingerprint INTEGER NOT NULL,
  content BLOB NOT NULL,
  checksum INTEGER NOT NULL
) STRICT;
CREATE TABLE habitra_outbox (
  link TEXT NOT NULL,
  task INTEGER NOT NULL REFERENCES TaskEntity(objectID) ON DELETE CASCADE,
  due INTEGER NOT NULL,
  revision INTEGER NOT NULL,
  PRIMARY KEY (link, task)
) STRICT, WITHOUT ROWID;
CREATE TABLE habitra_health_anchor (
  task INTEGER PRIMARY KEY REFERENCES TaskEntity(objectID) ON DELETE CASCADE,
  anchor TEXT NOT NULL
) STRICT;
)";

}  // namespace

std::string tableDefinition(const EntityDescription& entity) {
  const bool isLog = entity.layout == Layout::byTaskAndDay;
  std::string sql =
      fmt::format("CREATE TABLE {} (\n  objectID INTEGER {},\n", entity.name, isLog ? "NOT NULL" : "PRIMARY KEY");
  for (const AttributeDescription& attribute : entity.attributes)
    sql += fmt::format("  {},\n", columnDefinition(entity, attribute));
  sql += "  checksum INTEGER NOT NULL";
  if (isLog) {
    // The key cannot be NULL, so entries without a task hold 0; the foreign key reads that as NULL. It has no index:
    // only the removal of a task needs one, and a scan then costs less than an index would at every insertion.
    sql += fmt::format(
        ",\n  taskReference INTEGER GENERATED ALWAYS AS (nullif(task, 0)) VIRTUAL REFERENCES TaskEntity(objectID),\n"
        "  PRIMARY KEY (task, {1}, objectID)\n) STRICT, WITHOUT ROWID;\n"
        "CREATE UNIQUE INDEX {0}_objectID ON {0}(objectID);\n",
        entity.name, entity.dayAttribute);
  } else {
    sql += "\n) STRICT;\n";
  }
  for (const AttributeDescription& attribute : entity.attributes)
    if (attribute.isIndexed && !isPartOfLogKey(entity, attribute)) sql += indexDefinition(entity, attribute);
  return sql;
}

std::string_view ownTableDefinitions() { return ownTables; }

std::string schemaDefinition(const std::string& storeIdentifier) {
  std::string sql;
  for (const EntityDescription* entity : allEntities()) sql += tableDefinition(*entity);
  sql += ownTables;
  sql += fmt::format("INSERT INTO habitra_meta VALUES (1, '{}', 0, 0, NULL);\n", storeIdentifier);
  sql +=
      fmt::format("PRAGMA application_id={};\nPRAGMA user_version={};\n", Store::applicationID, Store::schemaVersion);
  return sql;
}

}  // namespace habitra
