#include <HabitraModel/Mapping/StoredJSON.h>
#include <HabitraModel/Settings/Settings.h>
#include <HabitraModel/Tasks/TaskPauses.h>
#include <QZKit/Trap.h>

#include <optional>

namespace habitra {
namespace {

using Pauses = std::vector<TaskPause>;

std::optional<Pauses> read(const nlohmann::json& json) {
  return json.is_array() ? std::optional(json.get<Pauses>()) : std::nullopt;
}

}  // namespace

Pauses pausesOf(StoreContext& context, const TaskEntity& task) {
  if (!task.uniqueId) return {};
  for (const Bytes& kept : StoreSettings(context).all<Bytes>(settings::pausesOf(*task.uniqueId)))
    if (auto pauses = readingJSON(kept, read)) return *pauses;
  return {};
}

void setPauses(StoreContext& context, const TaskEntity& task, const Pauses& pauses) {
  qz::require(task.uniqueId.has_value(), "pauses are kept for a task with an identifier");
  const std::string key = settings::pausesOf(*task.uniqueId);
  if (pauses.empty())
    StoreSettings(context).remove(key);
  else
    StoreSettings(context).set(key, jsonBytes(pauses));
}

}  // namespace habitra
