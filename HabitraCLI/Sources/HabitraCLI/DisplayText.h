#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Text as a terminal shows it: what a person called a habit may hold wide characters, emoji, or bytes that would move
/// the cursor. Widths are in columns, by the tables of C.UTF-8, whatever locale the program runs in.
namespace habitra {

/// `text` on one line and harmless: control characters, and bytes that are not UTF-8, become U+FFFD.
[[nodiscard]] std::string displayable(std::string_view text);

/// The columns that displayable text takes. Wide characters take two, combining ones none.
[[nodiscard]] std::size_t displayWidth(std::string_view text);

/// `text` as it is when it fits into `width` columns, else its beginning and "…", together at most `width` wide.
[[nodiscard]] std::string cutToWidth(std::string_view text, std::size_t width);

/// "1 habit", "2 habits"; `plural` for words that do not just take an s.
[[nodiscard]] std::string counted(std::size_t count, std::string_view singular, std::string_view plural = {});

}  // namespace habitra
