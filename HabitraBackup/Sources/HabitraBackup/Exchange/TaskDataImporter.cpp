#include <HabitraBackup/Exchange/LogImport.h>
#include <HabitraBackup/Exchange/TaskDataImporter.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/StoredPages.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace habitra {

namespace {

using Entries = std::span<const HabitraJSONBackupTaskEntry>;

Entries entriesOf(const HabitraJSONBackupTask& task) { return task.log ? Entries(*task.log) : Entries(); }

// The stored tasks that tasks of a document can be.
class TaskMatching {
 public:
  TaskMatching(StoreContext& context, const HabitraJSONBackup& document) {
    for (const TaskEntity* task : context.fetchAll<TaskEntity>()) {
      const auto id = task->uniqueId ? qz::UniqueID::fromText(*task->uniqueId) : std::nullopt;
      if (id) takenIds_.insert(*id);
      if (task->status == task_status::deleted) continue;
      if (id) byId_.try_emplace(*id, task->objectID);
      if (task->title) byTitle_[*task->title].push_back(task->objectID);
    }
    for (const HabitraJSONBackupTask& task : document.tasks) {
      if (task.uniqueId && byId_.contains(*task.uniqueId)) claimed_.insert(byId_.at(*task.uniqueId));
    }
  }

  [[nodiscard]] std::optional<ObjectID> find(const HabitraJSONBackupTask& task) {
    if (task.uniqueId) {
      const auto found = byId_.find(*task.uniqueId);
      return found == byId_.end() ? std::nullopt : std::optional(found->second);
    }
    const auto candidates = task.title ? byTitle_.find(*task.title) : byTitle_.end();
    if (candidates == byTitle_.end()) return std::nullopt;
    for (const ObjectID candidate : candidates->second) {
      if (claimed_.insert(candidate).second) return candidate;
    }
    return std::nullopt;
  }

  [[nodiscard]] bool isFree(const qz::UniqueID& id) const { return !takenIds_.contains(id); }

  // A new task is found by its identifier when the document has it twice, but never by its title: tasks of one
  // document that share a title are different tasks.
  void noteNew(const TaskEntity& task) {
    const auto id = task.uniqueId ? qz::UniqueID::fromText(*task.uniqueId) : std::nullopt;
    if (!id) return;
    takenIds_.insert(*id);
    byId_.insert_or_assign(*id, task.objectID);
  }

 private:
  std::unordered_map<qz::UniqueID, ObjectID> byId_;
  std::unordered_map<std::string, std::vector<ObjectID>> byTitle_;
  std::unordered_set<ObjectID> claimed_;
  std::unordered_set<qz::UniqueID> takenIds_;
};

// One import under way.
class Import {
 public:
  Import(StoreContext& context, const TaskDataImporter::Settings& settings, const HabitraJSONBackup& document,
         ImportStrategy strategy)
      : context_(context), settings_(settings), strategy_(strategy), matching_(context, document), pages_(context) {}

  ImportReport::Task import(const HabitraJSONBackupTask& task) {
    const auto found = strategy_ == ImportStrategy::importWithNewID ? std::nullopt : matching_.find(task);
    if (!found) return add(task);
    TaskEntity& stored = *context_.find<TaskEntity>(*found);
    switch (strategy_) {
      case ImportStrategy::overwrite: return overwrite(task, stored);
      case ImportStrategy::merge: return merge(task, stored);
      case ImportStrategy::skip:
      case ImportStrategy::importWithNewID: break;
    }
    ImportReport::Task report = reportOn(stored, ImportReport::Outcome::left);
    report.entries.left = entriesOf(task).size();
    return report;
  }

 private:
  ImportReport::Task add(const HabitraJSONBackupTask& task) {
    TaskEntity values = newValues(task);
    const bool keepsId = task.uniqueId && strategy_ != ImportStrategy::importWithNewID;
    if (keepsId && matching_.isFree(*task.uniqueId)) values.uniqueId = task.uniqueId->text();
    TaskEntity& stored = context_.insert(values);
    matching_.noteNew(stored);
    LogImport log = logOf(stored);
    ImportReport::Task report = reportOn(stored, ImportReport::Outcome::added);
    report.entries = log.merge(entriesOf(task));
    moveCreation(stored, log.earliestAdded());
    return report;
  }

  ImportReport::Task merge(const HabitraJSONBackupTask& task, TaskEntity& stored) {
    LogImport log = logOf(stored);
    const ImportReport::Entries entries = log.merge(entriesOf(task));
    const bool isChanged = entries.added > 0 || entries.removed > 0;
    if (isChanged) {
      moveCreation(stored, log.earliestAdded());
      stored.lastProcessedDate.reset();
    }
    ImportReport::Task report =
        reportOn(stored, isChanged ? ImportReport::Outcome::changed : ImportReport::Outcome::left);
    report.entries = entries;
    return report;
  }

  ImportReport::Task overwrite(const HabitraJSONBackupTask& task, TaskEntity& stored) {
    TaskEntity values = newValues(task);
    values.objectID = stored.objectID;
    values.uniqueId = stored.uniqueId;
    if (values.userProfile == stored.userProfile) values.displayOrder = stored.displayOrder;
    stored = values;
    LogImport log = logOf(stored);
    ImportReport::Task report = reportOn(stored, ImportReport::Outcome::changed);
    report.entries = log.overwrite(entriesOf(task));
    for (const HabitraJSONBackupTaskEntry& entry : entriesOf(task)) {
      if (marksHistory(entry.entryType)) moveCreation(stored, entry.entryDate);
    }
    return report;
  }

  // The row of a task of the document that meets none in the store.
  TaskEntity newValues(const HabitraJSONBackupTask& task) {
    TaskEntity values =
        newlyMadeTask(task.title.value_or(task.titleFormatted.value_or(std::string())), settings_.firstDayOfWeek,
                      settings_.now, settings_.calendars.ofDevice().timeZone.identifier());
    if (task.visualRepresentation) values.imageName = task.visualRepresentation->text();
    if (task.pageNumber) values.userProfile = pages_.profile(*task.pageNumber);
    values.displayOrder = pages_.nextDisplayOrder(task.pageNumber.value_or(TaskPageNumber::first()));
    return values;
  }

  [[nodiscard]] LogImport logOf(const TaskEntity& stored) {
    return {context_, stored, settings_.calendars.of(stored), settings_.now};
  }

  // No entry of a task is older than the task.
  void moveCreation(TaskEntity& stored, std::optional<qz::YYYYMMDD> earliest) const {
    const TaskCalendar calendar = settings_.calendars.of(stored);
    if (!earliest || !stored.created || calendar.day(*stored.created) <= *earliest) return;
    stored.created = calendar.beginning(*earliest);
    stored.createdTimeZone = calendar.timeZone.identifier();
  }

  static ImportReport::Task reportOn(const TaskEntity& stored, ImportReport::Outcome outcome) {
    ImportReport::Task report;
    report.title = stored.title.value_or(std::string());
    report.uniqueId = stored.uniqueId.value_or(std::string());
    report.outcome = outcome;
    return report;
  }

  StoreContext& context_;
  const TaskDataImporter::Settings& settings_;
  ImportStrategy strategy_;
  TaskMatching matching_;
  StoredPages pages_;
};

// Gives up the unit unless it was saved.
class UnitGuard {
 public:
  explicit UnitGuard(StoreContext& context) : context_(context) { context.beginUnit(); }
  ~UnitGuard() {
    if (context_.isInUnit()) context_.rollback();
  }
  UnitGuard(const UnitGuard&) = delete;
  UnitGuard& operator=(const UnitGuard&) = delete;

 private:
  StoreContext& context_;
};

}  // namespace

TaskDataImporter::TaskDataImporter(StoreContext& context, Settings settings)
    : context_(context), settings_(std::move(settings)) {}

ImportReport TaskDataImporter::importBackup(const HabitraJSONBackup& document, ImportStrategy strategy,
                                            const SaveRequest& request) {
  const UnitGuard unit(context_);
  Import import(context_, settings_, document, strategy);
  ImportReport report;
  for (const HabitraJSONBackupTask& task : document.tasks) report.tasks.push_back(import.import(task));
  if (context_.hasChanges()) context_.save(request);
  return report;
}

}  // namespace habitra
