#include <HabitraCLI/DisplayText.h>

#include <locale.h>
#include <algorithm>
#include <cwchar>
#include <optional>

namespace habitra {
namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";  // U+FFFD
constexpr std::string_view ellipsis = "\xE2\x80\xA6";     // U+2026

/// The calling thread reads multibyte text as UTF-8 while one of these lives.
class InUTF8 {
 public:
  InUTF8() : before_(::uselocale(utf8())) {}
  ~InUTF8() { ::uselocale(before_); }
  InUTF8(const InUTF8&) = delete;
  InUTF8& operator=(const InUTF8&) = delete;

 private:
  /// Loaded once, when the first text that is not ASCII is met; null (no change) where the system lacks it.
  static locale_t utf8() {
    static const locale_t locale = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return locale;
  }

  locale_t before_;
};

bool isPlainASCII(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
}

/// One character of a text: its bytes, and its width; no width for what cannot be shown.
struct Character {
  std::string_view bytes;
  std::optional<std::size_t> width;
};

/// REQUIRES: an InUTF8 lives; `text` is not empty.
Character firstCharacter(std::string_view text) {
  wchar_t character = 0;
  std::mbstate_t state{};
  const std::size_t length = std::mbrtowc(&character, text.data(), text.size(), &state);
  if (length == 0 || length > text.size()) return {text.substr(0, 1), std::nullopt};
  const int width = ::wcwidth(character);
  if (width < 0) return {text.substr(0, length), std::nullopt};
  return {text.substr(0, length), static_cast<std::size_t>(width)};
}

}  // namespace

std::string displayable(std::string_view text) {
  if (isPlainASCII(text)) return std::string(text);
  const InUTF8 scope;
  std::string result;
  while (!text.empty()) {
    const Character character = firstCharacter(text);
    result += character.width ? character.bytes : replacement;
    text.remove_prefix(character.bytes.size());
  }
  return result;
}

std::size_t displayWidth(std::string_view text) {
  if (isPlainASCII(text)) return text.size();
  const InUTF8 scope;
  std::size_t width = 0;
  while (!text.empty()) {
    const Character character = firstCharacter(text);
    width += character.width.value_or(1);
    text.remove_prefix(character.bytes.size());
  }
  return width;
}

std::string cutToWidth(std::string_view text, std::size_t width) {
  if (displayWidth(text) <= width) return std::string(text);
  if (width == 0) return {};
  const InUTF8 scope;
  std::string result;
  std::size_t used = 1;  // the ellipsis
  while (!text.empty()) {
    const Character character = firstCharacter(text);
    used += character.width.value_or(1);
    if (used > width) break;
    result += character.bytes;
    text.remove_prefix(character.bytes.size());
  }
  return result.append(ellipsis);
}

}  // namespace habitra
