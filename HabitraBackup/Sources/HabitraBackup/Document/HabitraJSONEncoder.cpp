// A backup document, as grammar. Members stand in this order; those in ( ) are left out where there is nothing to say.
//
//   document  = { version: 1, (timestamp), backupType, (backupDescription), (appVersion),
//                 (pages: [row ...]), (categories: [row ...]), (settings: [row ...]), tasks: [task ...] }
//   task      = { (uniqueId), (title), (titleFormatted), (imageName), (pageNumber), (daysMode),
//                 attributes of the task's row, (taskNotificationSettings: row),
//                 (taskNotificationReminders: [row ...]), (taskCounter: [row ...]), (taskTimer: [row ...]),
//                 (taskCategories: [identifier ...]), (pauses: [pause ...]),
//                 (taskNote: [row ...]), (taskEntry: [entry ...]) }
//   entry     = { (uniqueId), entryType, entryDate, (progress), (progressTotal), (createdTimestamp),
//                 (createdTimeZone), (entryPeriodFrom, entryPeriodTo, entryPeriodType),
//                 (cloudStatus), (cloudStatusDate) }
//   pause     = { from: day, (to: day) }
//   row       = { attribute: value ... } in the order of the entity's description, without references
//   value     = true | number | text | day | moment | bytes | identifier
//   day       = y * 10000 + m * 100 + d, a number           moment = ISO 8601 in UTC, a text
//   bytes     = Base64, a text                              identifier = UUID in upper case, a text
//
// daysMode is there whenever the task has settings, at 0 too: it says that they are there.

#include <HabitraBackup/Document/DocumentKeys.h>
#include <HabitraBackup/Document/DocumentRow.h>
#include <HabitraBackup/Document/DocumentValues.h>
#include <HabitraBackup/Document/HabitraJSONEncoder.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace habitra {

namespace {

namespace keys = document_keys;
using Spread = JSONWriter::Spread;

void writeText(JSONWriter& writer, std::string_view key, const std::optional<std::string>& text) {
  if (text) writer.member(key, std::string_view(*text));
}
void writeMoment(JSONWriter& writer, std::string_view key, const std::optional<qz::Moment>& moment) {
  if (moment && document_values::isWritable(*moment)) writer.member(key, *moment);
}
void writeNumber(JSONWriter& writer, std::string_view key, const std::optional<double>& number) {
  if (number && std::isfinite(*number)) writer.member(key, *number);
}

template <typename Row>
void writeRow(JSONWriter& writer, const Row& row) {
  writer.beginObject(Spread::oneLine);
  document_row::write(writer, Row::description(), &row);
  writer.endObject();
}

template <typename Row>
void writeRows(JSONWriter& writer, std::string_view key, const std::vector<Row>& rows) {
  writer.key(key);
  writer.beginList(Spread::lines);
  for (const Row& row : rows) writeRow(writer, row);
  writer.endList();
}

template <typename Row>
void writeRowsIfAny(JSONWriter& writer, std::string_view key, const std::vector<Row>& rows) {
  if (!rows.empty()) writeRows(writer, key, rows);
}

void writeCategories(JSONWriter& writer, const std::vector<qz::UniqueID>& categories) {
  if (categories.empty()) return;
  writer.key(keys::taskCategories);
  writer.beginList(Spread::oneLine);
  for (const qz::UniqueID& category : categories) writer.value(category);
  writer.endList();
}

bool isWritable(const TaskPause& pause) {
  if (!document_values::day(pause.from.intValue())) return false;
  return !pause.to || (document_values::day(pause.to->intValue()) && pause.from <= *pause.to);
}

void writePauses(JSONWriter& writer, std::vector<TaskPause> pauses) {
  std::erase_if(pauses, [](const TaskPause& pause) { return !isWritable(pause); });
  if (pauses.empty()) return;
  writer.key(keys::pauses);
  writer.beginList(Spread::lines);
  for (const TaskPause& pause : pauses) {
    writer.beginObject(Spread::oneLine);
    writer.member(keys::pauseFrom, pause.from);
    if (pause.to) writer.member(keys::pauseTo, *pause.to);
    writer.endObject();
  }
  writer.endList();
}

// What of a task's row does not stand where the other attributes do.
bool isAmongAttributes(std::string_view attribute) {
  constexpr std::array elsewhere{keys::uniqueId, keys::title, keys::imageName, keys::daysMode};
  return std::ranges::count(elsewhere, attribute) == 0;
}

void writeRecord(JSONWriter& writer, const HabitraJSONBackupTaskRecord& record) {
  writer.member(keys::daysMode, std::int64_t{record.task.daysMode});
  document_row::write(writer, TaskEntity::description(), &record.task, isAmongAttributes);
  if (record.notificationSettings) {
    writer.key(keys::taskNotificationSettings);
    writeRow(writer, *record.notificationSettings);
  }
  writeRowsIfAny(writer, keys::taskNotificationReminders, record.reminders);
  writeRowsIfAny(writer, keys::taskCounter, record.counters);
  writeRowsIfAny(writer, keys::taskTimer, record.timers);
  writeCategories(writer, record.categories);
  writePauses(writer, record.pauses);
}

void writePeriod(JSONWriter& writer, const HabitraJSONBackupTaskEntry& entry) {
  if (!entry.entryPeriodFrom || !entry.entryPeriodTo || !entry.entryPeriodType) return;
  const auto from = document_values::day(entry.entryPeriodFrom->intValue());
  const auto to = document_values::day(entry.entryPeriodTo->intValue());
  if (!from || !to || *to < *from) return;
  writer.member(keys::entryPeriodFrom, *from);
  writer.member(keys::entryPeriodTo, *to);
  writer.member(keys::entryPeriodType, rawValue(*entry.entryPeriodType));
}

void writeEntry(JSONWriter& writer, const HabitraJSONBackupTaskEntry& entry) {
  writer.beginObject(Spread::oneLine);
  if (entry.uniqueId) writer.member(keys::uniqueId, *entry.uniqueId);
  writer.member(keys::entryType, std::int64_t{rawValue(entry.entryType)});
  writer.member(keys::entryDate, std::int64_t{entry.entryDate.intValue()});
  writeNumber(writer, keys::progress, entry.progress);
  writeNumber(writer, keys::progressTotal, entry.progressTotal);
  writeMoment(writer, keys::createdTimestamp, entry.createdTimestamp);
  if (entry.details) writeText(writer, keys::createdTimeZone, entry.details->createdTimeZone);
  writePeriod(writer, entry);
  if (entry.details) {
    writeText(writer, keys::cloudStatus, entry.details->cloudStatus);
    writeMoment(writer, keys::cloudStatusDate, entry.details->cloudStatusDate);
  }
  writer.endObject();
}

void writeLog(JSONWriter& writer, const std::vector<HabitraJSONBackupTaskEntry>& log) {
  writer.key(keys::taskEntry);
  writer.beginList(Spread::lines);
  for (const HabitraJSONBackupTaskEntry& entry : log)
    if (document_values::day(entry.entryDate.intValue())) writeEntry(writer, entry);
  writer.endList();
}

std::optional<std::string> imageName(const HabitraJSONBackupTask& task) {
  if (task.record && task.record->task.imageName) return task.record->task.imageName;
  return task.visualRepresentation ? std::optional(task.visualRepresentation->text()) : std::nullopt;
}

}  // namespace

HabitraJSONEncoder::HabitraJSONEncoder(ByteSink sink) : writer_(std::make_unique<JSONWriter>(std::move(sink))) {}

HabitraJSONEncoder::~HabitraJSONEncoder() = default;

void HabitraJSONEncoder::begin(const HabitraJSONBackup& header) {
  JSONWriter& writer = *writer_;
  writer.beginObject(Spread::lines);
  writer.member(keys::version, HabitraJSONBackup::currentVersion);
  writeMoment(writer, keys::timestamp, header.timestamp);
  writer.member(keys::backupType, rawValue(header.backupType));
  writeText(writer, keys::backupDescription, header.backupDescription);
  writeText(writer, keys::appVersion, header.appVersion);
  if (header.pages) writeRows(writer, keys::pages, *header.pages);
  if (header.categories) writeRows(writer, keys::categories, *header.categories);
  if (header.settings) writeRows(writer, keys::settings, *header.settings);
  writer.key(keys::tasks);
  writer.beginList(Spread::lines);
}

void HabitraJSONEncoder::task(const HabitraJSONBackupTask& task) {
  JSONWriter& writer = *writer_;
  writer.beginObject(Spread::lines);
  if (task.uniqueId) writer.member(keys::uniqueId, *task.uniqueId);
  writeText(writer, keys::title, task.title);
  writeText(writer, keys::titleFormatted, task.titleFormatted);
  writeText(writer, keys::imageName, imageName(task));
  if (task.pageNumber) writer.member(keys::pageNumber, task.pageNumber->rawValue());
  if (task.record) writeRecord(writer, *task.record);
  if (task.notes) writeRows(writer, keys::taskNote, *task.notes);
  if (task.log) writeLog(writer, *task.log);
  writer.endObject();
}

void HabitraJSONEncoder::end() {
  writer_->endList();
  writer_->endObject();
  writer_->finish();
}

void encode(const HabitraJSONBackup& document, const ByteSink& sink) {
  HabitraJSONEncoder encoder(sink);
  encoder.begin(document);
  for (const HabitraJSONBackupTask& task : document.tasks) encoder.task(task);
  encoder.end();
}

}  // namespace habitra
