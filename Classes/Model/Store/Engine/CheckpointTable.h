#pragma once

#include <HabitraModel/Store/Checkpoint.h>
#include <HabitraModel/Store/Engine/Connection.h>
#include <HabitraModel/Store/Entities/TaskLogEntryEntity.h>
#include <HabitraModel/Store/ObjectID.h>

#include <map>
#include <optional>

namespace habitra {

/// The checkpoints of the walks over the log, and the days of the log that a unit has changed.
class CheckpointTable {
 public:
  explicit CheckpointTable(Connection& connection);

  /// This entry was added or removed, or was so before or after a change.
  void noteChange(const TaskLogEntryEntity& entry);
  /// Drops the checkpoints that the noted changes overtook.
  void applyChanges();
  void forgetChanges() { changedFrom_.clear(); }

  /// None, too, when the row is not what was written: a walk from a wrong start would be wrong without a sign.
  [[nodiscard]] std::optional<Checkpoint> read(ObjectID task);
  void write(ObjectID task, const Checkpoint& checkpoint);

 private:
  Query drop_;
  Query read_;
  Query write_;
  std::map<ObjectID, std::int32_t> changedFrom_;  // earliest changed day
};

}  // namespace habitra
