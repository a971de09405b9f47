#include <HabitraCore/RawValue.h>
#include <HabitraCore/TaskLogEntryChoice.h>
#include <HabitraModel/Mapping/LogEntryMapping.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Tasks/Recording/LostBeginning.h>

#include <algorithm>
#include <iterator>

namespace habitra {
namespace {

/// The earliest day before `creationDay` that somebody recorded anything for, else that day.
qz::YYYYMMDD recordedBeginning(StoreContext& context, ObjectID task, qz::YYYYMMDD creationDay) {
  qz::YYYYMMDD beginning = creationDay;
  context.readLog(task, StoreContext::firstDay, storedDay(creationDay), [&](const LogRow& row) {
    const TaskLogEntryType type = entryTypeFromStored(row.entryType);
    if (!marksHistory(type) || isFilledIn(row)) return;
    if (const auto day = existingDayFromStored(row.entryDate)) beginning = std::min(beginning, *day);
  });
  return beginning;
}

}  // namespace

std::vector<LogKey> refutedByLostBeginning(StoreContext& context, const TaskLogEntryEntity& undone,
                                           qz::YYYYMMDD creationDay, const FilledInEntries& filledIn) {
  if (undone.entryDate >= storedDay(creationDay)) return {};
  const qz::YYYYMMDD beginning = recordedBeginning(context, undone.task, creationDay);
  if (storedDay(beginning) <= undone.entryDate) return {};
  std::vector<LogKey> refuted;
  context.readLog(undone.task, undone.entryDate, storedDay(beginning.previousDay()), [&](const LogRow& row) {
    if (isFilledIn(row)) refuted.push_back({undone.task, row.entryDate, row.objectID});
  });
  std::ranges::copy(filledIn.refutedByEarlierBeginning(beginning), std::back_inserter(refuted));
  return refuted;
}

}  // namespace habitra
