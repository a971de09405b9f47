#pragma once

#include <HabitraBackup/Files/ByteStreams.h>

#include <filesystem>
#include <functional>
#include <istream>
#include <string_view>

namespace habitra {

// Both hand a source of bytes to `read`, and lead its errors about what the bytes say by the name that messages use.

/// A file. Throws qz::Error or TaskDataExchangeError when it cannot be read.
void readFile(const std::filesystem::path& file, const std::function<void(const ByteSource&)>& read);
/// An open stream; `name` is what messages call it ("standard input"). Throws qz::Error when it cannot be read.
void readStream(std::istream& stream, std::string_view name, const std::function<void(const ByteSource&)>& read);

}  // namespace habitra
