#include <HabitraModel/Mapping/StoredJSON.h>
#include <HabitraModel/Tasks/Recording/HealthWriteRequest.h>
#include <QZDateTime/CodedForm.h>
#include <QZDateTime/ISO8601.h>

#include <algorithm>
#include <chrono>
#include <string>

namespace habitra {
namespace {

constexpr std::chrono::duration<double> longest = qz::longestSample;

using qz::coded_form::memberIfAny;

/// The members of an object, none where one is missing or is no such thing.
std::optional<std::string> textMember(const nlohmann::json& json, const char* key) {
  const nlohmann::json* value = memberIfAny(json, key);
  return value != nullptr && value->is_string() ? std::optional(value->get<std::string>()) : std::nullopt;
}

template <typename Read>
auto readText(const nlohmann::json& json, const char* key, Read read) -> decltype(read(std::string())) {
  const auto text = textMember(json, key);
  return text ? read(*text) : std::nullopt;
}

std::optional<qz::UniqueID> identifier(const nlohmann::json& json, const char* key) {
  return readText(json, key, [](const std::string& text) { return qz::UniqueID::fromText(text); });
}

std::optional<qz::Moment> moment(const nlohmann::json& json, const char* key) {
  return readText(json, key, [](const std::string& text) { return qz::momentFromISO8601(text); });
}

/// What a sample of this type says; an amount where it has one.
std::optional<qz::QZHKSampleValue> valueOf(qz::QZHKObjectType type, const nlohmann::json& json) {
  switch (kind(type)) {
    case qz::QZHKObjectKind::category: return std::optional<qz::QZHKSampleValue>(std::in_place);
    case qz::QZHKObjectKind::workout:
      return std::optional<qz::QZHKSampleValue>(std::in_place, std::in_place_type<qz::QZHKWorkout>);
    case qz::QZHKObjectKind::activitySummary: return std::nullopt;
    case qz::QZHKObjectKind::quantity: break;
  }
  const auto unit = readText(json, "unit", [](const std::string& text) { return fromRawValue<qz::QZHKUnit>(text); });
  if (!unit) return std::nullopt;
  return qz::QZHKQuantity{qz::coded_form::number(json, "value"), *unit};
}

std::optional<HealthWriteRequest> read(qz::QZHKObjectType type, const nlohmann::json& json) {
  const auto id = identifier(json, "identifier");
  const auto start = moment(json, "start");
  const auto end = moment(json, "end");
  auto value = valueOf(type, json);
  if (!id || !start || !end || !value) return std::nullopt;
  qz::QZHKSample sample{.identifier = *id,
                        .objectType = type,
                        .start = *start,
                        .end = *end,
                        .value = std::move(*value),
                        .source = std::string(healthSampleSource),
                        .device = textMember(json, "device"),
                        .task = identifier(json, "task")};
  if (problem(sample)) return std::nullopt;
  return HealthWriteRequest{std::move(sample)};
}

}  // namespace

void HealthWriteRequest::writeTo(HealthKitRequestEntity& row) const {
  nlohmann::json json{
      {"identifier", sample.identifier.text()}, {"start", qz::iso8601(sample.start)}, {"end", qz::iso8601(sample.end)}};
  if (const auto amount = sample.quantity()) {
    json["value"] = amount->value;
    json["unit"] = rawValue(amount->unit);
  }
  if (sample.device) json["device"] = *sample.device;
  if (sample.task) json["task"] = sample.task->text();
  row.type = rawValue(sample.objectType);
  row.data = jsonBytes(json);
}

std::optional<HealthWriteRequest> HealthWriteRequest::of(const HealthKitRequestEntity& row) {
  const auto type = row.type ? fromRawValue<qz::QZHKObjectType>(*row.type) : std::nullopt;
  if (!type) return std::nullopt;
  return readingJSON(row.data, [&](const nlohmann::json& json) { return read(*type, json); });
}

std::optional<HealthWriteRequest> healthWriteRequest(const AutomaticTaskType& type,
                                                     const HealthWriteRequest::Span& period, qz::Moment end,
                                                     double amount, double duration,
                                                     const std::optional<std::string>& device,
                                                     const std::optional<qz::UniqueID>& task) {
  const auto health = type.type.healthType();
  if (!health || !health->writesToHealthKit()) return std::nullopt;
  // What is written back is read as samples of one type.
  const qz::QZHKObjectType object = health->healthKitReadTypes(type.unit, type.speeds).front();
  qz::QZHKSample sample{.identifier = qz::UniqueID::generate(end),
                        .objectType = object,
                        .start = end,
                        .end = end,
                        .value = {},
                        .source = std::string(healthSampleSource),
                        .device = device,
                        .task = task};
  if (duration > 0.0) {
    const auto length =
        std::chrono::floor<qz::Moment::duration>(std::min(std::chrono::duration<double>(duration), longest));
    sample.start = end - length;
    if (sample.start < period.beginning) sample.end = std::max(end, std::min(period.beginning + length, period.end));
  }
  sample.start = std::max(sample.start, period.beginning);
  sample.end = std::max(sample.start, sample.end);
  if (kind(object) == qz::QZHKObjectKind::workout) sample.value = qz::QZHKWorkout();
  if (kind(object) == qz::QZHKObjectKind::quantity) {
    if (!type.unit || !(amount > 0.0)) return std::nullopt;
    sample.value = qz::QZHKQuantity{amount, type.unit->healthKit()};
  }
  if (problem(sample)) return std::nullopt;
  return HealthWriteRequest{std::move(sample)};
}

}  // namespace habitra
