#pragma once

#include <HabitraBackup/Document/HabitraJSONBackup.h>
#include <QZKit/Clock.h>

#include <cstddef>
#include <filesystem>
#include <istream>
#include <span>
#include <string_view>

namespace habitra {

/// Reads backup documents. A text that is not of the format throws CSVError, its message led by the file's name; a file
/// that cannot be read throws qz::Error or TaskDataExchangeError. Nothing is kept of a file that is refused.
/// Safe from any thread.
class HabitraBackup {
 public:
  /// The document that a CSV file holds. `now` becomes its moment of making.
  [[nodiscard]] static HabitraJSONBackup loadCsv(const std::filesystem::path& url, qz::Moment now);
  [[nodiscard]] static HabitraJSONBackup loadCsv(std::span<const std::byte> data, qz::Moment now);
  /// Reads an open stream to its end; `name` is what messages call it ("standard input").
  [[nodiscard]] static HabitraJSONBackup loadCsv(std::istream& stream, std::string_view name, qz::Moment now);
};

}  // namespace habitra
