#pragma once

#include <HabitraCore/TaskRules.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/FilledInEntries.h>
#include <HabitraModel/Tasks/TaskCalendar.h>
#include <HabitraModel/Tasks/TaskLogRecorder.h>

#include <optional>

namespace habitra {

/// Writes the entries of a request into the log, and what goes with each. Lives as long as one request is written, in
/// its unit.
class LogEntryWriter {
 public:
  struct Written {
    TaskLogEntryEntity row;                  ///< as it is now
    qz::YYYYMMDD day;                        ///< of the row
    std::optional<qz::YYYYMMDD> earlierDay;  ///< where it stood before, when it was for another day
  };

  /// All must live longer. `rules`: the task's; none where they cannot be read.
  LogEntryWriter(const TaskEntity& task, const std::optional<TaskRules>& rules, const TaskLogRecorder::Request& request,
                 const TaskCalendar& calendar);

  /// Inserts the row, or brings the one up to date that bears its identifier, once what it supersedes and refutes is
  /// gone. Throws TaskLogRecorder::Error where the identifier is another task's.
  Written write(const TaskLogRecorder::LogEntryData& entry);

 private:
  /// Deletes the rows of its period that the row takes the place of, and what was filled in that it refutes.
  void removeSuperseded(const TaskFrequencyPeriod& period, TaskLogEntryType type, ObjectID kept);
  void removeRefuted(const TaskLogEntryEntity& row);
  [[nodiscard]] TaskLogEntryEntity filled(TaskLogEntryEntity row, const TaskLogRecorder::LogEntryData& entry,
                                          bool isNew) const;
  /// Asks for a write to the health store, where the task and the entry want one.
  void requestHealthWrite(const TaskLogEntryEntity& row, const TaskLogRecorder::LogEntryData& entry);

  const TaskEntity& task_;
  const TaskLogRecorder::Request& request_;
  const TaskCalendar& calendar_;
  StoreContext& context_;
  const qz::Moment now_;
  const std::optional<TaskRules>& rules_;
  const FilledInEntries filledIn_;
};

}  // namespace habitra
