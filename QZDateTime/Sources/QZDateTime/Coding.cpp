// The coded (JSON) forms of the module's values.

#include <QZDateTime/DayOfWeek.h>
#include <QZDateTime/DaysOfWeek.h>
#include <QZDateTime/DecodingError.h>
#include <QZDateTime/HHMMSS.h>
#include <QZDateTime/YYYYMM.h>
#include <QZDateTime/YYYYMMDD.h>

#include <nlohmann/json.hpp>

#include <limits>
#include <optional>
#include <string>

namespace qz {
namespace {

/// A whole number of 64 bits; none for any other value. A number with a fraction or exponent is no integer.
std::optional<std::int64_t> integer(const nlohmann::json& json) {
  if (!json.is_number_integer()) return std::nullopt;
  if (json.is_number_unsigned() &&
      json.get<std::uint64_t>() > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
    return std::nullopt;
  return json.get<std::int64_t>();
}

std::optional<std::int64_t> integer(const nlohmann::json& json, const char* key) {
  if (!json.is_object()) return std::nullopt;
  const auto member = json.find(key);
  return member == json.end() ? std::nullopt : integer(*member);
}

template <typename T>
T fromRawValue(const nlohmann::json& json, const std::string& message) {
  const std::optional<std::int64_t> rawValue = integer(json);
  const std::optional<T> value = rawValue ? T::fromRawValue(*rawValue) : std::nullopt;
  if (!value) throw DecodingError(message);
  return *value;
}

std::string text(const nlohmann::json& json) {
  return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::optional<YYYYMMDD> end(const nlohmann::json& json, const char* key) {
  const auto member = json.find(key);
  if (member == json.end()) return std::nullopt;
  return member->get<YYYYMMDD>();
}

}  // namespace

void to_json(nlohmann::json& json, const YYYYMMDD& day) { json = day.rawValue(); }

void from_json(const nlohmann::json& json, YYYYMMDD& day) {
  const std::optional<std::int64_t> rawValue = integer(json);
  const std::optional<YYYYMMDD> value = rawValue ? YYYYMMDD::fromRawValue(*rawValue) : std::nullopt;
  if (!value) throw DecodingError("Unable to create YYYYMMDD from " + text(json));
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
  const auto h = integer(json, "h");
  const auto m = integer(json, "m");
  const auto s = integer(json, "s");
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
