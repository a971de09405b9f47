#pragma once

#include <filesystem>
#include <functional>

namespace habitra {

/// Removes what programs that were stopped have left in a folder: what `isLeftover` says so of, and nobody has touched
/// for a day. What cannot be removed stays; throws nothing.
void removeLeftovers(const std::filesystem::path& folder,
                     const std::function<bool(const std::filesystem::directory_entry&)>& isLeftover) noexcept;

}  // namespace habitra
