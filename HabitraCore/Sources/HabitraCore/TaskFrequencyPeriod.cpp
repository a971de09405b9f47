#include <HabitraCore/DayCoding.h>
#include <HabitraCore/TaskFrequencyPeriod.h>

#include <algorithm>
#include <nlohmann/json.hpp>

namespace habitra {

DatedPeriod::DatedPeriod(const qz::YYYYMMDD& theDate, TaskFrequencyPeriodType periodType, qz::DayOfWeek firstDayOfWeek,
                         const std::optional<qz::YYYYMMDD>& referenceDate)
    : date(theDate),
      period{.periodType = periodType,
             .startDate = firstDate(periodType, theDate, firstDayOfWeek, referenceDate),
             .finishDate = lastDate(periodType, theDate, firstDayOfWeek, referenceDate),
             .firstDayOfWeek = firstDayOfWeek} {}

double TaskFrequencyPeriod::progressAtEndOf(const qz::YYYYMMDD& date) const {
  const double elapsed = static_cast<double>(startDate.distance(date, true)) / static_cast<double>(numDays());
  return std::clamp(elapsed, 0.0, 1.0);
}

double DatedPeriod::periodProgressAtEndOfToday(const qz::HHMMSS& startOfDay, const qz::TimeZone& timeZone,
                                               qz::Moment now) const {
  return period.progressAtEndOf(qz::YYYYMMDD::today(startOfDay, timeZone, now));
}

void to_json(nlohmann::json& json, const TaskFrequencyPeriod& period) {
  json = {{"periodType", period.periodType},
          {"startDate", period.startDate},
          {"finishDate", period.finishDate},
          {"firstDayOfWeek", period.firstDayOfWeek}};
}

void from_json(const nlohmann::json& json, TaskFrequencyPeriod& period) {
  qz::coded_form::member(json, "periodType").get_to(period.periodType);
  const DaySpan days = existingSpan(json, "startDate", "finishDate");
  period.startDate = days.first;
  period.finishDate = days.last;
  qz::coded_form::member(json, "firstDayOfWeek").get_to(period.firstDayOfWeek);
}

void to_json(nlohmann::json& json, const DatedPeriod& period) {
  json = {{"date", period.date}, {"period", period.period}};
}

void from_json(const nlohmann::json& json, DatedPeriod& period) {
  period.date = existingDay(json, "date");
  qz::coded_form::member(json, "period").get_to(period.period);
  if (!period.period.contains(period.date)) {
    throw qz::DecodingError("Unable to read \"date\" from " + std::to_string(period.date.intValue()) +
                            ": not in its \"period\"");
  }
}

}  // namespace habitra
