#pragma once

#include <HabitraCore/MemberCoding.h>
#include <QZDateTime/DaysOfWeek.h>
#include <QZDateTime/HHMMSS.h>
#include <QZDateTime/YYYYMMDD.h>
#include <QZKit/UniqueID.h>
#include <QZKit/UTF8.h>

#include <array>
#include <charconv>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// Records that are described field by field: each has one `visitFields(record, visit)`, which calls `visit(name,
/// field)` for every field in order, and from that one list it is coded, decoded and described. It stands in namespace
/// habitra itself; in an unnamed one it would not be found from here. For sources of this folder.
namespace habitra {

// Decoding. The kinds of fields that have a form of their own here; all others take that of MemberCoding.h. All throw
// qz::DecodingError naming the key.

inline void decodeField(const nlohmann::json& json, const char* key, qz::UniqueID& field) {
  const auto id = qz::UniqueID::fromText(decodeMember<std::string>(json, key));
  if (!id) refuseMember(key, qz::coded_form::member(json, key));
  field = *id;
}

inline void decodeField(const nlohmann::json& json, const char* key, qz::DaysOfWeek& field) {
  field = {};
  for (const nlohmann::json& element : qz::coded_form::list(json, key)) {
    qz::DayOfWeek day = qz::DayOfWeek::sunday;
    namingMember(key, element, [&day](const nlohmann::json& value) { value.get_to(day); });
    field.insert(day);
  }
}

inline void decodeField(const nlohmann::json& json, const char* key, std::set<std::int64_t>& field) {
  field.clear();
  for (const nlohmann::json& element : qz::coded_form::list(json, key)) {
    const auto number = qz::coded_form::wholeNumber(element);
    if (!number) refuseMember(key, element);
    field.insert(*number);
  }
}

template <typename T>
void decodeField(const nlohmann::json& json, const char* key, std::vector<T>& field) {
  field.clear();
  for (const nlohmann::json& element : qz::coded_form::list(json, key))
    field.push_back(namingMember(key, element, [](const nlohmann::json& value) { return value.get<T>(); }));
}

template <typename T>
void decodeField(const nlohmann::json& json, const char* key, T& field) {
  field = decodeMember<T>(json, key);
}

/// Where it is there it is read as what must be there; only a choice may be one that a later version has added.
template <typename T>
void decodeField(const nlohmann::json& json, const char* key, std::optional<T>& field) {
  field = std::nullopt;
  if (qz::coded_form::memberIfAny(json, key) != nullptr) decodeField(json, key, field.emplace());
}
template <RawValued E>
void decodeField(const nlohmann::json& json, const char* key, std::optional<E>& field) {
  field = decodeMemberIfAny<E>(json, key);
}

template <typename Record>
void decodeFields(const nlohmann::json& json, Record& record) {
  visitFields(record, [&json](const char* name, auto& field) { decodeField(json, name, field); });
}

// Coding.

inline void encodeField(nlohmann::json& json, const char* key, const qz::UniqueID& field) { json[key] = field.text(); }

inline void encodeField(nlohmann::json& json, const char* key, const qz::DaysOfWeek& field) {
  json[key] = nlohmann::json::array();
  for (const qz::DayOfWeek day : field) json[key].push_back(day.rawValue());
}

template <typename T>
void encodeField(nlohmann::json& json, const char* key, const T& field) {
  encodeMember(json, key, field);
}

template <typename Record>
[[nodiscard]] nlohmann::json encodeFields(const Record& record) {
  nlohmann::json json = nlohmann::json::object();
  visitFields(record, [&json](const char* name, const auto& field) { encodeField(json, name, field); });
  return json;
}

// Describing.

[[nodiscard]] inline std::string describe(bool value) { return value ? "true" : "false"; }
[[nodiscard]] inline std::string describe(std::int64_t value) { return std::to_string(value); }
[[nodiscard]] inline std::string describe(const qz::UniqueID& value) { return value.text(); }
[[nodiscard]] inline std::string describe(const qz::HHMMSS& value) { return value.debugDescription(); }
[[nodiscard]] inline std::string describe(const qz::YYYYMMDD& value) { return std::to_string(value.intValue()); }

/// Whatever a person wrote stands in double quotes, so that no text can pass for further fields.
[[nodiscard]] inline std::string describe(const std::string& value) {
  return qz::utf8::quoted(value, std::string::npos);
}

/// With as few digits as tell it from every other number: "300", "0.5".
[[nodiscard]] inline std::string describe(double value) {
  std::array<char, 32> text{};
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

template <RawValued E>
[[nodiscard]] std::string describe(E value) {
  return std::string(rawValue(value));
}

template <typename Record>
requires requires(const Record& record) { record.debugDescription(); }
[[nodiscard]] std::string describe(const Record& record) { return "{" + record.debugDescription() + "}"; }

template <typename T>
[[nodiscard]] std::string describe(const std::optional<T>& value) {
  return value ? describe(*value) : "nil";
}

template <typename List>
[[nodiscard]] std::string describeList(const List& list) {
  std::string text;
  for (const auto& element : list) text += (text.empty() ? "" : ", ") + describe(element);
  return "[" + text + "]";
}
template <typename T>
[[nodiscard]] std::string describe(const std::vector<T>& list) {
  return describeList(list);
}
[[nodiscard]] inline std::string describe(const qz::DaysOfWeek& days) {
  std::vector<std::int64_t> numbers;
  for (const qz::DayOfWeek day : days) numbers.push_back(day.rawValue());
  return describeList(numbers);
}

/// "name=value" for each field, with a comma and a blank between.
class FieldDescription {
 public:
  template <typename T>
  void operator()(const char* name, const T& field) {
    if (!text_.empty()) text_ += ", ";
    text_ += std::string(name) + "=" + describe(field);
  }

  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  std::string text_;
};

template <typename Record>
[[nodiscard]] std::string describeFields(const Record& record) {
  FieldDescription description;
  visitFields(record, description);
  return description.text();
}

}  // namespace habitra
