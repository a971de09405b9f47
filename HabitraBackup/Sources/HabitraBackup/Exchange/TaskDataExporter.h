#pragma once

#include <HabitraBackup/Document/HabitraJSONBackup.h>
#include <HabitraBackup/Exchange/TaskDataExchangeError.h>
#include <HabitraModel/Store/ObjectID.h>
#include <QZKit/Clock.h>

#include <cstddef>
#include <filesystem>
#include <span>
#include <vector>

namespace habitra {

class StoreContext;

/// Takes tasks out of a store. Tasks stand in order of creation, archived ones too, deleted ones not; a log in order
/// of day, then of creation. A task on no page is on page 1.
///
/// Reads in the context's view, so that what it writes is one state of the store. Belongs to the context's queue.
class TaskDataExporter {
 public:
  using Error = TaskDataExchangeError;

  /// REQUIRES: `context` outlives the exporter.
  explicit TaskDataExporter(StoreContext& context) : context_(context) {}

  /// What can be exported.
  [[nodiscard]] std::vector<ObjectID> allTasks() const;
  [[nodiscard]] std::vector<ObjectID> tasksOfPage(TaskPageNumber page) const;

  /// One task with its log. Throws Error (taskDataMissing) when the store does not have it.
  [[nodiscard]] HabitraJSONBackupTask task(ObjectID id) const;

  /// The document of the given tasks, in their order.
  [[nodiscard]] HabitraJSONBackup backup(std::span<const ObjectID> tasks, HabitraJSONBackupType type,
                                         qz::Moment now) const;

  /// Writes the tasks as CSV: the same bytes as the document gives, while only one task at a time is in memory. Gives
  /// the number of rows below the header.
  std::size_t writeCsv(std::span<const ObjectID> tasks, const ByteSink& sink) const;
  /// The same to a file, which is replaced as a whole or left as it was.
  std::size_t writeCsv(std::span<const ObjectID> tasks, const std::filesystem::path& to) const;

 private:
  // Rows hold no identifiers of entries; reading them takes longer than all else.
  enum class EntryIdentifiers : bool { leftOut, read };

  [[nodiscard]] HabitraJSONBackupTask read(ObjectID id, EntryIdentifiers identifiers) const;

  StoreContext& context_;
};

}  // namespace habitra
