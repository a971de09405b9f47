#pragma once

#include <filesystem>
#include <string_view>

namespace habitra {

/// Removes what programs that were stopped have left in a folder: files and folders whose names begin with `prefix`
/// and that nobody has touched for a day. What cannot be removed stays; throws nothing.
void removeLeftovers(const std::filesystem::path& folder, std::string_view prefix) noexcept;

}  // namespace habitra
