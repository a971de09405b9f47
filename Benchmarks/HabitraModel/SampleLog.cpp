#include "SampleLog.h"

#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Checked.h>
#include <QZKit/UniqueID.h>

namespace habitra::benchmarks {

std::vector<TaskLogEntryEntity> sampleLog(ObjectID task, int count) {
  std::vector<TaskLogEntryEntity> entries;
  entries.reserve(static_cast<std::size_t>(count));
  qz::YYYYMMDD day(2014, 1, 1);
  const qz::Moment first = std::chrono::sys_days(std::chrono::year(2014) / 1 / 1) + std::chrono::hours(20);
  for (int i = 0; i < count; ++i, day = day.nextDay()) {
    const qz::Moment moment = first + std::chrono::days(i);
    TaskLogEntryEntity entry;
    entry.task = task;
    entry.entryDate = entry.entryPeriodFrom = entry.entryPeriodTo = qz::checkedNarrow<std::int32_t>(day.intValue());
    entry.entryPeriodType = "d";
    entry.entryType = static_cast<std::int16_t>(i % 7 == 3 ? 9 : 1);
    entry.progress = i % 7 == 3 ? 0.5 : 1;
    entry.createdTimestamp = moment;
    entry.createdTimeZone = "Europe/Berlin";
    entry.uniqueId = qz::UniqueID::generate(moment).text();
    entries.push_back(std::move(entry));
  }
  return entries;
}

}  // namespace habitra::benchmarks
