#pragma once

#include <cstdint>

namespace habitra {

/// In which direction the text runs that surrounds what is formatted.
enum class LayoutDirection : std::uint8_t { leftToRight, rightToLeft };

}  // namespace habitra
