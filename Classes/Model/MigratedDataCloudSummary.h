#pragma once

#include <QZKit/UniqueID.h>

#include <compare>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace habitra {

class Connection;
class StoreContext;

/// The identity of a record in the cloud; empty texts where it has none.
struct CloudRecordIdentifier {
  std::string recordName;
  std::string zoneName;
  std::string zoneOwnerName;

  friend auto operator<=>(const CloudRecordIdentifier&, const CloudRecordIdentifier&) = default;
};

/// The owner of shared tasks, as far as a migration must carry it over.
struct MigratableOwner {
  CloudRecordIdentifier cloudRecordIdentifier;
  std::map<std::string, std::string> properties;  ///< the texts that are not empty, by the name of their attribute
  std::set<qz::UniqueID> taskIdentifiers;         ///< of the tasks that it shares

  friend auto operator<=>(const MigratableOwner&, const MigratableOwner&) = default;
};

/// What must be the same before and after a migration or a move, whatever becomes of rows and columns: the tasks that a
/// person has, and whose shared tasks they are.
struct MigratedDataCloudSummary {
  std::set<qz::UniqueID> activeTasks;
  std::set<qz::UniqueID> archivedTasks;
  std::vector<MigratableOwner> owners;  ///< in ascending order

  /// Of a store as it is saved. A task without an identifier is left out.
  [[nodiscard]] static MigratedDataCloudSummary of(StoreContext& context);
  /// The same in a connection's present view. What an earlier version did not have counts as empty.
  [[nodiscard]] static MigratedDataCloudSummary of(Connection& connection);

  friend bool operator==(const MigratedDataCloudSummary&, const MigratedDataCloudSummary&) = default;
};

}  // namespace habitra
