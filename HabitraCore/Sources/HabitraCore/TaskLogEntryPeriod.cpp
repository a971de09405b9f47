#include <HabitraCore/TaskLogEntryPeriod.h>
#include <QZDateTime/CodedForm.h>

#include <nlohmann/json.hpp>

namespace habitra {

void to_json(nlohmann::json& json, const TaskLogEntryPeriod& period) {
  json = {{"type", period.type}, {"from", period.from}, {"to", period.to}, {"date", period.date}};
}

void from_json(const nlohmann::json& json, TaskLogEntryPeriod& period) {
  qz::coded_form::member(json, "type").get_to(period.type);
  qz::coded_form::member(json, "from").get_to(period.from);
  qz::coded_form::member(json, "to").get_to(period.to);
  qz::coded_form::member(json, "date").get_to(period.date);
}

}  // namespace habitra
