#include <HabitraCore/TaskFrequencyPeriodType.h>
#include <HabitraModel/Store/Engine/CheckpointTable.h>
#include <HabitraModel/Store/Engine/RowCoding.h>

#include <algorithm>

namespace habitra {

CheckpointTable::CheckpointTable(Connection& connection)
    : drop_(connection, "DELETE FROM habitra_checkpoint WHERE task=? AND closedThrough>=?"),
      read_(connection, "SELECT closedThrough, fingerprint, content, checksum FROM habitra_checkpoint WHERE task=?"),
      write_(connection, "INSERT OR REPLACE INTO habitra_checkpoint VALUES (?, ?, ?, ?, ?)") {}

void CheckpointTable::noteChange(const TaskLogEntryEntity& entry) {
  // Without a usable period the entry counts for one that only the task's rules tell; it may begin long before.
  const bool hasPeriod = entry.entryPeriodFrom > 0 && entry.entryPeriodFrom <= entry.entryPeriodTo &&
                         fromRawValue<TaskFrequencyPeriodType>(entry.entryPeriodType);
  const std::int32_t day = hasPeriod ? std::min(entry.entryDate, entry.entryPeriodFrom) : 0;
  const auto [noted, isFirst] = changedFrom_.try_emplace(entry.task, day);
  if (!isFirst) noted->second = std::min(noted->second, day);
}

void CheckpointTable::applyChanges() {
  for (const auto& [task, day] : changedFrom_) {
    auto statement = drop_.use();
    statement->bind(1, rawValue(task));
    statement->bind(2, std::int64_t{day});
    statement->step();
  }
  changedFrom_.clear();
}

std::optional<Checkpoint> CheckpointTable::read(ObjectID task) {
  auto statement = read_.use();
  statement->bind(1, rawValue(task));
  if (!statement->step()) return std::nullopt;
  Checkpoint checkpoint{static_cast<std::int32_t>(statement->integer(0)), statement->integer(1), statement->bytes(2)};
  if (statement->integer(3) != checkpointChecksum(task, checkpoint)) return std::nullopt;
  return checkpoint;
}

void CheckpointTable::write(ObjectID task, const Checkpoint& checkpoint) {
  auto statement = write_.use();
  statement->bind(1, rawValue(task));
  statement->bind(2, std::int64_t{checkpoint.closedThrough});
  statement->bind(3, checkpoint.fingerprint);
  statement->bind(4, checkpoint.content);
  statement->bind(5, checkpointChecksum(task, checkpoint));
  statement->step();
}

}  // namespace habitra
