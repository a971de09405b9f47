#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace habitra {

/// The texts of a folder, or of an archive of it, by their names within it ("001 Read/Checkmarks.csv"): only those that
/// a reader of some format asks for. Bounded by foreign_limits.
class ForeignFiles {
 public:
  /// Those directly in the folder and in the folders directly in it.
  [[nodiscard]] static ForeignFiles ofFolder(const std::filesystem::path& folder);
  /// Those of a zip archive. Where the export stands in a folder of the archive, that folder is left off the names.
  [[nodiscard]] static ForeignFiles ofArchive(const std::filesystem::path& archive);

  /// Null when there is none of that name.
  [[nodiscard]] const std::string* find(const std::string& name) const;
  [[nodiscard]] const std::map<std::string, std::string>& all() const { return texts_; }
  /// What messages call a file of it.
  [[nodiscard]] std::string shown(std::string_view name) const;

 private:
  explicit ForeignFiles(std::string root) : root_(std::move(root)) {}

  std::string root_;
  std::map<std::string, std::string> texts_;
};

/// Takes a line without its end and its number from 1. What it throws ends the reading.
using ForeignLineHandler = std::function<void(std::size_t line, std::string_view text)>;

/// Hands on the lines of a text, without a byte-order mark. Throws qz::Error, led by `name`, for a line that is no
/// UTF-8 or holds a NUL, and for too many lines.
void forEachLine(const std::string& text, const std::string& name, const ForeignLineHandler& onLine);

}  // namespace habitra
