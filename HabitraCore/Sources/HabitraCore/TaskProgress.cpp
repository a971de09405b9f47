#include <HabitraCore/RawValueCoding.h>
#include <HabitraCore/TaskProgress.h>
#include <QZDateTime/ISO8601.h>
#include <QZKit/Checked.h>

#include <algorithm>
#include <cmath>
#include <concepts>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>

namespace habitra {

double nearestFinite(double value) {
  if (std::isnan(value)) return 0.0;
  constexpr double largest = std::numeric_limits<double>::max();
  return std::clamp(value, -largest, largest);
}

namespace {

double shareOf(double part, double whole) { return whole > 0.0 ? nearestFinite(part / whole) : 0.0; }

/// How many parts make the target.
std::int64_t numParts(std::int64_t expectedCompletions) { return std::max(expectedCompletions, std::int64_t{1}); }

/// Later days would not surely begin and end within the range of a Moment.
constexpr std::int64_t lastYearOfDateRanges = 200'000;

}  // namespace

double amountOfUnits(std::int64_t numUnits, double target, std::int64_t expectedCompletions) {
  if (!(target > 0.0)) return 0.0;
  const std::int64_t expected = numParts(expectedCompletions);
  if (numUnits % expected == 0) return nearestFinite(static_cast<double>(numUnits / expected) * target);
  // Multiplied first, since whole amounts then come out whole; unless that is too large.
  const double units = static_cast<double>(numUnits);
  const double parts = static_cast<double>(expected);
  const double product = units * target;
  return std::isfinite(product) ? product / parts : nearestFinite(units / parts * target);
}

double amountAfterUnit(double amount, double target, std::int64_t expectedCompletions) {
  const auto multiple = [&](double units) {
    return amountOfUnits(static_cast<std::int64_t>(units), target, expectedCompletions);
  };
  const double unit = multiple(1.0);
  const double next = nearestFinite(amount + unit);
  const double units = std::round(shareOf(next, unit));
  if (units < 1.0 || units >= 0x1p53) return next;
  // Sums of equal parts drift away from the multiples, so that the last part could miss the target. What lies as close
  // to a multiple as rounding explains is taken for it.
  constexpr double rounding = 1e-12;
  return std::abs(next - multiple(units)) <= rounding * next ? multiple(units) : next;
}

std::int64_t displayedPercentage(double progressShare) {
  if (!(progressShare > 0.0)) return 0;
  constexpr double largest = 0x1p53;
  if (progressShare >= largest / 100.0) return static_cast<std::int64_t>(largest);
  // The product is rounded either way; a percentage is due when the share is at least its hundredth.
  auto percentage = static_cast<std::int64_t>(progressShare * 100.0);
  const auto isDue = [&](std::int64_t value) { return static_cast<double>(value) / 100.0 <= progressShare; };
  if (!isDue(percentage)) --percentage;
  if (isDue(percentage + 1)) ++percentage;
  return percentage;
}

double TaskProgressSimple::progressShare() const { return nearestFinite(progressPct); }

void TaskProgressSimple::fill() {
  progressPct = std::max(progressPct, 1.0);
  currentCompletionProgressPct = 1.0;
}

void TaskProgressSimple::addUnit() {
  progressPct = nearestFinite(progressPct + 1.0);
  currentCompletionProgressPct = 1.0;
}

void TaskProgressSimple::empty() {
  progressPct = 0.0;
  currentCompletionProgressPct = 0.0;
}

double TaskProgressDiscrete::progressShare() const {
  if (expectedCompletions <= 0) return 0.0;
  return static_cast<double>(numCompletions) / static_cast<double>(expectedCompletions);
}

void TaskProgressDiscrete::fill() { numCompletions = std::max(numCompletions, expectedCompletions); }

void TaskProgressDiscrete::addUnit() { numCompletions = qz::checkedAdd(numCompletions, std::int64_t{1}); }

void TaskProgressDiscrete::empty() { numCompletions = 0; }

double TaskProgressContinuous::progressShare() const { return shareOf(currentValue, targetValue); }

void TaskProgressContinuous::fill() { currentValue = std::max(currentValue, nearestFinite(targetValue)); }

void TaskProgressContinuous::addUnit() {
  currentValue = amountAfterUnit(currentValue, targetValue, expectedCompletions);
}

void TaskProgressContinuous::empty() { currentValue = 0.0; }

double TaskProgressTimer::progressShare() const {
  const double one = amountOfUnits(1, totalTargetDuration, expectedCompletions);
  const double made = amountOfUnits(numCompletions, totalTargetDuration, expectedCompletions);
  const double share = shareOf(made + currentCompletionDuration, totalTargetDuration);
  if (one <= 0.0 || currentCompletionDuration < one) return share;
  // The sum can round below a target that whole completions reach exactly.
  const double completions = static_cast<double>(numCompletions) + shareOf(currentCompletionDuration, one);
  return std::max(share, shareOf(completions, static_cast<double>(numParts(expectedCompletions))));
}

void TaskProgressTimer::fill() {
  if (progressShare() >= 1.0) return;
  numCompletions = std::max(numCompletions, numParts(expectedCompletions));
  currentCompletionDuration = 0.0;
}

void TaskProgressTimer::addUnit() {
  const bool wasReached = progressShare() >= 1.0;
  numCompletions = qz::checkedAdd(numCompletions, std::int64_t{1});
  currentCompletionDuration = 0.0;
  if (wasReached) numCompletions = std::max(numCompletions, numParts(expectedCompletions));
}

void TaskProgressTimer::empty() {
  numCompletions = 0;
  currentCompletionDuration = 0.0;
}

void TaskProgressTimer::addDuration(double seconds) {
  currentCompletionDuration = nearestFinite(currentCompletionDuration + std::max(nearestFinite(seconds), 0.0));
}

double TaskProgressDateRange::progressShare() const {
  if (!currentDate) return 0.0;
  const qz::Moment from = period.period.startDate.beginning(startOfDay, timeZone);
  const qz::Moment to = period.period.finishDate.nextDay().beginning(startOfDay, timeZone);
  if (*currentDate <= from || to <= from) return 0.0;
  const auto elapsed = static_cast<double>((std::min(*currentDate, to) - from).count());
  return std::clamp(nearestFinite(scale * (elapsed / static_cast<double>((to - from).count()))), 0.0, 1.0);
}

double TaskProgressActivityRings::progressShare() const {
  // In more digits than the result has, so that the mean of three equal rings is that of each.
  const auto cut = [](double ring) -> long double { return std::min(nearestFinite(ring), 1.0); };
  return nearestFinite(static_cast<double>((cut(energy) + cut(exercise) + cut(stand)) / 3.0L));
}

void TaskProgressActivityRings::fill() {
  for (double* const ring : {&energy, &exercise, &stand}) *ring = std::max(*ring, 1.0);
}

void TaskProgressActivityRings::empty() { energy = exercise = stand = 0.0; }

TaskProgressType TaskProgressCodable::type() const {
  return std::visit([](const auto& record) { return record.type; }, base);
}

const DatedPeriod& TaskProgressCodable::period() const {
  return std::visit([](const auto& record) -> const DatedPeriod& { return record.period; }, base);
}

double TaskProgressCodable::progressShare() const {
  return std::visit([](const auto& record) { return record.progressShare(); }, base);
}

void TaskProgressCodable::fill() {
  std::visit([](auto& record) { record.fill(); }, base);
}

void TaskProgressCodable::addUnit() {
  std::visit([](auto& record) { record.addUnit(); }, base);
}

void TaskProgressCodable::empty() {
  std::visit([](auto& record) { record.empty(); }, base);
}

void to_json(nlohmann::json& json, const TaskProgressSimple& progress) {
  json = {{"period", progress.period},
          {"progressPct", progress.progressPct},
          {"currentCompletionProgressPct", progress.currentCompletionProgressPct}};
}

void from_json(const nlohmann::json& json, TaskProgressSimple& progress) {
  qz::coded_form::member(json, "period").get_to(progress.period);
  progress.progressPct = qz::coded_form::number(json, "progressPct");
  progress.currentCompletionProgressPct = qz::coded_form::number(json, "currentCompletionProgressPct");
}

void to_json(nlohmann::json& json, const TaskProgressDiscrete& progress) {
  json = {{"period", progress.period},
          {"expectedCompletions", progress.expectedCompletions},
          {"numCompletions", progress.numCompletions}};
}

void from_json(const nlohmann::json& json, TaskProgressDiscrete& progress) {
  qz::coded_form::member(json, "period").get_to(progress.period);
  progress.expectedCompletions = decodeCount(json, "expectedCompletions");
  progress.numCompletions = decodeCount(json, "numCompletions");
}

void to_json(nlohmann::json& json, const TaskProgressContinuous& progress) {
  json = {{"period", progress.period},
          {"expectedCompletions", progress.expectedCompletions},
          {"targetValue", progress.targetValue},
          {"currentValue", progress.currentValue}};
}

void from_json(const nlohmann::json& json, TaskProgressContinuous& progress) {
  qz::coded_form::member(json, "period").get_to(progress.period);
  progress.expectedCompletions = decodeCount(json, "expectedCompletions");
  progress.targetValue = qz::coded_form::number(json, "targetValue");
  progress.currentValue = qz::coded_form::number(json, "currentValue");
}

void to_json(nlohmann::json& json, const TaskProgressTimer& progress) {
  json = {{"period", progress.period},
          {"unit", rawValue(progress.unit)},
          {"expectedCompletions", progress.expectedCompletions},
          {"numCompletions", progress.numCompletions},
          {"totalTargetDuration", progress.totalTargetDuration},
          {"currentCompletionDuration", progress.currentCompletionDuration}};
}

void from_json(const nlohmann::json& json, TaskProgressTimer& progress) {
  qz::coded_form::member(json, "period").get_to(progress.period);
  progress.unit =
      decodeRawValue<TaskProgressTimer::Unit>(qz::coded_form::member(json, "unit"), "TaskProgressTimer.Unit");
  progress.expectedCompletions = decodeCount(json, "expectedCompletions");
  progress.numCompletions = decodeCount(json, "numCompletions");
  progress.totalTargetDuration = qz::coded_form::number(json, "totalTargetDuration");
  progress.currentCompletionDuration = qz::coded_form::number(json, "currentCompletionDuration");
}

void to_json(nlohmann::json& json, const TaskProgressDateRange& progress) {
  json = {{"startOfDay", progress.startOfDay},
          {"timeZone", progress.timeZone.identifier()},
          {"scale", progress.scale},
          {"period", progress.period}};
  if (progress.currentDate) json["currentDate"] = qz::iso8601(*progress.currentDate);
}

namespace {

/// The member as `read` makes it of its text; refused by its name where that gives none.
template <typename Read>
auto readText(const nlohmann::json& json, const char* key, Read read) {
  const nlohmann::json& found = qz::coded_form::member(json, key);
  auto value = found.is_string() ? read(found.get_ref<const std::string&>()) : std::nullopt;
  if (!value) {
    throw qz::DecodingError("Unable to read \"" + std::string(key) + "\" from " + qz::coded_form::text(found));
  }
  return *value;
}

}  // namespace

void from_json(const nlohmann::json& json, TaskProgressDateRange& progress) {
  qz::coded_form::member(json, "startOfDay").get_to(progress.startOfDay);
  progress.timeZone = readText(json, "timeZone", qz::TimeZone::fromIdentifier);
  progress.scale = qz::coded_form::number(json, "scale");
  progress.currentDate.reset();
  if (qz::coded_form::memberIfAny(json, "currentDate") != nullptr)
    progress.currentDate = readText(json, "currentDate", qz::momentFromISO8601);
  const nlohmann::json& period = qz::coded_form::member(json, "period");
  period.get_to(progress.period);
  if (std::max(progress.period.period.startDate.y(), progress.period.period.finishDate.y()) > lastYearOfDateRanges)
    throw qz::DecodingError("Unable to read \"period\" from " + qz::coded_form::text(period));
}

void to_json(nlohmann::json& json, const TaskProgressActivityRings& progress) {
  json = {{"period", progress.period},
          {"energy", progress.energy},
          {"exercise", progress.exercise},
          {"stand", progress.stand}};
}

void from_json(const nlohmann::json& json, TaskProgressActivityRings& progress) {
  qz::coded_form::member(json, "period").get_to(progress.period);
  progress.energy = qz::coded_form::number(json, "energy");
  progress.exercise = qz::coded_form::number(json, "exercise");
  progress.stand = qz::coded_form::number(json, "stand");
}

void to_json(nlohmann::json& json, const TaskProgressCodable& progress) {
  json = {{"type", rawValue(progress.type())}};
  std::visit([&](const auto& record) { json["base"] = record; }, progress.base);
}

namespace {

/// Decodes the record whose type is `type`, trying the variant's alternatives in turn.
template <std::size_t index = 0>
TaskProgress decodeRecord(TaskProgressType type, const nlohmann::json& base) {
  if constexpr (index == std::variant_size_v<TaskProgress>) {
    throw qz::DecodingError("Unable to create TaskProgress of type " + std::string(rawValue(type)));
  } else {
    using Record = std::variant_alternative_t<index, TaskProgress>;
    return Record::type == type ? base.get<Record>() : decodeRecord<index + 1>(type, base);
  }
}

}  // namespace

void from_json(const nlohmann::json& json, TaskProgressCodable& progress) {
  const auto type = decodeRawValue<TaskProgressType>(qz::coded_form::member(json, "type"), "TaskProgressType");
  progress.base = decodeRecord(type, qz::coded_form::member(json, "base"));
}

}  // namespace habitra
