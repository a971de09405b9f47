#include <HabitraModel/Store/History/HistoryToken.h>

#include <fmt/format.h>

#include <charconv>
#include <system_error>

namespace habitra {

std::string HistoryToken::text() const { return fmt::format("{} {}", storeIdentifier, sequence); }

std::optional<HistoryToken> HistoryToken::fromText(std::string_view text) {
  const std::size_t blank = text.find(' ');
  if (blank == 0 || blank == std::string_view::npos) return std::nullopt;
  HistoryToken token{.storeIdentifier = std::string(text.substr(0, blank))};
  const std::string_view digits = text.substr(blank + 1);
  const char* const end = digits.data() + digits.size();
  const auto [rest, error] = std::from_chars(digits.data(), end, token.sequence);
  if (error != std::errc() || rest != end || token.sequence < 0) return std::nullopt;
  return token;
}

}  // namespace habitra
