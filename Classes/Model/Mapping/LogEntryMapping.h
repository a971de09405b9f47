#pragma once

#include <HabitraCore/LoggedEntry.h>
#include <HabitraCore/TaskFrequencyPeriod.h>
#include <HabitraModel/Store/Entities/TaskLogEntryEntity.h>

/// An entry of the log as the rules read it, and back.
namespace habitra {

/// An unknown stored type says nothing about a day, like an undo.
[[nodiscard]] inline TaskLogEntryType entryTypeFromStored(std::int16_t stored) {
  return fromRawValue<TaskLogEntryType>(stored).value_or(TaskLogEntryType::unknown);
}

/// A row of the log, or a whole entry, as the walk over a history reads it. A period of an unknown kind is none.
/// Days are handed on as they stand, without a look at the calendar, since whole logs are read this way: the walk
/// leaves out entries whose day does not exist, and gives those whose period cannot be one the period of their day.
template <typename Row>
[[nodiscard]] LoggedEntry loggedEntry(const Row& row) {
  const auto periodType = fromRawValue<TaskFrequencyPeriodType>(row.entryPeriodType);
  return LoggedEntry{.order = rawValue(row.objectID),
                     .progress = row.progress,
                     .progressTotal = row.progressTotal,
                     .entryDate = row.entryDate,
                     .periodFrom = periodType ? row.entryPeriodFrom : 0,
                     .periodTo = periodType ? row.entryPeriodTo : 0,
                     .entryType = entryTypeFromStored(row.entryType),
                     .periodType = periodType.value_or(TaskFrequencyPeriodType{})};
}

/// Writes what an entry says: of which type it is, for which day and period, and how much it reports, as a share and as
/// an amount. Stops the program when a day does not fit its 32 bits.
void setEntry(TaskLogEntryEntity& row, TaskLogEntryType type, const DatedPeriod& period, double progress,
              double progressTotal);

}  // namespace habitra
