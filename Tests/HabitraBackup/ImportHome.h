#pragma once

#include <gtest/gtest.h>
#include <HabitraBackup/Exchange/TaskDataImporter.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/TaskCategories.h>
#include <HabitraModel/Tasks/TaskPauses.h>
#include <QZDateTime/ISO8601.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace habitra {

/// A store in memory, on a Saturday in Berlin.
class ImportHome {
 public:
  ImportHome() = default;
  explicit ImportHome(std::shared_ptr<qz::Clock> clock) : context(Store::inMemory(std::move(clock))) {}

  ImportReport import(const HabitraJSONBackup& document, ImportStrategy strategy = ImportStrategy::merge,
                      const ImportRemarks& remarks = {}) {
    const TaskCalendars calendars(qz::TimeZone::fromIdentifier("Europe/Berlin").value(), qz::HHMMSS::midnight);
    TaskDataImporter importer(context, {.calendars = calendars,
                                        .firstDayOfWeek = qz::DayOfWeek::monday,
                                        .now = now,
                                        .entriesAfterToday = entriesAfterToday});
    return importer.importBackup(document, strategy, {}, remarks);
  }

  TaskEntity& task(std::string_view title) { return *context.find<TaskEntity>("title", title); }

  template <typename Row>
  std::vector<Row*> rows(std::string_view title) {
    return context.fetchRelated<Row>("task", task(title).objectID);
  }

  /// The rows, without what only this store can say of them.
  template <typename Row>
  std::vector<Row> contents(std::string_view title) {
    std::vector<Row> result;
    for (const Row* row : rows<Row>(title)) {
      result.push_back(*row);
      result.back().objectID = result.back().task = ObjectID::none;
    }
    return result;
  }

  /// Everything that the store holds of a task but its log, identifiers included, in the form of a document.
  HabitraJSONBackupTaskRecord record(std::string_view title) {
    HabitraJSONBackupTaskRecord record;
    record.task = task(title);
    record.task.objectID = record.task.userProfile = ObjectID::none;
    const auto settings = contents<TaskNotificationSettingsEntity>(title);
    if (!settings.empty()) record.notificationSettings = settings.front();
    record.reminders = contents<TaskNotificationRemindersEntity>(title);
    record.counters = contents<TaskCounterEntity>(title);
    record.timers = contents<TaskTimerEntity>(title);
    for (const TaskCategoryEntity* category : categoriesOf(context, task(title)))
      record.categories.push_back(qz::UniqueID::fromText(category->uniqueId.value()).value());
    record.pauses = pausesOf(context, task(title));
    return record;
  }

  std::vector<TaskLogEntryEntity> log(std::string_view title) { return context.fetchLogEntries(task(title).objectID); }

  void expectUniqueIdentifiers() {
    EXPECT_TRUE(context.repeatedTexts<TaskEntity>("uniqueId").empty());
    EXPECT_TRUE(context.repeatedTexts<TaskLogEntryEntity>("uniqueId").empty());
    EXPECT_TRUE(context.repeatedTexts<TaskNoteEntity>("uniqueId").empty());
    EXPECT_TRUE(context.repeatedTexts<TaskCounterEntity>("uniqueId").empty());
    EXPECT_TRUE(context.repeatedTexts<TaskNotificationRemindersEntity>("uniqueId").empty());
    EXPECT_TRUE(context.repeatedTexts<UserProfileEntity>("uniqueId").empty());
    EXPECT_TRUE(context.repeatedTexts<TaskCategoryEntity>("uniqueId").empty());
  }

  void save() { context.save({}); }

  EntriesAfterToday entriesAfterToday = EntriesAfterToday::leftOut;
  qz::Moment now = qz::momentFromISO8601("2024-06-01T10:00:00Z").value();
  StoreContext context{Store::inMemory(std::make_shared<qz::FixedClock>(now))};
};

}  // namespace habitra
