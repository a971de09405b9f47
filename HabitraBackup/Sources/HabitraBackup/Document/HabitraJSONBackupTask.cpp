#include <HabitraBackup/Document/HabitraJSONBackupTask.h>

#include <tuple>

namespace habitra {

namespace {

auto plainFields(const HabitraJSONBackupTaskEntry& entry) {
  return std::tie(entry.uniqueId, entry.entryType, entry.entryDate, entry.progress, entry.progressTotal,
                  entry.createdTimestamp, entry.entryPeriodFrom, entry.entryPeriodTo, entry.entryPeriodType);
}

}  // namespace

bool operator==(const HabitraJSONBackupTaskEntry& a, const HabitraJSONBackupTaskEntry& b) {
  if (plainFields(a) != plainFields(b)) return false;
  if (a.details == b.details) return true;
  static const HabitraJSONBackupTaskEntryDetails none;
  return (a.details ? *a.details : none) == (b.details ? *b.details : none);
}

}  // namespace habitra
