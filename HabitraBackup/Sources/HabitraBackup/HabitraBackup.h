#pragma once

#include <HabitraBackup/Document/HabitraJSONBackup.h>
#include <HabitraBackup/Document/HabitraJSONDecoder.h>
#include <HabitraBackup/Files/ByteStreams.h>
#include <QZKit/Clock.h>

#include <cstddef>
#include <filesystem>
#include <istream>
#include <span>
#include <string_view>

namespace habitra {

/// Reads backup documents. A text that is not of the format throws CSVError or HabitraJSONError, compressed data that
/// is damaged CompressionError, their messages led by the file's name; a file that cannot be read throws qz::Error or
/// TaskDataExchangeError. Nothing is kept of a file that is refused. That a file is compressed (zstd) is seen from its
/// first bytes, not from its name. Safe from any thread.
class HabitraBackup {
 public:
  /// The document that a CSV file holds. `now` becomes its moment of making.
  [[nodiscard]] static HabitraJSONBackup loadCsv(const std::filesystem::path& url, qz::Moment now);
  [[nodiscard]] static HabitraJSONBackup loadCsv(std::span<const std::byte> data, qz::Moment now);
  /// Reads an open stream to its end; `name` is what messages call it ("standard input").
  [[nodiscard]] static HabitraJSONBackup loadCsv(std::istream& stream, std::string_view name, qz::Moment now);
  [[nodiscard]] static HabitraJSONBackup loadCsv(const ByteSource& source, qz::Moment now);

  /// The document that a file in the documents' own form holds.
  [[nodiscard]] static LoadedBackup loadJson(const std::filesystem::path& url);
  [[nodiscard]] static LoadedBackup loadJson(std::span<const std::byte> data);
  [[nodiscard]] static LoadedBackup loadJson(std::istream& stream, std::string_view name);
  [[nodiscard]] static LoadedBackup loadJson(const ByteSource& source);
};

}  // namespace habitra
