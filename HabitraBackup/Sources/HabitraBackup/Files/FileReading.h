#pragma once

#include <HabitraBackup/Files/ByteStreams.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <istream>
#include <string>
#include <string_view>

namespace habitra {

// Both hand a source of bytes to `read`, and lead its errors about what the bytes say by the name that messages use.

/// A file. Throws qz::Error or TaskDataExchangeError when it cannot be read.
void readFile(const std::filesystem::path& file, const std::function<void(const ByteSource&)>& read);
/// An open stream; `name` is what messages call it ("standard input"). Throws qz::Error when it cannot be read.
void readStream(std::istream& stream, std::string_view name, const std::function<void(const ByteSource&)>& read);

/// All that a source gives. Throws qz::Error, led by `name`, when that is more than so many bytes.
[[nodiscard]] std::string contentOf(const ByteSource& source, std::string_view name, std::uint64_t mostBytes);
/// The same of a file. Throws what readFile() throws as well.
[[nodiscard]] std::string contentOfFile(const std::filesystem::path& file, std::uint64_t mostBytes);

/// A path, or what stands for one, as messages of one line show it.
[[nodiscard]] std::string shownPath(const std::filesystem::path& path);

}  // namespace habitra
