#pragma once

#include <filesystem>

namespace habitra {

/// Throws the StoreError for the present errno: one line of what failed ("cannot make"), the path, why, and what to do.
[[noreturn]] void failWithErrno(const char* what, const std::filesystem::path& path);

/// Throws the StoreError for a store that may not be written.
[[noreturn]] void failReadOnly(const std::filesystem::path& file);

}  // namespace habitra
