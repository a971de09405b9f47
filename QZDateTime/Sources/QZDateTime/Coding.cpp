// The coded (JSON) forms of the module's values.

#include <QZDateTime/CodedForm.h>
#include <QZDateTime/DayOfWeek.h>
#include <QZDateTime/DaysOfWeek.h>
#include <QZDateTime/DecodingError.h>
#include <QZDateTime/HHMMSS.h>
#include <QZDateTime/YYYYMM.h>
#include <QZDateTime/YYYYMMDD.h>

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace qz {
namespace {

std::optional<std::int64_t> wholeNumberIfAny(const nlohmann::json& json, const char* key) {
  const nlohmann::json* const member = coded_form::memberIfAny(json, key);
  return member == nullptr ? std::nullopt : coded_form::wholeNumber(*member);
}

template <typename T>
T fromRawValue(const nlohmann::json& json, const std::string& message) {
  const std::optional<std::int64_t> rawValue = coded_form::wholeNumber(json);
  const std::optional<T> value = rawValue ? T::fromRawValue(*rawValue) : std::nullopt;
  if (!value) throw DecodingError(message);
  return *value;
}

std::optional<YYYYMMDD> end(const nlohmann::json& json, const char* key) {
  const nlohmann::json* const member = coded_form::memberIfAny(json, key);
  if (member == nullptr) return std::nullopt;
  return member->get<YYYYMMDD>();
}

}  // namespace

void to_json(nlohmann::json& json, const YYYYMMDD& day) { json = day.rawValue(); }

void from_json(const nlohmann::json& json, YYYYMMDD& day) {
  const std::optional<std::int64_t> rawValue = coded_form::wholeNumber(json);
  const std::optional<YYYYMMDD> value = rawValue ? YYYYMMDD::fromRawValue(*rawValue) : std::nullopt;
  if (!value) throw DecodingError("Unable to create YYYYMMDD from " + coded_form::text(json));
  day = *value;
}

void to_json(nlohmann::json& json, const YYYYMMDD::Range& range) {
  json = nlohmann::json::object();
  if (range.minDate) json["minDate"] = *range.minDate;
  if (range.maxDate) json["maxDate"] = *range.maxDate;
}

void from_json(const nlohmann::json& json, YYYYMMDD::Range& range) {
  if (!json.is_object()) throw DecodingError("Unable to create YYYYMMDD.Range");
  range = {end(json, "minDate"), end(json, "maxDate")};
}

void to_json(nlohmann::json& json, const YYYYMM& month) { json = month.rawValue(); }

void from_json(const nlohmann::json& json, YYYYMM& month) {
  month = fromRawValue<YYYYMM>(json, "Unable to create YYYYMM");
}

void to_json(nlohmann::json& json, const HHMMSS& time) { json = {{"h", time.h()}, {"m", time.m()}, {"s", time.s()}}; }

void from_json(const nlohmann::json& json, HHMMSS& time) {
  const auto h = wholeNumberIfAny(json, "h");
  const auto m = wholeNumberIfAny(json, "m");
  const auto s = wholeNumberIfAny(json, "s");
  if (!h || !m || !s || !HHMMSS::isTimeOfDay(*h, *m, *s)) throw DecodingError("Unable to create HHMMSS");
  time = HHMMSS(*h, *m, *s);
}

void to_json(nlohmann::json& json, const DayOfWeek& day) { json = day.rawValue(); }

void from_json(const nlohmann::json& json, DayOfWeek& day) {
  day = fromRawValue<DayOfWeek>(json, "Unable to create DayOfWeek");
}

void to_json(nlohmann::json& json, const DaysOfWeek& days) { json = days.rawValue(); }

void from_json(const nlohmann::json& json, DaysOfWeek& days) {
  days = fromRawValue<DaysOfWeek>(json, "Unable to create DaysOfWeek");
}

}  // namespace qz
