#include <HabitraModel/Mapping/LogEntryMapping.h>
#include <HabitraModel/Mapping/PeriodMapping.h>
#include <HabitraModel/Mapping/StoredDay.h>

namespace habitra {

void setEntry(TaskLogEntryEntity& row, TaskLogEntryType type, const DatedPeriod& period, double progress,
              double progressTotal) {
  row.entryType = rawValue(type);
  row.entryDate = storedDay(period.date);
  setPeriod(row, period.period);
  row.progress = progress;
  row.progressTotal = progressTotal;
}

}  // namespace habitra
