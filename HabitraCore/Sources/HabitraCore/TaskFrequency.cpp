#include <HabitraCore/RawValueCoding.h>
#include <HabitraCore/TaskFrequency.h>
#include <QZKit/Checked.h>
#include <QZKit/Trap.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

namespace habitra {

namespace {

/// What a mode measures in, and over what it counts completed days.
struct ModePeriods {
  TaskFrequency::DayMode mode;
  TaskFrequencyPeriodType measured;
  TaskFrequencyPeriodType counted;
};

/// In order of raw values, so that the raw value is the index.
constexpr std::array<ModePeriods, 11> modePeriods = [] {
  using Mode = TaskFrequency::DayMode;
  using Type = TaskFrequencyPeriodType;
  return std::array<ModePeriods, 11>{{
      {Mode::specificDaysOfWeek, Type::day, Type::day},
      {Mode::numberOfDaysInWeek, Type::day, Type::week},
      {Mode::dayInterval, Type::day, Type::day},
      {Mode::numberOfDaysInMonth, Type::day, Type::month},
      {Mode::numberOfDaysInYear, Type::day, Type::year},
      {Mode::numberOfDaysInFortnight, Type::day, Type::fortnight},
      {Mode::aggregateOverWeek, Type::week, Type::week},
      {Mode::aggregateOverMonth, Type::month, Type::month},
      {Mode::aggregateOverFortnight, Type::fortnight, Type::fortnight},
      {Mode::aggregateOverYear, Type::year, Type::year},
      {Mode::specificDaysOfMonth, Type::day, Type::month},
  }};
}();

const ModePeriods& periodsOf(TaskFrequency::DayMode mode) {
  return modePeriods[static_cast<std::size_t>(rawValue(mode))];
}

/// A count of the 16 bits that a store has for it.
std::int64_t storedCount(const nlohmann::json& json, const char* key) {
  const std::int64_t count = qz::coded_form::wholeNumber(json, key);
  if (!std::in_range<std::int16_t>(count))
    throw qz::DecodingError(std::string("Unable to read \"") + key + "\" from " + std::to_string(count));
  return count;
}

}  // namespace

TaskFrequency TaskFrequency::everyDay() {
  TaskFrequency frequency;
  frequency.days = qz::DayOfWeek::every();
  return frequency;
}

TaskFrequencyPeriodType TaskFrequency::measurementDuration() const { return periodsOf(dayMode).measured; }

TaskFrequencyPeriodType TaskFrequency::periodTypeForCompletionCountCalculation() const {
  return periodsOf(dayMode).counted;
}

bool TaskFrequency::isCountedDays() const {
  return !isAggregate() && dayMode != DayMode::specificDaysOfMonth &&
         periodTypeForCompletionCountCalculation() != TaskFrequencyPeriodType::day;
}

bool TaskFrequency::isAggregate() const { return measurementDuration() != TaskFrequencyPeriodType::day; }

std::int64_t TaskFrequency::numPartialCompletionsPerPeriod() const {
  const std::int64_t perCompletion = std::max(numPartialCompletions, std::int64_t{1});
  if (!isAggregate()) return perCompletion;
  return qz::checkedMultiply(perCompletion, std::max(numCompletions, std::int64_t{1}));
}

DatedPeriod TaskFrequency::period(const qz::YYYYMMDD& date, qz::DayOfWeek firstDayOfWeek,
                                  const std::optional<qz::YYYYMMDD>& referenceDate) const {
  return DatedPeriod(date, measurementDuration(), firstDayOfWeek, referenceDate);
}

DatedPeriod TaskFrequency::period(qz::HHMMSS startOfDay, qz::Moment date, qz::DayOfWeek firstDayOfWeek,
                                  const qz::TimeZone& timeZone,
                                  const std::optional<qz::YYYYMMDD>& referenceDate) const {
  return period(qz::YYYYMMDD(startOfDay, date, timeZone), firstDayOfWeek, referenceDate);
}

DatedPeriod TaskFrequency::currentPeriod(qz::HHMMSS startOfDay, qz::DayOfWeek firstDayOfWeek,
                                         const qz::TimeZone& timeZone, qz::Moment now,
                                         const std::optional<qz::YYYYMMDD>& referenceDate) const {
  return period(startOfDay, now, firstDayOfWeek, timeZone, referenceDate);
}

qz::YYYYMMDD TaskFrequency::startOfPeriod(const qz::YYYYMMDD& date, qz::DayOfWeek firstDayOfWeek,
                                          const std::optional<qz::YYYYMMDD>& referenceDate) const {
  return firstDate(measurementDuration(), date, firstDayOfWeek, referenceDate);
}

qz::YYYYMMDD TaskFrequency::nextDueDay(const DayIntervalResponse& response, const qz::YYYYMMDD& anchor,
                                       const qz::YYYYMMDD& today) const {
  qz::require(dayInterval >= 1, "an interval is at least one day");
  const auto& last = response.periodOfLastCompletionBeforeToday;
  const qz::YYYYMMDD first = last ? last->finishDate.add(dayInterval) : anchor;
  const std::int64_t daysPast = first.distance(today);
  if (daysPast <= 0) return first;
  const std::int64_t daysSinceDue = daysPast % dayInterval;
  return daysSinceDue == 0 ? today : today.add(dayInterval - daysSinceDue);
}

void to_json(nlohmann::json& json, const TaskFrequency& frequency) {
  nlohmann::json days = nlohmann::json::array();
  for (const qz::DayOfWeek day : frequency.days) days.push_back(day);
  json = {{"dayMode", rawValue(frequency.dayMode)},          {"days", days},
          {"daysOfMonth", frequency.daysOfMonth.rawValue()}, {"numPartialCompletions", frequency.numPartialCompletions},
          {"numCompletions", frequency.numCompletions},      {"dayInterval", frequency.dayInterval}};
}

void from_json(const nlohmann::json& json, TaskFrequency& frequency) {
  using namespace qz::coded_form;
  frequency.dayMode = decodeRawValue<TaskFrequency::DayMode>(member(json, "dayMode"), "TaskFrequency.DayMode");
  frequency.days = {};
  qz::DayOfWeek weekday = qz::DayOfWeek::sunday;
  for (const nlohmann::json& day : list(json, "days")) {
    day.get_to(weekday);
    frequency.days.insert(weekday);
  }
  frequency.daysOfMonth = DaysOfMonth(wholeNumber(json, "daysOfMonth"));
  frequency.numPartialCompletions = storedCount(json, "numPartialCompletions");
  frequency.numCompletions = storedCount(json, "numCompletions");
  frequency.dayInterval = storedCount(json, "dayInterval");
}

}  // namespace habitra
