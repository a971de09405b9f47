#include <QZDateTime/CodedForm.h>
#include <QZDateTime/DecodingError.h>

#include <absl/strings/escaping.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace qz::coded_form {
namespace {

std::string complaint(const char* key) { return std::string("Unable to read \"") + key + "\""; }

[[noreturn]] void refuse(const char* key, const nlohmann::json& found) {
  throw DecodingError(complaint(key) + " from " + text(found));
}

}  // namespace

namespace {

/// Whether no value lies deeper than so many lists and objects; writing one out takes stack for each.
bool isNestedAtMost(const nlohmann::json& json, int depth) {
  if (!json.is_structured()) return true;
  return depth > 0 && std::all_of(json.begin(), json.end(),
                                  [&](const nlohmann::json& member) { return isNestedAtMost(member, depth - 1); });
}

}  // namespace

std::string text(const nlohmann::json& json) {
  constexpr int depth = 4;
  constexpr std::size_t length = 200;
  if (!isNestedAtMost(json, depth)) return json.is_array() ? "a list of lists" : "an object of objects";
  std::string text = json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  if (text.size() <= length) return text;
  std::size_t end = length;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;  // not inside a character
  return text.substr(0, end) + "...";
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

std::string base64(std::span<const std::uint8_t> bytes) {
  return absl::Base64Escape(std::string(bytes.begin(), bytes.end()));
}

std::optional<std::vector<std::uint8_t>> bytes(const nlohmann::json& json) {
  if (!json.is_string()) return std::nullopt;
  const std::string& text = json.get_ref<const std::string&>();
  std::string decoded;
  // The library passes over white space and missing padding; what does not come back the same is refused.
  if (!absl::Base64Unescape(text, &decoded) || absl::Base64Escape(decoded) != text) return std::nullopt;
  return std::vector<std::uint8_t>(decoded.begin(), decoded.end());
}

}  // namespace qz::coded_form
