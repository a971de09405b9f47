#include <HabitraCore/RawValueCoding.h>
#include <HabitraCore/TaskCalendarPeriodInfo.h>

#include <nlohmann/json.hpp>

namespace habitra {

void to_json(nlohmann::json& json, const TaskCalendarPeriodInfo& info) {
  json = {{"period", info.period}, {"status", rawValue(info.status)}};
}

void from_json(const nlohmann::json& json, TaskCalendarPeriodInfo& info) {
  using qz::coded_form::member;
  member(json, "period").get_to(info.period);
  info.status = decodeRawValue<TaskCalendarPeriodInfo::TaskCalendarPeriodStatus>(
      member(json, "status"), "TaskCalendarPeriodInfo.TaskCalendarPeriodStatus");
}

}  // namespace habitra
