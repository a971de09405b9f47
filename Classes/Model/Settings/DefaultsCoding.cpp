#include <HabitraModel/Settings/DefaultsCoding.h>
#include <QZDateTime/CodedForm.h>
#include <QZDateTime/ISO8601.h>
#include <QZKit/Trap.h>
#include <QZKit/UTF8.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string>

namespace habitra {
namespace {

using Value = KeyValueDefaults::Value;
using Values = KeyValueDefaults::Values;
using nlohmann::json;

/// Deeper than anything that is kept; a text of a million brackets must not exhaust the stack.
constexpr int deepest = 64;

constexpr const char* momentForm = "moment";
constexpr const char* bytesForm = "bytes";
constexpr const char* dictionaryForm = "dictionary";

std::string placeOf(std::string_view text, std::size_t byte) {
  const std::string_view before = text.substr(0, std::min(byte > 0 ? byte - 1 : 0, text.size()));
  const auto line = std::count(before.begin(), before.end(), '\n') + 1;
  const std::size_t lineStart = before.rfind('\n') + 1;  // 0 where there is none
  return fmt::format("line {}, column {}", line, before.size() - lineStart + 1);
}

std::optional<Value> decodeMoment(const json& coded) {
  if (const auto count = qz::coded_form::wholeNumber(coded)) return qz::Moment(std::chrono::microseconds(*count));
  if (!coded.is_string()) return std::nullopt;
  const auto moment = qz::momentFromISO8601(coded.get_ref<const std::string&>());
  return moment ? std::optional<Value>(*moment) : std::nullopt;
}

std::optional<Value> decodeBytes(const json& coded) {
  auto bytes = qz::coded_form::bytes(coded);
  return bytes ? std::optional<Value>(*std::move(bytes)) : std::nullopt;
}

std::optional<Value> decodeForm(const json& coded) {
  if (coded.size() != 1) return std::nullopt;
  const auto& member = *coded.begin();
  const std::string& form = coded.begin().key();
  if (form == momentForm) return decodeMoment(member);
  if (form == bytesForm) return decodeBytes(member);
  if (form == dictionaryForm && member.is_object()) return decodeDefaults(member);
  return std::nullopt;
}

std::optional<Value> decode(const json& coded) {
  switch (coded.type()) {
    case json::value_t::boolean: return coded.get<bool>();
    case json::value_t::number_unsigned:
    case json::value_t::number_integer: {
      const auto number = qz::coded_form::wholeNumber(coded);
      return number ? std::optional<Value>(*number) : std::nullopt;
    }
    case json::value_t::number_float: return coded.get<double>();
    case json::value_t::string: return coded.get<std::string>();
    case json::value_t::object: return decodeForm(coded);
    default: return std::nullopt;
  }
}

void requireText(const std::string& text) {
  qz::require(!qz::utf8::firstInvalidByte(text), "a text that is kept as a default is not UTF-8");
}

struct Encoder {
  json operator()(bool value) const { return value; }
  json operator()(std::int64_t value) const { return value; }
  json operator()(double value) const {
    qz::require(std::isfinite(value), "a number that is kept as a default is not finite");
    return value;
  }
  json operator()(const std::string& value) const {
    requireText(value);
    return value;
  }
  json operator()(const Bytes& value) const { return {{bytesForm, qz::coded_form::base64(value)}}; }
  json operator()(qz::Moment value) const {
    const std::string text = qz::iso8601(value);
    if (qz::momentFromISO8601(text) == value) return {{momentForm, text}};
    return {{momentForm, std::int64_t{value.time_since_epoch().count()}}};
  }
  json operator()(const Values& values) const {
    json members = json::object();
    mergeDefaults(members, {}, values);
    return {{dictionaryForm, std::move(members)}};
  }
};

json encode(const Value& value) { return std::visit(Encoder(), static_cast<const KeyValueDefaults::AnyValue&>(value)); }

}  // namespace

json parseDefaults(std::string_view text) {
  const auto guard = [](int depth, json::parse_event_t, json&) {
    if (depth > deepest) throw DefaultsSyntaxError("nested too deeply");
    return true;
  };
  try {
    json document = json::parse(text, guard);
    if (!document.is_object()) throw DefaultsSyntaxError("not a JSON object");
    return document;
  } catch (const json::parse_error& error) {
    throw DefaultsSyntaxError("no JSON at " + placeOf(text, error.byte));
  } catch (const json::exception&) {
    throw DefaultsSyntaxError("a number beyond all bounds");
  }
}

Values decodeDefaults(const json& document) {
  Values values;
  for (const auto& [key, coded] : document.items())
    if (auto value = decode(coded)) values.emplace(key, *std::move(value));
  return values;
}

void mergeDefaults(json& document, const Values& before, const Values& after) {
  for (const auto& [key, value] : before)
    if (!after.contains(key)) document.erase(key);
  for (const auto& [key, value] : after) {
    const auto old = before.find(key);
    if (old != before.end() && old->second == value) continue;
    const Values* oldMembers = old == before.end() ? nullptr : old->second.as<Values>();
    const Values* members = value.as<Values>();
    requireText(key);
    if (oldMembers != nullptr && members != nullptr)
      mergeDefaults(document[key][dictionaryForm], *oldMembers, *members);
    else
      document[key] = encode(value);
  }
}

}  // namespace habitra
