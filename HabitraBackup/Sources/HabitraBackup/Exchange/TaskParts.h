#pragma once

#include <HabitraBackup/Exchange/EntryIdentifiers.h>
#include <HabitraBackup/Exchange/ImportReport.h>
#include <HabitraBackup/Exchange/LogImport.h>

namespace habitra {

class CategoriesImport;

/// How many parts the document has of a task.
[[nodiscard]] std::size_t countParts(const HabitraJSONBackupTaskRecord& record);

/// Brings what a task of a document has beside its row and its log into a stored task, in the context's open unit:
/// notes, counters, timers, reminders, notification settings, categories and pauses.
///
/// *Which row is which*: notes, counters and reminders go by identifier, else by what they say: notes by day, body and
/// second of making, counters by day, second and quantity, reminders by what sets them off, time and weekdays. Timers
/// go by the second of their start. Each stored row is the partner of one at most.
class TaskParts {
 public:
  /// REQUIRES: `context` and `categories` outlive this object, and so does `task`, whose log has come already.
  TaskParts(StoreContext& context, const TaskEntity& task, IdentifierPolicy policy, const CategoriesImport& categories,
            const StoredEntryIdentifiers& entries)
      : context_(context), task_(task), policy_(policy), categories_(categories), entries_(entries) {}

  /// Adds the notes, counters and timers that are not there yet.
  void merge(const HabitraJSONBackupTask& task, ImportReport::Task& report);
  /// Makes all parts those of the document; stored rows that it has keep their identifiers. Of a task without record it
  /// says nothing of parts but its notes, so that others stay, and notes too where it has none.
  void overwrite(const HabitraJSONBackupTask& task, ImportReport::Task& report);

 private:
  enum class Others { stay, giveWay };

  template <typename Row, typename ContentOf>
  ImportReport::Rows import(std::span<const Row> rows, const ContentOf& contentOf, Others others);
  template <typename Row>
  void add(Row row);
  ImportReport::Rows importNotes(const HabitraJSONBackupTask& task, Others others);
  ImportReport::Rows importRuns(const HabitraJSONBackupTaskRecord& record, Others others);
  ImportReport::Rows replaceCategories(const HabitraJSONBackupTaskRecord& record, ImportReport::Task& report);
  ImportReport::Rows replacePauses(const HabitraJSONBackupTaskRecord& record);
  /// The timers, with the identifiers that their entries have in the store.
  [[nodiscard]] std::vector<TaskTimerEntity> timers(const HabitraJSONBackupTaskRecord& record);
  [[nodiscard]] std::optional<std::string> storedEntry(const std::string& identifier);

  StoreContext& context_;
  const TaskEntity& task_;
  IdentifierPolicy policy_;
  const CategoriesImport& categories_;
  const StoredEntryIdentifiers& entries_;
};

}  // namespace habitra
