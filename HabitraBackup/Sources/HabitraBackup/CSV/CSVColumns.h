#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace habitra {

/// The columns of one format: what they are called, in the order in which they are asked for, and which of them no
/// file can do without, by their places in that order.
struct CSVColumnNames {
  std::span<const std::string_view> known;
  std::span<const std::size_t> required;
};

/// Where each column of a format stands in a file, found by the names of its header.
class CSVColumns {
 public:
  /// Throws CSVError when the header lacks a required name, has a known one twice, or one that looks like a slip of the
  /// pen for a column that is missing: what such a column holds must not be lost unnoticed.
  CSVColumns(const CSVColumnNames& format, std::size_t line, std::span<const std::string_view> names);

  /// The field of the column at `index` of the known names; empty when the file lacks it.
  [[nodiscard]] std::string_view field(std::span<const std::string_view> fields, std::size_t index) const {
    const auto position = positions_[index];
    return position ? fields[*position] : std::string_view();
  }

 private:
  std::vector<std::optional<std::size_t>> positions_;
};

}  // namespace habitra
