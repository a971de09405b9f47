#include <HabitraApp/Rooms.h>

#include <HabitraBackup/Exchange/TaskDataExporter.h>
#include <HabitraBackup/Exchange/TaskDataImporter.h>
#include <HabitraBackup/HabitraBackup.h>
#include <HabitraBackup/HealthSamples/HealthSampleCSV.h>
#include <QZKit/Error.h>
#include <QZLog/Log.h>

#include <fmt/format.h>
#include <ostream>

namespace habitra {

ImportOutcome Application::importDocument(const HabitraJSONBackup& document, std::string_view name,
                                          ImportStrategy strategy, const ImportRemarks& remarks) {
  const auto context = rooms_->contextToWrite();
  const qz::DayOfWeek firstDayOfWeek = rooms_->settings(context.get()).get(settings::firstDayOfWeek);
  TaskDataImporter importer(*context,
                            {.calendars = rooms_->calendars, .firstDayOfWeek = firstDayOfWeek, .now = rooms_->now()});
  ImportOutcome outcome;
  {
    const TaskProcessor::BulkDataUpdate bulk(rooms_->processor);
    outcome.report = importer.importBackup(
        document, strategy, {.author = Author::app, .command = fmt::format("import '{}'", name)}, remarks);
  }
  rooms_->widgets.reloadAllTimelines();
  outcome.processed = processAfter("the import");
  return outcome;
}

ImportOutcome Application::importHistory(std::istream& stream, std::string_view name, ImportStrategy strategy) {
  return importDocument(HabitraBackup::loadCsv(stream, name, rooms_->now()), name, strategy);
}

ImportOutcome Application::importHistory(const std::filesystem::path& file, ImportStrategy strategy) {
  return importDocument(HabitraBackup::loadCsv(file, rooms_->now()), file.filename().string(), strategy);
}

HealthImportOutcome Application::importHealthSamples(std::istream& stream, std::string_view name) {
  const SampleStore::Saved saved = habitra::importHealthSamples(stream, name, rooms_->health);
  return healthImportOutcome(saved.added, saved.left);
}

HealthImportOutcome Application::importHealthSamples(const std::filesystem::path& file) {
  const SampleStore::Saved saved = habitra::importHealthSamples(file, rooms_->health);
  return healthImportOutcome(saved.added, saved.left);
}

HealthImportOutcome Application::healthImportOutcome(std::size_t added, std::size_t left) {
  // What goes wrong in the pass is logged; the samples are stored all the same, and the next one catches up.
  if (added > 0) rooms_->processAutomaticTasks();
  return {.added = added, .left = left};
}

ExportOutcome Application::exportHistory(std::ostream& stream) {
  const ByteSink sink = [&stream](std::string_view bytes) {
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!stream) throw qz::Error("the output cannot be written");
  };
  StoreContext* context = rooms_->readingContext();
  if (context == nullptr) {
    sink(HabitraJSONBackup{}.csvString());
    return {};
  }
  const TaskDataExporter exporter(*context);
  const std::vector<ObjectID> tasks = exporter.allTasks();
  return {.tasks = tasks.size(), .rows = exporter.writeCsv(tasks, sink)};
}

ExportOutcome Application::exportHistory(const std::filesystem::path& file) {
  StoreContext* context = rooms_->readingContext();
  if (context == nullptr) {
    HabitraJSONBackup{}.write(file, HabitraBackupFormat::csv);
    return {};
  }
  const TaskDataExporter exporter(*context);
  const std::vector<ObjectID> tasks = exporter.allTasks();
  return {.tasks = tasks.size(), .rows = exporter.writeCsv(tasks, file)};
}

}  // namespace habitra
