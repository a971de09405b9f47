#pragma once

#include <HabitraModel/Store/Entities/TaskLogEntryEntity.h>
#include <HabitraModel/Store/History/History.h>
#include <HabitraModel/Store/OwnedObject.h>

#include <optional>
#include <utility>

namespace habitra {

/// A row of any entity.
using RowID = std::pair<EntityNumber, ObjectID>;

/// A row that a command touched, and what it was before when it was there.
struct TouchedRow {
  StoredChange change;
  const EntityDescription* entity;
  std::optional<OwnedObject> earlier;
  bool isDerived = false;
  bool isLeftOut = false;  ///< it does not come back: it has nothing to stand on any more, or is there already

  [[nodiscard]] RowID row() const { return {change.entity, change.object}; }
  [[nodiscard]] bool isEntry() const { return change.entity == EntityNumber::taskLogEntry; }
  [[nodiscard]] bool wasInserted() const { return change.kind == ChangeKind::insertion; }
  [[nodiscard]] bool wasRemoved() const { return change.kind == ChangeKind::removal; }
  /// REQUIRES: an entry of the log that was there before.
  [[nodiscard]] const TaskLogEntryEntity& earlierEntry() const {
    return *static_cast<const TaskLogEntryEntity*>(earlier->get());
  }
};

}  // namespace habitra
