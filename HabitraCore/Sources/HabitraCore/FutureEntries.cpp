#include <HabitraCore/FutureEntries.h>
#include <QZDateTime/TimeZone.h>

namespace habitra {

bool wasRecordedInTime(const EntryRecording& entry, const qz::HHMMSS& startOfDay, qz::Moment now) {
  if (!entry.createdTimestamp || *entry.createdTimestamp > now || !entry.createdTimeZone) return false;
  const auto zone = qz::TimeZone::fromIdentifier(*entry.createdTimeZone);
  return zone && qz::YYYYMMDD(startOfDay, *entry.createdTimestamp, *zone).intValue() >= entry.entryDate;
}

bool liesInFuture(const EntryRecording& entry, const qz::YYYYMMDD& today, const qz::HHMMSS& startOfDay,
                  qz::Moment now) {
  return entry.entryDate > today.intValue() && !wasRecordedInTime(entry, startOfDay, now);
}

}  // namespace habitra
