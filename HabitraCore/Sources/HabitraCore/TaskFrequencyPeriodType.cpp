#include <HabitraCore/RawValueCoding.h>
#include <HabitraCore/TaskFrequencyPeriodType.h>
#include <QZDateTime/YYYYMM.h>
#include <QZKit/Trap.h>

#include <algorithm>
#include <cstddef>

namespace habitra {

namespace {

struct MultiDayCountRow {
  std::int64_t numDays;
  std::string_view icon;
};

/// In the order of declaration of MultiDayCount.
constexpr std::array<MultiDayCountRow, 9> multiDayCounts{{
    {1, "calendar.1"},
    {7, "calendar.7"},
    {14, "calendar.14"},
    {28, "calendar.28"},
    {29, "calendar.29"},
    {30, "calendar.30"},
    {31, "calendar.31"},
    {365, "calendar.365"},
    {366, "calendar.366"},
}};

const MultiDayCountRow& rowOf(MultiDayCount count) { return multiDayCounts[static_cast<std::size_t>(count)]; }

}  // namespace

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

std::int64_t numDays(MultiDayCount count) { return rowOf(count).numDays; }

std::string_view icon(MultiDayCount count) { return rowOf(count).icon; }

MultiDayCount multiDayCount(TaskFrequencyPeriodType type, const qz::YYYYMMDD& date) {
  const qz::DayOfWeek anyDay = qz::DayOfWeek::sunday;
  const std::int64_t length = firstDate(type, date, anyDay).distance(lastDate(type, date, anyDay), true);
  const auto row = std::find_if(multiDayCounts.begin(), multiDayCounts.end(),
                                [length](const MultiDayCountRow& candidate) { return candidate.numDays == length; });
  qz::require(row != multiDayCounts.end(), "a period of a length that the calendar does not have");
  return static_cast<MultiDayCount>(row - multiDayCounts.begin());
}

MultiDayCount multiDayCount(TaskFrequencyPeriodType type, const qz::HHMMSS& startOfDay, const qz::TimeZone& timeZone,
                            qz::Moment now) {
  return multiDayCount(type, qz::YYYYMMDD::today(startOfDay, timeZone, now));
}

void to_json(nlohmann::json& json, TaskFrequencyPeriodType type) { encodeRawValue(json, type); }

void from_json(const nlohmann::json& json, TaskFrequencyPeriodType& type) {
  type = decodeRawValue<TaskFrequencyPeriodType>(json, "TaskFrequencyPeriodType");
}

}  // namespace habitra
