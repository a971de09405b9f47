#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <span>
#include <string>
#include <vector>

/// Strict reading of coded forms (JSON), for the from_json functions of this module and those above: nothing is turned
/// into what it is not. A number with a fraction or exponent is no whole number, true is no number, text is neither.
namespace qz::coded_form {

/// The JSON text of a value, for messages: cut after 200 bytes, and only a word for what is nested deeper than a
/// message needs. Bytes that are no UTF-8 are replaced.
[[nodiscard]] std::string text(const nlohmann::json& json);

/// A whole number of 64 bits; none for any other value.
[[nodiscard]] std::optional<std::int64_t> wholeNumber(const nlohmann::json& json);

/// The member of an object; null when it is absent or its value is null, or `json` is no object.
[[nodiscard]] const nlohmann::json* memberIfAny(const nlohmann::json& json, const char* key);

/// The member of an object, of a certain kind. All throw DecodingError naming the key: `Unable to read "best":
/// missing`, `Unable to read "best" from true`.
[[nodiscard]] const nlohmann::json& member(const nlohmann::json& json, const char* key);
[[nodiscard]] std::int64_t wholeNumber(const nlohmann::json& json, const char* key);
/// A finite number, whole or not.
[[nodiscard]] double number(const nlohmann::json& json, const char* key);
[[nodiscard]] const nlohmann::json& list(const nlohmann::json& json, const char* key);

/// Bytes as text, in base64 with padding, and back; none for a value that is not exactly such a text.
[[nodiscard]] std::string base64(std::span<const std::uint8_t> bytes);
[[nodiscard]] std::optional<std::vector<std::uint8_t>> bytes(const nlohmann::json& json);

}  // namespace qz::coded_form
