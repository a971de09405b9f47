#include <HabitraCLI/DisplayText.h>
#include <QZKit/UTF8.h>

#include <fmt/format.h>
#include <locale.h>
#include <algorithm>
#include <cwchar>
#include <optional>

namespace habitra {
namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";  // U+FFFD
constexpr std::string_view ellipsis = "\xE2\x80\xA6";     // U+2026

/// The calling thread knows the widths of all characters while one of these lives.
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
struct ShownCharacter {
  std::string_view bytes;
  std::optional<std::size_t> width;
};

/// REQUIRES: an InUTF8 lives; `text` is not empty.
ShownCharacter firstShown(std::string_view text) {
  const auto character = qz::utf8::firstCharacter(text);
  if (!character) return {text.substr(0, 1), std::nullopt};
  const int width = character->value == 0 ? -1 : ::wcwidth(static_cast<wchar_t>(character->value));
  return {text.substr(0, character->length), width < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(width))};
}

}  // namespace

std::string displayable(std::string_view text) {
  if (isPlainASCII(text)) return std::string(text);
  const InUTF8 scope;
  std::string result;
  while (!text.empty()) {
    const ShownCharacter character = firstShown(text);
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
    const ShownCharacter character = firstShown(text);
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
    const ShownCharacter character = firstShown(text);
    used += character.width.value_or(1);
    if (used > width) break;
    result += character.bytes;
    text.remove_prefix(character.bytes.size());
  }
  return result.append(ellipsis);
}

std::string counted(std::size_t count, std::string_view singular, std::string_view plural) {
  if (count == 1) return fmt::format("1 {}", singular);
  return plural.empty() ? fmt::format("{} {}s", count, singular) : fmt::format("{} {}", count, plural);
}

}  // namespace habitra
