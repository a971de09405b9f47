#include <HabitraBackup/Exchange/TaskDataImporter.h>
#include <HabitraBackup/Exchange/TaskImport.h>
#include <HabitraModel/Settings/Settings.h>
#include <HabitraModel/Store/StoreContext.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <utility>

namespace habitra {

namespace {

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

template <typename Row>
std::span<const Row> rowsOf(const std::optional<std::vector<Row>>& rows) {
  return rows ? std::span<const Row>(*rows) : std::span<const Row>();
}

std::size_t entriesOf(const HabitraJSONBackupTask& task) { return task.log ? task.log->size() : 0; }

bool hasHabits(StoreContext& context) {
  return std::ranges::any_of(context.fetchAll<TaskEntity>(),
                             [](const TaskEntity* task) { return task->status != task_status::deleted; });
}

/// App-wide settings decide over habits that are here, too: none comes in beside them.
void leaveSettings(StoreContext& context, std::span<const SettingEntity> settings, ImportReport& report) {
  const SettingsThere there = settingsThere(context, settings);
  report.settings.left = there.stored;
  if (there.missing.empty()) return;
  report.remarks.push_back(fmt::format("What counts for all habits was left out, since there are habits here: {}",
                                       fmt::join(there.missing, ", ")));
}

void addRemarks(ImportReport& report, const ImportRemarks& remarks) {
  report.remarks.insert(report.remarks.begin(), remarks.ofAll.begin(), remarks.ofAll.end());
  for (const auto& [index, ofTask] : remarks.ofTask) {
    if (index >= report.tasks.size()) continue;
    auto& all = report.tasks[index].remarks;
    all.insert(all.begin(), ofTask.begin(), ofTask.end());
  }
}

}  // namespace

TaskDataImporter::TaskDataImporter(StoreContext& context, Settings settings)
    : context_(context), settings_(std::move(settings)) {}

ImportReport TaskDataImporter::importBackup(const HabitraJSONBackup& document, ImportStrategy strategy,
                                            const SaveRequest& request, const ImportRemarks& remarks) {
  const UnitGuard unit(context_);
  const EntryIdentifiers identifiers(
      context_, document,
      strategy == ImportStrategy::importWithNewID ? IdentifierPolicy::giveNewOnes : IdentifierPolicy::keepWhereFree);
  const SharedRowsPolicy policy =
      strategy == ImportStrategy::overwrite ? SharedRowsPolicy::replaceStored : SharedRowsPolicy::keepStored;
  ImportReport report;
  const std::span<const SettingEntity> settings = rowsOf(document.settings);
  if (strategy == ImportStrategy::overwrite || !hasHabits(context_)) {
    report.settings = importSettings(context_, settings, policy);
  } else {
    leaveSettings(context_, settings, report);
  }
  report.pages = importPages(context_, rowsOf(document.pages), policy);
  const CategoriesImport categories(context_, rowsOf(document.categories), policy);
  report.categories = categories.counts();

  TaskImport import(context_, settingsAsStored(),
                    {.document = document, .strategy = strategy, .identifiers = identifiers, .categories = categories});
  std::size_t entries = 0;
  for (const HabitraJSONBackupTask& task : document.tasks) entries += entriesOf(task);
  std::size_t stored = 0;
  for (const HabitraJSONBackupTask& task : document.tasks) {
    report.tasks.push_back(import.import(task));
    stored += entriesOf(task);
    if (settings_.progress && entries > 0)
      settings_.progress("storing", static_cast<double>(stored) / static_cast<double>(entries));
  }
  addRemarks(report, remarks);
  if (context_.hasChanges()) context_.save(request);
  return report;
}

TaskDataImporter::Settings TaskDataImporter::settingsAsStored() const {
  const habitra::Settings stored(&context_, nullptr, nullptr);
  Settings result = settings_;
  if (const auto startOfDay = stored.chosen(settings::startOfDay))
    result.calendars = TaskCalendars(settings_.calendars.ofDevice().timeZone, *startOfDay);
  result.firstDayOfWeek = stored.chosen(settings::firstDayOfWeek).value_or(settings_.firstDayOfWeek);
  return result;
}

}  // namespace habitra
