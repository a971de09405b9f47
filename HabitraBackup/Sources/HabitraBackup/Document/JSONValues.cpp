#include <HabitraBackup/Document/DocumentValues.h>
#include <HabitraBackup/Document/HabitraJSONError.h>
#include <HabitraBackup/Document/JSONValues.h>
#include <QZDateTime/ISO8601.h>
#include <QZKit/UTF8.h>

#include <absl/strings/escaping.h>
#include <fmt/core.h>
#include <limits>

namespace habitra {

namespace {

std::string shown(const nlohmann::json& json) {
  if (json.is_object()) return "an object";
  if (json.is_array()) return "a list";
  if (json.is_string()) return qz::utf8::quoted(json.get_ref<const std::string&>());
  return json.dump();
}

}  // namespace

void JSONFound::refuse(std::string_view expected) const {
  throw HabitraJSONError(place.text(member), fmt::format("{} is not {}", shown(json), expected));
}

bool JSONFound::truth() const {
  if (!json.is_boolean()) refuse("true or false");
  return json.get<bool>();
}

std::int64_t JSONFound::wholeNumber(std::int64_t least, std::int64_t most) const {
  // What is beyond 64 bits is a number with a fraction to the parser, and beyond 63 an unsigned one.
  constexpr auto largest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  const bool isWhole = json.is_number_integer() && !(json.is_number_unsigned() && json.get<std::uint64_t>() > largest);
  const std::int64_t value = isWhole ? json.get<std::int64_t>() : 0;
  if (!isWhole || value < least || value > most) refuse(fmt::format("a whole number from {} to {}", least, most));
  return value;
}

double JSONFound::number() const {
  if (!json.is_number()) refuse("a number");
  return json.get<double>();
}

const std::string& JSONFound::text() const {
  if (!json.is_string()) refuse("a text");
  return json.get_ref<const std::string&>();
}

Bytes JSONFound::bytes() const {
  constexpr std::string_view expected = "bytes in Base64";
  if (!json.is_string()) refuse(expected);
  const auto& coded = json.get_ref<const std::string&>();
  std::string decoded;
  std::string again;
  // The decoder passes over blanks and goes without padding; what it made of the text must be the text.
  if (!absl::Base64Unescape(coded, &decoded)) refuse(expected);
  absl::Base64Escape(decoded, &again);
  if (again != coded) refuse(expected);
  return {decoded.begin(), decoded.end()};
}

qz::Moment JSONFound::moment() const {
  const auto moment =
      json.is_string() ? qz::momentFromISO8601(json.get_ref<const std::string&>()) : std::optional<qz::Moment>();
  if (!moment || !document_values::isWritable(*moment)) refuse("a moment like \"2024-01-31T08:15:00Z\"");
  return *moment;
}

qz::YYYYMMDD JSONFound::day() const {
  constexpr std::string_view expected = "a day of the calendar like 20240131";
  if (!json.is_number_integer()) refuse(expected);
  const auto day = document_values::day(json.get<std::int64_t>());
  if (!day) refuse(expected);
  return *day;
}

qz::UniqueID JSONFound::identifier() const {
  const auto identifier =
      json.is_string() ? qz::UniqueID::fromText(json.get_ref<const std::string&>()) : std::optional<qz::UniqueID>();
  if (!identifier) refuse("an identifier (a UUID)");
  return *identifier;
}

const nlohmann::json& JSONFound::object() const {
  if (!json.is_object()) refuse("an object");
  return json;
}

}  // namespace habitra
