#include <HabitraBackup/CSV/CSVError.h>
#include <HabitraBackup/CSV/CSVNumber.h>
#include <HabitraBackup/HealthSamples/HealthSampleCSV.h>
#include <HabitraBackup/HealthSamples/HealthSampleRow.h>
#include <QZDateTime/ISO8601.h>
#include <QZKit/EditDistance.h>
#include <QZKit/UTF8.h>

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <utility>

namespace habitra {

namespace {

using qz::QZHKDimension;
using qz::QZHKObjectType;
using qz::QZHKQuantity;
using qz::QZHKUnit;

// An edit distance of so many still is a slip of the pen.
constexpr std::size_t slip = 2;

/// ", did you mean ...?" with the name of the table that is nearest, if any is near.
template <qz::RawValued E>
std::string suggestion(std::string_view found) {
  constexpr std::size_t longestName = 40;
  if (found.size() > longestName) return {};
  const auto distance = [found](const auto& row) { return qz::editDistance(found, row.raw); };
  const auto nearest = std::ranges::min_element(qz::RawValueTable<E>::rows, {}, distance);
  return distance(*nearest) <= slip ? fmt::format(", did you mean \"{}\"?", nearest->raw) : "";
}

/// "m, cm or km": the units that measure it.
std::string unitsOf(QZHKDimension dimension) {
  std::string text;
  std::string_view last;
  for (const auto& row : qz::RawValueTable<QZHKUnit>::rows) {
    if (qz::dimension(row.value) != dimension) continue;
    if (!last.empty()) text += fmt::format("{}{}", text.empty() ? "" : ", ", last);
    last = row.raw;
  }
  return text.empty() ? std::string(last) : fmt::format("{} or {}", text, last);
}

/// The text up to the next blank, taken off its beginning.
std::string_view takeWord(std::string_view& text) {
  const std::size_t blank = std::min(text.find(' '), text.size());
  const std::string_view word = text.substr(0, blank);
  text.remove_prefix(std::min(blank + 1, text.size()));
  return word;
}

}  // namespace

qz::QZHKSample HealthSampleRow::sample() const {
  qz::QZHKSample sample{.identifier = qz::UniqueID({}), .objectType = readType()};
  sample.start = readMoment(start);
  sample.end = fields[end].empty() ? sample.start : readMoment(end);
  if (fields[source].empty()) refuse(source, " is empty, and the program that recorded the sample was expected");
  sample.source = fields[source];
  if (const auto found = problemOfTime(sample)) refuse(end, ": " + *found);
  sample.value = readValue(sample.objectType);
  if (const auto found = problem(sample)) refuse(value, ": " + *found);
  return sample;
}

void HealthSampleRow::refuse(Column column, std::string_view problem) const {
  throw CSVError(line, healthSampleHeaders[column], qz::utf8::quoted(fields[column]) + std::string(problem));
}

QZHKObjectType HealthSampleRow::readType() const {
  const auto found = qz::fromRawValue<QZHKObjectType>(fields[type]);
  if (!found)
    refuse(type, " is not a type of health data such as stepCount" + suggestion<QZHKObjectType>(fields[type]));
  if (kind(*found) == qz::QZHKObjectKind::activitySummary)
    refuse(type, " is worked out from energy, exercise time and hours of standing, which were expected");
  return *found;
}

qz::Moment HealthSampleRow::readMoment(Column column) const {
  const auto moment = qz::momentFromISO8601(fields[column]);
  if (!moment) refuse(column, " is not a moment such as 2024-01-31T08:15:00+01:00");
  return *moment;
}

qz::QZHKSampleValue HealthSampleRow::readValue(QZHKObjectType objectType) const {
  if (dimension(objectType)) return readQuantity(objectType);
  if (objectType == QZHKObjectType::sleepAnalysis) {
    requireEmpty(unit, " is a unit, and sleep has none");
    const auto sleep = qz::fromRawValue<qz::QZHKSleepValue>(fields[value]);
    if (!sleep) refuse(value, " is not inBed, asleep, awake, core, deep or rem");
    return *sleep;
  }
  if (objectType == QZHKObjectType::workout) {
    requireEmpty(unit, " is a unit, and those of a workout stand in its value");
    return readWorkout();
  }
  requireEmpty(value, fmt::format(" is a value, and {} has none", fields[type]));
  requireEmpty(unit, fmt::format(" is a unit, and {} has none", fields[type]));
  return {};
}

QZHKQuantity HealthSampleRow::readQuantity(QZHKObjectType objectType) const {
  const auto amount = decimalNumber(fields[value]);
  if (!amount) refuse(value, " is not a decimal number such as 1.5");
  const auto measuring = qz::fromRawValue<QZHKUnit>(fields[unit]);
  if (!measuring || !isMeasured(objectType, *measuring))
    refuse(unit, fmt::format(" does not measure {}; expected {}", fields[type], unitsOf(*dimension(objectType))));
  return {*amount, *measuring};
}

qz::QZHKWorkout HealthSampleRow::readWorkout() const {
  std::string_view text = fields[value];
  const std::string_view word = takeWord(text);
  const auto activity = qz::fromRawValue<qz::QZHKWorkoutActivityType>(word);
  if (!activity)
    refuse(value, " does not begin with an activity such as running" + suggestion<qz::QZHKWorkoutActivityType>(word));
  qz::QZHKWorkout workout{*activity, std::nullopt, std::nullopt};
  while (!text.empty()) {
    const auto amount = decimalNumber(takeWord(text));
    const auto measuring = qz::fromRawValue<QZHKUnit>(takeWord(text));
    const bool isEnergy = measuring && dimension(*measuring) == QZHKDimension::energy;
    const bool isDistance = measuring && dimension(*measuring) == QZHKDimension::length;
    auto& took = isEnergy ? workout.energy : workout.distance;
    if (!amount || !(isEnergy || isDistance) || took)
      refuse(value,
             " is not an activity with one energy and one distance at most, such as \"running 300 kcal 5.2 km\"");
    took = QZHKQuantity{*amount, *measuring};
  }
  return workout;
}

void HealthSampleRow::requireEmpty(Column column, std::string_view why) const {
  if (!fields[column].empty()) refuse(column, std::string(why) + "; expected nothing");
}

}  // namespace habitra
