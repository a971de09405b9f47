#include <HabitraBackup/Document/DocumentKeys.h>
#include <HabitraBackup/Document/DocumentRow.h>
#include <HabitraBackup/Document/DocumentTask.h>
#include <HabitraBackup/Document/HabitraJSONDecoder.h>
#include <HabitraBackup/Document/HabitraJSONError.h>
#include <HabitraBackup/Document/JSONValues.h>

#include <fmt/core.h>
#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace habitra {

namespace {

namespace keys = document_keys;

constexpr std::array documentLists{keys::pages, keys::categories, keys::settings, keys::tasks};
constexpr std::array documentMembers{keys::version, keys::timestamp, keys::backupType, keys::backupDescription,
                                     keys::appVersion};

template <std::size_t Count>
bool isOneOf(const std::array<std::string_view, Count>& keys, std::string_view key) {
  return std::ranges::count(keys, key) > 0;
}

void requireKnownVersion(const JSONFound& found) {
  constexpr std::int64_t newest = HabitraJSONBackup::currentVersion;
  const std::int64_t version = found.wholeNumber(1, std::numeric_limits<std::int64_t>::max());
  if (version > newest)
    throw HabitraJSONError(
        found.place.text(),
        fmt::format("made by a newer Habitra: its version is {}, this program reads up to {}", version, newest));
}

HabitraJSONBackupType backupType(const JSONFound& found) {
  const auto type = fromRawValue<HabitraJSONBackupType>(std::string_view(found.text()));
  if (!type) found.refuse("why a backup is made (manual, migrator, scheduled or automated)");
  return *type;
}

// The document is open, the lists in it, the tasks in theirs, and the lists in each of those: 0, 1, 2 and 3 steps deep.
// What is handed over is a member of the document, an element of a list of it, a member of a task, or an element of a
// list of a task: 1, 2, 3 and 4 steps deep.
class Reading final : public JSONStreamHandler {
 public:
  explicit Reading(const HabitraJSONDecoder::TaskHandler& onTask) : onTask_(onTask) {}

  bool opens(const JSONPlace& place, bool isList) override {
    switch (place.depth()) {
      case 0: return !isList;
      case 1: return isList && opensDocumentList(place);
      case 2: return !isList && isOfTask(place);
      case 3: return isList && isOfTask(place) && opensTaskList(place);
      default: return false;
    }
  }

  void value(const JSONPlace& place, const nlohmann::json& json) override {
    switch (place.depth()) {
      case 0: JSONFound{json, place}.refuse("a backup document, which is an object");
      case 1: setMember(place, json); break;
      case 2: addElement(place, json); break;
      case 3:
        if (!task_.set(place.key(2), json, place, loaded_.remarks)) loaded_.remarks.addUnknownKey(place.kind());
        break;
      default: task_.add(place.key(2), json, place, loaded_.remarks);
    }
  }

  void ended(const JSONPlace& place) override {
    if (place.depth() == 2) onTask_(std::move(std::exchange(task_, DocumentTask())).finished());
  }

  LoadedBackup loaded() && {
    if (!hasVersion_) throw HabitraJSONError(keys::version, "missing; every backup document has it");
    if (!hasTasks_) throw HabitraJSONError(keys::tasks, "missing; every backup document has it");
    return std::move(loaded_);
  }

 private:
  // Of places two steps deep and more.
  static bool isOfTask(const JSONPlace& place) { return place.key(0) == keys::tasks; }

  // Lists under unknown keys are opened as well, so that they are passed over element by element.
  bool opensDocumentList(const JSONPlace& place) {
    const std::string_view key = place.key(0);
    if (isOneOf(documentMembers, key)) return false;
    HabitraJSONBackup& document = loaded_.document;
    if (!isOneOf(documentLists, key)) loaded_.remarks.addUnknownKey(place.kind());
    if (key == keys::pages) document.pages.emplace();
    if (key == keys::categories) document.categories.emplace();
    if (key == keys::settings) document.settings.emplace();
    if (key == keys::tasks) hasTasks_ = true;
    return true;
  }

  bool opensTaskList(const JSONPlace& place) {
    const std::string_view key = place.key(2);
    if (DocumentTask::isMember(key)) return false;
    if (DocumentTask::isList(key)) {
      task_.begin(key);
    } else {
      loaded_.remarks.addUnknownKey(place.kind());
    }
    return true;
  }

  void setMember(const JSONPlace& place, const nlohmann::json& json) {
    const std::string_view key = place.key(0);
    const JSONFound found{json, place};
    HabitraJSONBackup& document = loaded_.document;
    if (isOneOf(documentLists, key)) found.refuse("a list");
    if (key == keys::version) {
      requireKnownVersion(found);
      hasVersion_ = true;
    } else if (key == keys::timestamp) {
      document.timestamp = found.moment();
    } else if (key == keys::backupType) {
      document.backupType = backupType(found);
    } else if (key == keys::backupDescription) {
      document.backupDescription = found.text();
    } else if (key == keys::appVersion) {
      document.appVersion = found.text();
    } else {
      loaded_.remarks.addUnknownKey(place.kind());
    }
  }

  void addElement(const JSONPlace& place, const nlohmann::json& json) {
    using document_row::rowFrom;
    const std::string_view key = place.key(0);
    HabitraJSONBackup& document = loaded_.document;
    if (key == keys::tasks) JSONFound{json, place}.refuse("a task, which is an object");
    if (key == keys::pages) document.pages->push_back(rowFrom<UserProfileEntity>(json, place, loaded_.remarks));
    if (key == keys::categories)
      document.categories->push_back(rowFrom<TaskCategoryEntity>(json, place, loaded_.remarks));
    if (key == keys::settings) document.settings->push_back(rowFrom<SettingEntity>(json, place, loaded_.remarks));
  }

  const HabitraJSONDecoder::TaskHandler& onTask_;
  LoadedBackup loaded_;
  DocumentTask task_;
  bool hasVersion_ = false;
  bool hasTasks_ = false;
};

}  // namespace

LoadedBackup HabitraJSONDecoder::decode(const ByteSource& source, const TaskHandler& onTask) const {
  Reading reading(onTask);
  readJSON(source, reading);
  return std::move(reading).loaded();
}

LoadedBackup HabitraJSONDecoder::decode(const ByteSource& source) const {
  std::vector<HabitraJSONBackupTask> tasks;
  LoadedBackup loaded = decode(source, [&tasks](HabitraJSONBackupTask&& task) { tasks.push_back(std::move(task)); });
  loaded.document.tasks = std::move(tasks);
  return loaded;
}

}  // namespace habitra
