#pragma once

#include <optional>
#include <string_view>

namespace habitra {

/// The number that `text` spells: digits, and after a point more digits; a minus sign may lead. None for anything else,
/// exponents, infinities and a bare point among it. Pure, safe from any thread.
[[nodiscard]] std::optional<double> decimalNumber(std::string_view text);

}  // namespace habitra
