#include <HabitraCore/RawValueCoding.h>
#include <HabitraCore/TaskProgress.h>
#include <QZKit/Checked.h>

#include <algorithm>
#include <concepts>
#include <nlohmann/json.hpp>

namespace habitra {

void TaskProgressSimple::fill() {
  progressPct = std::max(progressPct, 1.0);
  currentCompletionProgressPct = 1.0;
}

void TaskProgressSimple::addUnit() {
  progressPct += 1.0;
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

TaskProgressCodable progressByHand(const DatedPeriod& period, std::int64_t expectedUnits, std::int64_t numUnits) {
  if (expectedUnits > 1) {
    return {TaskProgressDiscrete{.period = period, .expectedCompletions = expectedUnits, .numCompletions = numUnits}};
  }
  const double share = static_cast<double>(numUnits);
  return {
      TaskProgressSimple{.period = period, .progressPct = share, .currentCompletionProgressPct = std::min(share, 1.0)}};
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
  progress.expectedCompletions = qz::coded_form::wholeNumber(json, "expectedCompletions");
  progress.numCompletions = qz::coded_form::wholeNumber(json, "numCompletions");
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
