#pragma once

#include <HabitraBackup/CSV/HabitraCSVBackupEntryType.h>
#include <HabitraBackup/Document/HabitraJSONBackupVisualRepresentation.h>
#include <HabitraModel/Tasks/TaskPageNumber.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/Clock.h>

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace habitra {

/// One row of a task history: an entry of a log with enough of its task to rebuild it, or a task without entries.
/// What is absent is an empty field.
struct HabitraCSVBackupRow {
  std::optional<std::string> taskId;  ///< the text of the task's identifier, as written in the file
  std::optional<std::string> title;
  std::optional<HabitraJSONBackupVisualRepresentation> visualRepresentation;
  std::optional<HabitraCSVBackupEntryType> entryType;
  std::optional<qz::YYYYMMDD> entryDate;
  std::optional<qz::Moment> entryTimestamp;
  std::optional<double> quantity;
  std::optional<TaskPageNumber> page;
  std::optional<std::string> notes;

  friend bool operator==(const HabitraCSVBackupRow&, const HabitraCSVBackupRow&) = default;
};

/// The headers of the columns, in the order of the fields and of the file.
inline constexpr std::array<std::string_view, 9> csvColumnHeaders{
    "task_id", "title", "icon", "entry_type", "entry_date", "entry_timestamp", "quantity", "page", "notes"};

/// Takes rows one after the other; the row is valid during the call.
using CSVRowHandler = std::function<void(const HabitraCSVBackupRow&)>;

}  // namespace habitra
