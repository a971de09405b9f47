#include <HabitraBackup/Exchange/RowPartners.h>
#include <HabitraBackup/Exchange/SharedRowsImport.h>
#include <HabitraBackup/Exchange/TaskParts.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/TaskCategories.h>
#include <HabitraModel/Tasks/TaskPauses.h>

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <tuple>

namespace habitra {
namespace {

std::optional<std::int64_t> second(const std::optional<qz::Moment>& moment) {
  if (!moment) return std::nullopt;
  return std::chrono::floor<std::chrono::seconds>(*moment).time_since_epoch().count();
}

auto contentOfNote(const TaskNoteEntity& note) {
  return std::tuple(note.noteDate, note.content, second(note.createdTimestamp));
}
auto contentOfCounter(const TaskCounterEntity& counter) {
  return std::tuple(counter.entryDate, second(counter.createdTimestamp), counter.quantity);
}
auto contentOfTimer(const TaskTimerEntity& timer) { return second(timer.start); }
auto contentOfReminder(const TaskNotificationRemindersEntity& reminder) {
  return std::tuple(reminder.reminderType, reminder.timeOfDay, reminder.daysOfWeek);
}

/// What `wanted` and `stored`, both in order, make of each other.
template <typename T>
ImportReport::Rows comparison(const std::vector<T>& wanted, const std::vector<T>& stored) {
  std::vector<T> both;
  std::ranges::set_intersection(wanted, stored, std::back_inserter(both));
  return {.added = wanted.size() - both.size(), .removed = stored.size() - both.size(), .left = both.size()};
}

auto sortedDays(const std::vector<TaskPause>& pauses) {
  std::vector<std::pair<std::int64_t, std::optional<std::int64_t>>> days;
  for (const TaskPause& pause : pauses) {
    days.emplace_back(pause.from.intValue(),
                      pause.to ? std::optional<std::int64_t>(pause.to->intValue()) : std::nullopt);
  }
  std::ranges::sort(days);
  return days;
}

std::vector<ObjectID> sortedNumbers(const std::vector<TaskCategoryEntity*>& categories) {
  std::vector<ObjectID> numbers;
  for (const TaskCategoryEntity* category : categories) numbers.push_back(category->objectID);
  std::ranges::sort(numbers);
  return numbers;
}

}  // namespace

std::size_t countParts(const HabitraJSONBackupTaskRecord& record) {
  return record.counters.size() + record.timers.size() + record.reminders.size() + record.categories.size() +
         record.pauses.size() + (record.notificationSettings ? 1 : 0);
}

void TaskParts::merge(const HabitraJSONBackupTask& task, ImportReport::Task& report) {
  report.notes = importNotes(task, Others::stay);
  if (task.record) report.parts = importRuns(*task.record, Others::stay);
}

void TaskParts::overwrite(const HabitraJSONBackupTask& task, ImportReport::Task& report) {
  if (task.notes || task.record) report.notes = importNotes(task, Others::giveWay);
  if (!task.record) return;
  const HabitraJSONBackupTaskRecord& record = *task.record;
  report.parts = importRuns(record, Others::giveWay);
  report.parts += import <TaskNotificationRemindersEntity>(record.reminders, &contentOfReminder, Others::giveWay);
  std::vector<TaskNotificationSettingsEntity> settings;
  if (record.notificationSettings) settings.push_back(*record.notificationSettings);
  const auto isOnlyOne = [](const TaskNotificationSettingsEntity&) { return 0; };
  report.parts += import <TaskNotificationSettingsEntity>(settings, isOnlyOne, Others::giveWay);
  report.parts += replaceCategories(record, report);
  report.parts += replacePauses(record);
}

template <typename Row, typename ContentOf>
ImportReport::Rows TaskParts::import(std::span<const Row> rows, const ContentOf& contentOf, Others others) {
  const RowPartners<Row> partners(rows, context_.fetchRelated<Row>("task", task_.objectID), contentOf);
  ImportReport::Rows counts;
  if (others == Others::giveWay) {
    for (Row* row : partners.withoutPartner()) context_.remove(*row);
    counts.removed = partners.withoutPartner().size();
  }
  for (std::size_t index = 0; index < rows.size(); ++index) {
    Row* const stored = partners.ofWanted(index);
    if (stored == nullptr) {
      add(rows[index]);
      ++counts.added;
      continue;
    }
    Row values = rows[index];
    values.objectID = stored->objectID;
    values.task = stored->task;
    if constexpr (Identified<Row>) values.uniqueId = stored->uniqueId;
    const bool isReplaced = others == Others::giveWay && values != *stored;
    if (isReplaced) *stored = std::move(values);
    ++(isReplaced ? counts.changed : counts.left);
  }
  return counts;
}

template <typename Row>
void TaskParts::add(Row row) {
  row.task = task_.objectID;
  if constexpr (Identified<Row>) {
    row.uniqueId = policy_ == IdentifierPolicy::giveNewOnes ? std::nullopt : usualIdentifier(row);
    if (row.uniqueId && isIdentifierTaken<Row>(context_, *row.uniqueId)) row.uniqueId.reset();
  }
  context_.insert(row);
}

ImportReport::Rows TaskParts::importNotes(const HabitraJSONBackupTask& task, Others others) {
  const std::span<const TaskNoteEntity> notes = task.notes ? *task.notes : std::span<const TaskNoteEntity>();
  return import <TaskNoteEntity>(notes, &contentOfNote, others);
}

ImportReport::Rows TaskParts::importRuns(const HabitraJSONBackupTaskRecord& record, Others others) {
  ImportReport::Rows counts = import <TaskCounterEntity>(record.counters, &contentOfCounter, others);
  return counts += import <TaskTimerEntity>(timers(record), &contentOfTimer, others);
}

ImportReport::Rows TaskParts::replaceCategories(const HabitraJSONBackupTaskRecord& record, ImportReport::Task& report) {
  std::vector<TaskCategoryEntity*> wanted;
  std::size_t unknown = 0;
  for (const qz::UniqueID& id : record.categories) {
    TaskCategoryEntity* const category = categories_.find(id);
    if (category == nullptr) ++unknown;
    if (category != nullptr && std::ranges::count(wanted, category) == 0) wanted.push_back(category);
  }
  if (unknown > 0) {
    report.remarks.push_back(
        fmt::format("{} of its categories {} not in the document", unknown, unknown == 1 ? "is" : "are"));
  }
  const ImportReport::Rows counts = comparison(sortedNumbers(wanted), sortedNumbers(categoriesOf(context_, task_)));
  if (counts.haveChanged()) setCategories(context_, task_, wanted);
  return counts;
}

ImportReport::Rows TaskParts::replacePauses(const HabitraJSONBackupTaskRecord& record) {
  const ImportReport::Rows counts = comparison(sortedDays(record.pauses), sortedDays(pausesOf(context_, task_)));
  if (counts.haveChanged()) setPauses(context_, task_, record.pauses);
  return counts;
}

std::vector<TaskTimerEntity> TaskParts::timers(const HabitraJSONBackupTaskRecord& record) {
  std::vector<TaskTimerEntity> timers = record.timers;
  for (TaskTimerEntity& timer : timers)
    if (timer.entryId) timer.entryId = storedEntry(*timer.entryId);
  return timers;
}

std::optional<std::string> TaskParts::storedEntry(const std::string& identifier) {
  const auto id = qz::UniqueID::fromText(identifier);
  const auto found = id ? entries_.find(*id) : entries_.end();
  if (found != entries_.end() && found->second) return found->second;
  // A timer never names the entry of another task, nor one that was copied without it.
  if (policy_ == IdentifierPolicy::giveNewOnes) return std::nullopt;
  if (!id) return identifier;
  for (const std::string& form : storedForms(*id)) {
    const auto entry = context_.findLogEntry(form);
    if (entry && entry->task != task_.objectID) return std::nullopt;
  }
  return identifier;
}

}  // namespace habitra
