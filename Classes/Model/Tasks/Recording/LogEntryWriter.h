#pragma once

#include <HabitraCore/TaskRules.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/Recording/EmptyDays.h>
#include <HabitraModel/Tasks/Recording/FilledInEntries.h>
#include <HabitraModel/Tasks/Recording/HealthWriteAmount.h>
#include <HabitraModel/Tasks/Recording/TaskLogRecorder.h>
#include <HabitraModel/Tasks/TaskCalendar.h>

#include <algorithm>
#include <optional>
#include <vector>

namespace habitra {

/// Writes the entries of a request into the log, and what goes with each. Lives as long as one request is written, in
/// its unit.
class LogEntryWriter {
 public:
  struct Written {
    TaskLogEntryEntity row;                  ///< as it is now
    qz::YYYYMMDD day;                        ///< of the row
    std::optional<qz::YYYYMMDD> earlierDay;  ///< where it stood before, when it was for another day

    [[nodiscard]] qz::YYYYMMDD earliestDay() const { return std::min(day, earlierDay.value_or(day)); }
  };

  /// All must live longer. `rules`: the task's; none where they cannot be read.
  LogEntryWriter(const TaskEntity& task, const std::optional<TaskRules>& rules, const TaskLogRecorder::Request& request,
                 const TaskCalendar& calendar);

  /// The row that bears the identifier of the entry, in whichever case it is written there; none is looked for where
  /// the identifier is new.
  [[nodiscard]] static std::optional<TaskLogEntryEntity> existing(StoreContext& context,
                                                                  const TaskLogRecorder::LogEntryData& entry);

  /// Inserts the row, or brings the one up to date that bears its identifier, once what it supersedes and refutes is
  /// gone. REQUIRES: the identifier is no other task's.
  Written write(const TaskLogRecorder::LogEntryData& entry);

 private:
  /// Deletes the rows of its period that the row takes the place of, and what was filled in that it refutes.
  void removeSuperseded(const TaskFrequencyPeriod& period, TaskLogEntryType type, ObjectID kept);
  void remove(const std::vector<LogKey>& keys);
  /// The first day of the history, where it is later than `day`, to which an entry of this type moves it back.
  [[nodiscard]] std::optional<qz::YYYYMMDD> beginningAfter(qz::YYYYMMDD day, TaskLogEntryType type) const;
  [[nodiscard]] TaskLogEntryEntity filled(TaskLogEntryEntity row, const TaskLogRecorder::LogEntryData& entry,
                                          qz::YYYYMMDD day, bool isNew) const;
  /// What the entry said before is no longer to be written, or to be taken out again.
  void withdrawHealthWrites(ObjectID entry);
  /// What the entry has to tell the health store, where the request and the task want that; found before the log is
  /// changed.
  [[nodiscard]] std::optional<HealthWriteAmount> newToHealthStore(const TaskLogRecorder::LogEntryData& entry,
                                                                  ObjectID existing) const;
  void requestHealthWrite(const TaskLogEntryEntity& row, const TaskLogRecorder::LogEntryData& entry,
                          const HealthWriteAmount& written);

  const TaskEntity& task_;
  const TaskLogRecorder::Request& request_;
  const TaskCalendar& calendar_;
  StoreContext& context_;
  const qz::Moment now_;
  const std::optional<TaskRules>& rules_;
  const std::optional<qz::YYYYMMDD> creationDay_;  ///< by the clock of the zone the task was made in
  FilledInEntries filledIn_;
  EmptyDays emptyDays_;
};

}  // namespace habitra
