#pragma once

#include <HabitraBackup/HabitraJSONBackupVisualRepresentation.h>
#include <HabitraCore/TaskFrequencyPeriodType.h>
#include <HabitraCore/TaskLogEntryType.h>
#include <HabitraModel/Tasks/TaskPageNumber.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Checked.h>
#include <QZKit/Clock.h>
#include <QZKit/UniqueID.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// A task as a backup document carries it.
namespace habitra {

/// A day in the four bytes of its integer form: a document holds the whole log of a person's life at once. Turns into
/// qz::YYYYMMDD and back by itself; one that is outside 32 bits stops the program.
class HabitraJSONBackupDay {
 public:
  constexpr HabitraJSONBackupDay() = default;
  constexpr HabitraJSONBackupDay(const qz::YYYYMMDD& day)  // NOLINT(google-explicit-constructor)
      : value_(qz::checkedNarrow<std::int32_t>(day.intValue())) {}

  constexpr operator qz::YYYYMMDD() const {  // NOLINT(google-explicit-constructor)
    return qz::YYYYMMDD::fromRawValue(value_).value_or(qz::YYYYMMDD::emptyValue);
  }
  [[nodiscard]] constexpr std::int32_t intValue() const { return value_; }

  friend bool operator==(HabitraJSONBackupDay, HabitraJSONBackupDay) = default;
  friend auto operator<=>(HabitraJSONBackupDay, HabitraJSONBackupDay) = default;
  friend bool operator==(HabitraJSONBackupDay a, const qz::YYYYMMDD& b) { return qz::YYYYMMDD(a) == b; }

 private:
  std::int32_t value_ = 0;
};

/// One entry of a task's log.
struct HabitraJSONBackupTaskEntry {
  std::optional<qz::UniqueID> uniqueId;
  TaskLogEntryType entryType = TaskLogEntryType::unknown;
  HabitraJSONBackupDay entryDate;
  std::optional<double> progress;  ///< as a share
  std::optional<qz::Moment> createdTimestamp;
  /// The period that the entry counts for: first and last day, and its kind. All or none.
  std::optional<HabitraJSONBackupDay> entryPeriodFrom;
  std::optional<HabitraJSONBackupDay> entryPeriodTo;
  std::optional<TaskFrequencyPeriodType> entryPeriodType;

  friend bool operator==(const HabitraJSONBackupTaskEntry&, const HabitraJSONBackupTaskEntry&) = default;
};

/// A note on a task.
struct HabitraJSONBackupTaskNote {
  std::optional<qz::YYYYMMDD> date;
  std::optional<std::string> status;
  std::string content;

  friend bool operator==(const HabitraJSONBackupTaskNote&, const HabitraJSONBackupTaskNote&) = default;
};

/// A task. Settings that a document does not name are those of a newly made task.
struct HabitraJSONBackupTask {
  std::optional<qz::UniqueID> uniqueId;
  std::optional<std::string> title;
  std::optional<std::string> titleFormatted;  ///< the title with its placeholders filled in
  std::optional<HabitraJSONBackupVisualRepresentation> visualRepresentation;
  std::optional<TaskPageNumber> pageNumber;
  std::optional<std::vector<HabitraJSONBackupTaskEntry>> log;
  std::optional<std::vector<HabitraJSONBackupTaskNote>> notes;

  friend bool operator==(const HabitraJSONBackupTask&, const HabitraJSONBackupTask&) = default;
};

}  // namespace habitra
