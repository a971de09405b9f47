#pragma once

#include <HabitraBackup/Document/HabitraJSONBackupTask.h>
#include <QZDateTime/DayOfWeek.h>
#include <QZKit/Clock.h>

#include <string>

/// The row of a task as a document describes it.
namespace habitra {

/// What a task has that a document says nothing of.
struct NewTaskDefaults {
  qz::DayOfWeek firstDayOfWeek;
  qz::Moment now;
  std::string timeZone;  ///< identifier of the zone in which it is made
};

/// Whether a person had deleted the task that a document carries.
[[nodiscard]] bool isDeleted(const HabitraJSONBackupTask& task);

/// The title under which a store keeps the task: its own words, else those that were read; empty where there are none.
[[nodiscard]] std::string titleOf(const HabitraJSONBackupTask& task);

/// The row of a new task: what the document says, else what a newly made task has. Nothing that is derived from a log,
/// and no state towards a cloud. Identifier, page and, where the document has no whole record of the task, place are
/// left to the caller.
[[nodiscard]] TaskEntity newTaskValues(const HabitraJSONBackupTask& task, const NewTaskDefaults& defaults);

/// Takes what is derived from a log, and the state towards a cloud, over from another row.
void takeDerivedValues(TaskEntity& task, const TaskEntity& from);

}  // namespace habitra
