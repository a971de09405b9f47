#include <HabitraBackup/Exchange/StoredTaskParts.h>
#include <HabitraModel/Settings/Settings.h>
#include <HabitraModel/Store/Engine/Field.h>
#include <HabitraModel/Tasks/RowOfTask.h>
#include <HabitraModel/Tasks/TaskCategories.h>
#include <HabitraModel/Tasks/TaskPauses.h>

#include <type_traits>

namespace habitra {

namespace {

template <typename Row>
Row withoutReferences(Row row) {
  row.objectID = ObjectID::none;
  for (const AttributeDescription& attribute : Row::description().attributes) {
    if (attribute.type != StoredType::reference) continue;
    visitField(attribute, &row, []<typename Field>(Field& field) {
      if constexpr (std::is_same_v<Field, ObjectID>) field = ObjectID::none;
    });
  }
  return row;
}

template <typename Row>
std::vector<Row> values(const std::vector<Row*>& rows) {
  std::vector<Row> result;
  for (const Row* row : rows) result.push_back(withoutReferences(*row));
  return result;
}

template <typename Row>
std::vector<Row> partsOf(StoreContext& context, ObjectID task) {
  return values(context.fetchRelated<Row>("task", task));
}

TaskEntity settingsOf(StoreContext& context, const TaskEntity& task) {
  TaskEntity values = withoutReferences(task);
  values.uniqueId.reset();
  values.title.reset();
  values.lastProcessedDate.reset();
  values.cloudStatus.reset();
  values.cloudStatusDate.reset();
  if (const auto* data = rowOfTask<TaskTemporalDataEntity>(context, task.objectID)) {
    values.lastChangedDifficulty = data->lastChangedDifficulty;
    values.lastChangedDifficultyStatus = data->lastChangedDifficultyStatus;
    values.lastChangedDifficultyTimeZone = data->lastChangedDifficultyTimeZone;
  }
  return values;
}

}  // namespace

HabitraJSONBackupTaskRecord recordOf(StoreContext& context, const TaskEntity& task) {
  HabitraJSONBackupTaskRecord record;
  record.task = settingsOf(context, task);
  if (const auto* settings = rowOfTask<TaskNotificationSettingsEntity>(context, task.objectID))
    record.notificationSettings = withoutReferences(*settings);
  record.reminders = partsOf<TaskNotificationRemindersEntity>(context, task.objectID);
  record.counters = partsOf<TaskCounterEntity>(context, task.objectID);
  record.timers = partsOf<TaskTimerEntity>(context, task.objectID);
  for (const TaskCategoryEntity* category : categoriesOf(context, task)) {
    const auto identifier = category->uniqueId ? qz::UniqueID::fromText(*category->uniqueId) : std::nullopt;
    if (identifier) record.categories.push_back(*identifier);
  }
  record.pauses = pausesOf(context, task);
  return record;
}

std::vector<HabitraJSONBackupTaskNote> notesOf(StoreContext& context, ObjectID task) {
  return partsOf<TaskNoteEntity>(context, task);
}

std::vector<UserProfileEntity> pagesOf(StoreContext& context, const std::set<TaskPageNumber>& leftOut) {
  std::vector<UserProfileEntity> pages;
  for (const UserProfileEntity* profile : context.fetchAll<UserProfileEntity>()) {
    const auto page = TaskPageNumber::ofDisplayOrder(profile->displayOrder);
    if (page && !leftOut.contains(*page)) pages.push_back(withoutReferences(*profile));
  }
  return pages;
}

std::vector<TaskCategoryEntity> storedCategories(StoreContext& context) {
  return values(context.fetchAll<TaskCategoryEntity>());
}

std::vector<SettingEntity> storedSettings(StoreContext& context) {
  const std::string ofTasks = settings::pausesOf({});
  std::vector<SettingEntity> settings;
  for (const SettingEntity* row : context.fetchAll<SettingEntity>())
    if (!row->settingKey || !row->settingKey->starts_with(ofTasks)) settings.push_back(withoutReferences(*row));
  return settings;
}

}  // namespace habitra
