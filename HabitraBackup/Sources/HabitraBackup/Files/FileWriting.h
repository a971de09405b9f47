#pragma once

#include <HabitraBackup/Files/ByteStreams.h>
#include <HabitraBackup/Files/ReplacementFile.h>

#include <filesystem>
#include <functional>

namespace habitra {

/// Writes a file with what `write` puts into the sink it is given, compressed where the name says so
/// (isCompressedName); `check` sees the file before it takes its place. What was there is replaced as a whole or left
/// as it was. Throws qz::Error for what the file system refuses, and what `write` throws.
void writeFile(const std::filesystem::path& to, const std::function<void(const ByteSink&)>& write,
               const ReplacementFile::Check& check = {});

}  // namespace habitra
