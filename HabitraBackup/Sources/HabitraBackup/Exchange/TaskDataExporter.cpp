#include <HabitraBackup/Exchange/TaskDataExporter.h>
#include <HabitraBackup/Files/ReplacementFile.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/StoredPages.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>

namespace habitra {

namespace {

bool isExported(const TaskEntity& task) { return task.status != task_status::deleted; }

std::optional<HabitraJSONBackupDay> backupDay(std::int32_t stored) {
  const auto day = dayFromStored(stored);
  return day ? std::optional<HabitraJSONBackupDay>(*day) : std::nullopt;
}

HabitraJSONBackupTaskEntry entry(const TaskLogEntryEntity& stored) {
  HabitraJSONBackupTaskEntry entry;
  entry.entryType = fromRawValue<TaskLogEntryType>(stored.entryType).value_or(TaskLogEntryType::unknown);
  entry.entryDate = backupDay(stored.entryDate).value_or(HabitraJSONBackupDay());
  entry.progress = stored.progress;
  entry.createdTimestamp = stored.createdTimestamp;
  entry.entryPeriodFrom = backupDay(stored.entryPeriodFrom);
  entry.entryPeriodTo = backupDay(stored.entryPeriodTo);
  if (stored.entryPeriodType) {
    entry.entryPeriodType = fromRawValue<TaskFrequencyPeriodType>(std::string_view(*stored.entryPeriodType));
  }
  return entry;
}

}  // namespace

std::vector<ObjectID> TaskDataExporter::allTasks() const {
  std::vector<ObjectID> ids;
  for (const TaskEntity* task : context_.fetchAll<TaskEntity>()) {
    if (isExported(*task)) ids.push_back(task->objectID);
  }
  return ids;
}

std::vector<ObjectID> TaskDataExporter::tasksOfPage(TaskPageNumber page) const {
  std::vector<ObjectID> ids;
  for (const TaskEntity* task : context_.fetchAll<TaskEntity>()) {
    if (isExported(*task) && pageOf(*task, context_) == page) ids.push_back(task->objectID);
  }
  return ids;
}

HabitraJSONBackupTask TaskDataExporter::task(ObjectID id) const { return read(id, EntryIdentifiers::read); }

HabitraJSONBackupTask TaskDataExporter::read(ObjectID id, EntryIdentifiers identifiers) const {
  const auto* stored = context_.find<TaskEntity>(id);
  if (stored == nullptr || !isExported(*stored)) {
    throw Error(Error::taskDataMissing, "a habit that was to be exported is not there any more");
  }
  HabitraJSONBackupTask task;
  if (stored->uniqueId) task.uniqueId = qz::UniqueID::fromText(*stored->uniqueId);
  task.title = stored->title;
  if (stored->imageName) {
    task.visualRepresentation = HabitraJSONBackupVisualRepresentation::fromText(*stored->imageName);
  }
  task.pageNumber = pageOf(*stored, context_);
  auto& log = task.log.emplace();
  context_.readLogEntries(id, StoreContext::firstDay, StoreContext::lastDay,
                          [&log, identifiers](const TaskLogEntryEntity& storedEntry) {
                            log.push_back(entry(storedEntry));
                            if (identifiers == EntryIdentifiers::leftOut || !storedEntry.uniqueId) return;
                            log.back().uniqueId = qz::UniqueID::fromText(*storedEntry.uniqueId);
                          });
  return task;
}

HabitraJSONBackup TaskDataExporter::backup(std::span<const ObjectID> tasks, HabitraJSONBackupType type,
                                           qz::Moment now) const {
  HabitraJSONBackup document;
  document.timestamp = now;
  document.backupType = type;
  for (const ObjectID id : tasks) document.tasks.push_back(task(id));
  return document;
}

std::size_t TaskDataExporter::writeCsv(std::span<const ObjectID> tasks, const ByteSink& sink) const {
  std::size_t count = 0;
  HabitraJSONBackup::csvEncoder().encode(
      [&](const CSVRowHandler& onRow) {
        const auto counted = [&](const HabitraCSVBackupRow& row) {
          ++count;
          onRow(row);
        };
        for (const ObjectID id : tasks) forEachRow(read(id, EntryIdentifiers::leftOut), counted);
      },
      sink);
  return count;
}

std::size_t TaskDataExporter::writeCsv(std::span<const ObjectID> tasks, const std::filesystem::path& to) const {
  ReplacementFile file(to);
  const std::size_t count = writeCsv(tasks, [&file](std::string_view bytes) { file.write(bytes); });
  file.replace();
  return count;
}

}  // namespace habitra
