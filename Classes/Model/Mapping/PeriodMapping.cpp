#include <HabitraCore/RawValue.h>
#include <HabitraModel/Mapping/PeriodMapping.h>
#include <HabitraModel/Mapping/StoredDay.h>

namespace habitra {

namespace {

template <typename Row>
std::optional<TaskFrequencyPeriod> storedPeriod(const Row& row, qz::DayOfWeek firstDayOfWeek) {
  const auto type = fromRawValue<TaskFrequencyPeriodType>(row.entryPeriodType);
  const auto from = existingDayFromStored(row.entryPeriodFrom);
  const auto to = existingDayFromStored(row.entryPeriodTo);
  if (!type || !from || !to || *to < *from) return std::nullopt;
  return TaskFrequencyPeriod{
      .periodType = *type, .startDate = *from, .finishDate = *to, .firstDayOfWeek = firstDayOfWeek};
}

template <typename Row>
void storePeriod(Row& row, const TaskFrequencyPeriod& period) {
  row.entryPeriodFrom = storedDay(period.startDate);
  row.entryPeriodTo = storedDay(period.finishDate);
  row.entryPeriodType = rawValue(period.periodType);
}

}  // namespace

std::optional<TaskFrequencyPeriod> periodOf(const TaskLogEntryEntity& row, qz::DayOfWeek firstDayOfWeek) {
  return storedPeriod(row, firstDayOfWeek);
}
std::optional<TaskFrequencyPeriod> periodOf(const LogRow& row, qz::DayOfWeek firstDayOfWeek) {
  return storedPeriod(row, firstDayOfWeek);
}
std::optional<TaskFrequencyPeriod> periodOf(const TaskTimerEntity& row, qz::DayOfWeek firstDayOfWeek) {
  return storedPeriod(row, firstDayOfWeek);
}

void setPeriod(TaskLogEntryEntity& row, const TaskFrequencyPeriod& period) { storePeriod(row, period); }
void setPeriod(TaskTimerEntity& row, const TaskFrequencyPeriod& period) { storePeriod(row, period); }

}  // namespace habitra
