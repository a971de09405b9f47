#pragma once

#include <HabitraBackup/Document/HabitraJSONBackupVisualRepresentation.h>
#include <HabitraCore/TaskFrequencyPeriodType.h>
#include <HabitraCore/TaskLogEntryType.h>
#include <HabitraCore/TaskPause.h>
#include <HabitraModel/Store/Entities/TaskCounterEntity.h>
#include <HabitraModel/Store/Entities/TaskEntity.h>
#include <HabitraModel/Store/Entities/TaskNoteEntity.h>
#include <HabitraModel/Store/Entities/TaskNotificationRemindersEntity.h>
#include <HabitraModel/Store/Entities/TaskNotificationSettingsEntity.h>
#include <HabitraModel/Store/Entities/TaskTimerEntity.h>
#include <HabitraModel/Tasks/TaskPageNumber.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Checked.h>
#include <QZKit/Clock.h>
#include <QZKit/UniqueID.h>

#include <cstdint>
#include <memory>
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

/// What few readers of an entry ask for. Entries of a log share equal ones.
struct HabitraJSONBackupTaskEntryDetails {
  std::optional<std::string> createdTimeZone;  ///< identifier of the zone in which it was recorded
  std::optional<std::string> cloudStatus;      ///< "TMP" marks a provisional entry
  std::optional<qz::Moment> cloudStatusDate;

  friend bool operator==(const HabitraJSONBackupTaskEntryDetails&, const HabitraJSONBackupTaskEntryDetails&) = default;
};

/// One entry of a task's log.
struct HabitraJSONBackupTaskEntry {
  std::optional<qz::UniqueID> uniqueId;
  TaskLogEntryType entryType = TaskLogEntryType::unknown;
  HabitraJSONBackupDay entryDate;
  std::optional<double> progress;       ///< as a share
  std::optional<double> progressTotal;  ///< as an amount
  std::optional<qz::Moment> createdTimestamp;
  /// The period that the entry counts for: first and last day, and its kind. All or none.
  std::optional<HabitraJSONBackupDay> entryPeriodFrom;
  std::optional<HabitraJSONBackupDay> entryPeriodTo;
  std::optional<TaskFrequencyPeriodType> entryPeriodType;
  std::shared_ptr<const HabitraJSONBackupTaskEntryDetails> details;  ///< null where the document says none

  friend bool operator==(const HabitraJSONBackupTaskEntry& a, const HabitraJSONBackupTaskEntry& b);
};

/// A note on a task: the day it belongs to (`noteDate`), its body (`content`), its status and whatever else a store
/// keeps of it. The references of its row say nothing here.
using HabitraJSONBackupTaskNote = TaskNoteEntity;

/// Everything else that a store keeps of a task for its person, as the rows hold it. References between the rows, and
/// what of the task's row stands in HabitraJSONBackupTask, say nothing here; what is derived from the log, what is
/// shared with whom and what still waits to be sent is not part of it.
struct HabitraJSONBackupTaskRecord {
  /// False for a habit of another tracker, which says neither its picture nor its place on a page. Not part of the
  /// document's text: whatever is written as a document of ours counts as whole.
  bool isWhole = true;
  /// Its frequency, automatic type, zone, moment of creation, status and so on, and `imageName`, which can name
  /// pictures that `visualRepresentation` has no case for.
  TaskEntity task;
  std::optional<TaskNotificationSettingsEntity> notificationSettings;
  std::vector<TaskNotificationRemindersEntity> reminders;
  std::vector<TaskCounterEntity> counters;
  std::vector<TaskTimerEntity> timers;
  std::vector<qz::UniqueID> categories;  ///< of those of the document, in the order in which it was put into them
  std::vector<TaskPause> pauses;

  friend bool operator==(const HabitraJSONBackupTaskRecord&, const HabitraJSONBackupTaskRecord&) = default;
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
  std::optional<HabitraJSONBackupTaskRecord> record;  ///< none: all of it is as a newly made task has it

  friend bool operator==(const HabitraJSONBackupTask&, const HabitraJSONBackupTask&) = default;
};

}  // namespace habitra
