#pragma once

#include <string_view>

namespace habitra {

/// What some programs put before a text to say that it is UTF-8.
inline constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

}  // namespace habitra
