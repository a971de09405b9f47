#pragma once

#include <HabitraBackup/Document/DocumentValues.h>
#include <HabitraBackup/Document/HabitraJSONBackup.h>
#include <QZKit/UTF8.h>

#include <utility>
#include <vector>

#include "HabitraModel/Mapping/RowGenerators.h"

/// Arbitrary backup documents of what a document can hold.
namespace habitra {

inline qz::Moment anyWritableMoment() {
  return qz::Moment(std::chrono::days(anyCommonDay().dayNumber())) +
         std::chrono::microseconds(qz::between(0, 86'399'999'999));
}

inline std::string anyWritableText() {
  std::string text;
  setAny(text);
  return qz::utf8::repaired(text);
}

template <typename Row>
Row anyWritableRow() {
  auto row = anyRow<Row>();
  for (const AttributeDescription& attribute : Row::description().attributes)
    visitField(attribute, &row, [&attribute]<typename Field>(Field& value) {
      if constexpr (std::is_same_v<Field, ObjectID>) value = ObjectID::none;
      if constexpr (std::is_same_v<Field, std::optional<std::string>>)
        if (value) value = document_values::isIdentifier(attribute) ? anyID().text() : anyWritableText();
      if constexpr (std::is_same_v<Field, std::optional<qz::Moment>>)
        if (value) value = anyWritableMoment();
      if constexpr (std::is_same_v<Field, std::int32_t>)
        if (document_values::isDay(attribute)) value = static_cast<std::int32_t>(anyCommonDay().intValue());
      if constexpr (std::is_same_v<Field, std::optional<std::int64_t>>)
        if (value && document_values::isDay(attribute)) value = anyCommonDay().intValue();
    });
  return row;
}

template <typename Make>
auto anyFew(Make&& make) {
  std::vector<decltype(make())> result;
  for (std::int64_t count = qz::between(0, 3); count > 0; --count) result.push_back(make());
  return result;
}

inline HabitraJSONBackupTaskEntry anyDocumentEntry() {
  HabitraJSONBackupTaskEntry entry;
  entry.uniqueId = anyOrNone(anyID);
  entry.entryType = anyCase<TaskLogEntryType>();
  entry.entryDate = anyCommonDay();
  entry.progress = anyOrNone(anyNumber);
  entry.progressTotal = anyOrNone(anyNumber);
  entry.createdTimestamp = anyOrNone(anyWritableMoment);
  if (anyBool()) {
    const DatedPeriod period = anyPeriod();
    entry.entryPeriodFrom = period.period.startDate;
    entry.entryPeriodTo = period.period.finishDate;
    entry.entryPeriodType = anyCase<TaskFrequencyPeriodType>();
  }
  if (anyBool())
    entry.details = std::make_shared<const HabitraJSONBackupTaskEntryDetails>(
        HabitraJSONBackupTaskEntryDetails{.createdTimeZone = anyOrNone(anyWritableText),
                                          .cloudStatus = anyOrNone(anyWritableText),
                                          .cloudStatusDate = anyOrNone(anyWritableMoment)});
  return entry;
}

inline HabitraJSONBackupTaskRecord anyRecord() {
  HabitraJSONBackupTaskRecord record;
  record.task = anyWritableRow<TaskEntity>();
  record.task.uniqueId.reset();
  record.task.title.reset();
  record.task.imageName = *rc::gen::element<std::string>("ic_walk", "sf_bed.double", "em_X", "ic_", "");
  record.notificationSettings = anyOrNone(anyWritableRow<TaskNotificationSettingsEntity>);
  record.reminders = anyFew(anyWritableRow<TaskNotificationRemindersEntity>);
  record.counters = anyFew(anyWritableRow<TaskCounterEntity>);
  record.timers = anyFew(anyWritableRow<TaskTimerEntity>);
  record.categories = anyFew(anyID);
  record.pauses = anyFew([] {
    TaskPause pause{anyCommonDay(), anyOrNone(anyCommonDay)};
    if (pause.to) pause.to = std::max(pause.from, *pause.to);
    return pause;
  });
  return record;
}

inline HabitraJSONBackupTask anyDocumentTask() {
  using Representation = HabitraJSONBackupVisualRepresentation;
  HabitraJSONBackupTask task;
  task.uniqueId = anyOrNone(anyID);
  task.title = anyOrNone(anyWritableText);
  task.titleFormatted = anyOrNone(anyWritableText);
  task.pageNumber = TaskPageNumber::fromRawValue(qz::between(0, TaskPageNumber::largest));
  if (anyBool()) {
    task.record = anyRecord();
    task.visualRepresentation = Representation::fromText(*task.record->task.imageName);
  } else {
    task.visualRepresentation = anyOrNone([] { return Representation::icon("x" + anyWritableText()); });
  }
  if (anyBool()) task.log = anyFew(anyDocumentEntry);
  if (anyBool()) task.notes = anyFew(anyWritableRow<TaskNoteEntity>);
  return task;
}

inline HabitraJSONBackup anyDocument() {
  HabitraJSONBackup document;
  document.timestamp = anyWritableMoment();
  document.backupType = anyCase<HabitraJSONBackupType>();
  document.backupDescription = anyOrNone(anyWritableText);
  document.appVersion = anyOrNone(anyWritableText);
  if (anyBool()) document.pages = anyFew(anyWritableRow<UserProfileEntity>);
  if (anyBool()) document.categories = anyFew(anyWritableRow<TaskCategoryEntity>);
  if (anyBool()) document.settings = anyFew(anyWritableRow<SettingEntity>);
  document.tasks = anyFew(anyDocumentTask);
  return document;
}

}  // namespace habitra
