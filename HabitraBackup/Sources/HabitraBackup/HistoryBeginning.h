#pragma once

#include <HabitraBackup/Files/ByteStreams.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace habitra {

/// What a history is, as its first bytes tell.
enum class HistoryForm : std::uint8_t {
  rows,         ///< columns of text; what nothing else is known of counts as these
  document,     ///< JSON, a backup document unless its keys tell otherwise
  foreignJSON,  ///< JSON of beaverhabits
  archive,      ///< a zip archive
  database,     ///< a SQLite database
  loopTable,    ///< one of the tables that the CSV export of Loop Habit Tracker consists of
};

/// A source whose beginning is looked at before it is read. Belongs to one thread and lives no longer than the source.
class HistoryBeginning {
 public:
  /// Looks as far into the source as it takes to tell the form.
  explicit HistoryBeginning(const ByteSource& source);

  [[nodiscard]] HistoryForm form() const { return form_; }
  /// Reads the source from its start.
  std::size_t read(std::span<char> chunk);

 private:
  class Characters;

  /// Whether the source has a byte at that place; looks on until it is known.
  bool has(std::size_t at);
  [[nodiscard]] std::string_view seen() const { return {seen_.data(), seen_.size()}; }
  [[nodiscard]] std::string_view firstLine();
  [[nodiscard]] HistoryForm found();
  [[nodiscard]] bool isForeignJSON();

  const ByteSource& source_;
  std::vector<char> seen_;
  std::size_t taken_ = 0;  // of what was seen, by read()
  bool isAtEnd_ = false;
  HistoryForm form_;
};

}  // namespace habitra
