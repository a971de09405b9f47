#include <HabitraModel/Store/Engine/EntityTable.h>
#include <HabitraModel/Store/Engine/RowCoding.h>
#include <HabitraModel/Store/OwnedObject.h>
#include <HabitraModel/Store/RowVerification.h>
#include <HabitraModel/Store/StoreError.h>

#include <fmt/format.h>

#include <set>
#include <string>

namespace habitra {

namespace {

std::set<std::string, std::less<>> columnsOf(Connection& connection, std::string_view table) {
  std::set<std::string, std::less<>> names;
  Statement columns(connection, "SELECT name FROM pragma_table_info(?)");
  columns.bind(1, table);
  while (columns.step()) names.emplace(columns.text(0));
  return names;
}

/// What a row that lacks the column holds in it.
std::string_view defaultOf(const AttributeDescription& attribute) {
  if (attribute.isOptional || attribute.type == StoredType::reference) return "NULL";
  return attribute.type == StoredType::real ? "0.0" : "0";
}

/// The columns as EntityTable reads them.
std::string selectAll(const EntityDescription& entity, const std::set<std::string, std::less<>>& columns) {
  std::string sql = "SELECT objectID, checksum";
  for (const AttributeDescription& attribute : entity.attributes)
    sql += fmt::format(", {}", columns.contains(attribute.name) ? attribute.name : defaultOf(attribute));
  return sql + fmt::format(" FROM {} NOT INDEXED", entity.name);
}

}  // namespace

RowVerification RowVerification::of(Connection& connection) {
  RowVerification result;
  for (const EntityDescription* entity : allEntities()) {
    const auto columns = columnsOf(connection, entity->name);
    if (columns.empty()) continue;
    const EntityTable table(connection, *entity);
    const OwnedObject row(*entity);
    Statement rows(connection, selectAll(*entity, columns));
    while (rows.step()) {
      ++result.rows[entity->number];
      try {
        if (table.load(rows, row.get()) != rowChecksum(*entity, row.get()))
          result.damaged.push_back({entity->number, row.objectID(), "does not match its checksum"});
      } catch (const StoreError& error) {
        result.damaged.push_back({entity->number, row.objectID(), error.what()});
      }
    }
  }
  return result;
}

}  // namespace habitra
