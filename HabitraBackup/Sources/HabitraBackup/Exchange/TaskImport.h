#pragma once

#include <HabitraBackup/Exchange/EntryIdentifiers.h>
#include <HabitraBackup/Exchange/ImportReport.h>
#include <HabitraBackup/Exchange/LogImport.h>
#include <HabitraBackup/Exchange/SharedRowsImport.h>
#include <HabitraBackup/Exchange/TaskDataImporter.h>
#include <HabitraBackup/Exchange/TaskMatching.h>
#include <HabitraBackup/Exchange/TaskParts.h>
#include <HabitraModel/Tasks/StoredPages.h>

namespace habitra {

/// Brings the tasks of a document into a store one by one, in the context's open unit. TaskDataImporter has the rules.
class TaskImport {
 public:
  /// What is known of the document as a whole.
  struct Document {
    const HabitraJSONBackup& document;
    ImportStrategy strategy;
    const EntryIdentifiers& identifiers;
    const CategoriesImport& categories;
  };

  /// REQUIRES: `context` and what `document` refers to outlive this object; the document's pages are in the store.
  TaskImport(StoreContext& context, TaskDataImporter::Settings settings, const Document& document);

  ImportReport::Task import(const HabitraJSONBackupTask& task);

 private:
  ImportReport::Task add(const HabitraJSONBackupTask& task);
  ImportReport::Task merge(const HabitraJSONBackupTask& task, TaskEntity& stored);
  ImportReport::Task overwrite(const HabitraJSONBackupTask& task, TaskEntity& stored);
  [[nodiscard]] static ImportReport::Task skip(const HabitraJSONBackupTask& task, const TaskEntity& stored);

  [[nodiscard]] TaskEntity newValues(const HabitraJSONBackupTask& task);
  [[nodiscard]] TaskEntity valuesOver(const TaskEntity& stored, const HabitraJSONBackupTask& task);
  /// Takes the identifier from deleted tasks that bear it, which go; gives whether there were some.
  bool freeIdentifier(const qz::UniqueID& id);
  void moveCreation(TaskEntity& task, std::optional<qz::YYYYMMDD> earliest) const;
  [[nodiscard]] LogImport logOf(const TaskEntity& stored, const HabitraJSONBackupTask& task) const;
  [[nodiscard]] TaskParts partsOf(const TaskEntity& stored, const LogImport& log) const;
  [[nodiscard]] IdentifierPolicy policy() const;

  StoreContext& context_;
  TaskDataImporter::Settings settings_;
  Document document_;
  TaskMatching matching_;
  StoredPages pages_;
};

}  // namespace habitra
