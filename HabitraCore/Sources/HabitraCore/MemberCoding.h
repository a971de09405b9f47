#pragma once

#include <HabitraCore/DayCoding.h>
#include <HabitraCore/RawValueCoding.h>
#include <QZDateTime/CodedForm.h>
#include <QZDateTime/DecodingError.h>
#include <QZDateTime/YYYYMMDD.h>

#include <concepts>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

/// How the members of a coded record are read and written by the type of the field, those that must be there and those
/// that may be absent: truth values, finite numbers, whole numbers, texts, days of the calendar, enumerations with a
/// table, and whatever has from_json and to_json. For sources of this module.
namespace habitra {

/// Throws qz::DecodingError: `Unable to read "best" from true`.
[[noreturn]] inline void refuseMember(const char* key, const nlohmann::json& found) {
  throw qz::DecodingError(std::string("Unable to read \"") + key + "\" from " + qz::coded_form::text(found));
}

/// What `read(found)` makes of the value under `key`. What it complains of inside an object or a list is said after the
/// key, `Unable to read "trigger": Unable to read "type": missing`; any other value is itself the complaint.
template <typename Read>
[[nodiscard]] auto namingMember(const char* key, const nlohmann::json& found, Read&& read) {
  try {
    return read(found);
  } catch (const qz::DecodingError& error) {
    if (!found.is_structured()) refuseMember(key, found);
    throw qz::DecodingError(std::string("Unable to read \"") + key + "\": " + error.what());
  }
}

/// The case that a coded value names; none for an unknown one. Throws qz::DecodingError naming the key for a value of
/// another kind than the enumeration's raw values.
template <RawValued E>
[[nodiscard]] std::optional<E> decodeCaseIfKnown(const char* key, const nlohmann::json& found) {
  if (!isRawValueOf<E>(found)) refuseMember(key, found);
  return caseIfKnown<E>(found);
}

/// The member `key`. Throws qz::DecodingError naming the key where it is missing or null, of the wrong kind, or an
/// enumeration's unknown value.
template <typename T>
[[nodiscard]] T decodeMember(const nlohmann::json& json, const char* key) {
  using namespace qz::coded_form;
  if constexpr (std::same_as<T, double>) {
    return number(json, key);
  } else if constexpr (std::same_as<T, std::int64_t>) {
    return wholeNumber(json, key);
  } else if constexpr (std::same_as<T, qz::YYYYMMDD>) {
    return existingDay(json, key);
  } else {
    const nlohmann::json& found = member(json, key);
    if constexpr (std::same_as<T, bool>) {
      if (!found.is_boolean()) refuseMember(key, found);
      return found.get<bool>();
    } else if constexpr (std::same_as<T, std::string>) {
      if (!found.is_string()) refuseMember(key, found);
      return found.get<std::string>();
    } else if constexpr (RawValued<T>) {
      const std::optional<T> value = decodeCaseIfKnown<T>(key, found);
      if (!value) refuseMember(key, found);
      return *value;
    } else {
      return namingMember(key, found, [](const nlohmann::json& value) { return value.get<T>(); });
    }
  }
}

/// The member `key`, none where it is absent or null. An unknown value of an enumeration is none too: what a later
/// version wrote is no value here. Throws qz::DecodingError naming the key for one of the wrong kind.
template <typename T>
[[nodiscard]] std::optional<T> decodeMemberIfAny(const nlohmann::json& json, const char* key) {
  const nlohmann::json* const found = qz::coded_form::memberIfAny(json, key);
  if (found == nullptr) return std::nullopt;
  if constexpr (RawValued<T>) {
    return decodeCaseIfKnown<T>(key, *found);
  } else {
    return decodeMember<T>(json, key);
  }
}

/// Calls `take` with each case of a list of cases; unknown ones are left out. Throws qz::DecodingError where it is no
/// list or holds a value of another kind than the enumeration's raw values.
template <RawValued E, typename Take>
void decodeKnownCases(const nlohmann::json& json, Take&& take) {
  if (!json.is_array()) throw qz::DecodingError("Unable to read a list from " + qz::coded_form::text(json));
  for (const nlohmann::json& found : json) {
    if (!isRawValueOf<E>(found)) throw qz::DecodingError("Unable to read a case from " + qz::coded_form::text(found));
    if (const std::optional<E> value = caseIfKnown<E>(found)) take(*value);
  }
}

/// Writes the member `key`; an absent optional leaves no trace.
template <typename T>
void encodeMember(nlohmann::json& json, const char* key, const T& value) {
  if constexpr (RawValued<T>) {
    json[key] = rawValue(value);
  } else {
    json[key] = value;
  }
}
template <typename T>
void encodeMember(nlohmann::json& json, const char* key, const std::optional<T>& value) {
  if (value) encodeMember(json, key, *value);
}

}  // namespace habitra
