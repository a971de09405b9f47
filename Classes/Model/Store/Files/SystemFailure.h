#pragma once

#include <filesystem>

namespace habitra {

/// Throws the StoreError for the present errno: one line of what failed ("cannot make"), the path, why, and what to do.
[[noreturn]] void failWithErrno(const char* what, const std::filesystem::path& path);

}  // namespace habitra
