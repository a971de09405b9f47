#pragma once

#include <HabitraBackup/CSV/CSVReader.h>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <istream>
#include <span>
#include <string_view>

namespace habitra {

/// Fills the span from its beginning and says with how many bytes; 0 is the end.
using ByteSource = std::function<std::size_t(std::span<char>)>;

/// Reads `source` to its end; what it or the handler throws reaches the caller.
void readCSV(const ByteSource& source, CSVReader::Handler& handler);

// Both hand a source of bytes to `read`, and lead its errors about what the bytes say by the name that messages use.

/// A file. Throws qz::Error or TaskDataExchangeError when it cannot be read.
void readFile(const std::filesystem::path& file, const std::function<void(const ByteSource&)>& read);
/// An open stream; `name` is what messages call it ("standard input"). Throws qz::Error when it cannot be read.
void readStream(std::istream& stream, std::string_view name, const std::function<void(const ByteSource&)>& read);

}  // namespace habitra
