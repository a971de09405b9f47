#include <QZKit/UTF8.h>

#include <fmt/core.h>
#include <array>
#include <cstdint>
#include <cstring>

namespace qz::utf8 {

namespace {

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

// The number of leading bytes of `text` that are ASCII, found eight at a time.
std::size_t asciiPrefix(std::string_view text) {
  std::size_t at = 0;
  for (std::uint64_t eight = 0; at + sizeof eight <= text.size(); at += sizeof eight) {
    std::memcpy(&eight, text.data() + at, sizeof eight);
    if ((eight & 0x8080808080808080U) != 0) break;
  }
  while (at < text.size() && static_cast<unsigned char>(text[at]) < 0x80U) ++at;
  return at;
}

// Characters that would move the cursor, or turn the reading direction, of the terminal that shows a message.
bool isUnprintable(char32_t c) {
  return c < 0x20 || (c >= 0x7F && c < 0xA0) || (c >= 0x200E && c <= 0x200F) || (c >= 0x2028 && c <= 0x202E) ||
         (c >= 0x2066 && c <= 0x2069) || c == 0xFEFF;
}

std::string escaped(char32_t c) {
  switch (c) {
    case U'\n': return "\\n";
    case U'\r': return "\\r";
    case U'\t': return "\\t";
    default: break;
  }
  const auto number = static_cast<std::uint32_t>(c);
  return number < 0x80 ? fmt::format("\\x{:02X}", number) : fmt::format("\\u{:04X}", number);
}

/// `text` in one line, cut after `longest` characters; with a backslash before each of `marked`.
std::string inOneLine(std::string_view text, std::size_t longest, std::string_view marked) {
  std::string result;
  std::size_t shown = 0;
  for (std::size_t at = 0; at < text.size(); ++shown) {
    if (shown == longest) {
      result += "...";
      break;
    }
    const auto character = firstCharacter(text.substr(at));
    if (!character) {
      result += fmt::format("\\x{:02X}", static_cast<unsigned char>(text[at++]));
      continue;
    }
    if (marked.find(text[at]) != std::string_view::npos) result += '\\';
    if (isUnprintable(character->value)) {
      result += escaped(character->value);
    } else {
      result += text.substr(at, character->length);
    }
    at += character->length;
  }
  return result;
}

}  // namespace

std::optional<Character> firstCharacter(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  if (lead < 0x80) return Character{lead, 1};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return std::nullopt;
  char32_t value = lead & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if (!isContinuation(text[i])) return std::nullopt;
    value = (value << 6U) | (static_cast<unsigned char>(text[i]) & 0x3FU);
  }
  constexpr std::array<char32_t, 5> least{0, 0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = value >= 0xD800 && value <= 0xDFFF;
  if (value < least[length] || isSurrogate || value > 0x10FFFF) return std::nullopt;
  return Character{value, length};
}

std::optional<std::size_t> firstInvalidByte(std::string_view text) {
  std::size_t at = 0;
  while (true) {
    at += asciiPrefix(text.substr(at));
    if (at == text.size()) return std::nullopt;
    const auto character = firstCharacter(text.substr(at));
    if (!character) return at;
    at += character->length;
  }
}

std::string repaired(std::string_view text) {
  std::string result;
  for (std::size_t at = 0; at < text.size();) {
    const auto character = firstCharacter(text.substr(at));
    const bool isText = character && character->value != 0;
    result += isText ? text.substr(at, character->length) : "\uFFFD";
    at += isText ? character->length : 1;
  }
  return result;
}

std::string printable(std::string_view text, std::size_t longest) { return inOneLine(text, longest, ""); }

std::string quoted(std::string_view text, std::size_t longest) {
  return "\"" + inOneLine(text, longest, "\"\\") + "\"";
}

}  // namespace qz::utf8
