#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// The little that has to be known about UTF-8 where text comes in or is shown. Pure functions, safe from any thread.
namespace qz::utf8 {

/// One character of a text.
struct Character {
  char32_t value = 0;
  std::size_t length = 0;  ///< in bytes, 1 to 4
};

/// The character that `text` begins with; none when its first bytes are not well-formed UTF-8 (overlong forms,
/// surrogates and values beyond U+10FFFF are not). REQUIRES: `text` is not empty.
[[nodiscard]] std::optional<Character> firstCharacter(std::string_view text);

/// Where the first byte stands that is not part of well-formed UTF-8.
[[nodiscard]] std::optional<std::size_t> firstInvalidByte(std::string_view text);

/// `text` with every byte that cannot stand in a text file, a NUL too, turned into U+FFFD.
[[nodiscard]] std::string repaired(std::string_view text);

/// `text` as a message of one line shows it: control characters and bytes that are no text are spelled as escapes
/// (\n, \x07, \u202E), and what is longer than `longest` characters is cut and ends in "...".
[[nodiscard]] std::string printable(std::string_view text, std::size_t longest = 40);

/// The same in double quotes. Those within, and backslashes, are escaped by a backslash, so that no text can pass for
/// more than itself.
[[nodiscard]] std::string quoted(std::string_view text, std::size_t longest = 40);

}  // namespace qz::utf8
