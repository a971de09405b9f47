#include <QZDateTime/CodedForm.h>
#include <QZDateTime/DecodingError.h>

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>

namespace qz::coded_form {
namespace {

std::string complaint(const char* key) { return std::string("Unable to read \"") + key + "\""; }

[[noreturn]] void refuse(const char* key, const nlohmann::json& found) {
  throw DecodingError(complaint(key) + " from " + text(found));
}

}  // namespace

std::string text(const nlohmann::json& json) {
  return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::optional<std::int64_t> wholeNumber(const nlohmann::json& json) {
  if (!json.is_number_integer()) return std::nullopt;
  if (json.is_number_unsigned() &&
      json.get<std::uint64_t>() > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
    return std::nullopt;
  return json.get<std::int64_t>();
}

const nlohmann::json* memberIfAny(const nlohmann::json& json, const char* key) {
  if (!json.is_object()) return nullptr;
  const auto found = json.find(key);
  return found == json.end() || found->is_null() ? nullptr : &*found;
}

const nlohmann::json& member(const nlohmann::json& json, const char* key) {
  const nlohmann::json* const found = memberIfAny(json, key);
  if (found == nullptr) throw DecodingError(complaint(key) + ": missing");
  return *found;
}

std::int64_t wholeNumber(const nlohmann::json& json, const char* key) {
  const nlohmann::json& found = member(json, key);
  const std::optional<std::int64_t> value = wholeNumber(found);
  if (!value) refuse(key, found);
  return *value;
}

double number(const nlohmann::json& json, const char* key) {
  const nlohmann::json& found = member(json, key);
  if (!found.is_number() || !std::isfinite(found.get<double>())) refuse(key, found);
  return found.get<double>();
}

const nlohmann::json& list(const nlohmann::json& json, const char* key) {
  const nlohmann::json& found = member(json, key);
  if (!found.is_array()) refuse(key, found);
  return found;
}

}  // namespace qz::coded_form
