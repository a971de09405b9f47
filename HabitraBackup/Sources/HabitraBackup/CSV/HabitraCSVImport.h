#pragma once

#include <HabitraBackup/CSV/HabitraCSVBackupRow.h>
#include <HabitraBackup/Document/HabitraJSONBackup.h>
#include <HabitraBackup/Document/HabitraJSONBackupTask.h>

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace habitra {

/// A task that is being put together from rows.
struct HabitraCSVImportTask {
  std::optional<qz::UniqueID> uniqueId;
  std::optional<std::string> title;
  std::optional<HabitraJSONBackupVisualRepresentation> visualRepresentation;
  std::optional<TaskPageNumber> pageNumber;
  std::vector<HabitraJSONBackupTaskEntry> entries;
};

/// Groups the rows of one file into tasks. Rows with an identifier belong together by its text, those without by their
/// title, and the two never meet. The first row of a task fixes its identifier, title, icon and page. A row without
/// title is passed over; one without entry type or day only says that the task exists. Notes are not read.
///
/// Lives for one load, on one thread.
class HabitraCSVImport {
 public:
  using Tasks = std::unordered_map<std::string, std::shared_ptr<HabitraCSVImportTask>>;

  HabitraCSVImport() = default;
  explicit HabitraCSVImport(std::span<const HabitraCSVBackupRow> rows);

  /// Takes one more row, so that a long file need not be held as rows.
  void add(const HabitraCSVBackupRow& row);

  [[nodiscard]] const Tasks& tasksByTitle() const { return byTitle_.tasks; }
  [[nodiscard]] const Tasks& tasksById() const { return byId_.tasks; }

  /// The document: first the tasks found by title, then those found by identifier, each kind in the file's order;
  /// "Converted from CSV", automated, made at `now`. The entries move into it.
  [[nodiscard]] HabitraJSONBackup backup(qz::Moment now) &&;

  /// "tasksByTitle: [...] tasksById: [...]", with the number of entries of each task, sorted.
  [[nodiscard]] std::string debugDescription() const;

 private:
  struct Group {
    Tasks tasks;
    std::vector<std::shared_ptr<HabitraCSVImportTask>> inFileOrder;
  };

  Group byTitle_;
  Group byId_;
};

}  // namespace habitra
