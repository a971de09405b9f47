#pragma once

#include <QZKit/UniqueID.h>

#include <cstdint>
#include <string_view>

namespace habitra {

/// An identifier for something that has none where it came from and needs one here: the same for the same text and
/// number wherever it is asked for, of version 8, made of a hash (XXH3). Pure, safe from any thread.
[[nodiscard]] qz::UniqueID identifierOfText(std::string_view text, std::uint32_t number = 0);

}  // namespace habitra
