#include <HabitraCore/RawValueCoding.h>
#include <HabitraCore/TaskFrequencyPeriodType.h>
#include <QZDateTime/YYYYMM.h>

namespace habitra {

std::int64_t nominalLength(TaskFrequencyPeriodType type) {
  switch (type) {
    case TaskFrequencyPeriodType::day: break;
    case TaskFrequencyPeriodType::week: return 7;
    case TaskFrequencyPeriodType::fortnight: return 14;
    case TaskFrequencyPeriodType::month: return 31;
    case TaskFrequencyPeriodType::year: return 366;
  }
  return 1;
}

qz::YYYYMMDD firstDate(TaskFrequencyPeriodType type, const qz::YYYYMMDD& date, qz::DayOfWeek firstDayOfWeek,
                       const std::optional<qz::YYYYMMDD>& referenceDate) {
  switch (type) {
    case TaskFrequencyPeriodType::day: break;
    case TaskFrequencyPeriodType::week: return date.startOfWeek(firstDayOfWeek);
    case TaskFrequencyPeriodType::fortnight:
      return date.startOfFortnight(firstDayOfWeek, referenceDate.value_or(qz::YYYYMMDD::fortnightReferenceDate()));
    case TaskFrequencyPeriodType::month: return date.yyyymm().firstDay();
    case TaskFrequencyPeriodType::year: return qz::YYYYMMDD(date.y(), 1, 1);
  }
  return date;
}

qz::YYYYMMDD lastDate(TaskFrequencyPeriodType type, const qz::YYYYMMDD& date, qz::DayOfWeek firstDayOfWeek,
                      const std::optional<qz::YYYYMMDD>& referenceDate) {
  switch (type) {
    case TaskFrequencyPeriodType::day: break;
    case TaskFrequencyPeriodType::week: return date.endOfWeek(firstDayOfWeek);
    case TaskFrequencyPeriodType::fortnight:
      return date.endOfFortnight(firstDayOfWeek, referenceDate.value_or(qz::YYYYMMDD::fortnightReferenceDate()));
    case TaskFrequencyPeriodType::month: return date.yyyymm().lastDay();
    case TaskFrequencyPeriodType::year: return qz::YYYYMMDD(date.y(), 12, 31);
  }
  return date;
}

void to_json(nlohmann::json& json, TaskFrequencyPeriodType type) { encodeRawValue(json, type); }

void from_json(const nlohmann::json& json, TaskFrequencyPeriodType& type) {
  type = decodeRawValue<TaskFrequencyPeriodType>(json, "TaskFrequencyPeriodType");
}

}  // namespace habitra
