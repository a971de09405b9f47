#include <HabitraCore/RawValueCoding.h>
#include <HabitraCore/TaskLogEntryType.h>

namespace habitra {

void to_json(nlohmann::json& json, TaskLogEntryType type) { encodeRawValue(json, type); }

void from_json(const nlohmann::json& json, TaskLogEntryType& type) {
  type = decodeRawValue<TaskLogEntryType>(json, "TaskLogEntryType");
}

}  // namespace habitra
