#include <HabitraBackup/MovingIn/ForeignText.h>
#include <QZKit/UTF8.h>

#include <fmt/core.h>
#include <charconv>
#include <cmath>

namespace habitra::foreign_text {

namespace {

template <typename Number>
std::optional<Number> parsed(std::string_view text) {
  Number value{};
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
  return value;
}

bool hasFormOfDay(std::string_view text) {
  constexpr std::string_view form = "dddd-dd-dd";
  if (text.size() != form.size()) return false;
  for (std::size_t at = 0; at < form.size(); ++at) {
    const bool isDigit = text[at] >= '0' && text[at] <= '9';
    if (form[at] == 'd' ? !isDigit : text[at] != '-') return false;
  }
  return true;
}

}  // namespace

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::optional<qz::YYYYMMDD> day(std::string_view text) {
  if (!hasFormOfDay(text)) return std::nullopt;
  const qz::YYYYMMDD day(*wholeNumber(text.substr(0, 4)), *wholeNumber(text.substr(5, 2)),
                         *wholeNumber(text.substr(8, 2)));
  if (day.y() < 1 || !day.exists()) return std::nullopt;
  return day;
}

std::optional<std::int64_t> wholeNumber(std::string_view text) { return parsed<std::int64_t>(text); }

std::optional<double> number(std::string_view text) {
  const auto value = parsed<double>(text);
  if (!value || !std::isfinite(*value)) return std::nullopt;
  return value;
}

std::string found(std::string_view text, std::string_view wanted) {
  return fmt::format("{} found, {} expected", qz::utf8::quoted(text), wanted);
}

std::string amount(double value) { return fmt::format("{}", value); }

std::string counted(std::size_t count, std::string_view one, std::string_view many) {
  return fmt::format("{} {}", count, count == 1 ? one : many);
}

}  // namespace habitra::foreign_text
