#include <HabitraBackup/Document/DocumentEntry.h>
#include <HabitraBackup/Document/DocumentKeys.h>
#include <HabitraBackup/Document/DocumentRow.h>
#include <HabitraBackup/Document/DocumentTask.h>
#include <HabitraBackup/Document/HabitraJSONError.h>
#include <HabitraBackup/Document/JSONValues.h>
#include <HabitraModel/Mapping/FrequencyMapping.h>
#include <HabitraModel/Tasks/TaskEntityRules.h>

#include <algorithm>
#include <array>

namespace habitra {

namespace {

namespace keys = document_keys;

constexpr std::array lists{keys::taskEntry,   keys::taskNote,  keys::taskNotificationReminders,
                           keys::taskCounter, keys::taskTimer, keys::taskCategories,
                           keys::pauses};

TaskPause pause(const nlohmann::json& json, const JSONPlace& place, HabitraJSONRemarks& remarks) {
  TaskPause pause;
  for (const auto& [key, value] : JSONFound{json, place}.object().items()) {
    const JSONFound found{value, place, key};
    if (key == keys::pauseFrom) {
      pause.from = found.day();
    } else if (key == keys::pauseTo) {
      pause.to = found.day();
    } else {
      remarks.addUnknownKey(place.kind(key));
    }
  }
  if (!json.contains(keys::pauseFrom))
    throw HabitraJSONError(place.text(keys::pauseFrom), "missing; every pause has it");
  if (pause.to && *pause.to < pause.from)
    throw HabitraJSONError(place.text(keys::pauseTo), "the pause ends before it begins");
  return pause;
}

}  // namespace

bool DocumentTask::isList(std::string_view key) { return std::ranges::count(lists, key) > 0; }

bool DocumentTask::isMember(std::string_view key) {
  constexpr std::array others{keys::titleFormatted, keys::pageNumber, keys::taskNotificationSettings};
  if (std::ranges::count(others, key) > 0) return true;
  const EntityDescription& entity = TaskEntity::description();
  const auto position = entity.position(key);
  return position && entity.attributes[*position].type != StoredType::reference;
}

void DocumentTask::begin(std::string_view list) {
  if (list == keys::taskEntry) {
    task_.log.emplace();
  } else if (list == keys::taskNote) {
    task_.notes.emplace();
  } else {
    hasSettings_ = true;
  }
}

void DocumentTask::add(std::string_view list, const nlohmann::json& json, const JSONPlace& place,
                       HabitraJSONRemarks& remarks) {
  using document_row::rowFrom;
  if (list == keys::taskEntry) {
    task_.log->push_back(entry(json, place, remarks));
  } else if (list == keys::taskNote) {
    task_.notes->push_back(rowFrom<TaskNoteEntity>(json, place, remarks));
  } else if (list == keys::taskNotificationReminders) {
    record_.reminders.push_back(rowFrom<TaskNotificationRemindersEntity>(json, place, remarks));
  } else if (list == keys::taskCounter) {
    record_.counters.push_back(rowFrom<TaskCounterEntity>(json, place, remarks));
  } else if (list == keys::taskTimer) {
    record_.timers.push_back(rowFrom<TaskTimerEntity>(json, place, remarks));
  } else if (list == keys::taskCategories) {
    record_.categories.push_back(JSONFound{json, place}.identifier());
  } else if (list == keys::pauses) {
    record_.pauses.push_back(pause(json, place, remarks));
  }
}

bool DocumentTask::set(std::string_view key, const nlohmann::json& json, const JSONPlace& place,
                       HabitraJSONRemarks& remarks) {
  const JSONFound found{json, place};
  if (isList(key)) found.refuse("a list");
  if (key == keys::uniqueId) {
    task_.uniqueId = found.identifier();
  } else if (key == keys::title) {
    task_.title = found.text();
  } else if (key == keys::titleFormatted) {
    task_.titleFormatted = found.text();
  } else if (key == keys::imageName) {
    record_.task.imageName = found.text();
  } else if (key == keys::pageNumber) {
    task_.pageNumber = TaskPageNumber::fromRawValue(found.wholeNumber(1, TaskPageNumber::largest));
  } else if (key == keys::taskNotificationSettings) {
    record_.notificationSettings = document_row::rowFrom<TaskNotificationSettingsEntity>(json, place, remarks);
    hasSettings_ = true;
  } else if (document_row::read(TaskEntity::description(), &record_.task, key, json, place)) {
    hasSettings_ = true;
    hasFrequency_ = hasFrequency_ || key == keys::daysMode;
  } else {
    return false;
  }
  return true;
}

HabitraJSONBackupTask DocumentTask::finished() && {
  if (const auto& imageName = record_.task.imageName) {
    task_.visualRepresentation = HabitraJSONBackupVisualRepresentation::fromText(*imageName);
    if (!task_.visualRepresentation) hasSettings_ = true;  // nothing else can hold the name
  }
  if (hasSettings_ && !hasFrequency_) {
    // Written by hand: what says nothing of how often is a habit of every day, like a newly made one.
    setFrequency(record_.task, TaskFrequency::everyDay());
    if (!record_.task.status) record_.task.status = task_status::active;
  }
  if (hasSettings_) task_.record = std::move(record_);
  return std::move(task_);
}

HabitraJSONBackupTaskEntry DocumentTask::entry(const nlohmann::json& json, const JSONPlace& place,
                                               HabitraJSONRemarks& remarks) {
  auto [entry, details] = DocumentEntry::from(json, place, remarks);
  if (details == HabitraJSONBackupTaskEntryDetails{}) return std::move(entry);
  if (!details_ || *details_ != details)
    details_ = std::make_shared<const HabitraJSONBackupTaskEntryDetails>(std::move(details));
  entry.details = details_;
  return std::move(entry);
}

}  // namespace habitra
