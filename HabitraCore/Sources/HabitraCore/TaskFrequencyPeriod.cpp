#include <HabitraCore/TaskFrequencyPeriod.h>
#include <QZDateTime/CodedForm.h>

#include <nlohmann/json.hpp>

namespace habitra {

DatedPeriod::DatedPeriod(const qz::YYYYMMDD& theDate, TaskFrequencyPeriodType periodType, qz::DayOfWeek firstDayOfWeek,
                         const std::optional<qz::YYYYMMDD>& referenceDate)
    : date(theDate),
      period{.periodType = periodType,
             .startDate = firstDate(periodType, theDate, firstDayOfWeek, referenceDate),
             .finishDate = lastDate(periodType, theDate, firstDayOfWeek, referenceDate),
             .firstDayOfWeek = firstDayOfWeek} {}

void to_json(nlohmann::json& json, const TaskFrequencyPeriod& period) {
  json = {{"periodType", period.periodType},
          {"startDate", period.startDate},
          {"finishDate", period.finishDate},
          {"firstDayOfWeek", period.firstDayOfWeek}};
}

void from_json(const nlohmann::json& json, TaskFrequencyPeriod& period) {
  qz::coded_form::member(json, "periodType").get_to(period.periodType);
  qz::coded_form::member(json, "startDate").get_to(period.startDate);
  qz::coded_form::member(json, "finishDate").get_to(period.finishDate);
  qz::coded_form::member(json, "firstDayOfWeek").get_to(period.firstDayOfWeek);
}

void to_json(nlohmann::json& json, const DatedPeriod& period) {
  json = {{"date", period.date}, {"period", period.period}};
}

void from_json(const nlohmann::json& json, DatedPeriod& period) {
  qz::coded_form::member(json, "date").get_to(period.date);
  qz::coded_form::member(json, "period").get_to(period.period);
}

}  // namespace habitra
