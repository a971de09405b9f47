#pragma once

#include <HabitraBackup/HabitraCSVBackupRow.h>

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace habitra {

/// Where each of the nine columns stands in a file, found by the names of its header.
class CSVColumns {
 public:
  /// Throws CSVError when the header lacks "title", has a known name twice, or a name that looks like a slip of the
  /// pen for a column that is missing: what such a column holds must not be lost unnoticed.
  CSVColumns(std::size_t line, std::span<const std::string_view> names);

  /// The field of the column at `index` of csvColumnHeaders; empty when the file lacks it.
  [[nodiscard]] std::string_view field(std::span<const std::string_view> fields, std::size_t index) const {
    const auto position = positions_[index];
    return position ? fields[*position] : std::string_view();
  }

 private:
  std::array<std::optional<std::size_t>, csvColumnHeaders.size()> positions_;
};

}  // namespace habitra
