#include <HabitraBackup/CSV/CSVNumber.h>

#include <algorithm>
#include <charconv>

namespace habitra {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isDecimal(std::string_view text) {
  if (text.starts_with('-')) text.remove_prefix(1);
  const std::size_t point = std::min(text.find('.'), text.size());
  const std::string_view whole = text.substr(0, point);
  const std::string_view fraction = text.substr(std::min(point + 1, text.size()));
  return !whole.empty() && std::ranges::all_of(whole, isDigit) && std::ranges::all_of(fraction, isDigit) &&
         (point == text.size() || !fraction.empty());
}

}  // namespace

std::optional<double> decimalNumber(std::string_view text) {
  if (!isDecimal(text)) return std::nullopt;
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return number;
}

}  // namespace habitra
