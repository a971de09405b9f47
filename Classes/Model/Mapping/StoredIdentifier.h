#pragma once

#include <QZKit/UniqueID.h>

#include <array>
#include <string>
#include <utility>

/// Identifiers as a store may hold them: written in upper case here, by others in lower case as well.
namespace habitra {

/// The forms to look an identifier up by, the usual one first.
[[nodiscard]] inline std::array<std::string, 2> storedForms(const qz::UniqueID& identifier) {
  std::string usual = identifier.text();
  std::string other = usual;
  for (char& c : other)
    if (c >= 'A' && c <= 'F') c = static_cast<char>(c - 'A' + 'a');
  return {std::move(usual), std::move(other)};
}

/// An identifier in its usual form; a text that is none stays as it is.
[[nodiscard]] inline std::string usualForm(const std::string& stored) {
  const auto identifier = qz::UniqueID::fromText(stored);
  return identifier ? identifier->text() : stored;
}

}  // namespace habitra
