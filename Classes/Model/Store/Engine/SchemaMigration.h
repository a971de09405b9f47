#pragma once

#include <HabitraModel/Store/Engine/Connection.h>

#include <functional>
#include <string_view>

namespace habitra {

/// Called before each statement of a migration; for tests that end the program there.
using StatementHook = std::function<void(std::string_view statement)>;

/// Brings the store of the connection to the present version, one transaction per version, the version's number
/// included. Before a transaction is committed, all references, the checksums of all rows and the summary of tasks and
/// owners are compared with what they were: a row that is lost or no longer what was written is a StoreError and leaves
/// the store at the version before. What was damaged before may stay so; one warning counts it.
/// REQUIRES: the writers' turn, no transaction, and a Habitra store of an earlier version.
void migrateSchema(Connection& connection, const StatementHook& beforeStatement);

}  // namespace habitra
