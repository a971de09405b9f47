#include <HabitraCore/DayCoding.h>
#include <HabitraCore/TaskLogEntryPeriod.h>

#include <nlohmann/json.hpp>

namespace habitra {

void to_json(nlohmann::json& json, const TaskLogEntryPeriod& period) {
  json = {{"type", period.type}, {"from", period.from}, {"to", period.to}, {"date", period.date}};
}

void from_json(const nlohmann::json& json, TaskLogEntryPeriod& period) {
  qz::coded_form::member(json, "type").get_to(period.type);
  const DaySpan days = existingSpan(json, "from", "to");
  period.from = days.first;
  period.to = days.last;
  period.date = existingDay(json, "date");
}

}  // namespace habitra
