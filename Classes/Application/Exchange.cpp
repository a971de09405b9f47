#include <HabitraApp/Rooms.h>

#include <HabitraBackup/Exchange/TaskDataExporter.h>
#include <HabitraBackup/Exchange/TaskDataImporter.h>
#include <HabitraBackup/Files/FileWriting.h>
#include <HabitraBackup/HealthSamples/HealthSampleCSV.h>
#include <HabitraBackup/HistoryFile.h>
#include <QZKit/Error.h>
#include <QZLog/Log.h>

#include <fmt/format.h>
#include <filesystem>
#include <ostream>
#include <string>
#include <system_error>

namespace habitra {

namespace {

/// An export must not take the place of what it is an export of, nor of a backup.
void refuseFilesOf(const std::filesystem::path& home, const std::filesystem::path& target) {
  std::error_code error;
  const auto inHome = std::filesystem::weakly_canonical(target, error)
                          .lexically_relative(std::filesystem::weakly_canonical(home, error));
  if (error || inHome.empty()) return;
  const std::string first = inHome.begin()->string();
  if (first == AutomaticBackups::folderName || first.starts_with("Habitra") || first == "habitra.log")
    throw qz::Error(fmt::format("{} belongs to Habitra itself; choose another name", target.string()));
}

void warnOfEntriesLeftOut(std::size_t count) {
  if (count > 0) qz::log::warning("{} damaged entries, which no export can hold, were left out", count);
}

ForeignHistorySettings foreignSettings(qz::Moment now, const TaskCalendars& calendars, const Settings& settings) {
  return {
      .now = now, .timeZone = calendars.ofDevice().timeZone, .firstDayOfWeek = settings.get(settings::firstDayOfWeek)};
}

}  // namespace

ImportOutcome Application::importDocument(const HabitraJSONBackup& document, std::string_view name,
                                          ImportStrategy strategy, const ImportRemarks& remarks) {
  const auto context = rooms_->contextToWrite();
  const qz::DayOfWeek firstDayOfWeek = rooms_->settings(context.get()).get(settings::firstDayOfWeek);
  TaskDataImporter importer(
      *context,
      {.calendars = rooms_->calendars, .firstDayOfWeek = firstDayOfWeek, .now = rooms_->now(), .progress = progress_});
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
  const LoadedHistory loaded = loadHistory(
      stream, name, foreignSettings(rooms_->now(), rooms_->calendars, rooms_->settings(rooms_->readingContext())));
  return importDocument(loaded.document, name, strategy, loaded.remarks);
}

ImportOutcome Application::importHistory(const std::filesystem::path& file, ImportStrategy strategy) {
  const LoadedHistory loaded = loadHistory(
      file, foreignSettings(rooms_->now(), rooms_->calendars, rooms_->settings(rooms_->readingContext())), progress_);
  return importDocument(loaded.document, file.filename().string(), strategy, loaded.remarks);
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

ExportOutcome Application::exportHistory(const ExportRequest& request, const ByteSink& sink) {
  const HabitraBackupFormat format = request.format;
  // Days that are over and not filled in yet would make whatever takes the file in differ from what is here.
  if (!rooms_->timeIsGiven()) processIfDue();
  StoreContext* context = rooms_->readingContext();
  if (context == nullptr) {
    const HabitraJSONBackup empty{.timestamp = rooms_->now()};
    sink(format == HabitraBackupFormat::csv ? empty.csvString() : empty.jsonString());
    return {};
  }
  const TaskDataExporter exporter(*context, progress_);
  const auto page = request.page ? TaskPageNumber::fromRawValue(*request.page) : std::nullopt;
  if (request.page && !page) throw qz::Error(fmt::format("there is no page {}", *request.page));
  const std::vector<ObjectID> tasks = page ? exporter.tasksOfPage(*page) : exporter.allTasks();
  if (page && !exporter.hasPage(*page)) throw qz::Error(fmt::format("there is no page {}", page->rawValue()));
  if (format == HabitraBackupFormat::csv) {
    const auto written = exporter.writeCsv(tasks, sink);
    warnOfEntriesLeftOut(written.entriesLeftOut);
    return {.tasks = tasks.size(), .rows = written.rows};
  }
  HabitraJSONBackup header = exporter.header(tasks, HabitraJSONBackupType::manual, rooms_->now());
  header.appVersion = rooms_->version;
  const auto written = exporter.writeJson(tasks, header, sink);
  warnOfEntriesLeftOut(written.entriesLeftOut);
  return {.tasks = written.tasks, .rows = written.entries};
}

ExportOutcome Application::exportHistory(std::ostream& stream, const ExportRequest& request) {
  return exportHistory(request, [&stream](std::string_view bytes) {
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!stream) throw qz::Error("the output cannot be written");
  });
}

ExportOutcome Application::exportHistory(const std::filesystem::path& file, const ExportRequest& request) {
  refuseFilesOf(rooms_->manager.home(), file);
  ExportOutcome outcome;
  writeFile(file, [&](const ByteSink& sink) { outcome = exportHistory(request, sink); });
  return outcome;
}

}  // namespace habitra
