#include <HabitraBackup/Document/HabitraJSONBackup.h>
#include <HabitraBackup/Document/HabitraJSONEncoder.h>
#include <HabitraBackup/Files/FileWriting.h>
#include <HabitraModel/Mapping/StoredDay.h>

#include <span>
#include <unordered_map>

namespace habitra {

namespace {

// The bodies of the notes of each day, joined.
using NotesByDay = std::unordered_map<qz::YYYYMMDD, std::string>;

NotesByDay notesByDay(const HabitraJSONBackupTask& task) {
  NotesByDay result;
  if (!task.notes) return result;
  for (const HabitraJSONBackupTaskNote& note : *task.notes) {
    const auto day = dayFromStored(note.noteDate);
    if (!day) continue;
    const std::string content = note.content.value_or(std::string());
    const auto [place, isFirst] = result.try_emplace(*day, content);
    if (!isFirst) place->second += "\n" + content;
  }
  return result;
}

// What the rows call the task; null when that is nothing.
const std::string* shownTitle(const HabitraJSONBackupTask& task) {
  for (const auto* title : {&task.titleFormatted, &task.title}) {
    if (*title && !(*title)->empty()) return &**title;
  }
  return nullptr;
}

}  // namespace

void forEachRow(const HabitraJSONBackupTask& task, const CSVRowHandler& onRow) {
  const std::string* title = shownTitle(task);
  if (title == nullptr) return;
  HabitraCSVBackupRow row;
  if (task.uniqueId) row.taskId = task.uniqueId->text();
  row.title = *title;
  row.visualRepresentation = task.visualRepresentation;
  row.page = task.pageNumber;
  if (!task.log || task.log->empty()) {
    onRow(row);
    return;
  }
  const NotesByDay notes = notesByDay(task);
  for (const HabitraJSONBackupTaskEntry& entry : *task.log) {
    row.entryType = csvEntryType(entry.entryType);
    row.entryDate = entry.entryDate;
    row.entryTimestamp = entry.createdTimestamp;
    row.quantity = entry.progress;
    if (task.notes) {
      const auto ofDay = notes.find(entry.entryDate);
      row.notes = ofDay == notes.end() ? std::string() : ofDay->second;
    }
    onRow(row);
  }
}

const HabitraCSVEncoder& HabitraJSONBackup::csvEncoder() {
  static const HabitraCSVEncoder encoder;
  return encoder;
}

const HabitraCSVDecoder& HabitraJSONBackup::csvDecoder() {
  static const HabitraCSVDecoder decoder;
  return decoder;
}

void HabitraJSONBackup::forEachRow(const CSVRowHandler& onRow) const {
  for (const HabitraJSONBackupTask& task : tasks) habitra::forEachRow(task, onRow);
}

std::vector<HabitraCSVBackupRow> HabitraJSONBackup::rows() const {
  std::vector<HabitraCSVBackupRow> rows;
  forEachRow([&rows](const HabitraCSVBackupRow& row) { rows.push_back(row); });
  return rows;
}

std::string HabitraJSONBackup::csvString() const {
  std::string text;
  csvEncoder().encode([this](const CSVRowHandler& onRow) { forEachRow(onRow); },
                      [&text](std::string_view bytes) { text += bytes; });
  return text;
}

std::vector<std::byte> HabitraJSONBackup::csvData() const {
  const std::string text = csvString();
  const auto bytes = std::as_bytes(std::span(text));
  return {bytes.begin(), bytes.end()};
}

std::string HabitraJSONBackup::jsonString() const {
  std::string text;
  encode(*this, [&text](std::string_view bytes) { text += bytes; });
  return text;
}

void HabitraJSONBackup::write(const std::filesystem::path& to, HabitraBackupFormat format) const {
  writeFile(to, [this, format](const ByteSink& sink) {
    if (format == HabitraBackupFormat::json) {
      encode(*this, sink);
    } else {
      csvEncoder().encode([this](const CSVRowHandler& onRow) { forEachRow(onRow); }, sink);
    }
  });
}

}  // namespace habitra
