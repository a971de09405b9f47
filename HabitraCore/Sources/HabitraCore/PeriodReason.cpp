#include <HabitraCore/PeriodReason.h>
#include <HabitraCore/RawValueCoding.h>
#include <QZDateTime/CodedForm.h>

#include <nlohmann/json.hpp>

namespace habitra {

namespace {

using qz::coded_form::member;

template <typename T>
void encodeIfPresent(nlohmann::json& json, const char* key, const std::optional<T>& value) {
  if (value) json[key] = *value;
}

template <typename T>
void decodeIfPresent(const nlohmann::json& json, const char* key, std::optional<T>& value) {
  value.reset();
  if (const nlohmann::json* found = qz::coded_form::memberIfAny(json, key)) found->get_to(value.emplace());
}

void decodeIfPresent(const nlohmann::json& json, const char* key, std::optional<std::int64_t>& value) {
  value.reset();
  if (qz::coded_form::memberIfAny(json, key) != nullptr) value = qz::coded_form::wholeNumber(json, key);
}

bool decodeBool(const nlohmann::json& json, const char* key) {
  const nlohmann::json& found = member(json, key);
  if (!found.is_boolean())
    throw qz::DecodingError(std::string("Unable to read \"") + key + "\" from " + qz::coded_form::text(found));
  return found.get<bool>();
}

}  // namespace

void to_json(nlohmann::json& json, const PeriodReason::Entry& entry) {
  json = {{"date", entry.date}, {"entryType", entry.entryType}, {"order", entry.order}};
}

void from_json(const nlohmann::json& json, PeriodReason::Entry& entry) {
  member(json, "date").get_to(entry.date);
  member(json, "entryType").get_to(entry.entryType);
  entry.order = qz::coded_form::wholeNumber(json, "order");
}

void to_json(nlohmann::json& json, const PeriodReason& reason) {
  json = {{"period", reason.period},
          {"status", reason.status},
          {"ground", rawValue(reason.ground)},
          {"dayMode", rawValue(reason.dayMode)},
          {"isOpen", reason.isOpen},
          {"numUnits", reason.numUnits},
          {"expectedUnits", reason.expectedUnits},
          {"entries", reason.entries}};
  encodeIfPresent(json, "countingPeriod", reason.countingPeriod);
  encodeIfPresent(json, "completed", reason.completed);
  encodeIfPresent(json, "wanted", reason.wanted);
  encodeIfPresent(json, "available", reason.available);
  encodeIfPresent(json, "required", reason.required);
  encodeIfPresent(json, "stillPossible", reason.stillPossible);
  encodeIfPresent(json, "allowance", reason.allowance);
  encodeIfPresent(json, "allowanceLeft", reason.allowanceLeft);
  encodeIfPresent(json, "countedFrom", reason.countedFrom);
  encodeIfPresent(json, "daysSince", reason.daysSince);
}

void from_json(const nlohmann::json& json, PeriodReason& reason) {
  member(json, "period").get_to(reason.period);
  reason.status = decodedStatus(member(json, "status"));
  reason.ground = decodeRawValue<PeriodReason::Ground>(member(json, "ground"), "PeriodReason.Ground");
  reason.dayMode = decodeRawValue<TaskFrequency::DayMode>(member(json, "dayMode"), "TaskFrequency.DayMode");
  reason.isOpen = decodeBool(json, "isOpen");
  reason.numUnits = qz::coded_form::wholeNumber(json, "numUnits");
  reason.expectedUnits = qz::coded_form::wholeNumber(json, "expectedUnits");
  reason.entries.clear();
  for (const nlohmann::json& entry : qz::coded_form::list(json, "entries")) entry.get_to(reason.entries.emplace_back());
  decodeIfPresent(json, "countingPeriod", reason.countingPeriod);
  decodeIfPresent(json, "completed", reason.completed);
  decodeIfPresent(json, "wanted", reason.wanted);
  decodeIfPresent(json, "available", reason.available);
  decodeIfPresent(json, "required", reason.required);
  decodeIfPresent(json, "stillPossible", reason.stillPossible);
  decodeIfPresent(json, "allowance", reason.allowance);
  decodeIfPresent(json, "allowanceLeft", reason.allowanceLeft);
  decodeIfPresent(json, "countedFrom", reason.countedFrom);
  decodeIfPresent(json, "daysSince", reason.daysSince);
}

}  // namespace habitra
