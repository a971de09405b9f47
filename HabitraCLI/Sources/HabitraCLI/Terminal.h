#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace habitra {

enum class Colour { plain, bold, dim, green, yellow, red };

/// What standard output is connected to, as far as it matters to text.
struct Terminal {
  bool hasColour = false;              ///< a terminal, and the person did not say otherwise
  std::optional<std::size_t> columns;  ///< its width; none when it is no terminal: nothing is cut then

  /// Looks at the descriptor, at NO_COLOR (set and not empty: no colour) and at TERM.
  [[nodiscard]] static Terminal of(int descriptor);

  /// `text` in that colour, or as it is.
  [[nodiscard]] std::string paint(Colour colour, std::string_view text) const;
};

}  // namespace habitra
