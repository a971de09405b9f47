#pragma once

#include <functional>
#include <string_view>

namespace habitra {

/// How far a long exchange has come: a word for what is done ("reading"), and a share from 0 to 1. Told often, on the
/// thread of the exchange. May be empty.
using ExchangeProgress = std::function<void(std::string_view step, double share)>;

}  // namespace habitra
