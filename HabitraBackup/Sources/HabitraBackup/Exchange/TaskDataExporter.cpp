#include <HabitraBackup/Document/DocumentValues.h>
#include <HabitraBackup/Document/HabitraJSONEncoder.h>
#include <HabitraBackup/Exchange/StoredTaskParts.h>
#include <HabitraBackup/Exchange/TaskDataExporter.h>
#include <HabitraModel/Mapping/StoredDay.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/StoredPages.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <HabitraModel/Tasks/TaskTitle.h>

#include <algorithm>
#include <memory>
#include <set>
#include <utility>

namespace habitra {

namespace {

bool isExported(const TaskEntity& task) { return task.status != task_status::deleted; }

std::optional<HabitraJSONBackupDay> backupDay(std::int32_t stored) {
  const auto day = dayFromStored(stored);
  return day ? std::optional<HabitraJSONBackupDay>(*day) : std::nullopt;
}

/// None for a damaged one, of a type that is not known or a day that no calendar has: with another in its place it
/// would say something else.
std::optional<HabitraJSONBackupTaskEntry> entryFrom(const TaskLogEntryEntity& stored) {
  const auto type = fromRawValue<TaskLogEntryType>(stored.entryType);
  const auto day = document_values::day(stored.entryDate);
  if (!type || !day) return std::nullopt;
  HabitraJSONBackupTaskEntry entry;
  entry.entryType = *type;
  entry.entryDate = *day;
  entry.progress = stored.progress;
  entry.createdTimestamp = stored.createdTimestamp;
  entry.entryPeriodFrom = backupDay(stored.entryPeriodFrom);
  entry.entryPeriodTo = backupDay(stored.entryPeriodTo);
  if (stored.entryPeriodType) {
    entry.entryPeriodType = fromRawValue<TaskFrequencyPeriodType>(std::string_view(*stored.entryPeriodType));
  }
  return entry;
}

using Details = HabitraJSONBackupTaskEntryDetails;

// What of an entry the rows do not hold. `details` are those of the entry before, which most entries share.
void addDetails(HabitraJSONBackupTaskEntry& entry, const TaskLogEntryEntity& stored,
                std::shared_ptr<const Details>& details) {
  if (stored.uniqueId) entry.uniqueId = qz::UniqueID::fromText(*stored.uniqueId);
  if (stored.progressTotal != 0) entry.progressTotal = stored.progressTotal;
  const Details own{.createdTimeZone = stored.createdTimeZone,
                    .cloudStatus = stored.cloudStatus,
                    .cloudStatusDate = stored.cloudStatusDate};
  if (own == Details{}) return;
  if (!details || *details != own) details = std::make_shared<const Details>(own);
  entry.details = details;
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

bool TaskDataExporter::hasPage(TaskPageNumber page) const {
  const auto isOne = [page](const UserProfileEntity* profile) {
    return TaskPageNumber::ofDisplayOrder(profile->displayOrder) == page;
  };
  return page == TaskPageNumber::first() || std::ranges::any_of(context_.fetchAll<UserProfileEntity>(), isOne);
}

HabitraJSONBackupTask TaskDataExporter::task(ObjectID id) const { return read(id, Detail::all).task; }

TaskDataExporter::ReadTask TaskDataExporter::read(ObjectID id, Detail detail) const {
  const auto* stored = context_.find<TaskEntity>(id);
  if (stored == nullptr || !isExported(*stored)) {
    throw Error(Error::taskDataMissing, "a habit that was to be exported is not there any more");
  }
  ReadTask result;
  HabitraJSONBackupTask& task = result.task;
  if (stored->uniqueId) task.uniqueId = qz::UniqueID::fromText(*stored->uniqueId);
  task.title = stored->title;
  if (std::string shown = shownTitle(*stored); stored->title && shown != *stored->title)
    task.titleFormatted = std::move(shown);
  if (stored->imageName) {
    task.visualRepresentation = HabitraJSONBackupVisualRepresentation::fromText(*stored->imageName);
  }
  task.pageNumber = pageOf(*stored, context_);
  if (detail == Detail::all) task.record = recordOf(context_, *stored);
  if (auto notes = notesOf(context_, id); !notes.empty()) task.notes = std::move(notes);
  auto& log = task.log.emplace();
  std::shared_ptr<const Details> details;
  context_.readLogEntries(id, StoreContext::firstDay, StoreContext::lastDay,
                          [&](const TaskLogEntryEntity& storedEntry) {
                            auto entry = entryFrom(storedEntry);
                            if (!entry) {
                              ++result.entriesLeftOut;
                              return;
                            }
                            log.push_back(*std::move(entry));
                            if (detail == Detail::all) addDetails(log.back(), storedEntry, details);
                          });
  return result;
}

HabitraJSONBackup TaskDataExporter::header(std::span<const ObjectID> tasks, HabitraJSONBackupType type,
                                           qz::Moment now) const {
  HabitraJSONBackup document;
  document.timestamp = now;
  document.backupType = type;
  std::set<TaskPageNumber> ofOthers;
  for (const ObjectID id : allTasks()) ofOthers.insert(pageOf(*context_.find<TaskEntity>(id), context_));
  for (const ObjectID id : tasks)
    if (const auto* task = context_.find<TaskEntity>(id)) ofOthers.erase(pageOf(*task, context_));
  document.pages = pagesOf(context_, ofOthers);
  document.categories = storedCategories(context_);
  document.settings = storedSettings(context_);
  return document;
}

HabitraJSONBackup TaskDataExporter::backup(std::span<const ObjectID> tasks, HabitraJSONBackupType type,
                                           qz::Moment now) const {
  HabitraJSONBackup document = header(tasks, type, now);
  for (const ObjectID id : tasks) document.tasks.push_back(task(id));
  return document;
}

TaskDataExporter::WrittenDocument TaskDataExporter::writeJson(std::span<const ObjectID> tasks,
                                                              const HabitraJSONBackup& header,
                                                              const ByteSink& sink) const {
  WrittenDocument written;
  HabitraJSONEncoder encoder(sink);
  encoder.begin(header);
  for (const ObjectID id : tasks) {
    const ReadTask read = this->read(id, Detail::all);
    encoder.task(read.task);
    ++written.tasks;
    written.entries += read.task.log->size();
    written.entriesLeftOut += read.entriesLeftOut;
    tell(written.tasks, tasks.size());
  }
  encoder.end();
  return written;
}

void TaskDataExporter::tell(std::size_t written, std::size_t tasks) const {
  if (progress_) progress_("writing", static_cast<double>(written) / static_cast<double>(tasks));
}

TaskDataExporter::WrittenRows TaskDataExporter::writeCsv(std::span<const ObjectID> tasks, const ByteSink& sink) const {
  WrittenRows written;
  HabitraJSONBackup::csvEncoder().encode(
      [&](const CSVRowHandler& onRow) {
        const auto counted = [&](const HabitraCSVBackupRow& row) {
          ++written.rows;
          onRow(row);
        };
        std::size_t told = 0;
        for (const ObjectID id : tasks) {
          const ReadTask read = this->read(id, Detail::ofRows);
          forEachRow(read.task, counted);
          written.entriesLeftOut += read.entriesLeftOut;
          tell(++told, tasks.size());
        }
      },
      sink);
  return written;
}

}  // namespace habitra
