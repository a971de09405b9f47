#include <HabitraModel/Mapping/LogEntryMapping.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Tasks/LogBeginning.h>

namespace habitra {

HistoryScope::LogBeginning beginningOfLog(StoreContext& context, ObjectID task, std::int32_t lastDay) {
  HistoryScope::LogBeginning log;
  const auto earliest = context.earliestEntryDay(task);
  if (!earliest || *earliest > lastDay) return log;
  const auto look = [&](const LogRow& row) {
    const auto day = existingDayFromStored(row.entryDate);
    if (log.firstKeptDay || !day || *day < earliestKeptDay) return;
    if (!log.firstEntryDay) log.firstEntryDay = day;
    if (marksHistory(entryTypeFromStored(row.entryType))) log.firstKeptDay = day;
  };
  // Nearly always the first day decides; only where somebody took it back is the rest of the log looked through.
  context.readLog(task, *earliest, *earliest, look);
  if (!log.firstKeptDay) context.readLog(task, *earliest, lastDay, look);
  return log;
}

}  // namespace habitra
