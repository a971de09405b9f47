#pragma once

#include <QZKit/Clock.h>

#include <cstdint>
#include <vector>

namespace habitra {

/// An encoded record inside a row.
using Bytes = std::vector<std::uint8_t>;

}  // namespace habitra
