#pragma once

#include <HabitraModel/Store/StoredValues.h>
#include <QZDateTime/DecodingError.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>

/// Records that a column keeps as bytes: their coded form as JSON text. For sources of this module.
namespace habitra {

/// Bytes of a text that are no UTF-8 are replaced: a row can always be written.
[[nodiscard]] inline Bytes jsonBytes(const nlohmann::json& json) {
  const std::string text = json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  return {text.begin(), text.end()};
}

/// What `read(json)`, which gives an optional, makes of the bytes; none where they are no JSON or it complains.
template <typename Read>
[[nodiscard]] auto readingJSON(const std::optional<Bytes>& bytes, Read&& read)
    -> decltype(read(std::declval<const nlohmann::json&>())) {
  if (!bytes) return std::nullopt;
  try {
    return read(nlohmann::json::parse(*bytes, nullptr, false));
  } catch (const qz::DecodingError&) {
    return std::nullopt;
  }
}

}  // namespace habitra
