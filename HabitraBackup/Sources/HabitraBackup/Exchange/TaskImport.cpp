#include <HabitraBackup/Exchange/TaskImport.h>
#include <HabitraBackup/Exchange/TaskValues.h>
#include <HabitraModel/Mapping/StoredIdentifier.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>
#include <HabitraModel/Tasks/TaskPauses.h>
#include <HabitraModel/Tasks/TaskTitle.h>
#include <QZDateTime/TimeZone.h>

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace habitra {
namespace {

/// Whoever keeps a diary of a habit today cannot have begun before; an earlier day mostly is a slip of the pen.
const qz::YYYYMMDD earliestLikelyDay(1900, 1, 1);

using Entries = std::span<const HabitraJSONBackupTaskEntry>;

Entries entriesOf(const HabitraJSONBackupTask& task) { return task.log ? Entries(*task.log) : Entries(); }

ImportReport::Task reportOn(const TaskEntity& stored) {
  ImportReport::Task report;
  report.title = shownTitle(stored);
  report.uniqueId = stored.uniqueId.value_or(std::string());
  return report;
}

ImportReport::Task reportOnDeleted(const HabitraJSONBackupTask& task) {
  ImportReport::Task report;
  report.title = titleOf(task);
  report.outcome = ImportReport::Outcome::leftOut;
  report.remarks.emplace_back("it had been deleted when the document was made");
  return report;
}

bool haveChanged(const ImportReport::Task& report) {
  const ImportReport::Entries& entries = report.entries;
  return entries.added + entries.changed + entries.removed > 0 || report.notes.haveChanged() ||
         report.parts.haveChanged();
}

void remarkOnEntriesAfterToday(ImportReport::Task& report) {
  const std::size_t count = report.entries.afterToday;
  if (count == 0) return;
  report.remarks.push_back(count == 1 ? "1 entry lies after today and was left out"
                                      : fmt::format("{} entries lie after today and were left out", count));
}

/// What a person would want to know of a habit that has come in, since its days depend on it.
void remarkOnWhatIsOdd(const TaskEntity& stored, const LogImport& log, ImportReport::Task& report) {
  if (report.title.find_first_not_of(' ') == std::string::npos) report.remarks.emplace_back("it has no title");
  if (!rulesWithoutPauses(stored))
    report.remarks.emplace_back(
        "how often it is to be done cannot be read; until that is changed no day of it is judged");
  const auto& zone = stored.currentTimeZoneOverride;
  if (zone && !qz::TimeZone::fromIdentifier(*zone))
    report.remarks.push_back(
        fmt::format("\"{}\" is no time zone that is known here; its days are those of this device", *zone));
  const auto earliest = log.earliestAdded();
  if (earliest && *earliest < earliestLikelyDay)
    report.remarks.push_back(
        fmt::format("its first entry is of {}, and all days since then count", earliest->debugDescription()));
}

/// The first day of an entry that says that the task was being kept.
std::optional<qz::YYYYMMDD> earliestDay(Entries entries) {
  std::optional<HabitraJSONBackupDay> earliest;
  for (const HabitraJSONBackupTaskEntry& entry : entries)
    if (marksHistory(entry.entryType)) earliest = std::min(earliest.value_or(entry.entryDate), entry.entryDate);
  return earliest ? std::optional<qz::YYYYMMDD>(*earliest) : std::nullopt;
}

/// Whether the document says all of the task that a store can hold, so that what is absent is none.
bool isWhole(const HabitraJSONBackupTask& task) { return task.record && task.record->isWhole; }

bool saysCreation(const HabitraJSONBackupTask& task) { return task.record && task.record->task.created; }

/// Whether two rows of one task differ in more than what any document says of a task.
bool haveOtherSettings(const TaskEntity& values, const TaskEntity& stored) {
  TaskEntity same = values;
  same.title = stored.title;
  same.imageName = stored.imageName;
  same.userProfile = stored.userProfile;
  same.displayOrder = stored.displayOrder;
  same.created = stored.created;
  same.createdTimeZone = stored.createdTimeZone;
  return same != stored;
}

}  // namespace

TaskImport::TaskImport(StoreContext& context, TaskDataImporter::Settings settings, const Document& document)
    : context_(context),
      settings_(std::move(settings)),
      document_(document),
      matching_(context, document.document),
      pages_(context) {}

ImportReport::Task TaskImport::import(const HabitraJSONBackupTask& task) {
  if (isDeleted(task)) return reportOnDeleted(task);
  const auto found = document_.strategy == ImportStrategy::importWithNewID ? std::nullopt : matching_.find(task);
  if (!found) return add(task);
  TaskEntity& stored = *context_.find<TaskEntity>(*found);
  // What an earlier task of the document has just become does not give way to a later part of the same task.
  if (document_.strategy == ImportStrategy::merge || matching_.isBroughtIn(*found)) return merge(task, stored);
  return document_.strategy == ImportStrategy::overwrite ? overwrite(task, stored) : skip(task, stored);
}

ImportReport::Task TaskImport::add(const HabitraJSONBackupTask& task) {
  TaskEntity values = newValues(task);
  bool wasDeleted = false;
  if (task.uniqueId && policy() == IdentifierPolicy::keepWhereFree) {
    wasDeleted = freeIdentifier(*task.uniqueId);
    values.uniqueId = task.uniqueId->text();
  }
  TaskEntity& stored = context_.insert(values);
  matching_.noteBroughtIn(stored);
  // Pauses go by the identifier: those of a task that is gone are not this one's.
  if (!task.record && !pausesOf(context_, stored).empty()) setPauses(context_, stored, {});
  LogImport log = logOf(stored, task);
  ImportReport::Task report = reportOn(stored);
  report.outcome = ImportReport::Outcome::added;
  report.entries = log.merge(entriesOf(task));
  partsOf(stored, log).overwrite(task, report);
  if (!saysCreation(task)) moveCreation(stored, log.earliestAdded());
  if (wasDeleted) report.remarks.emplace_back("it had been deleted here and is back");
  remarkOnWhatIsOdd(stored, log, report);
  remarkOnEntriesAfterToday(report);
  return report;
}

ImportReport::Task TaskImport::merge(const HabitraJSONBackupTask& task, TaskEntity& stored) {
  LogImport log = logOf(stored, task);
  ImportReport::Task report = reportOn(stored);
  report.entries = log.merge(entriesOf(task));
  partsOf(stored, log).merge(task, report);
  if (haveChanged(report)) {
    report.outcome = ImportReport::Outcome::changed;
    moveCreation(stored, log.earliestAdded());
    stored.lastProcessedDate.reset();
  }
  if (haveChanged(report)) remarkOnWhatIsOdd(stored, log, report);
  remarkOnEntriesAfterToday(report);
  return report;
}

ImportReport::Task TaskImport::overwrite(const HabitraJSONBackupTask& task, TaskEntity& stored) {
  const TaskEntity before = stored;
  const TaskEntity values = valuesOver(stored, task);
  const bool hasNewValues = values != before;
  if (hasNewValues) stored = values;
  matching_.noteBroughtIn(stored);
  LogImport log = logOf(stored, task);
  ImportReport::Task report = reportOn(stored);
  report.entries = log.overwrite(entriesOf(task));
  partsOf(stored, log).overwrite(task, report);
  if (hasNewValues || haveChanged(report)) {
    report.outcome = ImportReport::Outcome::changed;
    takeDerivedValues(stored, TaskEntity());
  }
  if (!task.record && haveOtherSettings(values, before))
    report.remarks.emplace_back("the document says nothing of its settings, which are those of a new habit now");
  remarkOnWhatIsOdd(stored, log, report);
  remarkOnEntriesAfterToday(report);
  return report;
}

ImportReport::Task TaskImport::skip(const HabitraJSONBackupTask& task, const TaskEntity& stored) {
  ImportReport::Task report = reportOn(stored);
  report.entries.passedOver = entriesOf(task).size();
  report.notes.passedOver = task.notes ? task.notes->size() : 0;
  report.parts.passedOver = task.record ? countParts(*task.record) : 0;
  return report;
}

TaskEntity TaskImport::newValues(const HabitraJSONBackupTask& task) {
  TaskEntity values =
      newTaskValues(task, {.firstDayOfWeek = settings_.firstDayOfWeek,
                           .now = settings_.now,
                           .timeZone = std::string(settings_.calendars.ofDevice().timeZone.identifier())});
  // The first page needs no profile.
  if (task.pageNumber)
    values.userProfile =
        *task.pageNumber == TaskPageNumber::first() ? pages_.find(*task.pageNumber) : pages_.profile(*task.pageNumber);
  if (!isWhole(task)) values.displayOrder = pages_.nextDisplayOrder(task.pageNumber.value_or(TaskPageNumber::first()));
  return values;
}

TaskEntity TaskImport::valuesOver(const TaskEntity& stored, const HabitraJSONBackupTask& task) {
  TaskEntity values = newValues(task);
  values.objectID = stored.objectID;
  values.uniqueId = stored.uniqueId;
  takeDerivedValues(values, stored);
  if (!task.record && values.title == shownTitle(stored)) values.title = stored.title;  // as rows say it
  if (!task.visualRepresentation && !isWhole(task)) values.imageName = stored.imageName;
  if (!task.pageNumber) values.userProfile = stored.userProfile;
  if (values.userProfile == stored.userProfile && !isWhole(task)) values.displayOrder = stored.displayOrder;
  const auto earliest = earliestDay(entriesOf(task));
  if (!saysCreation(task)) moveCreation(values, earliest);
  if (task.record) return values;
  // What was set at another moment of the same day, or before, says the same: a second time changes nothing.
  const TaskCalendar calendar = settings_.calendars.of(values);
  if (!earliest || calendar.creationDay(values) == calendar.creationDay(stored)) {
    values.created = stored.created;
    values.createdTimeZone = stored.createdTimeZone;
  }
  if (values.status == stored.status) values.statusDate = stored.statusDate;
  return values;
}

bool TaskImport::freeIdentifier(const qz::UniqueID& id) {
  if (!matching_.isOfDeletedTask(id)) return false;
  for (const std::string& form : storedForms(id)) {
    for (TaskEntity* task : context_.fetch<TaskEntity>("uniqueId", form))
      if (task->status == task_status::deleted) context_.remove(*task);
  }
  return true;
}

// No entry of a task is older than the task.
void TaskImport::moveCreation(TaskEntity& task, std::optional<qz::YYYYMMDD> earliest) const {
  const TaskCalendar calendar = settings_.calendars.of(task);
  if (!earliest || !task.created) return;
  if (calendar.creationDay(task).value_or(calendar.day(*task.created)) <= *earliest) return;
  task.created = calendar.beginning(*earliest);
  task.createdTimeZone = calendar.timeZone.identifier();
}

LogImport TaskImport::logOf(const TaskEntity& stored, const HabitraJSONBackupTask& task) const {
  const LogImport::Manner manner{.now = settings_.now,
                                 .afterToday = settings_.entriesAfterToday,
                                 .absentIsNone = task.record.has_value(),
                                 .isInOrderOfMaking = isWhole(task)};
  LogImport log(context_, stored, settings_.calendars.of(stored), manner, document_.identifiers);
  if (task.record) log.follow(task.record->timers);
  return log;
}

TaskParts TaskImport::partsOf(const TaskEntity& stored, const LogImport& log) const {
  return {context_, stored, policy(), document_.categories, log.storedIdentifiers()};
}

IdentifierPolicy TaskImport::policy() const {
  return document_.strategy == ImportStrategy::importWithNewID ? IdentifierPolicy::giveNewOnes
                                                               : IdentifierPolicy::keepWhereFree;
}

}  // namespace habitra
