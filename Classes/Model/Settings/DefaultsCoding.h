#pragma once

#include <HabitraModel/Settings/KeyValueDefaults.h>
#include <QZKit/Error.h>

#include <nlohmann/json_fwd.hpp>
#include <string_view>

/// The JSON form of a suite of defaults; KeyValueDefaults.cpp has its grammar.
namespace habitra {

/// A text that is no suite; `what()` says where and why.
class DefaultsSyntaxError : public qz::Error {
 public:
  using qz::Error::Error;
};

/// The document of a text. Throws DefaultsSyntaxError unless it is one JSON object.
[[nodiscard]] nlohmann::json parseDefaults(std::string_view text);

/// The values of known form.
[[nodiscard]] KeyValueDefaults::Values decodeDefaults(const nlohmann::json& document);

/// Changes in `document`, which decodes to `before`, what is different in `after`, inside dictionaries too, and nothing
/// else: what has no known form stays, unless a value takes its place.
void mergeDefaults(nlohmann::json& document, const KeyValueDefaults::Values& before,
                   const KeyValueDefaults::Values& after);

}  // namespace habitra
