#include <HabitraBackup/CSV/HabitraCSVImport.h>
#include <QZKit/UTF8.h>

#include <fmt/core.h>
#include <fmt/ranges.h>
#include <map>
#include <utility>

namespace habitra {

namespace {

std::shared_ptr<HabitraCSVImportTask> firstSeen(const HabitraCSVBackupRow& row) {
  auto task = std::make_shared<HabitraCSVImportTask>();
  if (row.taskId) task->uniqueId = qz::UniqueID::fromText(*row.taskId);
  task->title = row.title;
  task->visualRepresentation = row.visualRepresentation;
  task->pageNumber = row.page;
  return task;
}

std::string described(const HabitraCSVImport::Tasks& tasks) {
  std::map<std::string, std::size_t> sorted;
  for (const auto& [key, task] : tasks) sorted.emplace(qz::utf8::quoted(key), task->entries.size());
  std::vector<std::string> texts;
  for (const auto& [key, count] : sorted) texts.push_back(fmt::format("{}: {} entries", key, count));
  return fmt::format("[{}]", fmt::join(texts, ", "));
}

}  // namespace

HabitraCSVImport::HabitraCSVImport(std::span<const HabitraCSVBackupRow> rows) {
  for (const HabitraCSVBackupRow& row : rows) add(row);
}

void HabitraCSVImport::add(const HabitraCSVBackupRow& row) {
  if (!row.title || row.title->empty()) return;
  const bool hasId = row.taskId && !row.taskId->empty();
  Group& group = hasId ? byId_ : byTitle_;
  auto& task = group.tasks[hasId ? *row.taskId : *row.title];
  if (!task) {
    task = firstSeen(row);
    group.inFileOrder.push_back(task);
  }
  if (!row.entryType || !row.entryDate) return;
  HabitraJSONBackupTaskEntry entry;
  entry.entryType = taskLogEntryType(*row.entryType);
  entry.entryDate = *row.entryDate;
  entry.progress = row.quantity;
  entry.createdTimestamp = row.entryTimestamp;
  task->entries.push_back(entry);
}

HabitraJSONBackup HabitraCSVImport::backup(qz::Moment now) && {
  HabitraJSONBackup document;
  document.timestamp = now;
  document.backupType = HabitraJSONBackupType::automated;
  document.backupDescription = "Converted from CSV";
  for (const Group* group : {&byTitle_, &byId_}) {
    for (const auto& found : group->inFileOrder) {
      HabitraJSONBackupTask task;
      task.uniqueId = found->uniqueId;
      task.title = found->title;
      task.visualRepresentation = found->visualRepresentation;
      task.pageNumber = found->pageNumber;
      task.log = std::move(found->entries);
      document.tasks.push_back(std::move(task));
    }
  }
  return document;
}

std::string HabitraCSVImport::debugDescription() const {
  return fmt::format("tasksByTitle: {} tasksById: {}", described(byTitle_.tasks), described(byId_.tasks));
}

}  // namespace habitra
