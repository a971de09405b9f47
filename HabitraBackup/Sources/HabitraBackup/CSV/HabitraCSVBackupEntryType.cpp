#include <HabitraBackup/CSV/HabitraCSVBackupEntryType.h>

#include <cstddef>

namespace habitra {

namespace {

constexpr const auto& csvRows = RawValueTable<HabitraCSVBackupEntryType>::rows;
constexpr const auto& logRows = RawValueTable<TaskLogEntryType>::rows;

constexpr bool standInOneOrder() {
  if (csvRows.size() != logRows.size()) return false;
  for (std::size_t i = 0; i < csvRows.size(); ++i) {
    if (csvRows[i].name != logRows[i].name || static_cast<std::size_t>(csvRows[i].value) != i) return false;
  }
  return true;
}
static_assert(standInOneOrder());

}  // namespace

HabitraCSVBackupEntryType csvEntryType(TaskLogEntryType type) {
  std::size_t position = 0;
  while (position + 1 < logRows.size() && logRows[position].value != type) ++position;
  return csvRows[position].value;
}

TaskLogEntryType taskLogEntryType(HabitraCSVBackupEntryType type) {
  return logRows[static_cast<std::size_t>(type)].value;
}

}  // namespace habitra
