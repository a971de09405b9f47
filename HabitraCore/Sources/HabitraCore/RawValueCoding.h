#pragma once

#include <HabitraCore/RawValue.h>
#include <QZDateTime/CodedForm.h>
#include <QZDateTime/DecodingError.h>

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <type_traits>

/// How an enumeration with a table is written into coded forms: as its raw value. For sources of this module.
namespace habitra {

template <RawValued E>
void encodeRawValue(nlohmann::json& json, E value) {
  json = rawValue(value);
}

/// Throws qz::DecodingError naming `what` was expected and the value that was found.
template <RawValued E>
[[nodiscard]] E decodeRawValue(const nlohmann::json& json, std::string_view what) {
  using Raw = decltype(rawValue(E{}));
  std::optional<E> value;
  if constexpr (std::is_integral_v<Raw>) {
    if (const auto number = qz::coded_form::wholeNumber(json)) value = fromRawValue<E>(*number);
  } else {
    if (json.is_string()) value = fromRawValue<E>(json.get_ref<const std::string&>());
  }
  if (!value) throw qz::DecodingError("Unable to create " + std::string(what) + " from " + qz::coded_form::text(json));
  return *value;
}

}  // namespace habitra
