#include <QZHealthKit/QZHKSample.h>

#include <cmath>
#include <string_view>

namespace qz {

namespace {

template <typename Value>
std::optional<Value> valueAs(const QZHKSampleValue& value) {
  const Value* found = std::get_if<Value>(&value);
  return found ? std::optional(*found) : std::nullopt;
}

// What is wrong is said in words that follow the name of the type: "heartRate needs an amount".

std::optional<std::string> problemOfAmount(QZHKDimension measured, const QZHKQuantity& quantity) {
  if (dimension(quantity.unit) != measured) return "is not measured in " + std::string(rawValue(quantity.unit));
  if (!(std::abs(quantity.value) < amountLimit)) return "needs an amount below 10^12";
  if (quantity.value < 0 && measured != QZHKDimension::temperature) return "cannot be below zero";
  return std::nullopt;
}

std::optional<std::string> problemOfWorkout(const QZHKWorkout& workout) {
  std::optional<std::string> found;
  if (workout.energy) found = problemOfAmount(QZHKDimension::energy, *workout.energy);
  if (!found && workout.distance) found = problemOfAmount(QZHKDimension::length, *workout.distance);
  return found;
}

std::optional<std::string> problemOfValue(QZHKObjectType type, const QZHKSampleValue& value) {
  if (kind(type) == QZHKObjectKind::activitySummary) return "has no samples";
  if (const auto measured = dimension(type)) {
    const auto quantity = valueAs<QZHKQuantity>(value);
    return quantity ? problemOfAmount(*measured, *quantity) : "needs an amount";
  }
  if (type == QZHKObjectType::sleepAnalysis) {
    return valueAs<QZHKSleepValue>(value) ? std::nullopt : std::optional<std::string>("needs a sleep value");
  }
  if (type == QZHKObjectType::workout) {
    const auto workout = valueAs<QZHKWorkout>(value);
    return workout ? problemOfWorkout(*workout) : "needs an activity";
  }
  return valueAs<std::monostate>(value) ? std::nullopt : std::optional<std::string>("takes no value");
}

std::optional<std::string> problemOfSpan(const QZHKSample& sample) {
  if (sample.end < sample.start) return "ends before it starts";
  if (sample.start < earliestSampleMoment || sample.end > latestSampleMoment) {
    return "lies outside the years 1900 to 2999";
  }
  if (sample.end - sample.start > longestSample) return "lasts longer than 31 days";
  const bool isOfHour = sample.objectType == QZHKObjectType::standHour || sample.objectType == QZHKObjectType::rollHour;
  if (isOfHour && sample.end - sample.start != std::chrono::hours(1)) return "needs to last one hour";
  return std::nullopt;
}

std::optional<std::string> problemAfterName(const QZHKSample& sample) {
  if (auto found = problemOfSpan(sample)) return found;
  if (sample.source.empty()) return "needs a source";
  return problemOfValue(sample.objectType, sample.value);
}

std::optional<std::string> withName(QZHKObjectType type, const std::optional<std::string>& problem) {
  return problem ? std::optional(std::string(rawValue(type)) + " " + *problem) : std::nullopt;
}

}  // namespace

std::optional<QZHKQuantity> QZHKSample::quantity() const { return valueAs<QZHKQuantity>(value); }

std::optional<QZHKSleepValue> QZHKSample::sleepValue() const { return valueAs<QZHKSleepValue>(value); }

std::optional<QZHKWorkout> QZHKSample::workout() const { return valueAs<QZHKWorkout>(value); }

std::optional<std::string> problem(const QZHKSample& sample) {
  return withName(sample.objectType, problemAfterName(sample));
}

std::optional<std::string> problemOfTime(const QZHKSample& sample) {
  return withName(sample.objectType, problemOfSpan(sample));
}

}  // namespace qz
