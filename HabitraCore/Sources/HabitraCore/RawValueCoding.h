#pragma once

#include <HabitraCore/RawValue.h>
#include <QZDateTime/CodedForm.h>
#include <QZDateTime/DecodingError.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

/// How an enumeration with a table is written into coded forms: as its raw value. For sources of this module.
namespace habitra {

template <RawValued E>
void encodeRawValue(nlohmann::json& json, E value) {
  json = rawValue(value);
}

/// Whether a coded value is of the kind of the enumeration's raw values: a whole number, or a text.
template <RawValued E>
[[nodiscard]] bool isRawValueOf(const nlohmann::json& json) {
  if constexpr (std::is_integral_v<decltype(rawValue(std::declval<E>()))>) {
    return qz::coded_form::wholeNumber(json).has_value();
  } else {
    return json.is_string();
  }
}

/// The case that a coded value names; none for an unknown one and for a value of another kind.
template <RawValued E>
[[nodiscard]] std::optional<E> caseIfKnown(const nlohmann::json& json) {
  if (!isRawValueOf<E>(json)) return std::nullopt;
  if constexpr (std::is_integral_v<decltype(rawValue(std::declval<E>()))>) {
    return fromRawValue<E>(*qz::coded_form::wholeNumber(json));
  } else {
    return fromRawValue<E>(json.get_ref<const std::string&>());
  }
}

/// Throws qz::DecodingError naming `what` was expected and the value that was found.
template <RawValued E>
[[nodiscard]] E decodeRawValue(const nlohmann::json& json, std::string_view what) {
  const std::optional<E> value = caseIfKnown<E>(json);
  if (!value) throw qz::DecodingError("Unable to create " + std::string(what) + " from " + qz::coded_form::text(json));
  return *value;
}

/// The member `key`, a count with room above it: at most 2^62 either way, so that what is added to it does not leave 64
/// bits. Throws qz::DecodingError naming the key.
[[nodiscard]] inline std::int64_t decodeCount(const nlohmann::json& json, const char* key) {
  constexpr std::int64_t most = std::int64_t{1} << 62;
  const std::int64_t count = qz::coded_form::wholeNumber(json, key);
  if (count < -most || count > most)
    throw qz::DecodingError(std::string("Unable to read \"") + key + "\" from " + std::to_string(count));
  return count;
}

}  // namespace habitra
