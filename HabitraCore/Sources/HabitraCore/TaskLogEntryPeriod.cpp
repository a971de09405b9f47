#include <HabitraCore/TaskLogEntryPeriod.h>

#include <nlohmann/json.hpp>

namespace habitra {

void to_json(nlohmann::json& json, const TaskLogEntryPeriod& period) {
  json = {{"type", period.type}, {"from", period.from}, {"to", period.to}, {"date", period.date}};
}

void from_json(const nlohmann::json& json, TaskLogEntryPeriod& period) {
  json.at("type").get_to(period.type);
  json.at("from").get_to(period.from);
  json.at("to").get_to(period.to);
  json.at("date").get_to(period.date);
}

}  // namespace habitra
