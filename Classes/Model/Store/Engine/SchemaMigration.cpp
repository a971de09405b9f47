#include <HabitraModel/MigratedDataCloudSummary.h>
#include <HabitraModel/Store/Engine/Migrations.h>
#include <HabitraModel/Store/Engine/SchemaMigration.h>
#include <HabitraModel/Store/RowVerification.h>
#include <HabitraModel/Store/StoreError.h>
#include <QZLog/Log.h>

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace habitra {

namespace {

/// All that a migration must not change.
struct Holdings {
  std::map<EntityNumber, std::int64_t> rows;
  std::vector<std::pair<EntityNumber, ObjectID>> damaged;  ///< in ascending order
  std::vector<std::string> brokenReferences;               ///< in ascending order
  MigratedDataCloudSummary summary;
};

std::vector<std::string> brokenReferencesIn(Connection& connection) {
  std::vector<std::string> references;
  Statement check(connection, "PRAGMA foreign_key_check");
  // The number of the reference is left out: it may be another one after a migration.
  while (check.step()) references.push_back(fmt::format("{} {} {}", check.text(0), check.integer(1), check.text(2)));
  std::sort(references.begin(), references.end());
  return references;
}

Holdings holdingsOf(Connection& connection) {
  RowVerification verification = RowVerification::of(connection);
  Holdings holdings{.rows = std::move(verification.rows),
                    .brokenReferences = brokenReferencesIn(connection),
                    .summary = MigratedDataCloudSummary::of(connection)};
  for (const DamagedRow& row : verification.damaged) holdings.damaged.emplace_back(row.entity, row.object);
  std::sort(holdings.damaged.begin(), holdings.damaged.end());
  return holdings;
}

/// What is worse than it was; none when nothing is.
std::optional<std::string> lossBetween(const Holdings& before, const Holdings& after) {
  for (const auto& [entity, count] : before.rows) {
    const auto found = after.rows.find(entity);
    const std::int64_t left = found == after.rows.end() ? 0 : found->second;
    if (left < count) return fmt::format("{} rows of {} would be lost", count - left, entityWithNumber(entity)->name);
  }
  std::vector<std::pair<EntityNumber, ObjectID>> damaged;
  std::set_difference(after.damaged.begin(), after.damaged.end(), before.damaged.begin(), before.damaged.end(),
                      std::back_inserter(damaged));
  if (!damaged.empty()) {
    const auto& [entity, object] = damaged.front();
    return fmt::format("{} rows would be damaged, first row {} of {}", damaged.size(), rawValue(object),
                       entityWithNumber(entity)->name);
  }
  if (!std::includes(before.brokenReferences.begin(), before.brokenReferences.end(), after.brokenReferences.begin(),
                     after.brokenReferences.end()))
    return "rows would lead to rows that are not there";
  if (before.summary != after.summary) return "tasks or their owners would be lost";
  return std::nullopt;
}

void run(Connection& connection, const StatementHook& hook, std::string_view statement) {
  if (hook) hook(statement);
  connection.execute(std::string(statement).c_str());
}

void migrateOneVersion(Connection& connection, const Migration& migration, const Holdings& before,
                       const StatementHook& hook) {
  try {
    run(connection, hook, "BEGIN IMMEDIATE");
    for (const std::string_view statement : migration.statements) run(connection, hook, statement);
    run(connection, hook, fmt::format("PRAGMA user_version={}", migration.version));
    if (const auto loss = lossBetween(before, holdingsOf(connection)))
      throw StoreError(StoreError::Kind::failed,
                       fmt::format("{} was not brought up to date and is as it was: {}; go on with the version of "
                                   "Habitra that you had, and report this",
                                   connection.file().string(), *loss));
    run(connection, hook, "COMMIT");
  } catch (...) {
    connection.rollback();
    throw;
  }
}

}  // namespace

void migrateSchema(Connection& connection, const StatementHook& beforeStatement) {
  const Holdings before = holdingsOf(connection);
  if (!before.damaged.empty() || !before.brokenReferences.empty())
    qz::log::warning("{} is brought up to date with {} rows that were damaged before and {} that lead nowhere",
                     connection.file().string(), before.damaged.size(), before.brokenReferences.size());
  const std::int64_t version = connection.integer("PRAGMA user_version");
  for (const Migration& migration : allMigrations())
    if (migration.version > version) migrateOneVersion(connection, migration, before, beforeStatement);
}

}  // namespace habitra
