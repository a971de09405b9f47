#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string_view>

namespace habitra {

/// Fills the span from its beginning and says with how many bytes; 0 is the end.
using ByteSource = std::function<std::size_t(std::span<char>)>;

/// Where written bytes go. What it throws reaches the writer's caller.
using ByteSink = std::function<void(std::string_view)>;

}  // namespace habitra
