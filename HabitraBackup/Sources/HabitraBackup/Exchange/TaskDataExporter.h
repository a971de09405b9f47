#pragma once

#include <HabitraBackup/Document/HabitraJSONBackup.h>
#include <HabitraBackup/Exchange/ExchangeProgress.h>
#include <HabitraBackup/Exchange/TaskDataExchangeError.h>
#include <HabitraBackup/Files/ByteStreams.h>
#include <HabitraModel/Store/ObjectID.h>
#include <QZKit/Clock.h>

#include <cstddef>
#include <span>
#include <utility>
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
  explicit TaskDataExporter(StoreContext& context, ExchangeProgress progress = {})
      : context_(context), progress_(std::move(progress)) {}

  /// What can be exported.
  [[nodiscard]] std::vector<ObjectID> allTasks() const;
  [[nodiscard]] std::vector<ObjectID> tasksOfPage(TaskPageNumber page) const;
  /// Whether the store has such a page, be it empty. It always has the first.
  [[nodiscard]] bool hasPage(TaskPageNumber page) const;

  /// One task with everything that a document holds of it. Throws Error (taskDataMissing) when the store does not have
  /// it.
  [[nodiscard]] HabitraJSONBackupTask task(ObjectID id) const;

  /// The document of the given tasks without the tasks themselves: categories and settings of the store, and its pages
  /// but for those whose tasks are all left out.
  [[nodiscard]] HabitraJSONBackup header(std::span<const ObjectID> tasks, HabitraJSONBackupType type,
                                         qz::Moment now) const;

  /// The document of the given tasks, in their order.
  [[nodiscard]] HabitraJSONBackup backup(std::span<const ObjectID> tasks, HabitraJSONBackupType type,
                                         qz::Moment now) const;

  /// What writeJson has written.
  struct WrittenDocument {
    std::size_t tasks = 0;
    std::size_t entries = 0;
    std::size_t entriesLeftOut = 0;  ///< damaged ones: the calendar does not have their day, or nobody knows their type
  };

  /// Writes the document in its own form: the same bytes as that of backup() gives, while only one task at a time is in
  /// memory. `header` is what header() gave, with what a caller adds to it. Throws HabitraJSONError for a text that is
  /// too long for it.
  WrittenDocument writeJson(std::span<const ObjectID> tasks, const HabitraJSONBackup& header,
                            const ByteSink& sink) const;

  /// What writeCsv has written.
  struct WrittenRows {
    std::size_t rows = 0;            ///< below the header
    std::size_t entriesLeftOut = 0;  ///< likewise
  };

  /// Writes the tasks as CSV: the same bytes as the document gives, while only one task at a time is in memory.
  WrittenRows writeCsv(std::span<const ObjectID> tasks, const ByteSink& sink) const;

 private:
  // Rows hold neither settings nor identifiers of entries; reading those takes longer than all else.
  enum class Detail : bool { ofRows, all };

  struct ReadTask {
    HabitraJSONBackupTask task;
    std::size_t entriesLeftOut = 0;
  };

  [[nodiscard]] ReadTask read(ObjectID id, Detail detail) const;

  void tell(std::size_t written, std::size_t tasks) const;

  StoreContext& context_;
  ExchangeProgress progress_;
};

}  // namespace habitra
