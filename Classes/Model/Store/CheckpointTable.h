#pragma once

#include <HabitraModel/Store/Checkpoint.h>
#include <HabitraModel/Store/Connection.h>
#include <HabitraModel/Store/ObjectID.h>

#include <map>
#include <optional>

namespace habitra {

/// The checkpoints of the walks over the log, and the days of the log that a unit has changed.
class CheckpointTable {
 public:
  explicit CheckpointTable(Connection& connection);

  /// An entry of this day was added, changed or removed.
  void noteChange(ObjectID task, std::int32_t day);
  /// Drops the checkpoints that the noted changes overtook.
  void applyChanges();
  void forgetChanges() { changedFrom_.clear(); }

  [[nodiscard]] std::optional<Checkpoint> read(ObjectID task);
  void write(ObjectID task, const Checkpoint& checkpoint);

 private:
  Query drop_;
  Query read_;
  Query write_;
  std::map<ObjectID, std::int32_t> changedFrom_;  // earliest changed day
};

}  // namespace habitra
