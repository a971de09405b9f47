#include <HabitraModel/MigratedDataCloudSummary.h>
#include <HabitraModel/Store/Engine/Connection.h>
#include <HabitraModel/Store/StoreContextParts.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>

#include <sqlite3.h>

#include <algorithm>
#include <optional>
#include <string_view>

namespace habitra {

namespace {

bool hasTable(Connection& connection, std::string_view name) {
  Statement table(connection, "SELECT 1 FROM sqlite_schema WHERE type='table' AND name=?");
  table.bind(1, name);
  return table.step();
}

std::set<qz::UniqueID> identifiersIn(Statement& rows) {
  std::set<qz::UniqueID> identifiers;
  while (rows.step())
    if (const auto identifier = qz::UniqueID::fromText(rows.text(0))) identifiers.insert(*identifier);
  return identifiers;
}

std::set<qz::UniqueID> tasksWithStatus(Connection& connection, std::string_view status) {
  Statement rows(connection, "SELECT uniqueId FROM TaskEntity WHERE status=?");
  rows.bind(1, status);
  return identifiersIn(rows);
}

std::map<std::string, std::string> textsOf(Statement& row) {
  std::map<std::string, std::string> texts;
  for (int column = 0; column < sqlite3_column_count(row.handle()); ++column)
    if (sqlite3_column_type(row.handle(), column) == SQLITE_TEXT && !row.text(column).empty())
      texts.emplace(sqlite3_column_name(row.handle(), column), row.text(column));
  return texts;
}

std::vector<MigratableOwner> ownersIn(Connection& connection) {
  std::vector<MigratableOwner> owners;
  if (!hasTable(connection, "TaskShareOwnerEntity") || !hasTable(connection, "TaskShareEntity")) return owners;
  Statement tasks(connection,
                  "SELECT t.uniqueId FROM TaskShareEntity s JOIN TaskEntity t ON t.objectID=s.task WHERE s.owner=?");
  Statement rows(connection, "SELECT objectID, * FROM TaskShareOwnerEntity");
  while (rows.step()) {
    MigratableOwner owner{.properties = textsOf(rows)};
    const auto text = [&owner](const char* name) {
      const auto found = owner.properties.find(name);
      return found == owner.properties.end() ? std::string() : found->second;
    };
    owner.cloudRecordIdentifier = {text("ckRecordIdRecordName"), text("ckRecordIdZoneName"),
                                   text("ckRecordIdZoneOwnerName")};
    tasks.bind(1, rows.integer(0));
    owner.taskIdentifiers = identifiersIn(tasks);
    tasks.reset();
    owners.push_back(std::move(owner));
  }
  std::sort(owners.begin(), owners.end());
  return owners;
}

}  // namespace

MigratedDataCloudSummary MigratedDataCloudSummary::of(Connection& connection) {
  return {.activeTasks = tasksWithStatus(connection, task_status::active),
          .archivedTasks = tasksWithStatus(connection, task_status::archived),
          .owners = ownersIn(connection)};
}

MigratedDataCloudSummary MigratedDataCloudSummary::of(StoreContext& context) {
  StoreContext::Parts& parts = *context.parts_;
  parts.beginView();
  return of(parts.unit.connection());
}

}  // namespace habitra
